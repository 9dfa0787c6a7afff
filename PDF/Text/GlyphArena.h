#pragma once
// The glyphs of one page as the capture found them, and the fragments (stretches of glyphs
// without white space) that group them. Both live in flat tables that are reused from page to
// page: a glyph costs no allocation of its own.
#include <algorithm>
#include <vector>

#include "Common/Types.h"
#include "PDF/Text/TextGeometry.h"

namespace lum::PDF {

// Flags of a fragment.
enum WordFragFlag : UInt8 {
    e_word_break_before = 1,  // at emission: a word ends in front of this run
    e_space_before = 2,       // a white-space glyph stood in front of this fragment
    e_space_after = 4,        // a white-space glyph followed it within its element
};

// The two matrices of an element: glyph units to the text frame before a character's own
// translation (the scale S), and text frame to page frame (M).
struct GlyphMatrices {
    GlyphMatrices(const Matrix2D& g, const Matrix2D& p, bool g_zero, bool p_zero)
        : glyph(g), page(p), glyph_zero(g_zero), page_zero(p_zero) {}

    Matrix2D glyph;
    Matrix2D page;
    // Whether the glyph matrix without its translation, and the page matrix, are zero: then
    // no glyph of the element can be measured.
    bool glyph_zero = false;
    bool page_zero = false;
};

// A glyph keeps of its quads what the emission reads most (the text quad's x coordinates)
// and what gives the rest by the steps the capture took: the y range of the text quad, and
// the element's matrices. A page of a million glyphs holds 72 MB of records, not 160 MB.
struct GlyphRecord {
    GlyphRecord() = default;
    // Each field stored once, straight into the table's slot (see AddGlyph).
    GlyphRecord(const double* quad, double y1, double y2, double origin_y, UInt32 m, Int32 off,
                Unicode u, bool adv)
        : tx{quad[0], quad[2], quad[4], quad[6]}, ty1(y1), ty2(y2), y(origin_y), matrices(m),
          offset(off), unit(u), advance(adv) {}

    double tx[4] = {};       // x of the text quad's corners
    double ty1 = 0, ty2 = 0;  // y range of the text quad (with `advance`, of the advance box)
    // The character's origin in the text frame: the glyph matrix is S moved by it.
    double y = 0;
    UInt32 matrices = 0;  // index of the element's GlyphMatrices
    Int32 offset = 0;     // offset of the character code in the page's text strings
    Unicode unit = 0;
    // Invisible text measured by its advance box, which stood for the glyph's box.
    bool advance = false;
};

// A stretch of glyphs without white space: a word or part of one. Its glyphs are a range of
// the arena's table; `reversed` fragments (mirror mode, where glyphs arrive in visual order)
// read that range backwards.
struct WordFrag {
    UInt32 first = 0;
    UInt32 count = 0;
    UInt8 flags = 0;
    bool reversed = false;
    Rect box;  // layout frame
    double baseline = 0;
    Quad quad;  // page frame

    bool Empty() const { return count == 0; }
};

class GlyphArena {
public:
    void Clear() {
        m_glyphs.clear();
        m_frags.clear();
        m_matrices.clear();
    }

    // Glyph i of `f` in logical order.
    GlyphRecord& Glyph(const WordFrag& f, UInt32 i) {
        return m_glyphs[f.reversed ? f.first + f.count - 1 - i : f.first + i];
    }
    const GlyphRecord& Glyph(const WordFrag& f, UInt32 i) const {
        return m_glyphs[f.reversed ? f.first + f.count - 1 - i : f.first + i];
    }
    WordFrag& Frag(UInt32 i) { return m_frags[i]; }
    const WordFrag& Frag(UInt32 i) const { return m_frags[i]; }
    const GlyphMatrices& Matrices(UInt32 i) const { return m_matrices[i]; }

    // The box around the glyph's text quad (with `advance`, the advance box).
    static Rect TextBox(const GlyphRecord& g) {
        const double* x = g.tx;
        if (g.advance) return Rect(x[0], g.ty1, x[1], g.ty2);
        return Rect(std::min(std::min(x[0], x[1]), std::min(x[2], x[3])), g.ty1,
                    std::max(std::max(x[0], x[1]), std::max(x[2], x[3])), g.ty2);
    }
    // The glyph's quad in the page frame (mirrored in mirror mode), as the capture built it.
    Quad PageQuad(const GlyphRecord& g) const {
        return QuadThrough(m_matrices[g.matrices].page, TextBox(g));
    }

    UInt32 AddMatrices(const Matrix2D& glyph, const Matrix2D& page) {
        Matrix2D linear = glyph;
        linear.m_h = linear.m_v = 0;
        // Built in place, as the glyph records are.
        m_matrices.emplace_back(glyph, page, IsZeroMatrix(linear), IsZeroMatrix(page));
        return static_cast<UInt32>(m_matrices.size() - 1);
    }
    UInt32 GlyphCount() const { return static_cast<UInt32>(m_glyphs.size()); }
    UInt32 FragCount() const { return static_cast<UInt32>(m_frags.size()); }

    // Adds a glyph to the open fragment `f`, whose glyphs are the last ones of the table.
    // Raises when the glyph matrix or the page matrix is zero: no box can be computed.
    // Inline, so that the boxes the capture just computed pass in registers: read back from
    // memory in other widths than they were written, they stalled on every glyph.
    // `text_box` is the box around `text_quad`, or with `advance` the box it was laid on.
    void AddGlyph(WordFrag& f, const Rect& layout_box, const Quad& page_quad,
                  const Quad& text_quad, const Rect& text_box, bool advance, Unicode unit,
                  Int32 offset, double baseline, bool at_back, double x, double y,
                  UInt32 matrices) {
        if (f.count > 0) {
            ExtendBox(f.box, layout_box);
            MergeQuads(f.quad, page_quad);
        } else {
            f.box.x1 = layout_box.x1;
            f.box.y1 = layout_box.y1;
            f.box.x2 = layout_box.x2;
            f.box.y2 = layout_box.y2;
            f.box.mp_rect = layout_box.mp_rect;
            f.quad = page_quad;
            f.first = GlyphCount();
            f.reversed = !at_back;
        }
        const GlyphMatrices& m = m_matrices[matrices];
        if (m.page_zero || m.glyph_zero) [[unlikely]]
            CheckMatrices(m, x, y);
        f.baseline = baseline;
        // Built in place: a record built on the stack and copied was written in 4- and 8-byte
        // pieces and read back in 16-byte ones, a store-forwarding stall per glyph; a default
        // record first would be zeroed and then overwritten.
        m_glyphs.emplace_back(text_quad.v, text_box.y1, text_box.y2, y, matrices, offset, unit,
                              advance);
        ++f.count;
    }
    // Appends the finished fragment `f` to the table of fragments; answers its index.
    UInt32 CommitFrag(const WordFrag& f) {
        m_frags.push_back(f);
        return static_cast<UInt32>(m_frags.size() - 1);
    }

private:
    // Raises when the page matrix is zero, or the glyph matrix with the origin (x, y) is:
    // no box can be computed.
    [[gnu::noinline]] static void CheckMatrices(const GlyphMatrices& m, double x, double y);

    std::vector<GlyphRecord> m_glyphs;
    std::vector<WordFrag> m_frags;
    std::vector<GlyphMatrices> m_matrices;
};

}  // namespace lum::PDF
