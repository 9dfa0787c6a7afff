#include "PDF/Font/GlyphNames.h"

#include <array>
#include <cstring>

#include "PDF/Font/CMap.h"
#include "PDF/Font/GlyphList.h"

namespace lum::PDF::Fnt {

namespace {

struct FoldRange {
    UInt16 from, to, value, step;  // step 1: the value rises along the range; 0: one value
};

// Private-use values of expert and small-capital fonts and their plain counterparts.
constexpr FoldRange kFoldRanges[] = {
    {0xF634, 0xF635, 0x0020, 0}, {0xF636, 0xF636, 0x03D6, 0}, {0xF637, 0xF637, 0x0068, 0},
    {0xF638, 0xF639, 0x0030, 0}, {0xF63A, 0xF641, 0x0032, 1}, {0xF642, 0xF642, 0x0025, 0},
    {0xF643, 0xF64C, 0x0030, 1}, {0xF64D, 0xF64D, 0x20A1, 0}, {0xF64E, 0xF64E, 0x20AC, 0},
    {0xF64F, 0xF64F, 0x0192, 0}, {0xF650, 0xF650, 0x0023, 0}, {0xF651, 0xF651, 0x00A3, 0},
    {0xF652, 0xF652, 0x00A5, 0}, {0xF653, 0xF653, 0x0024, 0}, {0xF654, 0xF654, 0x00A2, 0},
    {0xF655, 0xF65E, 0x0030, 1}, {0xF65F, 0xF65F, 0x002C, 0}, {0xF660, 0xF660, 0x002E, 0},
    {0xF661, 0xF66A, 0x0030, 1}, {0xF66B, 0xF66B, 0x002C, 0}, {0xF66C, 0xF66C, 0x002E, 0},
    {0xF66D, 0xF66D, 0x0103, 0}, {0xF66E, 0xF66E, 0x0101, 0}, {0xF66F, 0xF66F, 0x0105, 0},
    {0xF670, 0xF670, 0x01FD, 0}, {0xF671, 0xF671, 0x0107, 0}, {0xF672, 0xF672, 0x010D, 0},
    {0xF673, 0xF673, 0x0109, 0}, {0xF674, 0xF674, 0x010B, 0}, {0xF675, 0xF675, 0x010F, 0},
    {0xF676, 0xF676, 0x0111, 0}, {0xF677, 0xF677, 0x0115, 0}, {0xF678, 0xF678, 0x011B, 0},
    {0xF679, 0xF679, 0x0117, 0}, {0xF67A, 0xF67A, 0x0113, 0}, {0xF67B, 0xF67B, 0x014B, 0},
    {0xF67C, 0xF67C, 0x0119, 0}, {0xF67D, 0xF67D, 0x011F, 0}, {0xF67E, 0xF67E, 0x011D, 0},
    {0xF67F, 0xF67F, 0x0123, 0}, {0xF680, 0xF680, 0x0121, 0}, {0xF681, 0xF681, 0x0127, 0},
    {0xF682, 0xF682, 0x0125, 0}, {0xF683, 0xF683, 0x012D, 0}, {0xF684, 0xF684, 0x0133, 0},
    {0xF685, 0xF685, 0x012B, 0}, {0xF686, 0xF686, 0x012F, 0}, {0xF687, 0xF687, 0x0129, 0},
    {0xF688, 0xF688, 0x0135, 0}, {0xF689, 0xF689, 0x0137, 0}, {0xF68A, 0xF68A, 0x013A, 0},
    {0xF68B, 0xF68B, 0x013E, 0}, {0xF68C, 0xF68C, 0x013C, 0}, {0xF68D, 0xF68D, 0x0140, 0},
    {0xF68E, 0xF68E, 0x0144, 0}, {0xF68F, 0xF68F, 0x0148, 0}, {0xF690, 0xF690, 0x0146, 0},
    {0xF691, 0xF691, 0x014F, 0}, {0xF692, 0xF692, 0x0151, 0}, {0xF693, 0xF693, 0x014D, 0},
    {0xF694, 0xF694, 0x01FF, 0}, {0xF695, 0xF695, 0x0155, 0}, {0xF696, 0xF696, 0x0159, 0},
    {0xF697, 0xF697, 0x0157, 0}, {0xF698, 0xF698, 0x015B, 0}, {0xF699, 0xF699, 0x1E9F, 0},
    {0xF69A, 0xF69A, 0x015D, 0}, {0xF69B, 0xF69B, 0x015F, 0}, {0xF69C, 0xF69C, 0x0167, 0},
    {0xF69D, 0xF69D, 0x0165, 0}, {0xF69E, 0xF69E, 0x0163, 0}, {0xF69F, 0xF69F, 0x016D, 0},
    {0xF6A0, 0xF6A0, 0x0171, 0}, {0xF6A1, 0xF6A1, 0x016B, 0}, {0xF6A2, 0xF6A2, 0x0173, 0},
    {0xF6A3, 0xF6A3, 0x016F, 0}, {0xF6A4, 0xF6A4, 0x0169, 0}, {0xF6A5, 0xF6A5, 0x1E83, 0},
    {0xF6A6, 0xF6A6, 0x0175, 0}, {0xF6A7, 0xF6A7, 0x1E85, 0}, {0xF6A8, 0xF6A8, 0x1E81, 0},
    {0xF6A9, 0xF6A9, 0x0177, 0}, {0xF6AA, 0xF6AA, 0x1EF3, 0}, {0xF6AB, 0xF6AB, 0x017A, 0},
    {0xF6AC, 0xF6AC, 0x017C, 0}, {0xF6AD, 0xF6AD, 0x0130, 0}, {0xF6AE, 0xF6AF, 0x0028, 1},
    {0xF6B0, 0xF6B0, 0x005B, 0}, {0xF6B1, 0xF6B1, 0x005D, 0}, {0xF6B2, 0xF6B2, 0x007B, 0},
    {0xF6B3, 0xF6B3, 0x007D, 0}, {0xF6B4, 0xF6B4, 0x00A1, 0}, {0xF6B5, 0xF6B5, 0x00BF, 0},
    {0xF6B6, 0xF6B6, 0x00AB, 0}, {0xF6B7, 0xF6B7, 0x00BB, 0}, {0xF6B8, 0xF6B9, 0x2039, 1},
    {0xF6BA, 0xF6BA, 0x002D, 0}, {0xF6BB, 0xF6BC, 0x2013, 1}, {0xF6BD, 0xF6BD, 0x00B7, 0},
    {0xF6BF, 0xF6BF, 0x004C, 0}, {0xF6C0, 0xF6C0, 0x006C, 0}, {0xF6C1, 0xF6C1, 0x0053, 0},
    {0xF6C2, 0xF6C2, 0x0073, 0}, {0xF6C3, 0xF6C3, 0x0020, 0}, {0xF6C4, 0xF6C4, 0x0433, 0},
    {0xF6C5, 0xF6C5, 0x0431, 0}, {0xF6C6, 0xF6C6, 0x0434, 0}, {0xF6C7, 0xF6C7, 0x043F, 0},
    {0xF6C8, 0xF6C8, 0x0442, 0}, {0xF6C9, 0xF6C9, 0x00B4, 0}, {0xF6CA, 0xF6CA, 0x02C7, 0},
    {0xF6CB, 0xF6CB, 0x00A8, 0}, {0xF6CC, 0xF6CD, 0x0020, 0}, {0xF6CE, 0xF6CE, 0x0060, 0},
    {0xF6CF, 0xF6CF, 0x02DD, 0}, {0xF6D0, 0xF6D0, 0x00AF, 0}, {0xF6D1, 0xF6D1, 0x02D8, 0},
    {0xF6D2, 0xF6D2, 0x02C6, 0}, {0xF6D3, 0xF6D3, 0x0020, 0}, {0xF6D4, 0xF6D4, 0x02D8, 0},
    {0xF6D5, 0xF6D5, 0x02C6, 0}, {0xF6D6, 0xF6D8, 0x0020, 0}, {0xF6D9, 0xF6D9, 0x00A9, 0},
    {0xF6DA, 0xF6DA, 0x00AE, 0}, {0xF6DB, 0xF6DB, 0x2122, 0}, {0xF6DC, 0xF6DC, 0x0031, 0},
    {0xF6DD, 0xF6DD, 0x0052, 0}, {0xF6DE, 0xF6DE, 0x2014, 0}, {0xF6DF, 0xF6E0, 0x00A2, 0},
    {0xF6E1, 0xF6E2, 0x002C, 0}, {0xF6E3, 0xF6E4, 0x0024, 0}, {0xF6E5, 0xF6E6, 0x002D, 0},
    {0xF6E7, 0xF6E8, 0x002E, 0}, {0xF6E9, 0xF6EA, 0x0061, 1}, {0xF6EB, 0xF6EC, 0x0064, 1},
    {0xF6ED, 0xF6ED, 0x0069, 0}, {0xF6EE, 0xF6EF, 0x006C, 1}, {0xF6F0, 0xF6F0, 0x006F, 0},
    {0xF6F1, 0xF6F3, 0x0072, 1}, {0xF6F4, 0xF6F4, 0x02D8, 0}, {0xF6F5, 0xF6F5, 0x02C7, 0},
    {0xF6F6, 0xF6F6, 0x02C6, 0}, {0xF6F7, 0xF6F7, 0x02D9, 0}, {0xF6F8, 0xF6F8, 0x02DD, 0},
    {0xF6F9, 0xF6F9, 0x0142, 0}, {0xF6FA, 0xF6FA, 0x0153, 0}, {0xF6FB, 0xF6FB, 0x02DB, 0},
    {0xF6FC, 0xF6FC, 0x02DA, 0}, {0xF6FD, 0xF6FD, 0x0161, 0}, {0xF6FE, 0xF6FE, 0x02DC, 0},
    {0xF6FF, 0xF6FF, 0x017E, 0}, {0xF721, 0xF721, 0x0021, 0}, {0xF724, 0xF724, 0x0024, 0},
    {0xF726, 0xF726, 0x0026, 0}, {0xF730, 0xF739, 0x0030, 1}, {0xF73F, 0xF73F, 0x003F, 0},
    {0xF760, 0xF77A, 0x0060, 1}, {0xF7A1, 0xF7A2, 0x00A1, 1}, {0xF7A8, 0xF7A8, 0x00A8, 0},
    {0xF7AF, 0xF7AF, 0x00AF, 0}, {0xF7B4, 0xF7B4, 0x00B4, 0}, {0xF7B8, 0xF7B8, 0x00B8, 0},
    {0xF7BF, 0xF7BF, 0x00BF, 0}, {0xF7E0, 0xF7F6, 0x00E0, 1}, {0xF7F8, 0xF7FF, 0x00F8, 1},
    {0xF8E8, 0xF8E8, 0x00AE, 0}, {0xF8E9, 0xF8E9, 0x00A9, 0}, {0xF8EA, 0xF8EA, 0x2122, 0},
};

constexpr UInt16 kFoldFirst = 0xF634;
constexpr UInt16 kFoldLast = 0xF8EA;

// Direct index by value; 0 where a value has no fold.
constexpr auto kFold = [] {
    std::array<UInt16, kFoldLast - kFoldFirst + 1> t{};
    for (const FoldRange& r : kFoldRanges)
        for (UInt32 v = r.from; v <= r.to; ++v)
            t[v - kFoldFirst] = static_cast<UInt16>(r.value + (r.step ? v - r.from : 0));
    return t;
}();

bool IsHexUpper(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); }
int HexValueUpper(char c) { return c <= '9' ? c - '0' : c - 'A' + 10; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Value of a digit in `radix` (10 or 16, either case), -1 for none.
int DigitValue(char c, int radix) {
    int v = -1;
    if (c >= '0' && c <= '9') v = c - '0';
    else if (c >= 'a' && c <= 'f') v = c - 'a' + 10;
    else if (c >= 'A' && c <= 'F') v = c - 'A' + 10;
    return v < radix ? v : -1;
}

struct Ligature {
    std::string_view name;
    Unicode value;
};
constexpr Ligature kLigatureNames[] = {
    {"f_f", 0xFB00}, {"f_i", 0xFB01}, {"f_l", 0xFB02}, {"f_f_i", 0xFB03},
    {"f_f_l", 0xFB04}, {"f_t", 0xFB05}, {"s_t", 0xFB06},
};

// Radix and offset of the numbering rule, fixed by the first name it applies to.
struct NumberingRule {
    bool fixed = false;
    int radix = 16;
    UInt32 offset = 0;
};

// `uniXXXX` with upper-case digits only.
bool UniForm(std::string_view base, Unicode& value) {
    if (base.size() != 7 || base.substr(0, 3) != "uni") return false;
    UInt32 v = 0;
    for (char c : base.substr(3)) {
        if (!IsHexUpper(c)) return false;
        v = v * 16 + UInt32(HexValueUpper(c));
    }
    value = static_cast<Unicode>(v);
    return true;
}

// `uXXXX` to `uXXXXXX`, upper-case digits, ending the base or followed by a period.
bool UForm(std::string_view base, Unicode& value) {
    if (base.size() < 5 || base[0] != 'u') return false;
    size_t i = 1;
    UInt32 v = 0;
    while (i < base.size() && i <= 6 && IsHexUpper(base[i])) v = v * 16 + UInt32(HexValueUpper(base[i++]));
    if (i - 1 < 4) return false;
    if (i != base.size() && base[i] != '.') return false;
    value = static_cast<Unicode>(v);  // cut to 16 bits
    return true;
}

// Names such as G23, c0045 or a17 that a producer numbered: 0 where the rule doesn't apply.
Unicode NumberedName(std::string_view base, UInt32 code, const UnicodeTableInput& in,
                     NumberingRule& rule) {
    size_t p = IsLetter(base[0]) ? 1 : 0;
    if (p >= base.size() || DigitValue(base[p], 16) < 0) return 0;
    if (!rule.fixed) {
        rule.fixed = true;
        rule.radix = 16;
        rule.offset = 0;
        if (in.long_owned_name) rule.radix = 10;
        if (base[0] == 'A' || base[0] == 'a') rule.radix = 10;
        if (base[0] == 'g') {
            rule.radix = 10;
            rule.offset = 30;
        }
    }
    if (in.truetype) return static_cast<Unicode>(code);
    UInt32 v = 0;
    for (; p < base.size(); ++p) {
        const int d = DigitValue(base[p], rule.radix);
        if (d < 0) break;
        v = v * UInt32(rule.radix) + UInt32(d);  // wraps on absurd lengths; cut below anyway
    }
    return static_cast<Unicode>(static_cast<Unicode>(v) + rule.offset);
}

Unicode NameValue(const char* name, UInt32 code, const UnicodeTableInput& in, NumberingRule& rule) {
    if (!name) return 0;
    const std::string_view whole(name);
    // The base runs to the first period after the first character: `a.alt` is `a`, `.notdef`
    // stays whole.
    std::string_view base = whole;
    const size_t dot = whole.find('.', 1);
    if (dot != std::string_view::npos) base = whole.substr(0, dot);

    if (base.find('_') != std::string_view::npos) {
        for (const Ligature& l : kLigatureNames)
            if (whole == l.name) return l.value;
        return kCompoundName;
    }
    Unicode v = 0;
    bool found = in.zapf_dingbats && FindInZapfDingbatsList(base, v);
    if (!found) found = FindInAdobeGlyphList(base, v);
    if (!found) found = UniForm(base, v);
    if (!found) found = UForm(base, v);
    if (!found && base.size() >= 2 && !in.has_tounicode) v = NumberedName(base, code, in, rule);
    return FoldPrivateUse(v);
}

}  // namespace

Unicode FoldPrivateUse(Unicode value) {
    if (value < kFoldFirst || value > kFoldLast) return value;
    const UInt16 folded = kFold[value - kFoldFirst];
    return folded ? folded : value;
}

void BuildUnicodeTable(const UnicodeTableInput& in, Unicode table[256]) {
    NumberingRule rule;
    for (UInt32 code = 0; code < 256; ++code)
        table[code] = NameValue(in.names ? in.names[code] : nullptr, code, in, rule);
}

bool SplitCompoundName(std::string_view name, Unicode* units, int capacity, UInt32& count) {
    count = 0;
    if (name.empty() || name[0] == '_') return false;
    size_t start = 0;
    for (;;) {
        if (count >= UInt32(capacity > 0 ? capacity : 0)) return true;  // the rest is dropped
        const size_t cut = name.find('_', start);
        const std::string_view piece =
            name.substr(start, cut == std::string_view::npos ? std::string_view::npos : cut - start);
        Unicode v = 0;
        if (!FindInAdobeGlyphList(piece, v)) {
            count = 0;
            return false;
        }
        units[count++] = v;
        if (cut == std::string_view::npos) return true;
        start = cut + 1;
    }
}

void FoldFirstUnit(Unicode* units, UInt32& count) {
    if (count == 0) return;
    const Unicode folded = FoldPrivateUse(units[0]);
    if (folded != units[0]) {
        units[0] = folded;
        count = 1;
    }
}

bool MapSimpleFontCode(UInt32 code, const Unicode table[256], const char* const* names,
                       const CMap* tounicode, bool use_tounicode, Unicode* units, int capacity,
                       UInt32& count) {
    if (capacity < 1) return false;
    count = 1;
    if (code > 255) {
        units[0] = 0xFFFD;
        return false;
    }
    const Unicode v = table[code];
    if (use_tounicode && tounicode) {
        UInt32 n = 0;
        if (tounicode->MapToUnicode(code, units, capacity, n) && n > 0) {
            count = n;
            FoldFirstUnit(units, count);
            return true;
        }
        count = 1;
        if (v == 0) {
            // A ToUnicode that misses a code with no name: the code as it stands.
            units[0] = static_cast<Unicode>(code);
            return true;
        }
    }
    if (v != 0 && v != kCompoundName) {
        units[0] = FoldPrivateUse(v);
        return true;
    }
    if (v == kCompoundName && names && names[code] &&
        SplitCompoundName(names[code], units, capacity, count))
        return true;
    count = 1;
    units[0] = static_cast<Unicode>(0xE000 + code);
    return false;
}

bool Type3FallbackCode(UInt32 code, Unicode* units, UInt32& count) {
    if (units[0] == 0xFFFD) {
        units[0] = static_cast<Unicode>(0xE000 + (code & 0xFFFF));
        count = 1;
        return false;
    }
    if (code < 32 || code > 65532) return false;
    units[0] = static_cast<Unicode>(code);
    count = 1;
    return false;
}

bool CompositePlaceholder(UInt32 code, Unicode* units, UInt32& count) {
    count = 1;
    units[0] = code < 6399 ? static_cast<Unicode>(0xE000 + code) : Unicode(0xFFFD);
    return false;
}

Unicode MatchLigature(const Unicode* units, UInt32 count) {
    struct Seq {
        Unicode u[3];
        Unicode value;
    };
    static constexpr Seq kLigatures[] = {
        {{'f', 'f', 0}, 0xFB00},       {{'f', 'i', 0}, 0xFB01},       {{'f', 'l', 0}, 0xFB02},
        {{'f', 'f', 'i'}, 0xFB03},     {{'f', 'f', 'l'}, 0xFB04},     {{0x017F, 't', 0}, 0xFB05},
        {{'s', 't', 0}, 0xFB06},       {{0x0574, 0x0576, 0}, 0xFB13}, {{0x0574, 0x0565, 0}, 0xFB14},
        {{0x0574, 0x056B, 0}, 0xFB15}, {{0x057E, 0x0576, 0}, 0xFB16}, {{0x0574, 0x056D, 0}, 0xFB17},
    };
    if (count != 2 && count != 3) return 0;
    for (const Seq& s : kLigatures) {
        const UInt32 len = s.u[2] ? 3 : 2;
        if (len == count && std::memcmp(s.u, units, count * sizeof(Unicode)) == 0) return s.value;
    }
    return 0;
}

bool IsSubstituteWhiteSpace(UInt32 v) {
    return (v >= 0x0001 && v <= 0x0020) || v == 0x00A0 || (v >= 0x2000 && v <= 0x200F) ||
           (v >= 0x2028 && v <= 0x202F) || (v >= 0x206A && v <= 0x206F);
}

}  // namespace lum::PDF::Fnt
