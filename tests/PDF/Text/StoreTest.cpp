// The flat store as its readers see it: cursors, word boxes, rotated lines, and the XML form
// (checked as parsed XML).
#include <gtest/gtest.h>

#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>

#include <sstream>
#include <string>

#include "Common/UString.h"
#include "PDF/Text/TextExtractorImpl.h"
#include "PDF/Text/TextFeeder.h"
#include "PDF/Text/TextFlags.h"
#include "PDF/Text/TextXml.h"
#include "PDF/TextExtractor.h"

namespace PDF = lum::PDF;
using boost::property_tree::ptree;
using lum::Common::Matrix2D;
using lum::test::FeedElement;
using lum::test::TextFeeder;

namespace {

ptree ParseXml(const PDF::TextExtractorImpl& store, lum::UInt32 flags) {
    PDF::XmlPageInfo page{3, PDF::Rect(0, 0, 612, 792), PDF::Rect(0, 792, 612, 0), 90};
    lum::UString out;
    PDF::WriteXml(store, page, flags, out);
    std::istringstream in(out.ConvertToUtf8());
    ptree t;
    boost::property_tree::read_xml(in, t);
    return t;
}

std::string Xml(const PDF::TextExtractorImpl& store, lum::UInt32 flags) {
    lum::UString out;
    PDF::WriteXml(store, PDF::XmlPageInfo{}, flags, out);
    return out.ConvertToUtf8();
}

FeedElement Turned(double a, double b, double c, double d, double h, double v) {
    FeedElement e;
    e.page = Matrix2D(a, b, c, d, h, v);
    return e;
}

}  // namespace

TEST(TextStore, EmptyPage) {
    TextFeeder f;
    f.Finish();
    EXPECT_EQ(f.store.GetWordCount(), 0u);
    EXPECT_FALSE(PDF::FirstLine(f.store).IsValid());
    EXPECT_EQ(f.Text(true), "");
    EXPECT_EQ(Xml(f.store, 0),
              "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
              "<Page num=\"0\" crop_box=\"0, 0, 0, 0\" media_box=\"0, 0, 0, 0\" rotate=\"0\">\n"
              "</Page>\n");
}

TEST(TextStore, WordBoxesOfUprightAndTurnedLines) {
    TextFeeder f;
    f.Show("ab cd", 100, 700);
    // A quarter turn: the text runs up the page from (300, 100).
    f.Show("up", 0, 0, Turned(0, 1, -1, 0, 300, 100));
    f.Finish();
    auto line = PDF::FirstLine(f.store);
    ASSERT_TRUE(line.IsValid());
    EXPECT_FALSE(line.IsRotated());
    auto w = line.GetFirstWord().GetNextWord();
    const PDF::Rect r = w.GetBBox();
    EXPECT_DOUBLE_EQ(r.x1, 115);
    EXPECT_DOUBLE_EQ(r.x2, 125);
    EXPECT_DOUBLE_EQ(r.y1, line.GetBBox().y1);
    EXPECT_FALSE(w.GetNextWord().IsValid());

    line = line.GetNextLine();
    ASSERT_TRUE(line.IsValid());
    EXPECT_TRUE(line.IsRotated());
    const PDF::Rect t = line.GetFirstWord().GetBBox();
    EXPECT_DOUBLE_EQ(t.x1, 293);
    EXPECT_DOUBLE_EQ(t.x2, 302);
    EXPECT_DOUBLE_EQ(t.y1, 100);
    EXPECT_DOUBLE_EQ(t.y2, 110);
    EXPECT_FALSE(line.GetNextLine().IsValid());
}

TEST(TextStore, HiddenGlyphsLeaveEmptyLines) {
    // Images drawn after the text cover the turned line, with remove_hidden_text. The run test
    // compares the run's layout box with an image's page box as they stand, so it takes one
    // image where the layout frame puts the run and one over its glyphs on the page.
    for (const bool remove : {false, true}) {
        TextFeeder f(remove ? lum::UInt32(PDF::e_remove_hidden_text) : 0);
        f.Show("up", 0, 0, Turned(0, 1, -1, 0, 300, 100)).Show("kept", 100, 700);
        f.engine.Occluders().Add({10, PDF::Rect(90, -310, 120, -280), false});
        f.engine.Occluders().Add({11, PDF::Rect(290, 90, 320, 130), false});
        f.Finish();
        auto line = PDF::FirstLine(f.store);
        if (line.IsRotated() == false) line = line.GetNextLine();
        ASSERT_TRUE(line.IsValid());
        if (remove) {
            EXPECT_EQ(f.store.Lines()[1 + 0 * 17], -0.1) << "the sign of a rotated line survives";
            EXPECT_EQ(line.GetNumWords(), 0);
            EXPECT_FALSE(line.GetFirstWord().IsValid());
            EXPECT_EQ(f.Text(), "kept\n");
        } else {
            EXPECT_EQ(line.GetNumWords(), 1);
        }
        EXPECT_EQ(f.store.GetWordCount(), remove ? 1u : 2u);
    }
}

TEST(TextStore, XmlStructure) {
    TextFeeder f;
    f.Show("Head <1>", 100, 760);
    f.Show("para one", 100, 700).Show("and \"on\"", 100, 688);
    f.Show("lone", 100, 650);
    f.Show("para two", 100, 620).Show("end & more", 100, 608);
    f.Finish();
    const ptree t = ParseXml(f.store, PDF::e_xml_words_as_elements | PDF::e_xml_output_bbox);
    const ptree& page = t.get_child("Page");
    EXPECT_EQ(page.get<std::string>("<xmlattr>.num"), "3");
    EXPECT_EQ(page.get<std::string>("<xmlattr>.media_box"), "0, 792, 612, 792");
    EXPECT_EQ(page.get<std::string>("<xmlattr>.rotate"), "90");
    std::vector<std::string> seen;
    for (const auto& [name, flow] : page) {
        if (name != "Flow") continue;
        for (const auto& [pname, para] : flow) {
            if (pname != "Para") continue;
            std::string words;
            for (const auto& [lname, line] : para) {
                if (lname != "Line") continue;
                EXPECT_FALSE(line.get<std::string>("<xmlattr>.box").empty());
                for (const auto& [wname, word] : line)
                    if (wname == "Word") words += word.data() + " ";
            }
            seen.push_back(para.get<std::string>("<xmlattr>.id") + ":" + words);
        }
    }
    EXPECT_EQ(seen, (std::vector<std::string>{"0:Head <1> ", "1:para one and \"on\" ", "0:lone ",
                                              "2:para two end & more "}));
}

TEST(TextStore, XmlWordText) {
    const struct {
        std::u16string units;
        lum::UInt32 flags;
        std::string xml;
    } cases[] = {
        {u"a<b", 0, "a&lt;b"},
        {u"x\u00E9\U0001F600", 0, "x\xC3\xA9\xF0\x9F\x98\x80"},
        {u"x\u00E9\U0001F600", PDF::e_xml_utf16, "x&#xE9;&#x1F600;"},
        {u"\uFFFE\u0007a", 0, "\t\ta"},
        {u"\uFFFE\uFFFF\u20AC", PDF::e_xml_utf16, "&#xFFFE;&#x00FFFF;&#x20AC;"},
        {u"\xD800z", 0, "\xEF\xBF\xBDz"},
    };
    for (const auto& c : cases) {
        std::string out;
        PDF::AppendXmlText(out, reinterpret_cast<const lum::Unicode*>(c.units.data()),
                           lum::Int32(c.units.size()), c.flags & PDF::e_xml_utf16);
        EXPECT_EQ(out, c.xml) << lum::test::Utf8(c.units);
    }
}

TEST(TextStore, XmlInlineFormAndUtf16Declaration) {
    TextFeeder f;
    f.Show("two words", 100, 700);
    f.Finish();
    const std::string x = Xml(f.store, PDF::e_xml_utf16);
    EXPECT_NE(x.find("encoding=\"utf-16\""), std::string::npos);
    EXPECT_NE(x.find("<Line>\ntwo words</Line>\n"), std::string::npos) << x;
}

TEST(TextStore, SecondPageLeavesNothingOfTheFirst) {
    TextFeeder f;
    f.Show("first page", 100, 700);
    f.Finish();
    f.engine.Reset(0, false, 0);
    f.store.Reset(0);
    f.Show("second", 100, 700);
    f.Finish();
    EXPECT_EQ(f.Text(), "second\n");
    EXPECT_EQ(f.store.GetWordCount(), 1u);
    EXPECT_EQ(f.store.Lines()[0], 1.0);
}
