// Blocks into the store. Word breaks between the runs of a line are settled here, where the
// final neighbours are known.
#include <cmath>

#include "PDF/Text/TextBlocks.h"
#include "PDF/Text/TextEmit.h"
#include "PDF/Text/TextExtractorImpl.h"
#include "PDF/Text/TextLayout.h"
#include "PDF/Text/TextUnicode.h"

namespace lum::PDF {

namespace {

// Gaps up to this share of the font height are no gaps.
constexpr double kNoGap = 0.03;
// A gap beyond this share of the mean character width breaks a word (mirror mode: wider).
constexpr double kBreakGap = 0.3;
constexpr double kBreakGapMirror = 0.75;
// Quads whose edges and boxes agree this closely with the page axes are axis-aligned.
constexpr double kAxisTolerance = 0.001;

// Whether a word ends between p (left) and q (right) on one line.
bool IsWordBreak(const TRun& p, const TRun& q, bool mirror_mode) {
    const WordFrag& p_last = p.Frag(p.FragCount() - 1);
    const WordFrag& q_first = q.Frag(0);
    if (q.mp_prev == &p && (p_last.flags & e_space_after)) return true;
    if (q_first.flags & e_space_before) return true;
    if (mirror_mode) {
        const GlyphArena& arena = p.Arena();
        if (IsBlank(arena.Glyph(p_last, p_last.count - 1).unit) ||
            IsBlank(arena.Glyph(q_first, 0).unit))
            return true;
    }
    const double gap = q.m_box.x1 - p.m_box.x2;
    if (gap <= kNoGap * q.m_font_height) return false;
    const double mean = (CharWidth(p) + CharWidth(q)) * 0.5;
    return gap > (mirror_mode ? kBreakGapMirror : kBreakGap) * mean;
}

// Axis-aligned: no edge of the quad runs askew, and the box around the quad is the block's.
bool IsAxisAligned(const Quad& q, const Rect& box, const Rect& block_box) {
    for (int i = 0; i < 4; ++i) {
        const int j = (i + 1) % 4;
        const double dx = q.v[2 * j] - q.v[2 * i], dy = q.v[2 * j + 1] - q.v[2 * i + 1];
        if (std::fabs(dx) > kAxisTolerance && std::fabs(dy) > kAxisTolerance) return false;
    }
    return std::fabs(box.x1 - block_box.x1) < kAxisTolerance &&
           std::fabs(box.y1 - block_box.y1) < kAxisTolerance &&
           std::fabs(box.x2 - block_box.x2) < kAxisTolerance &&
           std::fabs(box.y2 - block_box.y2) < kAxisTolerance;
}

void EmitLine(TLine& line, bool axis_aligned, EmitContext& ctx) {
    ctx.store.BeginLine(BoxAround(line.m_quad), line.m_quad, axis_aligned);
    line.Emit(ctx);
    ctx.store.EndLine();
}

}  // namespace

void TRun::Emit(EmitContext& ctx) {
    if (m_frag_count == 0) return;
    if (Frag(0).flags & e_word_break_before) ctx.store.EndWord(false);

    // Hidden text: the first image drawn later that covers the whole run, and from there on
    // every image may hide a glyph.
    const size_t cover =
        ctx.remove_hidden ? ctx.occluders.FindCover(m_order, m_box) : ctx.occluders.Size();

    const Rect extent = ctx.extents ? ctx.extents->FontExtent(mp_font) : Rect();
    const bool common_height = !ApproxEqual(extent.y2 - extent.y1, 0);
    const GlyphArena& arena = *mp_arena;
    UInt32 extent_matrices = ~UInt32(0);
    Quad extent_quad;
    const bool test_hidden = cover < ctx.occluders.Size();
    for (UInt32 fi = 0; fi < m_frag_count; ++fi) {
        const WordFrag& f = Frag(fi);
        for (UInt32 gi = 0; gi < f.count; ++gi) {
            const GlyphRecord& g = arena.Glyph(f, gi);
            if (test_hidden && ctx.occluders.Hides(cover, BoxAround(arena.PageQuad(g)))) continue;
            Quad quad;
            if (common_height) {
                // Every glyph of the font gets the font's height: an x as tall as an l. The
                // extent through the glyph matrix is the same for all glyphs of an element
                // but for the glyph's own origin, which only moves it.
                if (g.matrices != extent_matrices) {
                    extent_matrices = g.matrices;
                    extent_quad = QuadThrough(arena.Matrices(g.matrices).glyph, extent);
                }
                // The text quad with the extent's heights, through the page matrix, corner by
                // corner in registers: a quad written half by half and read back whole stalls
                // on every glyph.
                const auto& m = arena.Matrices(g.matrices).page;
#pragma GCC unroll 4
                for (int i = 0; i < 8; i += 2) {
                    const double x = g.tx[i / 2], y = extent_quad.v[i + 1] + g.y;
                    quad.v[i] = m.m_a * x + m.m_c * y + m.m_h;
                    quad.v[i + 1] = m.m_b * x + m.m_d * y + m.m_v;
                }
            } else {
                quad = arena.PageQuad(g);
            }
            const Rect box = BoxAround(quad);
            ctx.store.StoreGlyph(g.unit, g.offset, box, quad, mp_font, m_font_height, m_red,
                                 m_green, m_blue);
        }
        if (fi + 1 < m_frag_count) ctx.store.EndWord(false);
    }
}

void TLine::Emit(EmitContext& ctx) {
    for (size_t i = 0; i + 1 < m_runs.size(); ++i) {
        TRun& p = *m_runs[i];
        TRun& q = *m_runs[i + 1];
        if (q.FragCount() > 0 && p.FragCount() > 0 && IsWordBreak(p, q, ctx.mirror_mode))
            q.Frag(0).flags |= e_word_break_before;
        p.Emit(ctx);
    }
    if (!m_runs.empty()) m_runs.back()->Emit(ctx);
}

void TPara::Emit(EmitContext& ctx) {
    ctx.store.BeginPara();
    for (TLine* line : m_lines)
        if (!line->m_runs.empty()) EmitLine(*line, line->m_runs.front()->m_axis_aligned, ctx);
    ctx.store.EndPara();
}

void WriteFlows(const std::vector<Flow>& flows, EmitContext& ctx) {
    for (const Flow& flow : flows) {
        ctx.store.BeginFlow();
        for (Block* b : flow.blocks) {
            switch (b->GetKind()) {
                case Block::e_run: {
                    ctx.store.BeginLine(BoxAround(b->m_quad), b->m_quad, b->m_axis_aligned);
                    b->Emit(ctx);
                    ctx.store.EndLine();
                    break;
                }
                case Block::e_line: {
                    TLine& line = static_cast<TLine&>(*b);
                    if (line.m_runs.empty()) break;
                    EmitLine(line, IsAxisAligned(line.m_quad, BoxAround(line.m_quad), line.m_box),
                             ctx);
                    break;
                }
                case Block::e_para:
                    b->Emit(ctx);
                    break;
            }
        }
    }
}

}  // namespace lum::PDF
