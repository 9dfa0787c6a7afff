#pragma once
// The fourteen standard fonts: their records (name, default encoding, metrics) and their
// widths by glyph name, from the Adobe Core 14 AFM files. The tables are generated
// (tools/gen-resources); the widths are handed out only while the library is started, as the
// fonts that need them are.
#include <string_view>

#include "Common/Types.h"

namespace lum::PDF::Fnt {

// Index of a standard font, the numbering of m_base14_type: 0 Times-Roman, 1 Times-Bold,
// 2 Times-Italic, 3 Times-BoldItalic, 4 Helvetica, 5 Helvetica-Bold, 6 Helvetica-Oblique,
// 7 Helvetica-BoldOblique, 8 Courier, 9 Courier-Bold, 10 Courier-Oblique,
// 11 Courier-BoldOblique, 12 Symbol, 13 ZapfDingbats; 14 is none.
inline constexpr int kStandardFontCount = 14;

struct StdWidth {
    const char* name;
    UInt16 width;  // in 1/1000 of text space
    Int16 next;    // next entry of the bucket's chain, -1 at its end
};

// A chained hash table with as many buckets as names; a name's bucket is h = h * 17 + byte
// over its bytes, in 32 bits from 0, modulo the bucket count.
struct StdWidthTable {
    const Int16* buckets;  // first entry of each chain, -1 for an empty bucket
    const StdWidth* entries;
    UInt16 count;

    // False when the font has no glyph of that name.
    bool Find(std::string_view name, double& width) const;
};

struct StandardFontRecord {
    const char* name;
    const char* const* default_encoding;  // 256 names
    double ascent;
    double descent;
    double bbox[4];  // x1 y1 x2 y2
    StdWidthTable width_data;
};

extern const StandardFontRecord gl_standard_fonts[kStandardFontCount];

// The widths of standard font `index` (0 to 13), or null while the library isn't started.
const StdWidthTable* GetStandardFontWidths(int index);
// Library start and stop make the widths available and take them away.
void InitStandardFontWidths();
void ReleaseStandardFontWidths();

}  // namespace lum::PDF::Fnt
