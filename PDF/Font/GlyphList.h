#pragma once
// The Adobe Glyph List and the ITC Zapf Dingbats glyph list: glyph name to one UTF-16 value.
// Both are generated tables (tools/gen-resources), sorted by name in byte order and searched
// in place; nothing is built at start-up. Names that the published list gives with several
// code points keep the first.
#include <string_view>

#include "Common/Types.h"

namespace lum::PDF::Fnt {

struct GlyphNameEntry {
    const char* name;
    UInt16 value;
};

// Generated data.
extern const GlyphNameEntry gl_agl_entries[];
extern const UInt32 gl_agl_size;
// Positions in gl_agl_entries ordered by value, and by list order among equal values.
extern const UInt16 gl_agl_by_value[];
extern const GlyphNameEntry gl_zapf_entries[];
extern const UInt32 gl_zapf_size;

// Binary search of a sorted name table; false when the name isn't there.
bool FindGlyphName(const GlyphNameEntry* table, UInt32 size, std::string_view name,
                   UInt16& value);

inline bool FindInAdobeGlyphList(std::string_view name, UInt16& value) {
    return FindGlyphName(gl_agl_entries, gl_agl_size, name, value);
}
inline bool FindInZapfDingbatsList(std::string_view name, UInt16& value) {
    return FindGlyphName(gl_zapf_entries, gl_zapf_size, name, value);
}

// The Adobe Glyph List read backwards: the first name in the list's order whose value is
// `value`, or null.
const char* AdobeGlyphNameOf(UInt16 value);

}  // namespace lum::PDF::Fnt
