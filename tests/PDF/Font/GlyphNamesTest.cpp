// Glyph names to Unicode: each rule of the simple fonts' table, the numbering rule's state,
// the compound split, the mapping of a code with and without ToUnicode, and the placeholders.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PDF/Font/CMap.h"
#include "PDF/Font/GlyphNames.h"
#include "SDF/Obj.h"

using namespace lum::PDF::Fnt;
using lum::Unicode;
using lum::UInt32;

namespace {

// The table of a font whose encoding has `names` from code 0 on.
std::vector<Unicode> Table(const std::vector<const char*>& names, UnicodeTableInput in = {}) {
    const char* enc[256] = {};
    for (size_t i = 0; i < names.size(); ++i) enc[i] = names[i];
    in.names = enc;
    Unicode t[256];
    BuildUnicodeTable(in, t);
    return std::vector<Unicode>(t, t + names.size());
}

TEST(GlyphNames, OneNameEachRule) {
    const struct Case {
        const char* name;
        Unicode value;
    } cases[] = {
        {"A", 0x41},
        {"A.swash", 0x41},            // cut at the period
        {"Asmall", 0x61},             // in the list at U+F761, folded
        {"uni0041", 0x41},
        {"uni004a", 0},               // lower-case digits: neither form, nor a number
        {"uni00410042", 0},           // not seven characters
        {"u0041", 0x41},
        {"u0041.alt", 0x41},
        {"u1F600", 0xF600},           // cut to 16 bits, no fold there
        {"uF761", 0x61},              // folded
        {"u004", 0},                  // three digits
        {"u0041x", 0},
        {".notdef", 0},
        {"f_i", 0xFB01},
        {"s_t", 0xFB06},
        {"f_i.alt", kCompoundName},   // the whole name is compared with the ligatures
        {"T_h", kCompoundName},
        {"a1", 0},                    // no numbering: the rule needs no ToUnicode and applies ...
        {"", 0},
        {nullptr, 0},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Table({c.name}, {.has_tounicode = true})[0], c.value) << (c.name ? c.name : "(null)");
    // The Zapf Dingbats list comes first in ZapfDingbats only.
    const UnicodeTableInput zapf{.zapf_dingbats = true, .has_tounicode = true};
    EXPECT_EQ(Table({"a1"}, zapf)[0], 0x2701);
    EXPECT_EQ(Table({"space"}, zapf)[0], 0x20);
}

TEST(GlyphNames, NumberingIsFixedByTheFirstNameItAppliesTo) {
    const struct Case {
        std::vector<const char*> names;
        UnicodeTableInput in;
        std::vector<Unicode> values;
    } cases[] = {
        {{"g23", "c45"}, {}, {53, 75}},            // g: radix 10, offset 30, for all later names
        {{"G23", "c45"}, {}, {0x23, 0x45}},        // capital G: radix 16
        {{"a17", "c1f"}, {}, {17, 1}},             // a: radix 10; "1f" reads as far as it goes
        {{"c1f", "a17"}, {}, {0x1F, 0x17}},
        {{"c1f"}, {.long_owned_name = true}, {1}},                // a long name of the font's own: radix 10
        {{"g23", "x9"}, {.truetype = true}, {0, 1}},         // TrueType: the code itself
        {{"cx1", "17"}, {}, {0, 0x17}},            // no digit behind the letter; no letter
        {{"7"}, {}, {0}},                          // one character: no rule
    };
    for (const Case& c : cases) EXPECT_EQ(Table(c.names, c.in), c.values) << c.names[0];
}

TEST(GlyphNames, CompoundSplit) {
    const struct Case {
        const char* name;
        int capacity;
        bool ok;
        std::vector<Unicode> units;
    } cases[] = {
        {"a_b", 4, true, {0x61, 0x62}},
        {"T_h_e", 4, true, {0x54, 0x68, 0x65}},
        {"T_h_e", 2, true, {0x54, 0x68}},    // capacity full: the rest is dropped
        {"f_i.alt", 4, false, {}},           // the last piece `i.alt` isn't in the list
        {"_a", 4, false, {}},
        {"a__b", 4, false, {}},
        {"a_zzz", 4, false, {}},
    };
    for (const Case& c : cases) {
        Unicode units[8];
        UInt32 count = 99;
        EXPECT_EQ(SplitCompoundName(c.name, units, c.capacity, count), c.ok) << c.name;
        EXPECT_EQ(std::vector<Unicode>(units, units + count), c.units) << c.name;
    }
}

std::unique_ptr<CMap> ToUnicode(const std::string& text) {
    static std::vector<std::unique_ptr<lum::SDF::FileStream>> keep;
    keep.push_back(std::make_unique<lum::SDF::FileStream>(
        new lum::SDF::Dict(), std::vector<lum::UInt8>(text.begin(), text.end())));
    return CMap::Create(keep.back().get());
}

TEST(GlyphNames, SimpleFontCodes) {
    auto cmap = ToUnicode("3 beginbfchar <C8> <F761> <41> <00660069> <42> <F76100410042> endbfchar");
    ASSERT_TRUE(cmap);
    const char* names[256] = {};
    names[0x41] = "B";
    names[0x43] = "C";
    names[0x44] = "T_h";
    names[0x45] = "x_zzz";
    names[0x46] = ".notdef";
    names[0x47] = "Asmall";
    Unicode table[256];
    BuildUnicodeTable({.names = names}, table);
    const struct Case {
        UInt32 code;
        const CMap* cmap;
        bool use;
        bool real;
        std::vector<Unicode> units;
    } cases[] = {
        {0xC8, cmap.get(), true, true, {0x61}},            // hit, folded to one unit
        {0x41, cmap.get(), true, true, {0x66, 0x69}},      // hit before the name
        {0x42, cmap.get(), true, true, {0x61}},            // a fold replaces all units
        {0x41, cmap.get(), false, true, {0x42}},           // ToUnicode not asked: the name
        {0x43, cmap.get(), true, true, {0x43}},            // miss with a name: the name
        {0x50, cmap.get(), true, true, {0x50}},            // miss without a name: the code
        {0x50, nullptr, true, false, {0xE050}},            // no CMap, no name: placeholder
        {0x44, nullptr, true, true, {0x54, 0x68}},         // compound split
        {0x45, nullptr, true, false, {0xE045}},            // failed split: placeholder
        {0x46, nullptr, true, false, {0xE046}},
        {0x47, nullptr, true, true, {0x61}},
        {300, nullptr, true, false, {0xFFFD}},
    };
    for (const Case& c : cases) {
        Unicode units[4] = {0xFFFE};
        UInt32 count = 0;
        EXPECT_EQ(MapSimpleFontCode(c.code, table, names, c.cmap, c.use, units, 4, count), c.real)
            << c.code;
        EXPECT_EQ(std::vector<Unicode>(units, units + count), c.units) << c.code;
    }
    Unicode unit = 0;
    UInt32 count = 0;
    EXPECT_FALSE(MapSimpleFontCode(0x41, table, names, nullptr, true, &unit, 0, count));
}

TEST(GlyphNames, Placeholders) {
    const struct Case {
        UInt32 code;
        Unicode first;  // what the simple mapping left
        Unicode type3;
        Unicode composite;
    } cases[] = {
        {65, 0xE041, 65, 0xE041},
        {20, 0xE014, 0xE014, 0xE014},
        {6398, 0xFFFD, 0xE000 + 6398, 0xE000 + 6398},
        {6399, 0xFFFD, 0xE000 + 6399, 0xFFFD},
        {70000, 0xFFFD, Unicode(0xE000 + (70000 & 0xFFFF)), 0xFFFD},
    };
    for (const Case& c : cases) {
        Unicode units[1] = {c.first};
        UInt32 count = 1;
        EXPECT_FALSE(Type3FallbackCode(c.code, units, count));
        EXPECT_EQ(units[0], c.type3) << c.code;
        EXPECT_FALSE(CompositePlaceholder(c.code, units, count));
        EXPECT_EQ(units[0], c.composite) << c.code;
        EXPECT_EQ(count, 1u);
    }
}

TEST(GlyphNames, FoldLigaturesAndWhiteSpace) {
    int filled = 0;
    for (UInt32 v = 0xF634; v <= 0xF8EA; ++v) filled += FoldPrivateUse(Unicode(v)) != v;
    EXPECT_EQ(filled, 285);
    EXPECT_EQ(FoldPrivateUse(0xF643), 0x30);
    EXPECT_EQ(FoldPrivateUse(0xF64C), 0x39);
    EXPECT_EQ(FoldPrivateUse(0xF6D7), 0x20);
    EXPECT_EQ(FoldPrivateUse(0xF6BE), 0xF6BE);
    EXPECT_EQ(FoldPrivateUse(0x41), 0x41);

    struct Lig {
        std::vector<Unicode> units;
        Unicode value;
    };
    const Lig ligs[] = {{{'f', 'f', 'i'}, 0xFB03}, {{0x17F, 't'}, 0xFB05},
                        {{0x574, 0x56D}, 0xFB17}, {{'f'}, 0}, {{'f', 'f', 'f'}, 0},
                        {{'f', 'i', 'x', 'y'}, 0}};
    for (const Lig& l : ligs) EXPECT_EQ(MatchLigature(l.units.data(), UInt32(l.units.size())), l.value);

    for (UInt32 v : {0x01u, 0x20u, 0xA0u, 0x2000u, 0x200Fu, 0x2028u, 0x202Fu, 0x206Au, 0x206Fu})
        EXPECT_TRUE(IsSubstituteWhiteSpace(v)) << v;
    for (UInt32 v : {0x00u, 0x21u, 0x2010u, 0x2027u, 0x2030u, 0x2069u, 0x3000u})
        EXPECT_FALSE(IsSubstituteWhiteSpace(v)) << v;
}

}  // namespace
