// Substitution of fonts that aren't embedded: the request made of a font's name and
// descriptor, the decision between standard font, system font and fallback, and the
// standard fonts' glyphs against the boxes of their AFM files.
#include <gtest/gtest.h>

#include <algorithm>

#include "PDF/Ferrox.h"
#include "PDF/Font/FontSubstitution.h"
#include "PDF/Font/StandardFontFaces.h"

using namespace lum::PDF::Fnt;

// A case names only the fields of the input it sets.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
namespace FS = lum::FontSupport;

namespace {

using In = SubstitutionInput;

In Named(const char* name) { return In{.name = name}; }

TEST(FontSubstitution, RequestFromNameAndDescriptor) {
    const struct Case {
        SubstitutionInput in;
        const char* clean;
        int weight;
        bool italic;
        int charset;
    } cases[] = {
        {Named("ABCDEF+Name"), "Name", 400, false, 0},            // subset tag dropped
        {Named("ABCDE+Name"), "ABCDE+Name", 400, false, 0},       // not a tag: six letters needed
        {Named("Arial,Bold"), "Arial", 700, false, 0},
        {Named("Arial,BoldItalic"), "Arial", 700, true, 0},
        {Named("Arial-Black"), "Arial", 700, false, 0},
        {Named("Arial,Condensed"), "Arial,Condensed", 400, false, 0},  // unknown style: whole
        {Named("Foo-DemiOblique"), "Foo", 700, true, 0},
        {Named("Trebuchet MS"), "TrebuchetMS", 400, false, 0},
        {Named("Times-Roman"), "TimesNewRoman", 400, false, 0},
        {Named("Times New Roman PSMT"), "TimesNewRoman", 400, false, 0},
        {Named("Courier_New"), "CourierNew", 400, false, 0},
        {Named("ComicSansMS"), "ComicSans", 400, false, 0},
        {Named(""), "Arial", 400, false, 0},
        {In{.name = "ABCDEF+Whatever", .font_family = "Georgia"}, "Georgia", 400, false, 0},
        // Clamped, and the descriptor's weight wins.
        {In{.name = "Verdana,Bold", .font_weight = 1200}, "Verdana", 900, false, 0},
        {In{.name = "Verdana", .force_bold = true}, "Verdana", 900, false, 0},
        {In{.name = "Wingdings", .symbolic = true}, "Wingdings", 400, false, 2},
        {In{.name = "Wingdings", .symbolic = true, .has_encoding = true}, "Wingdings", 400, false, 1},
        // No style word: the name stays whole.
        {In{.name = "MS-Mincho", .simple = false, .ordering = "Japan1"}, "MS-Mincho", 400, false, 128},
        {In{.name = "SimSun", .symbolic = true, .simple = false, .ordering = "GB1"}, "SimSun", 400, false, 134},
        {In{.name = "Foo", .symbolic = true, .simple = false, .encoding_is_known_cmap = true}, "Foo", 400, false, 0},
        {In{.name = "Foo", .symbolic = true, .simple = false}, "Foo", 400, false, 2},
        {In{.name = "Foo", .charset_override = 134}, "Foo", 400, false, 134},
    };
    for (const Case& c : cases) {
        const PlatformWish w = MakePlatformWish(c.in);
        EXPECT_EQ(std::make_tuple(w.clean_name, w.weight, w.italic, w.charset),
                  std::make_tuple(std::string(c.clean), c.weight, c.italic, c.charset))
            << c.in.name;
    }
    In goth{.name = "KozGoPro", .simple = false, .ordering = "Japan1"};
    EXPECT_EQ(CJKFallbackNames(goth), (std::vector<std::string>{"KozukaMincho", "KozukaGothic"}));
    goth.name = "HeiseiKakuGothic";
    EXPECT_EQ(CJKFallbackNames(goth), (std::vector<std::string>{"KozukaGothic", "KozukaMincho"}));
    goth.ordering = "CNS1";
    EXPECT_EQ(CJKFallbackNames(goth), (std::vector<std::string>{"AdobeMingStdL"}));
}

TEST(FontSubstitution, Decisions) {
    lum::PDF::Ferrox::Initialize();
    const struct Case {
        SubstitutionInput in;
        int kind;
        bool platform;
        int index;  // standard index for kind 3, fallback for kind 2 without platform
    } cases[] = {
        {In{.name = "Helvetica", .base14 = 4}, 3, false, 4},
        // Standard glyph names: the standard font stays; a name beyond them: a system font.
        {In{.name = "Helvetica", .base14 = 4, .differences = {"quoteright", "Euro", "fi"}}, 3, false, 4},
        {In{.name = "Helvetica", .base14 = 4, .differences = {"quoteright", "uni2200"}}, 2, true, 14},
        {In{.name = "Symbol", .base14 = 12, .differences = {"uni2200"}}, 3, false, 12},  // final for Symbol
        {Named("Verdana"), 2, true, 14},
    };
    for (const Case& c : cases) {
        const FontSubstitution s = DecideSubstitution(c.in);
        EXPECT_EQ(s.kind, c.kind) << c.in.name;
        EXPECT_EQ(s.platform != nullptr, c.platform) << c.in.name;
        if (c.kind == 3) {
            EXPECT_EQ(s.standard_index, c.index) << c.in.name;
        }
    }
    struct Flags {
        bool fixed, serif, italic;
        int index;
    };
    const Flags flags[] = {{true, true, true, 10}, {true, false, false, 8}, {false, true, true, 2},
                           {false, true, false, 0}, {false, false, true, 6}, {false, false, false, 4}};
    for (const Flags& f : flags) {
        EXPECT_EQ(FallbackStandardFont(In{.italic = f.italic, .fixed_width = f.fixed, .serif = f.serif}), f.index);
    }
    lum::PDF::Ferrox::Terminate();
}

// The glyphs that stand in for the standard fonts, against the boxes of the Adobe AFM files
// (the programs are metric-compatible, not identical in shape: within 4% of the em).
TEST(FontSubstitution, StandardGlyphsAgainstTheirAFMBoxes) {
    lum::PDF::Ferrox::Initialize();
    const struct Case {
        int font;
        const char* name;
        double advance;
        double llx, lly, urx, ury;  // AFM box, y upwards
    } cases[] = {
        {0, "A", 722, 15, 0, 706, 674},         {4, "H", 722, 77, 0, 646, 718},
        {8, "x", 600, 20, 0, 580, 426},         {2, "g", 500, 8, -206, 472, 441},
        {5, "period", 278, 64, 0, 214, 146},    {12, "alpha", 631, 41, -18, 622, 500},
        {13, "a1", 974, 35, 72, 939, 621},      {0, "underscore", 500, 0, -125, 500, -75},
    };
    for (const Case& c : cases) {
        FS::GlyphOutline out;
        double advance = 0;
        ASSERT_TRUE(GetStandardGlyphPath(c.font, c.name, true, out, advance)) << c.name;
        EXPECT_NEAR(advance, c.advance, 1) << c.name;
        double x1 = 1e9, y1 = 1e9, x2 = -1e9, y2 = -1e9;
        for (size_t i = 0; i + 1 < out.points.size(); i += 2) {
            x1 = std::min(x1, out.points[i]);
            x2 = std::max(x2, out.points[i]);
            y1 = std::min(y1, out.points[i + 1]);
            y2 = std::max(y2, out.points[i + 1]);
        }
        // y is negated in the outline: the AFM's top is the outline's lowest y.
        EXPECT_NEAR(x1, c.llx, 40) << c.name;
        EXPECT_NEAR(x2, c.urx, 40) << c.name;
        EXPECT_NEAR(-y2, c.lly, 40) << c.name;
        EXPECT_NEAR(-y1, c.ury, 40) << c.name;
    }
    FS::GlyphOutline out;
    double advance = 0;
    EXPECT_FALSE(GetStandardGlyphPath(0, "a1", true, out, advance));  // not in Times
    EXPECT_FALSE(GetStandardGlyphPath(14, "A", true, out, advance));
    lum::PDF::Ferrox::Terminate();
}

}  // namespace
