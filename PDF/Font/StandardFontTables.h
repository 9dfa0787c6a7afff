#pragma once
// What the simple fonts need of the program's static font data: the standard encodings of
// single-byte fonts and, for each of the 14 standard fonts, the metrics that stand in for a
// dictionary that has none (ascent, descent, box, and the widths by glyph name).
#include "Common/Types.h"
#include "PDF/Font/Font.h"

namespace lum::PDF::Fnt {

enum StandardEncodingId {
    e_encoding_standard = 0,
    e_encoding_win_ansi = 1,
    e_encoding_mac_roman = 2,
    e_encoding_mac_expert = 3,
    e_encoding_symbol = 4,
    e_encoding_zapf_dingbats = 5,
};

// The glyph names of codes 0 to 255 of an encoding (null for an unused code), or null when
// the tables aren't there.
const char* const* GetEncodingTable(StandardEncodingId id);

// The encoding that a simple font's encoding kind names (1 Standard ... 4 MacExpert).
inline StandardEncodingId StandardEncodingOf(int kind) {
    switch (kind) {
        case 2: return e_encoding_win_ansi;
        case 3: return e_encoding_mac_roman;
        case 4: return e_encoding_mac_expert;
        default: return e_encoding_standard;
    }
}

// Widths of one standard font by glyph name, in thousandths of text space.
class StandardWidths {
public:
    virtual ~StandardWidths() = default;
    // False when the font has no glyph of that name.
    virtual bool Find(const char* glyph_name, double& width) const = 0;
};

struct StandardFontMetrics {
    StandardEncodingId encoding;  // the font's own: Standard, Symbol or ZapfDingbats
    double ascent;
    double descent;
    double bbox[4];
    const StandardWidths* widths;  // null until the library is initialised
};

// The record of a standard font, or null for e_null and when the tables aren't there.
const StandardFontMetrics* GetStandardFontMetrics(Font::StandardType1Font index);

}  // namespace lum::PDF::Fnt
