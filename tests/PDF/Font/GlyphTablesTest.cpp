// The generated tables: glyph lists, encodings and standard font widths.
#include <gtest/gtest.h>

#include <cstring>
#include <string_view>

#include "PDF/Font/Encodings.h"
#include "PDF/Font/GlyphList.h"
#include "PDF/Font/StandardFonts.h"

using namespace lum::PDF::Fnt;

namespace {

bool Sorted(const GlyphNameEntry* t, lum::UInt32 n) {
    for (lum::UInt32 i = 1; i < n; ++i)
        if (!(std::string_view(t[i - 1].name) < std::string_view(t[i].name))) return false;
    return true;
}

TEST(GlyphLists, ShapeOfThePublishedLists) {
    ASSERT_EQ(gl_agl_size, 4281u);
    EXPECT_STREQ(gl_agl_entries[0].name, "A");
    EXPECT_STREQ(gl_agl_entries[gl_agl_size - 1].name, "zukatakana");
    EXPECT_TRUE(Sorted(gl_agl_entries, gl_agl_size));
    ASSERT_EQ(gl_zapf_size, 201u);
    EXPECT_STREQ(gl_zapf_entries[0].name, "a1");
    EXPECT_EQ(gl_zapf_entries[0].value, 0x2701);
    EXPECT_STREQ(gl_zapf_entries[gl_zapf_size - 1].name, "a99");
    EXPECT_TRUE(Sorted(gl_zapf_entries, gl_zapf_size));
}

TEST(GlyphLists, Lookups) {
    const struct Case {
        std::string_view name;
        bool zapf;
        bool found;
        lum::UInt16 value;
    } cases[] = {
        {"A", false, true, 0x0041},
        {"zukatakana", false, true, 0x30BA},
        {"Asmall", false, true, 0xF761},
        {"dalethatafpatah", false, true, 0x05D3},  // several code points: the first
        {"a", false, true, 0x0061},
        {"a1", false, false, 0},       // only in the Zapf Dingbats list
        {"a1", true, true, 0x2701},
        {"a99", true, true, 0x275D},
        {"A1", false, false, 0},
        {"", false, false, 0},
        {"zukatakanaz", false, false, 0},
        {std::string_view("A\0", 2), false, false, 0},
    };
    for (const Case& c : cases) {
        lum::UInt16 v = 0;
        const bool found = c.zapf ? FindInZapfDingbatsList(c.name, v) : FindInAdobeGlyphList(c.name, v);
        EXPECT_EQ(found, c.found) << c.name;
        if (c.found) {
            EXPECT_EQ(v, c.value) << c.name;
        }
    }
}

TEST(GlyphLists, ReadBackwardsGivesTheFirstNameOfAValue) {
    const struct Case {
        lum::UInt16 value;
        const char* name;
    } cases[] = {
        {0x0041, "A"}, {0x0020, "space"}, {0x00A0, "nbspace"}, {0x2206, "Delta"},
        {0x03A9, "Omegagreek"}, {0x00AD, "sfthyphen"}, {0xFB01, "fi"}, {0x0000, nullptr},
        {0xE000, nullptr},
    };
    for (const Case& c : cases) {
        const char* got = AdobeGlyphNameOf(c.value);
        if (!c.name) {
            EXPECT_EQ(got, nullptr) << c.value;
            continue;
        }
        ASSERT_TRUE(got) << c.value;
        EXPECT_STREQ(got, c.name) << c.value;
    }
}

int Count(const char* const* t) {
    int n = 0;
    for (int c = 0; c < 256; ++c) n += t[c] != nullptr;
    return n;
}

TEST(Encodings, SizesAndTheEntriesThatDifferFromTheirCodePages) {
    EXPECT_EQ(Count(gl_standard_encoding), 149);
    EXPECT_EQ(Count(gl_win_ansi_encoding), 224);
    EXPECT_EQ(Count(gl_mac_roman_encoding), 223);
    EXPECT_EQ(Count(gl_mac_expert_encoding), 165);
    EXPECT_EQ(Count(gl_symbol_encoding), 189);
    EXPECT_EQ(Count(gl_zapf_dingbats_encoding), 188);
    const struct Case {
        const char* const* table;
        int code;
        const char* name;
    } cases[] = {
        {gl_win_ansi_encoding, 127, "bullet"}, {gl_win_ansi_encoding, 129, "bullet"},
        {gl_win_ansi_encoding, 157, "bullet"}, {gl_win_ansi_encoding, 160, "space"},
        {gl_win_ansi_encoding, 173, "hyphen"}, {gl_win_ansi_encoding, 128, "Euro"},
        {gl_win_ansi_encoding, 183, "periodcentered"}, {gl_win_ansi_encoding, 39, "quotesingle"},
        {gl_standard_encoding, 39, "quoteright"}, {gl_standard_encoding, 96, "quoteleft"},
        {gl_mac_roman_encoding, 202, "space"}, {gl_mac_roman_encoding, 219, "currency"},
        {gl_mac_roman_encoding, 222, "fi"}, {gl_mac_roman_encoding, 240, "apple"},
        {gl_mac_expert_encoding, 0276, "AEsmall"}, {gl_mac_expert_encoding, 0373, "Ringsmall"},
        {gl_symbol_encoding, 160, "Euro"}, {gl_symbol_encoding, 97, "alpha"},
        {gl_zapf_dingbats_encoding, 33, "a1"}, {gl_zapf_dingbats_encoding, 128, nullptr},
        {gl_zapf_dingbats_encoding, 141, nullptr}, {gl_win_ansi_encoding, 31, nullptr},
    };
    for (const Case& c : cases) {
        if (!c.name) {
            EXPECT_EQ(c.table[c.code], nullptr) << c.code;
            continue;
        }
        ASSERT_TRUE(c.table[c.code]) << c.code;
        EXPECT_STREQ(c.table[c.code], c.name) << c.code;
    }
    EXPECT_EQ(MacRomanCodeOf("space"), 32);
    EXPECT_EQ(MacRomanCodeOf("Adieresis"), 128);
    EXPECT_EQ(MacRomanCodeOf("bullet"), 165);
    EXPECT_EQ(MacRomanCodeOf("Euro"), -1);
    EXPECT_TRUE(IsInStandardEncodings("Euro"));      // WinAnsi only
    EXPECT_TRUE(IsInStandardEncodings("quoteright"));
    EXPECT_FALSE(IsInStandardEncodings("uni0041"));
    EXPECT_FALSE(IsInStandardEncodings("Asmall"));
    EncodingKind kind = e_custom;
    EXPECT_EQ(FindBaseEncoding("MacExpertEncoding", kind), gl_mac_expert_encoding);
    EXPECT_EQ(kind, e_mac_expert);
    EXPECT_EQ(FindBaseEncoding("Identity-H", kind), nullptr);
}

TEST(StandardFonts, WidthsByNameWhileTheLibraryRuns) {
    InitStandardFontWidths();
    const int counts[kStandardFontCount] = {315, 315, 315, 315, 315, 315, 315,
                                            315, 315, 315, 315, 315, 190, 202};
    for (int i = 0; i < kStandardFontCount; ++i) {
        const StdWidthTable* t = GetStandardFontWidths(i);
        ASSERT_TRUE(t);
        EXPECT_EQ(t->count, counts[i]) << i;
        // Every name is found through its chain.
        for (int k = 0; k < t->count; ++k) {
            double w = -1;
            EXPECT_TRUE(t->Find(t->entries[k].name, w)) << t->entries[k].name;
            EXPECT_EQ(w, t->entries[k].width);
        }
    }
    struct Case {
        int font;
        const char* name;
        double width;
    };
    const Case cases[] = {{0, "space", 250}, {4, "space", 278}, {8, "W", 600},
                          {12, "alpha", 631}, {13, "a1", 974}, {5, "fi", 611}};
    for (const Case& c : cases) {
        double w = 0;
        EXPECT_TRUE(GetStandardFontWidths(c.font)->Find(c.name, w));
        EXPECT_EQ(w, c.width) << c.name;
    }
    double w = 0;
    EXPECT_FALSE(GetStandardFontWidths(0)->Find("a1", w));
    EXPECT_EQ(GetStandardFontWidths(14), nullptr);
    ReleaseStandardFontWidths();
    EXPECT_EQ(GetStandardFontWidths(0), nullptr);
    InitStandardFontWidths();
}

}  // namespace
