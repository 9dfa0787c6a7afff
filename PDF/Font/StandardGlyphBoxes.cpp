#include "PDF/Font/StandardGlyphBoxes.h"

#include <algorithm>
#include <cstring>

#include "PDF/Font/StandardFonts.h"

namespace lum::PDF::Fnt {

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

}  // namespace lum::PDF::Fnt
