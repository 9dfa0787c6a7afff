// Metrics of composite fonts: W and W2 as groups where the first naming of a CID wins, DW and
// DW2, the read of a group cut short, ranges of billions of CIDs; then vertical text on a page
// (positions, advances, Unicode) and a page of many composite fonts sharing one predefined CMap.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "PDF/Content/ContentTestSupport.h"
#include "PDF/Font/CIDMetrics.h"
#include "PDF/Font/Font.h"
#include "SDF/Obj.h"
#include "support/TestSupport.h"

namespace lum::test {
namespace {

// Object 6 is a Type 0 font on Identity-H over the descendant 7, whose dictionary holds
// `entries`; 8 is its descriptor.
PDF::Font CompositeFont(MemoryDoc& doc) { return PDF::Font(static_cast<SDF::Obj*>(doc.Doc().GetObj(6))); }

std::string MetricsPdf(const std::string& entries, const std::string& type0_extra = "/DescendantFonts [7 0 R]") {
    PageRecipe recipe;
    recipe.resources = "/Font << /C 6 0 R >>";
    recipe.extra = {
        "<< /Type /Font /Subtype /Type0 /BaseFont /C /Encoding /Identity-H " + type0_extra + " >>",
        "<< /Type /Font /Subtype /CIDFontType0 /BaseFont /C /CIDSystemInfo << /Registry (Adobe) "
        "/Ordering (Identity) /Supplement 0 >> /FontDescriptor 8 0 R " + entries + " >>",
        "<< /Type /FontDescriptor /FontName /C /Flags 4 /Ascent 880 /Descent -120 >>",
    };
    return BuildPagePdf(recipe);
}

struct Vertical {
    UInt32 cid;
    double w1, vx, vy;
};

struct MetricsCase {
    const char* name;
    std::string entries;
    std::vector<std::pair<UInt32, double>> widths;  // CID, width
    std::vector<Vertical> vertical;
    double max_width = -1;                           // checked when not negative
};

const MetricsCase kMetricsCases[] = {
    {"both_forms", "/W [1 [500 600] 3 5 700]",
     {{0, 1000}, {1, 500}, {2, 600}, {3, 700}, {5, 700}, {6, 1000}}, {}, 700},
    {"first_naming_wins", "/W [2 [900 901 902] 1 3 500 3 [7]]",
     {{1, 500}, {2, 900}, {3, 901}, {4, 902}, {5, 1000}}, {}},
    {"numbers_truncated", "/DW 250.9 /W [1 [500.7 -3.9]]", {{1, 500}, {2, -3}, {9, 250}}, {}},
    {"max_width_not_below_zero_and_dw_left_out", "/DW 2000 /W [1 [-5]]", {{1, -5}, {2, 2000}}, {}, 0},
    {"range_of_four_billion_cids", "/W [0 4294967295 7 10 [1]]",
     {{0, 7}, {10, 7}, {4294967295u, 7}}, {}, 7},
    {"range_upside_down_names_nothing", "/W [9 3 5 4 [6]]", {{3, 1000}, {4, 6}, {9, 1000}}, {}},
    {"default_vertical", "/W [7 [600 601]]", {}, {{7, -1000, 300, 880}, {8, -1000, 300, 880}}},
    {"dw2_of_two", "/DW2 [900 -1100] /W [3 [400]]", {}, {{3, -1100, 200, 900}}},
    {"dw2_of_three_ignored", "/DW2 [900 -1100 5]", {}, {{3, -1000, 500, 880}}},
    {"w2_both_forms", "/W2 [1 [-900 250 800 -800 200 700 -1] 5 6 -500 100 400]", {},
     {{1, -900, 250, 800}, {2, -800, 200, 700}, {3, -1000, 500, 880}, {6, -500, 100, 400}}},
    {"w2_first_wins", "/W2 [1 9 -1 1 1 2 [-2 2 2]]", {}, {{2, -1, 1, 1}}},
};

class CIDMetrics : public ::testing::TestWithParam<MetricsCase> {};

TEST_P(CIDMetrics, Decoding) {
    const MetricsCase& c = GetParam();
    MemoryDoc doc(MetricsPdf(c.entries));
    const PDF::Font type0 = CompositeFont(doc);
    const PDF::Font font = type0.GetDescendant();
    for (const auto& [cid, width] : c.widths)
        EXPECT_EQ(font.GetWidth(cid), width) << "CID " << cid;
    for (const Vertical& v : c.vertical) {
        double vx = 0, vy = 0;
        EXPECT_EQ(font.GetVerticalAdvance(v.cid, vx, vy), v.w1) << "CID " << v.cid;
        EXPECT_EQ(vx, v.vx) << "CID " << v.cid;
        EXPECT_EQ(vy, v.vy) << "CID " << v.cid;
    }
    if (c.max_width >= 0) {
        EXPECT_EQ(font.GetMaxWidth(), c.max_width);
    }
}

INSTANTIATE_TEST_SUITE_P(Font, CIDMetrics, ::testing::ValuesIn(kMetricsCases),
                         [](const auto& p) { return std::string(p.param.name); });

// A group cut short fails the descendant, and so the composite font.
TEST(CIDMetrics, BrokenArraysFailTheFont) {
    const std::pair<std::string, std::string> cases[] = {
        {"/W [1]", "/DescendantFonts [7 0 R]"},
        {"/W [1 [500] 3]", "/DescendantFonts [7 0 R]"},
        {"/W [1 2]", "/DescendantFonts [7 0 R]"},
        {"/W2 [1 2 -900 3]", "/DescendantFonts [7 0 R]"},
        {"", ""},
        {"", "/DescendantFonts []"},
    };
    for (const auto& [entries, type0] : cases) {
        MemoryDoc doc(MetricsPdf(entries, type0));
        EXPECT_THROW(CompositeFont(doc), Common::Exception) << entries << " " << type0;
    }
}

// Groups that overlap one another by the ten thousand settle in one sort, and many ranges
// over billions of CIDs cost no more than short ones.
TEST(CIDMetrics, ManyOverlappingGroupsSettleQuickly) {
    PDF::Fnt::CIDRunTable<Int32> table;
    const auto start = std::chrono::steady_clock::now();
    // Group g covers 100000 - g up to nearly the top: CID c < 100000 is answered by group
    // 100000 - c, every CID above by group 0.
    for (UInt32 g = 0; g < 100000; ++g) table.AddRange(100000 - g, 0xFFFFFFF0u - g, Int32(g));
    const Int32 list[] = {-1, -2, -3};
    table.AddList(0xFFFFFFFEu, list, 3);  // cut where the CIDs would wrap
    table.Finish();
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(seconds, 2.0);
    const std::pair<UInt32, Int32> hits[] = {{1, 99999}, {5, 99995}, {99999, 1}, {3000000000u, 0},
                                             {0xFFFFFFF0u, 0}, {0xFFFFFFFEu, -1}, {0xFFFFFFFFu, -2}};
    for (const auto& [cid, value] : hits) {
        const Int32* v = table.Find(cid);
        ASSERT_TRUE(v) << cid;
        EXPECT_EQ(*v, value) << cid;
    }
    EXPECT_EQ(table.Find(0), nullptr);
    EXPECT_EQ(table.Find(0xFFFFFFF5u), nullptr);
}

// A font of ours that names a _CharSet measures a CID that W lacks in its substitute, once,
// and writes the width into W, which it makes.
TEST(CIDMetrics, CharSetFontsMeasureMissingWidths) {
    MemoryDoc doc(MetricsPdf("/_CharSet 0 /W [1 [500]]"));
    const PDF::Font font = CompositeFont(doc).GetDescendant();
    EXPECT_EQ(font.GetWidth(1), 500);
    const double width = font.GetWidth(65);
    EXPECT_EQ(width, std::trunc(font.GetSubstGlyphWidth(65)));
    EXPECT_EQ(font.GetWidth(65), width);
    SDF::Obj* w = font.GetSDFObj()->FindObj("W");
    ASSERT_TRUE(w && w->IsArray());
    ASSERT_EQ(w->Size(), 4u);
    EXPECT_EQ(w->GetAt(2)->GetNumber(), 65);
    EXPECT_EQ(w->GetAt(3)->GetAt(0)->GetNumber(), width);

    MemoryDoc bare(MetricsPdf("/_CharSet 0"));
    const PDF::Font made = CompositeFont(bare).GetDescendant();
    made.GetWidth(7);
    SDF::Obj* made_w = made.GetSDFObj()->FindObj("W");
    ASSERT_TRUE(made_w && made_w->IsArray());
    EXPECT_EQ(made_w->Size(), 2u);
}

// Glyph indexes of an embedded CIDFontType2 (a TrueType program of tools/gen-test-fonts.py):
// through CIDToGIDMap, two bytes a glyph with an odd last byte dropped, or the CID itself.
TEST(CIDMetrics, GlyphIndexesThroughCIDToGIDMap) {
    const struct Case {
        std::string map;  // the CIDToGIDMap entry, "" for none
        UInt32 cid;
        bool found;
        UInt32 glyph;
    } cases[] = {
        {"9 0 R", 0, true, 2}, {"9 0 R", 1, true, 1}, {"9 0 R", 2, false, 0},
        {"/Identity", 2, true, 2}, {"", 1, true, 1},
    };
    const std::string program = ReadFile(DataPath("fonts/unicode-cmap.ttf"));
    for (const Case& c : cases) {
        PageRecipe recipe;
        recipe.extra = {
            "<< /Type /Font /Subtype /Type0 /BaseFont /T /Encoding /Identity-H /DescendantFonts [7 0 R] >>",
            "<< /Type /Font /Subtype /CIDFontType2 /BaseFont /ABCDEF+Test /CIDSystemInfo << /Registry "
            "(Adobe) /Ordering (Identity) /Supplement 0 >> /FontDescriptor 8 0 R " +
                (c.map.empty() ? "" : "/CIDToGIDMap " + c.map) + " >>",
            "<< /Type /FontDescriptor /FontName /ABCDEF+Test /Flags 4 /FontFile2 10 0 R >>",
            StreamObj(std::string("\x00\x02\x00\x01\x07", 5)),
            StreamObj(program, "/Length1 " + std::to_string(program.size())),
        };
        MemoryDoc doc(BuildPagePdf(recipe));
        const PDF::Font descendant = CompositeFont(doc).GetDescendant();
        UInt32 glyph = 99;
        EXPECT_EQ(descendant.GetGlyphIndex(c.cid, glyph), c.found) << c.map << " CID " << c.cid;
        EXPECT_EQ(glyph, c.glyph) << c.map << " CID " << c.cid;
        EXPECT_TRUE(descendant.IsEmbedded());
    }
}

// Vertical writing on a page: each character below the one before, moved by its position
// vector, the TJ number and Tc along y, with Unicode by CID through the collection's -UCS2.
struct VerticalPageCase {
    const char* name;
    std::string content;
    std::vector<double> positions;  // x, y per character
    double end_y;
    std::u16string text;
};

const VerticalPageCase kVerticalPages[] = {
    // CID 1 (code 0x0001 on Identity-V) has W2 -900 250 800; CID 843 (U+3042) the defaults
    // with width 601: vx 300, vy 880, w1 -1000.
    {"identity_v", "BT /V 10 Tf 100 700 Td <0001034B> Tj ET", {97.5, 692, 97, 682.2}, 681,
     u" \u3042"},
    {"char_spacing_and_tj_number", "BT /V 10 Tf 1 Tc 100 700 Td [<0001> 500 <034B>] TJ ET",
     {97, 678.2}, 678, u"\u3042"},
    {"horizontal_scale_has_no_effect", "BT /V 10 Tf 50 Tz 100 700 Td <034B> Tj ET",
     {97, 691.2}, 690, u"\u3042"},
    // UniJIS-UCS2-V: the code is UCS-2, the ideographic comma takes its vertical CID.
    {"predefined_vertical_cmap", "BT /U 10 Tf 0 0 Td <30423001> Tj ET", {-3, -8.8, -5, -18.8}, -20,
     u"\u3042\u3001"},
};

class VerticalPage : public ::testing::TestWithParam<VerticalPageCase> {};

TEST_P(VerticalPage, PositionsAndText) {
    const VerticalPageCase& c = GetParam();
    PageRecipe recipe;
    recipe.resources = "/Font << /V 6 0 R /U 9 0 R >>";
    const std::string japan1 = "/CIDSystemInfo << /Registry (Adobe) /Ordering (Japan1) /Supplement 6 >>";
    recipe.extra = {
        "<< /Type /Font /Subtype /Type0 /BaseFont /V /Encoding /Identity-V /DescendantFonts [7 0 R] >>",
        "<< /Type /Font /Subtype /CIDFontType0 /BaseFont /V " + japan1 +
            " /FontDescriptor 8 0 R /W [843 [601]] /W2 [1 [-900 250 800]] >>",
        "<< /Type /FontDescriptor /FontName /V /Flags 4 /Ascent 880 /Descent -120 >>",
        "<< /Type /Font /Subtype /Type0 /BaseFont /U /Encoding /UniJIS-UCS2-V /DescendantFonts [7 0 R] >>",
    };
    recipe.contents = {c.content};
    MemoryDoc doc(BuildPagePdf(recipe));
    PDF::ElementReader reader;
    reader.Begin(doc.FirstPage());
    std::vector<double> positions;
    std::u16string text;
    double end_x = 0, end_y = 0;
    for (PDF::Element* e; (e = reader.Next()) != nullptr;) {
        if (e->GetType() != PDF::Element::e_text) continue;
        ASSERT_FALSE(e->GetGState().GetFont().IsHorizontalMode());
        positions.clear();
        PDF::CharData it, end;
        e->GetCharIterator(it);
        e->GetCharIteratorEnd(end);
        for (; it != end; ++it) {
            positions.push_back(it.x);
            positions.push_back(it.y);
        }
        const UString s = e->GetTextString();
        text.assign(reinterpret_cast<const char16_t*>(s.GetBuffer()), size_t(s.GetLength()));
        e->GetEndPosition(end_x, end_y);
    }
    reader.End();
    ASSERT_EQ(positions.size(), c.positions.size());
    for (size_t i = 0; i < positions.size(); ++i)
        EXPECT_NEAR(positions[i], c.positions[i], 1e-9) << "coordinate " << i;
    EXPECT_NEAR(end_y, c.end_y, 1e-9);
    EXPECT_EQ(text, c.text);
}

INSTANTIATE_TEST_SUITE_P(Font, VerticalPage, ::testing::ValuesIn(kVerticalPages),
                         [](const auto& p) { return std::string(p.param.name); });

// Two hundred composite fonts on one predefined CMap: each builds its own CMap from the
// resource file, and each gives the same CIDs and Unicode as the first.
TEST(CompositeFonts, TwoHundredFontsOnOneCMap) {
    constexpr int kFonts = 200;
    PageRecipe recipe;
    std::string content = "BT";
    recipe.resources = "/Font <<";
    recipe.extra = {"<< /Type /FontDescriptor /FontName /J /Flags 4 /Ascent 880 /Descent -120 >>"};
    for (int i = 0; i < kFonts; ++i) {
        const std::string n = std::to_string(7 + 2 * i);
        recipe.extra.push_back("<< /Type /Font /Subtype /Type0 /BaseFont /J" + std::to_string(i) +
                             " /Encoding /UniJIS-UCS2-H /DescendantFonts [" + std::to_string(8 + 2 * i) +
                             " 0 R] >>");
        recipe.extra.push_back("<< /Type /Font /Subtype /CIDFontType0 /BaseFont /J" + std::to_string(i) +
                             " /CIDSystemInfo << /Registry (Adobe) /Ordering (Japan1) /Supplement 6 >> "
                             "/FontDescriptor 6 0 R >>");
        recipe.resources += " /F" + std::to_string(i) + " " + n + " 0 R";
        content += " /F" + std::to_string(i) + " 10 Tf <30424E00FF21> Tj";
    }
    recipe.resources += " >>";
    recipe.contents = {content + " ET"};
    MemoryDoc doc(BuildPagePdf(recipe));
    const auto start = std::chrono::steady_clock::now();
    PDF::ElementReader reader;
    reader.Begin(doc.FirstPage());
    int strings = 0;
    for (PDF::Element* e; (e = reader.Next()) != nullptr;) {
        if (e->GetType() != PDF::Element::e_text) continue;
        ++strings;
        EXPECT_EQ(e->GetTextString().ConvertToUtf8(), "\xE3\x81\x82\xE4\xB8\x80\xEF\xBC\xA1") << strings;
    }
    reader.End();
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_EQ(strings, kFonts);
    // A CMap parse is about a millisecond in a release build; sanitizers slow it tenfold.
    EXPECT_LT(seconds, 20.0);
    RecordProperty("seconds", std::to_string(seconds));
}

}  // namespace
}  // namespace lum::test
