#include "PDF/Font/GlyphList.h"

#include <algorithm>

namespace lum::PDF::Fnt {

bool FindGlyphName(const GlyphNameEntry* table, UInt32 size, std::string_view name,
                   UInt16& value) {
    // std::string_view compares bytes as unsigned chars, which is the tables' order.
    const GlyphNameEntry* end = table + size;
    const GlyphNameEntry* it = std::lower_bound(
        table, end, name,
        [](const GlyphNameEntry& e, std::string_view n) { return std::string_view(e.name) < n; });
    if (it == end || std::string_view(it->name) != name) return false;
    value = it->value;
    return true;
}

const char* AdobeGlyphNameOf(UInt16 value) {
    const UInt16* end = gl_agl_by_value + gl_agl_size;
    const UInt16* it = std::lower_bound(gl_agl_by_value, end, value, [](UInt16 pos, UInt16 v) {
        return gl_agl_entries[pos].value < v;
    });
    if (it == end || gl_agl_entries[*it].value != value) return nullptr;
    return gl_agl_entries[*it].name;
}

}  // namespace lum::PDF::Fnt
