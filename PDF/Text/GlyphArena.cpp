#include "PDF/Text/GlyphArena.h"

#include "Common/Exception.h"

namespace lum::PDF {

namespace {

[[noreturn]] void RaiseUninitializedMatrix() {
    throw Common::Exception("false", __LINE__, __FILE__, "lum::PDF::WordFrag::AddGlyph",
                            "Glyph mtx uninitialized. Quad/bbox computation is impossible");
}

}  // namespace

void GlyphArena::CheckMatrices(const GlyphMatrices& m, double x, double y) {
    if (m.page_zero ||
        (m.glyph_zero && ApproxEqual(m.glyph.m_h + x, 0) && ApproxEqual(m.glyph.m_v + y, 0)))
        RaiseUninitializedMatrix();
}

}  // namespace lum::PDF
