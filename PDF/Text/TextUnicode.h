#pragma once
// Classes of UTF-16 units that the text engine decides by: blanks, punctuation, hyphens,
// right-to-left letters, and the ligatures it expands.
#include "Common/Types.h"

namespace lum::PDF {

// Hebrew, Arabic and their presentation forms: a character that maps to several of these has
// its units reversed.
constexpr bool IsRightToLeft(Unicode u) {
    return (u >= 0x0590 && u <= 0x06FF) || (u >= 0x0750 && u <= 0x077F) ||
           (u >= 0xFB50 && u <= 0xFDFF) || (u >= 0xFE70 && u <= 0xFEFF);
}

// White space and control units, the line feed included.
constexpr bool IsBlank(Unicode u) {
    return u == 0x20 || (u >= 0x01 && u <= 0x1F) || u == 0xA0 || (u >= 0x2000 && u <= 0x200F) ||
           (u >= 0x2028 && u <= 0x202F) || (u >= 0x206A && u <= 0x206F);
}

// Units that are a word of their own under punct_break.
bool IsPunctuation(Unicode u);

// Hyphen-minus, soft hyphen, hyphen, non-breaking hyphen, fullwidth hyphen-minus.
constexpr bool IsHyphen(Unicode u) {
    return u == 0x2D || u == 0xAD || u == 0x2010 || u == 0x2011 || u == 0xFF0D;
}

// The units a ligature unit stands for (its compatibility decomposition), at most three, into
// `out`; answers how many. Any unit without an entry answers itself.
int ExpandLigature(Unicode u, Unicode out[3]);

}  // namespace lum::PDF
