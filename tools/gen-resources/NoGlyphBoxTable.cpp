// The glyph-box table of the generator that measures it: there is none yet, and the standard
// fonts' glyphs are measured from their programs.
#include "PDF/Font/StandardGlyphBoxes.h"

const lum::PDF::Fnt::StandardGlyphBoxTable* lum::PDF::Fnt::GetStandardGlyphBoxTables() { return nullptr; }
