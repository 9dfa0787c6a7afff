#include "PDF/Font/StandardGlyphBoxes.h"

#include <algorithm>
#include <cstring>

#include "PDF/Font/StandardFonts.h"

// Defined by the generated table; absent (null) in the generator that makes it.
extern const lum::PDF::Fnt::StandardGlyphBoxTable gl_standard_glyph_boxes[]
    __attribute__((weak));

namespace lum::PDF::Fnt {

namespace {
thread_local bool gl_boxes_only = false;
}

const StandardGlyphBoxTable* GetStandardGlyphBoxTables() { return gl_standard_glyph_boxes; }

const StandardGlyphBox* FindStandardGlyphBox(int index, const char* name, bool& known) {
    const StandardGlyphBoxTable* tables = GetStandardGlyphBoxTables();
    known = tables != nullptr && index >= 0 && index < kStandardFontCount;
    if (!known || !name) return nullptr;
    const StandardGlyphBoxTable& t = tables[index];
    const StandardGlyphBox* end = t.boxes + t.count;
    const StandardGlyphBox* it = std::lower_bound(
        t.boxes, end, name,
        [&t](const StandardGlyphBox& b, const char* n) { return std::strcmp(t.names + b.name, n) < 0; });
    return it != end && std::strcmp(t.names + it->name, name) == 0 ? it : nullptr;
}

StandardBoxesOnly::StandardBoxesOnly() : m_was(gl_boxes_only) { gl_boxes_only = true; }
StandardBoxesOnly::~StandardBoxesOnly() { gl_boxes_only = m_was; }
bool StandardBoxesOnly::Active() { return gl_boxes_only; }

}  // namespace lum::PDF::Fnt
