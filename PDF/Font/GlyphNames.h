#pragma once
// Glyph names to Unicode: the rules that decide what damaged, anonymous and subsetted simple
// fonts mean, as functions that the font classes call. A name goes through the Zapf Dingbats
// list (for ZapfDingbats), the Adobe Glyph List, the uniXXXX and uXXXX[XX] forms, and a
// numbering rule for fonts whose producer named glyphs by number; a compound name is split
// at its underscores; a code with no meaning comes out as a private-use placeholder.
#include <string_view>

#include "Common/Types.h"

namespace lum::PDF::Fnt {

class CMap;

// The value of a compound name that is none of the seven ligatures: split it at mapping time.
inline constexpr Unicode kCompoundName = 0xFF00;

// The private-use fold: a value of U+F634 to U+F8EA that has a plain counterpart (small
// capitals, old-style figures, superiors ...) gives it; any other value gives itself.
Unicode FoldPrivateUse(Unicode value);

// What a simple font knows when it builds its Unicode table.
struct UnicodeTableInput {
    const char* const* names = nullptr;  // the font's encoding: 256 names, null for none
    bool zapf_dingbats = false;          // the font is ZapfDingbats by name (index 13)
    bool has_tounicode = false;          // the font dictionary has ToUnicode
    bool truetype = false;               // the font kind is e_TrueType
    bool long_owned_name = false;        // a name of the font's own is 4 or more characters
};

// The Unicode table of a simple font: for each code 0 for no value, kCompoundName, or the
// value (folded). Radix and offset of the numbering rule are fixed by the first name it
// applies to, in code order.
void BuildUnicodeTable(const UnicodeTableInput& in, Unicode table[256]);

// The units of a compound name, one per piece between underscores, each from the Adobe Glyph
// List; a full `capacity` drops the rest and still succeeds. False (count 0) for a name that
// starts with `_` or a piece the list doesn't have.
bool SplitCompoundName(std::string_view name, Unicode* units, int capacity, UInt32& count);

// SimpleFont::MapToUnicode once the table is built and the ToUnicode load has been tried
// (`tounicode` may be null). Answers whether the mapping is real; a placeholder U+E000 + code
// otherwise. Never leaves less than one unit when capacity is at least 1.
bool MapSimpleFontCode(UInt32 code, const Unicode table[256], const char* const* names,
                       const CMap* tounicode, bool use_tounicode, Unicode* units, int capacity,
                       UInt32& count);

// Type3Font::MapToUnicode after the simple mapping answered false with `units[0]`: a code
// above 255 (U+FFFD) becomes U+E000 + its low 16 bits, a code of 32 to 65532 reads as itself,
// any other keeps the placeholder. Answers false: the text of a Type 3 font without usable
// names is taken to be in its codes, but not as a real mapping.
bool Type3FallbackCode(UInt32 code, Unicode* units, UInt32& count);

// A composite font's code that no CMap maps: U+E000 + code below 6399, U+FFFD above. False.
bool CompositePlaceholder(UInt32 code, Unicode* units, UInt32& count);

// A CMap hit of a font: the fold of the first unit replaces all of them with one unit.
void FoldFirstUnit(Unicode* units, UInt32& count);

// The single value of a ligature of two or three units (ff, fi, fl, ffi, ffl, long s t, st
// and the five Armenian ligatures), or 0.
Unicode MatchLigature(const Unicode* units, UInt32 count);

// White space for a substitute's glyph road: U+0001 to U+0020, U+00A0, U+2000 to U+200F,
// U+2028 to U+202F and U+206A to U+206F.
bool IsSubstituteWhiteSpace(UInt32 value);

}  // namespace lum::PDF::Fnt
