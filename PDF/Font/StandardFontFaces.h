#pragma once
// The programs of the fourteen standard fonts from the resource file, opened once at the first
// need (under the resource lock) and held until the library stops. They draw the glyphs of
// every font that stands in for a standard font, and of the last-resort substitutes.
#include "FontSupport/Face.h"

namespace lum::PDF::Fnt {

// The face of standard font `index` (0 to 13), or null when the resources or FreeType aren't
// there or the program can't be opened.
FontSupport::Face* GetStandardFontFace(int index);

// The outline of the glyph `name` of standard font `index`, in units of 1000 per em with y
// downwards, and its advance in the same units. False when the font has no such glyph. Unpacks
// the program at the first call: a glyph's box alone comes from StandardGlyphBoxes.h.
bool GetStandardGlyphPath(int index, const char* name, bool conics_to_cubics,
                          FontSupport::GlyphOutline& out, double& advance);

// Library stop: the faces go before FreeType does.
void ReleaseStandardFontFaces();

}  // namespace lum::PDF::Fnt
