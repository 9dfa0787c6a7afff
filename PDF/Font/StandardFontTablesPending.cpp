// The static font tables come from the resource generator; until they are built into the
// program, there are none, and fonts that need them (standard fonts without Widths) fail as
// they do before the library is initialised.
#include "PDF/Font/StandardFontTables.h"

namespace lum::PDF::Fnt {

const char* const* GetEncodingTable(StandardEncodingId) { return nullptr; }

const StandardFontMetrics* GetStandardFontMetrics(Font::StandardType1Font) { return nullptr; }

}  // namespace lum::PDF::Fnt
