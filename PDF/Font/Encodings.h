#pragma once
// The static encodings of simple fonts: 256 glyph names each, null for an unused code.
// Generated from published data by tools/gen-resources.
#include <string_view>

#include "PDF/Font/GlyphList.h"

namespace lum::PDF::Fnt {

extern const char* const gl_standard_encoding[256];
extern const char* const gl_win_ansi_encoding[256];
extern const char* const gl_mac_roman_encoding[256];
extern const char* const gl_mac_expert_encoding[256];
extern const char* const gl_symbol_encoding[256];       // built-in encoding of Symbol
extern const char* const gl_zapf_dingbats_encoding[256];  // built-in encoding of ZapfDingbats

// MacRomanEncoding read backwards, sorted by name: the lowest code of each name.
extern const GlyphNameEntry gl_mac_roman_codes[];
extern const UInt32 gl_mac_roman_codes_size;

// Kinds of a font's base encoding, in the numbering that simple fonts keep.
enum EncodingKind { e_custom = 0, e_standard = 1, e_win_ansi = 2, e_mac_roman = 3, e_mac_expert = 4 };

// The table of a base encoding name ("StandardEncoding", "WinAnsiEncoding",
// "MacRomanEncoding", "MacExpertEncoding") and its kind; null for any other name.
const char* const* FindBaseEncoding(std::string_view name, EncodingKind& kind);

// The MacRomanEncoding code of a glyph name, or -1.
int MacRomanCodeOf(std::string_view name);

// True when `name` stands at some code of WinAnsiEncoding, MacRomanEncoding or
// StandardEncoding: a font naming other glyphs needs more than a standard font.
bool IsInStandardEncodings(std::string_view name);

}  // namespace lum::PDF::Fnt
