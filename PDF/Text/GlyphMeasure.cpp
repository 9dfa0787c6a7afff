#include "PDF/Text/GlyphMeasure.h"

#include <algorithm>

#include "PDF/CharData.h"
#include "PDF/Font/Font.h"
#include "PDF/Text/TextGeometry.h"
#include "PDF/Text/TextUnicode.h"

namespace lum::PDF {

namespace {

// Ascent and descent in thousandths of the em, with the fallback of a font that gives none.
void VerticalMetrics(const Font& font, double& ascent, double& descent) {
    ascent = font.GetAscent();
    descent = font.GetDescent();
    if (std::fabs(ascent - descent) < 1.0) {
        ascent = 950;
        descent = -350;
    }
}

}  // namespace

bool MetricGlyphMeasure::GlyphBox(const Font& font, const CharData& ch, Rect& box, FormSet&) {
    const bool type3 = font.GetType() == Font::e_Type3;
    const UInt32 code = font.GetType() == Font::e_Type0 ? font.MapToCID(ch.char_code) : ch.char_code;
    const Font metrics = font.GetType() == Font::e_Type0 ? font.GetDescendant() : font;
    const double width = metrics ? metrics.GetWidth(code) : 0;
    if (type3) {
        // Glyph space of the description, y upwards.
        const Rect bbox = font.GetBBox();
        box = Rect(0, std::min(bbox.y1, bbox.y2), std::max({bbox.x1, bbox.x2, width}),
                   std::max(bbox.y1, bbox.y2));
    } else {
        int units = font.GetUnitsPerEm();
        if (units == 0) units = 1000;
        double ascent, descent;
        VerticalMetrics(font, ascent, descent);
        const double k = units / 1000.0;
        box = Rect(0, -ascent * k, std::max(0.0, width * k), -descent * k);
    }
    Unicode units[4] = {0xFFFE, 0, 0, 0};
    UInt32 count = 0;
    font.MapToUnicode(ch.char_code, units, 4, count, true);
    bool blank = count > 0;
    for (UInt32 i = 0; i < count && i < 4; ++i) blank = blank && IsBlank(units[i]);
    const bool has_outline = !blank && box.x2 > box.x1 && box.y2 > box.y1;

    FontSeen& seen = m_fonts[font.GetSDFObj()];
    if (has_outline) {
        seen.any_outline = true;
        if (seen.has_extent) {
            ExtendBox(seen.extent, box);
        } else {
            seen.extent = box;
            seen.has_extent = true;
        }
    } else {
        seen.any_blank = true;
    }
    return has_outline;
}

bool MetricGlyphMeasure::IsBlankFont(const Font& font) {
    const auto it = m_fonts.find(font.GetSDFObj());
    return it != m_fonts.end() && !it->second.any_outline && it->second.any_blank;
}

Rect MetricGlyphMeasure::FontExtent(SDF::Obj* font) {
    const auto it = m_fonts.find(font);
    return it != m_fonts.end() && it->second.has_extent ? it->second.extent : Rect();
}

}  // namespace lum::PDF
