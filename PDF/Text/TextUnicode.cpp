#include "PDF/Text/TextUnicode.h"

#include <algorithm>
#include <iterator>

namespace lum::PDF {

namespace {

struct UnitRange {
    Unicode from, to;
};

// Sorted and disjoint, searched by binary search.
constexpr UnitRange kPunctuation[] = {
    {0x21, 0x2F},     {0x3A, 0x40},     {0x5B, 0x60},     {0x7B, 0x7E},     {0xAD, 0xAD},
    {0x066A, 0x066D}, {0x2010, 0x2027}, {0x2030, 0x204D}, {0x2190, 0x23FF}, {0x3099, 0x309C},
    {0xFF01, 0xFF0F}, {0xFF1A, 0xFF20}, {0xFF40, 0xFF40}, {0xFF5B, 0xFF5E},
};

// Alphabetic Presentation Forms U+FB00 to U+FB17; a zero first unit marks a unit without a
// decomposition here.
constexpr Unicode kLigatures[0x18][3] = {
    {0x66, 0x66, 0},       {0x66, 0x69, 0},       {0x66, 0x6C, 0},     {0x66, 0x66, 0x69},
    {0x66, 0x66, 0x6C},    {0x017F, 0x74, 0},     {0x73, 0x74, 0},     {},
    {},                    {},                    {},                  {},
    {},                    {},                    {},                  {},
    {},                    {},                    {},                  {0x0574, 0x0576, 0},
    {0x0574, 0x0565, 0},   {0x0574, 0x056B, 0},   {0x057E, 0x0576, 0}, {0x0574, 0x056D, 0},
};

}  // namespace

bool IsPunctuation(Unicode u) {
    if (u < 0x21) return false;
    const auto it = std::upper_bound(std::begin(kPunctuation), std::end(kPunctuation), u,
                                     [](Unicode x, const UnitRange& r) { return x < r.from; });
    return it != std::begin(kPunctuation) && u <= std::prev(it)->to;
}

int ExpandLigature(Unicode u, Unicode out[3]) {
    if (u >= 0xFB00 && u <= 0xFB17 && kLigatures[u - 0xFB00][0] != 0) {
        const Unicode* e = kLigatures[u - 0xFB00];
        const int n = e[2] != 0 ? 3 : 2;
        for (int i = 0; i < n; ++i) out[i] = e[i];
        return n;
    }
    out[0] = u;
    return 1;
}

}  // namespace lum::PDF
