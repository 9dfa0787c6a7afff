// The platform's font service on fontconfig: families by name and charset, and fonts made from
// requests, with their outlines and advances. Relies on the system fonts that tools/deps
// installs (DejaVu, Liberation, Droid Sans Fallback).
#include <gtest/gtest.h>

#include "FontSupport/PlatformFonts.h"
#include "PDF/Ferrox.h"

using namespace lum::FontSupport;

namespace {

class PlatformFonts : public ::testing::Test {
protected:
    void SetUp() override { lum::PDF::Ferrox::Initialize(); }
    void TearDown() override { lum::PDF::Ferrox::Terminate(); }
};

TEST_F(PlatformFonts, FamiliesByName) {
    const struct Case {
        const char* wanted;
        const char* style;
        int charset;
        const char* found;  // null: none
    } cases[] = {
        {"Arial", "", e_ansi_charset, "Arial"},
        {"Arial", "Bold", e_ansi_charset, "Arial"},
        {"arial", "", e_ansi_charset, "Arial"},
        {"TimesNewRoman", "", e_ansi_charset, "TimesNewRoman"},
        {"DejaVuSans", "", e_ansi_charset, "DejaVuSans"},
        {"DejaVuSansMo", "", e_ansi_charset, "DejaVuSansMono"},  // a prefix fits
        {"KozukaGothic", "", e_shiftjis_charset, "KozukaGothic"},
        {"TimesNewRoman", "", e_shiftjis_charset, nullptr},      // no Japanese in Liberation
        {"NoSuchFamilyAnywhere", "", e_ansi_charset, nullptr},
        {"", "", e_ansi_charset, nullptr},
    };
    for (const Case& c : cases) {
        FamilyMatch m;
        const bool found = FindFontFamily(c.wanted, c.style, c.charset, m);
        EXPECT_EQ(found, c.found != nullptr) << c.wanted;
        if (found && c.found) {
            EXPECT_EQ(m.face_name, c.found) << c.wanted;
        }
    }
}

TEST_F(PlatformFonts, FontsGiveOutlinesAndAdvances) {
    const struct Case {
        const char* face;
        int weight;
        int charset;
        lum::UInt32 unicode;
        const char* family;
        double advance;  // < 0: not checked
    } cases[] = {
        {"Arial", 400, e_ansi_charset, 'A', "Liberation Sans", 667},
        {"Arial", 700, e_ansi_charset, 'A', "Liberation Sans", 722},
        {"TimesNewRoman", 400, e_ansi_charset, 'a', "Liberation Serif", 444},
        {"CourierNew", 400, e_ansi_charset, 'x', "Liberation Mono", 600},
        {"KozukaMincho", 400, e_shiftjis_charset, 0x3042, "Droid Sans Fallback", -1},
        {"NoSuchFamilyAnywhere", 400, e_ansi_charset, 'A', nullptr, -1},  // the default font
    };
    for (const Case& c : cases) {
        auto font = PlatformFont::Create(
            FontRequest{.weight = c.weight, .charset = c.charset, .wanted_charset = c.charset, .face_name = c.face});
        ASSERT_TRUE(font) << c.face;
        if (c.family) {
            EXPECT_EQ(font->GetFaceName(), c.family) << c.face;
        }
        GlyphOutline out;
        EXPECT_TRUE(font->GetGlyphOutline(c.unicode, false, out)) << c.face;
        EXPECT_FALSE(out.operators.empty()) << c.face;
        if (c.advance >= 0) {
            EXPECT_NEAR(font->GetAdvance(c.unicode), c.advance, 1) << c.face;
        }
    }
}

}  // namespace
