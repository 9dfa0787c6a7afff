#include "PDF/Text/DuplicateFinder.h"

#include <cmath>

namespace lum::PDF {

bool SameRun(const TRun& r, const TRun& s) {
    const double h = r.m_font_height;
    if (r.FragCount() != s.FragCount()) return false;
    if (!(std::fabs(r.m_box.x1 - s.m_box.x1) < kTwinHorizontalTolerance * h) ||
        !(std::fabs(r.m_box.x2 - s.m_box.x2) < kTwinHorizontalTolerance * h))
        return false;
    if (!(std::fabs(r.m_box.y1 - s.m_box.y1) < kTwinVerticalTolerance * h) ||
        !(std::fabs(r.m_box.y2 - s.m_box.y2) < kTwinVerticalTolerance * h))
        return false;
    const GlyphArena& ra = r.Arena();
    const GlyphArena& sa = s.Arena();
    for (UInt32 f = 0; f < r.FragCount(); ++f) {
        const WordFrag& rf = r.Frag(f);
        const WordFrag& sf = s.Frag(f);
        if (rf.count != sf.count) return false;
        for (UInt32 g = 0; g < rf.count; ++g)
            if (ra.Glyph(rf, g).unit != sa.Glyph(sf, g).unit) return false;
    }
    return true;
}

void DuplicateFinder::Collect(Block& block, std::vector<TRun*>& out) const {
    out.clear();
    auto add = [&out](TRun* r) { out.push_back(r); };
    switch (block.GetKind()) {
        case Block::e_run:
            out.push_back(static_cast<TRun*>(&block));
            break;
        case Block::e_line:
            static_cast<TLine&>(block).ForRunsNear(m_common, add);
            break;
        case Block::e_para:
            // A run lies within its line's box: lines apart from the common box hold none.
            for (const TLine* line : static_cast<TPara&>(block).m_lines)
                if (Touches(line->m_box, m_common)) line->ForRunsNear(m_common, add);
            break;
    }
}

bool DuplicateFinder::IsDuplicate(Block& a, Block& b) {
    if (!m_common.IntersectRect(a.m_box, b.m_box)) return false;
    Collect(a, m_first);
    if (m_first.empty()) return false;
    Collect(b, m_second);
    if (m_second.empty()) return false;

    if (++m_mark == 0) ++m_mark;  // 0 is the mark of a fresh run
    bool found = false;
    for (TRun* r : m_first) {
        for (TRun* s : m_second) {
            if (!SameRun(*r, *s)) continue;
            // The surviving copy takes the later copy's character offsets.
            GlyphArena& arena = r->Arena();
            for (UInt32 f = 0; f < r->FragCount(); ++f) {
                const WordFrag& rf = r->Frag(f);
                const WordFrag& sf = s->Frag(f);
                for (UInt32 g = 0; g < rf.count; ++g) {
                    GlyphRecord& rg = arena.Glyph(rf, g);
                    const GlyphRecord& sg = s->Arena().Glyph(sf, g);
                    if (rg.offset < sg.offset) rg.offset = sg.offset;
                }
            }
            s->m_twin_mark = m_mark;
            found = true;
            break;
        }
    }
    return found;
}

}  // namespace lum::PDF
