// Glyph boxes: standard fonts drawn by their programs (against the AFM), blanks, the squeeze
// of a glyph to a narrower PDF width, the font's extent and blankness, and Type 3 glyphs run
// through their content with clipping, images and a glyph that shows itself.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "FontSupport/Face.h"
#include "FontSupport/FreeTypeLibrary.h"
#include "PDF/Content/ContentTestSupport.h"
#include "PDF/Ferrox.h"
#include "PDF/Font/Font.h"
#include "PDF/GlyphBoxCache.h"
#include "PDF/PDFDoc.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"
#include "support/TestSupport.h"

using namespace lum::PDF;
using lum::test::StreamObj;

namespace {

// 4 Helvetica; 5 Helvetica with Widths narrower (H) and wider (I) than the
// standard; 6 a Type 3 font with glyphs a to e; 7.. its procedures; 13 a second Helvetica.
std::string FontsPdf() {
    std::string widths, helv;
    for (int c = 72; c <= 73; ++c) widths += c == 72 ? "361 " : "1000 ";
    // Helvetica's own widths where the tests look.
    for (int c = 0; c < 256; ++c)
        helv += c == ' ' || c == '.' || c == 'I' ? "278 " : c == 'H' ? "722 " : c == 'g' ? "556 " : "500 ";
    const std::string helvetica =
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /FirstChar 0 /LastChar 255 /Widths [" +
        helv + "] >>";
    return lum::test::BuildPdf({
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] >>",
        helvetica,
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /FirstChar 72 /LastChar 73 /Widths [" +
            widths + "] >>",
        "<< /Type /Font /Subtype /Type3 /FontMatrix [0.001 0 0 0.001 0 0] /FontBBox [0 0 1000 1000]"
        " /CharProcs << /a 7 0 R /b 8 0 R /c 9 0 R /d 10 0 R /e 11 0 R /f 12 0 R >>"
        " /Encoding << /Type /Encoding /Differences [97 /a /b /c /d /e /f] >>"
        " /FirstChar 97 /LastChar 102 /Widths [500 500 500 500 500 500]"
        " /Resources << /Font << /F3 6 0 R >> >> >>",
        StreamObj("500 0 d0 0 0 100 200 re f"),
        StreamObj("500 0 d0 0 0 50 50 re W f 0 0 100 200 re f"),
        StreamObj("500 0 d0 q 300 0 0 400 10 20 cm BI /W 1 /H 1 /BPC 8 /CS /G ID x EI Q"),
        StreamObj("500 0 d0 BT /F3 1000 Tf (d) Tj ET 0 0 10 10 re f"),
        StreamObj("500 0 d0"),
        StreamObj("500 0 d0 BT /F3 1000 Tf (a) Tj ET"),
        helvetica,
    });
}

class GlyphBoxes : public ::testing::Test {
protected:
    Font FontAt(lum::UInt32 num) { return Font(static_cast<lum::SDF::Obj*>(m_doc.Doc().GetObj(num))); }
    GlyphBoxCache& Cache() { return GlyphBoxCache::Of(*m_doc.Doc().GetImpl()); }
    bool Box(const Font& font, lum::UInt32 code, Rect& box) {
        CharData c;
        c.char_code = code;
        FormSet forms;
        return Cache().GetGlyphBox(font, c, box, forms);
    }

    lum::test::MemoryDoc m_doc{FontsPdf()};
};

TEST_F(GlyphBoxes, StandardFontGlyphsAndBlanks) {
    const Font helv = FontAt(4);
    struct Case {
        lum::UInt32 code;
        bool outline;
        double x2;           // at least the advance
        double top, bottom;  // the AFM's box negated, within 4% of the em; unchecked for blanks
    };
    const Case cases[] = {
        {'H', true, 722, -718, 0},
        {'g', true, 556, -538, 220},
        {'.', true, 278, -106, 0},
        {' ', false, 278, 0, 0},
        {1, false, 500, 0, 0},  // no name in the encoding
    };
    for (const Case& c : cases) {
        Rect box;
        EXPECT_EQ(Box(helv, c.code, box), c.outline) << c.code;
        EXPECT_EQ(box.x1, 0) << c.code;
        EXPECT_NEAR(box.x2, c.x2, 1) << c.code;
        if (c.outline) {
            EXPECT_NEAR(box.y1, c.top, 40) << c.code;
            EXPECT_NEAR(box.y2, c.bottom, 40) << c.code;
        } else {
            EXPECT_EQ(box.y1, 0);
            EXPECT_EQ(box.y2, 0);
        }
        // The second answer comes from the cache, the same.
        Rect again;
        EXPECT_EQ(Box(helv, c.code, again), c.outline);
        EXPECT_EQ(again, box);
    }
}

TEST_F(GlyphBoxes, NarrowedToThePdfWidthNeverWidened) {
    const Font standard = FontAt(4), custom = FontAt(5);
    auto right_edge = [](const Font& f, lum::UInt32 code) {
        std::vector<lum::UInt8> ops;
        std::vector<double> pts;
        EXPECT_TRUE(f.GetGlyphPath(code, ops, pts));
        double x = -1e9;
        for (size_t i = 0; i < pts.size(); i += 2) x = std::max(x, pts[i]);
        return x;
    };
    EXPECT_NEAR(right_edge(custom, 'H'), right_edge(standard, 'H') * 361 / 722, 0.5);
    EXPECT_NEAR(right_edge(custom, 'I'), right_edge(standard, 'I'), 1e-9);
}

TEST_F(GlyphBoxes, ExtentAndBlankFont) {
    const Font helv = FontAt(13);
    Rect box;
    EXPECT_FALSE(Cache().IsBlankFont(helv));  // nothing seen yet
    Box(helv, ' ', box);
    EXPECT_TRUE(Cache().IsBlankFont(helv));
    EXPECT_EQ(Cache().GetFontExtent(helv.GetSDFObj()), Rect());
    Box(helv, '.', box);
    EXPECT_FALSE(Cache().IsBlankFont(helv));
    const Rect small = Cache().GetFontExtent(helv.GetSDFObj());
    Box(helv, 'H', box);
    const Rect grown = Cache().GetFontExtent(helv.GetSDFObj());
    EXPECT_LT(grown.y1, small.y1);
    EXPECT_GE(grown.x2, small.x2);
    Box(helv, ' ', box);
    EXPECT_FALSE(Cache().IsBlankFont(helv));  // for good
}

TEST_F(GlyphBoxes, Type3GlyphsRunThroughTheirContent) {
    const Font t3 = FontAt(6);
    struct Case {
        lum::UInt32 code;
        bool outline;
        Rect box;
    };
    const Case cases[] = {
        {'a', true, Rect(0, 0, 100, 200)},
        {'b', true, Rect(0, 0, 50, 50)},      // clipped by the first path
        {'c', true, Rect(0, 20, 310, 420)},   // an image has an outline in this sense
        {'d', true, Rect(0, 0, 10, 10)},      // shows itself: that text has no box
        {'e', false, Rect(0, 0, 0.5, 0)},     // nothing painted
    };
    for (const Case& c : cases) {
        Rect box;
        EXPECT_EQ(Box(t3, c.code, box), c.outline) << char(c.code);
        EXPECT_NEAR(box.x1, c.box.x1, 1e-6) << char(c.code);
        EXPECT_NEAR(box.y1, c.box.y1, 1e-6) << char(c.code);
        EXPECT_NEAR(box.x2, c.box.x2, 1e-6) << char(c.code);
        EXPECT_NEAR(box.y2, c.box.y2, 1e-6) << char(c.code);
    }
    // A glyph showing another glyph of its font: that glyph's box through the text's scale.
    Rect f;
    EXPECT_TRUE(Box(t3, 'f', f));
    EXPECT_NEAR(f.y2, 200, 1e-6);
}

// A document of three embedded TrueType fonts (the fuzz seed program) shown 5,000 times over:
// each face is opened once, and what FreeType holds goes with the document.
TEST(GlyphBoxFaces, OnePerFontAndGoneWithTheDocument) {
    const std::string seed = lum::test::ReadFile(std::string(LUM_TOOLS_DIR) + "/../fuzz/seeds/fontprogram/truetype");
    ASSERT_GT(seed.size(), 1u);
    const std::string program = seed.substr(1);
    std::vector<std::string> objects = {
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] >>",
        StreamObj(program, "/Length1 " + std::to_string(program.size())),
    };
    std::string widths;
    for (int c = 32; c <= 126; ++c) widths += "500 ";
    for (int f = 0; f < 3; ++f) {
        objects.push_back("<< /Type /FontDescriptor /FontName /Seed /Flags 32 /FontFile2 4 0 R >>");
        objects.push_back("<< /Type /Font /Subtype /TrueType /BaseFont /Seed /FirstChar 32 /LastChar 126"
                          " /Widths [" + widths + "] /FontDescriptor " +
                          std::to_string(objects.size()) + " 0 R >>");
    }
    Ferrox::Initialize();
    const lum::UInt64 bytes_before = lum::FontSupport::FreeTypeLibrary::GetAllocatedBytes();
    const lum::UInt64 opened_before = lum::FontSupport::Face::GetOpenCount();
    {
        const std::string pdf = lum::test::BuildPdf(objects);
        PDFDoc doc(std::make_unique<lum::Filters::ExtBufInputFilter>(
            reinterpret_cast<const lum::UInt8*>(pdf.data()), pdf.size()));
        GlyphBoxCache& cache = GlyphBoxCache::Of(*doc.GetImpl());
        FormSet forms;
        for (int i = 0; i < 5000; ++i) {
            const Font font(static_cast<lum::SDF::Obj*>(doc.GetObj(6 + 2 * (i % 3))));
            CharData c;
            c.char_code = 32 + i % 95;
            Rect box;
            cache.GetGlyphBox(font, c, box, forms);
        }
        EXPECT_EQ(lum::FontSupport::Face::GetOpenCount() - opened_before, 3u);
        EXPECT_GT(lum::FontSupport::FreeTypeLibrary::GetAllocatedBytes(), bytes_before);
    }
    EXPECT_EQ(lum::FontSupport::FreeTypeLibrary::GetAllocatedBytes(), bytes_before);
    Ferrox::Terminate();
}

}  // namespace
