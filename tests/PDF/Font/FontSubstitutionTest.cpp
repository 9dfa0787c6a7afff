// Substitution of fonts that aren't embedded: the request made of a font's name and
// descriptor, the decision between standard font, system font and fallback, and the
// standard fonts' glyphs against the boxes of their AFM files.
#include <gtest/gtest.h>

#include <algorithm>

#include "PDF/Ferrox.h"
#include "PDF/Font/FontSubstitution.h"
#include "PDF/Font/StandardFontFaces.h"

using namespace lum::PDF::Fnt;
namespace FS = lum::FontSupport;

namespace {

SubstitutionInput Named(const char* name) {
    SubstitutionInput in;
    in.name = name;
    return in;
}

TEST(FontSubstitution, RequestFromNameAndDescriptor) {
    struct Case {
        SubstitutionInput in;
        const char* clean;
        int weight;
        bool italic;
        int charset;
    };
    SubstitutionInput family = Named("ABCDEF+Whatever");
    family.font_family = "Georgia";
    SubstitutionInput weighted = Named("Verdana,Bold");
    weighted.font_weight = 1200;
    SubstitutionInput force = Named("Verdana");
    force.force_bold = true;
    SubstitutionInput sym = Named("Wingdings");
    sym.symbolic = true;
    SubstitutionInput sym_enc = sym;
    sym_enc.has_encoding = true;
    SubstitutionInput japanese = Named("MS-Mincho");
    japanese.simple = false;
    japanese.ordering = "Japan1";
    SubstitutionInput gb = Named("SimSun");
    gb.simple = false;
    gb.symbolic = true;
    gb.ordering = "GB1";
    SubstitutionInput identity_sym = Named("Foo");
    identity_sym.simple = false;
    identity_sym.symbolic = true;
    identity_sym.encoding_is_known_cmap = true;
    SubstitutionInput custom_sym = identity_sym;
    custom_sym.encoding_is_known_cmap = false;
    SubstitutionInput charset = Named("Foo");
    charset.charset_override = 134;
    const Case cases[] = {
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
        {family, "Georgia", 400, false, 0},
        {weighted, "Verdana", 900, false, 0},   // clamped, and the descriptor's weight wins
        {force, "Verdana", 900, false, 0},
        {sym, "Wingdings", 400, false, 2},
        {sym_enc, "Wingdings", 400, false, 1},
        {japanese, "MS-Mincho", 400, false, 128},  // no style word: the name stays whole
        {gb, "SimSun", 400, false, 134},
        {identity_sym, "Foo", 400, false, 0},
        {custom_sym, "Foo", 400, false, 2},
        {charset, "Foo", 400, false, 134},
    };
    for (const Case& c : cases) {
        const PlatformWish w = MakePlatformWish(c.in);
        EXPECT_EQ(w.clean_name, c.clean) << c.in.name;
        EXPECT_EQ(w.weight, c.weight) << c.in.name;
        EXPECT_EQ(w.italic, c.italic) << c.in.name;
        EXPECT_EQ(w.charset, c.charset) << c.in.name;
    }
    SubstitutionInput goth = Named("KozGoPro");
    goth.simple = false;
    goth.ordering = "Japan1";
    EXPECT_EQ(CJKFallbackNames(goth), (std::vector<std::string>{"KozukaMincho", "KozukaGothic"}));
    goth.name = "HeiseiKakuGothic";
    EXPECT_EQ(CJKFallbackNames(goth), (std::vector<std::string>{"KozukaGothic", "KozukaMincho"}));
    goth.ordering = "CNS1";
    EXPECT_EQ(CJKFallbackNames(goth), (std::vector<std::string>{"AdobeMingStdL"}));
}

TEST(FontSubstitution, Decisions) {
    lum::PDF::Ferrox::Initialize();
    struct Case {
        SubstitutionInput in;
        int kind;
        bool platform;
        int index;  // standard index for kind 3, fallback for kind 2 without platform
    };
    SubstitutionInput helv = Named("Helvetica");
    helv.base14 = 4;
    SubstitutionInput helv_std_diffs = helv;
    helv_std_diffs.differences = {"quoteright", "Euro", "fi"};
    SubstitutionInput helv_odd_diffs = helv;
    helv_odd_diffs.differences = {"quoteright", "uni2200"};
    SubstitutionInput symbol = Named("Symbol");
    symbol.base14 = 12;
    symbol.differences = {"uni2200"};
    const Case cases[] = {
        {helv, 3, false, 4},
        {helv_std_diffs, 3, false, 4},      // standard glyph names: the standard font stays
        {helv_odd_diffs, 2, true, 14},      // a name beyond them: a system font
        {symbol, 3, false, 12},             // final for Symbol
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
        SubstitutionInput in;
        in.fixed_width = f.fixed;
        in.serif = f.serif;
        in.italic = f.italic;
        EXPECT_EQ(FallbackStandardFont(in), f.index);
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
