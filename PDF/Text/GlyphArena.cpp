#include "PDF/Text/GlyphArena.h"

#include "Common/Exception.h"

namespace lum::PDF {

namespace {

[[noreturn]] void RaiseUninitializedMatrix() {
    throw Common::Exception("false", __LINE__, __FILE__, "lum::PDF::WordFrag::AddGlyph",
                            "Glyph mtx uninitialized. Quad/bbox computation is impossible");
}

}  // namespace

void GlyphArena::AddGlyph(WordFrag& f, const Rect& layout_box, const Quad& page_quad,
                          const Quad& text_quad, Unicode unit, Int32 offset, double baseline,
                          bool at_back, double x, double y, UInt32 matrices) {
    if (f.count > 0) {
        ExtendBox(f.box, layout_box);
        MergeQuads(f.quad, page_quad);
    } else {
        f.box = layout_box;
        f.quad = page_quad;
        f.first = GlyphCount();
        f.reversed = !at_back;
    }
    const GlyphMatrices& m = m_matrices[matrices];
    if (m.page_zero ||
        (m.glyph_zero && ApproxEqual(m.glyph.m_h + x, 0) && ApproxEqual(m.glyph.m_v + y, 0)))
        RaiseUninitializedMatrix();
    f.baseline = baseline;

    GlyphRecord& g = m_glyphs.emplace_back();
    g.page_quad = page_quad;
    g.text_quad = text_quad;
    g.x = x;
    g.y = y;
    g.matrices = matrices;
    g.offset = offset;
    g.unit = unit;
    ++f.count;
}

}  // namespace lum::PDF
