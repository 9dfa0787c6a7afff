#pragma once
// The questions the glyph capture asks about glyphs: a glyph's box in glyph units and whether
// it has an outline (a glyph without one is white space), whether a font has so far shown
// only glyphs without outlines, and the union of a font's glyph boxes. The document's glyph
// box cache answers them.
#include <vector>

#include "PDF/Rect.h"
#include "PDF/Text/TextEmit.h"

namespace lum::SDF { class Obj; }

namespace lum::PDF {

class Font;
struct CharData;

// Forms (and glyph procedures) whose walk is under way: a Type 3 glyph that paints a form
// already open isn't walked into again.
using FormSet = std::vector<const SDF::Obj*>;

class GlyphMeasure : public FontExtents {
public:
    // The box of the character's glyph in glyph units (font units with y growing downwards,
    // or the units of a Type 3 glyph description), reaching at least from the origin to the
    // advance; true when the glyph has an outline.
    virtual bool GlyphBox(const Font& font, const CharData& ch, Rect& box, FormSet& forms) = 0;
    // True when the font has shown glyphs, none of them with an outline.
    virtual bool IsBlankFont(const Font& font) = 0;
};

}  // namespace lum::PDF
