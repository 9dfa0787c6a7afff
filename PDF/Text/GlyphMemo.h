#pragma once
// What the capture learned about each character code of each font of a document: its glyph
// box, whether it has an outline, and its Unicode units. Both answers are fixed for a font and
// a code, so a code is asked of the glyph box cache and the font only once per document; after
// that a character costs an array read (codes below 256) or one hash lookup.
#include <array>
#include <memory>
#include <unordered_map>

#include "Common/Types.h"
#include "PDF/Rect.h"

namespace lum::SDF { class Obj; }

namespace lum::PDF {

struct GlyphInfo {
    Rect box;  // glyph units
    bool known = false;
    bool has_outline = false;
    UInt8 unit_count = 0;
    Unicode units[4] = {0, 0, 0, 0};
};

class FontGlyphs {
public:
    GlyphInfo& At(UInt32 code) { return code < 256 ? m_small[code] : m_large[code]; }

private:
    std::array<GlyphInfo, 256> m_small{};
    std::unordered_map<UInt32, GlyphInfo> m_large;
};

class GlyphMemo {
public:
    FontGlyphs& For(const SDF::Obj* font) {
        if (font == mp_last_font && mp_last) return *mp_last;
        std::unique_ptr<FontGlyphs>& slot = m_fonts[font];
        if (!slot) slot = std::make_unique<FontGlyphs>();
        mp_last_font = font;
        mp_last = slot.get();
        return *slot;
    }

private:
    std::unordered_map<const SDF::Obj*, std::unique_ptr<FontGlyphs>> m_fonts;
    const SDF::Obj* mp_last_font = nullptr;
    FontGlyphs* mp_last = nullptr;
};

}  // namespace lum::PDF
