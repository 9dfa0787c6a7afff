// Reflow of a finished layout: the sort, the purge of duplicates, and the joining of blocks
// into lines and paragraphs by geometry alone.
#include "PDF/Text/TextLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Common/Limits.h"
#include "PDF/Text/DuplicateFinder.h"
#include "PDF/Text/TextFlags.h"

namespace lum::PDF {

namespace {

// Higher top first, then further left; plain comparisons of the doubles.
bool FromTop(const Block* a, const Block* b) {
    if (a->m_box.y2 != b->m_box.y2) return a->m_box.y2 > b->m_box.y2;
    return a->m_box.x1 < b->m_box.x1;
}

// Appends the runs of a line or of all lines of a paragraph to `out`, or the run itself.
template <class Keep>
void AppendRuns(Block& b, std::vector<Block*>& out, Keep keep) {
    ForEachRun(b, [&](TRun& r) {
        if (keep(r)) out.push_back(&r);
    });
}

// The horizontal extent of a box, whichever way its edges stand; NaN when an edge is NaN.
struct Extent {
    double lo, hi;
};
constexpr double kInf = std::numeric_limits<double>::infinity();
// The extent of a block that joins nothing.
constexpr Extent kNowhere{kInf, -kInf};

Extent ExtentOf(const Rect& box) {
    if (std::isnan(box.x1) || std::isnan(box.x2)) return {box.x1 + box.x2, box.x1 + box.x2};
    return {std::min(box.x1, box.x2), std::max(box.x1, box.x2)};
}

// A paragraph joins no line.
Extent LineExtent(const Block& b) {
    return b.GetKind() == Block::e_para ? kNowhere : ExtentOf(b.m_box);
}

// Whether an open block of extent `open` is met by a walk for a block of extent `e`: a NaN
// edge meets everything.
bool Meet(Extent open, Extent e) {
    if (std::isnan(open.lo) || std::isnan(open.hi)) open = {-kInf, kInf};
    if (std::isnan(e.lo) || std::isnan(e.hi)) e = {-kInf, kInf};
    return open.lo <= e.hi && open.hi >= e.lo;
}

CandidateIndex::Shape ShapeOf(const Block& b) {
    return {b.m_box.x1, b.m_box.x2, b.m_box.y1, b.m_font_height};
}

// The larger radius; NaN (a run that JoinScore can't bound) wins.
double MaxRadius(double a, double b) { return std::isnan(a) || std::isnan(b) ? a + b : std::max(a, b); }

// Two blocks join into a line only when their extents lie within 1.5 character widths of one
// of the runs at the joint (the gap of JoinScore); twice the widest of a block's runs bounds
// that with room for rounding.
double LineRadius(const Block& b) {
    switch (b.GetKind()) {
        case Block::e_run:
            return 2 * CharWidth(static_cast<const TRun&>(b));
        case Block::e_line: {
            double r = 0;
            for (const TRun* run : static_cast<const TLine&>(b).m_runs)
                r = MaxRadius(r, 2 * CharWidth(*run));
            return r;
        }
        case Block::e_para:
            break;
    }
    return 0;
}

}  // namespace

void TextLayout::SortFromTop() { std::stable_sort(m_blocks.begin(), m_blocks.end(), FromTop); }

void TextLayout::Compact() {
    m_blocks.erase(std::remove(m_blocks.begin(), m_blocks.end(), nullptr), m_blocks.end());
}

void TextLayout::Reflow(BlockPool& pool, DuplicateFinder& finder) {
    if (m_blocks.empty()) return;
    SortFromTop();
    if (!(m_flags & e_no_dup_remove)) PurgeDuplicates(finder);
    // Each pass that changes anything removes a block, so the passes are bounded by the
    // count; the cap bounds the work of pages built to join one pair per pass.
    for (int pass = 0; pass < Limits::kMaxReflowPasses; ++pass)
        if (!JoinLinesOnce(pool)) break;
    JoinParagraphs(pool);
}

void TextLayout::PurgeDuplicates(DuplicateFinder& finder) {
    bool changed = true;
    while (changed) {
        changed = false;
        const size_t n = m_blocks.size();
        m_open.Reset(n);
        bool indexed = false;
        for (size_t pos = 0; pos < n; ++pos) {
            Block* b = m_blocks[pos];
            const Rect box = b->m_box;
            const Extent e = ExtentOf(box);
            // Copies overlap: the walk leaves out blocks beside this one and drops those
            // wholly above it (sorted by falling top, nothing that follows reaches them),
            // until it meets a block that may hold a copy.
            size_t first = n;
            m_open.Walk(box.y2, e.lo, e.hi, 0, [&](size_t apos) {
                if (!(m_blocks[apos]->m_box.y1 > box.y2)) {
                    first = apos;
                    return true;
                }
                m_open.Remove(apos);
                return false;
            });
            if (first == n) {
                m_open.Set(pos, e.lo, e.hi, box.y1, 0);
                continue;
            }
            // The first block met is most often the copy (a page drawn twice).
            size_t twin = finder.IsDuplicate(*m_blocks[first], *b) ? first : n;
            // Else a copy holds a run of the same letters at nearly the same place: the
            // blocks after the first holding one are tried in order of position, as the walk
            // would meet them, and the first copy wins. Most pages have no block near enough
            // to be a copy and never need the index.
            if (twin == n) {
                if (!indexed) {
                    m_twins.Build(m_blocks, n);
                    indexed = true;
                }
                m_candidates.clear();
                m_twins.Candidates(pos, m_candidates);
                std::sort(m_candidates.begin(), m_candidates.end());
                m_candidates.erase(std::unique(m_candidates.begin(), m_candidates.end()),
                                   m_candidates.end());
                for (size_t apos : m_candidates) {
                    if (apos <= first || !m_open.IsOpen(apos)) continue;
                    const Block* a = m_blocks[apos];
                    if (a->m_box.y1 > box.y2 || !Meet(ExtentOf(a->m_box), e)) continue;
                    if (finder.IsDuplicate(*m_blocks[apos], *b)) {
                        twin = apos;
                        break;
                    }
                }
            }
            // The blocks wholly above this one leave, those after its copy at a later turn.
            m_open.RemoveAbove(box.y2, twin == n ? pos : twin);
            if (twin == n) {
                m_open.Set(pos, e.lo, e.hi, box.y1, 0);
                continue;
            }
            changed = true;
            Block* a = m_blocks[twin];
            // Both blocks are taken apart: a's runs go to the end of the list, and of b only
            // the runs without a twin.
            AppendRuns(*a, m_blocks, [](const TRun&) { return true; });
            if (b->GetKind() != Block::e_run)
                AppendRuns(*b, m_blocks, [&](const TRun& r) { return !finder.InSet(r); });
            m_blocks[twin] = nullptr;
            m_blocks[pos] = nullptr;
            m_open.Remove(twin);
            if (indexed) {
                m_twins.Remove(twin);
                m_twins.Remove(pos);
            }
        }
        Compact();
    }
}

bool TextLayout::JoinLinesOnce(BlockPool& pool) {
    const size_t n = m_blocks.size();
    m_open.Reset(n, CandidateIndex::e_overlap);
    m_radius.resize(n);
    for (size_t pos = 0; pos < n; ++pos) m_radius[pos] = LineRadius(*m_blocks[pos]);
    for (size_t pos = 0; pos < n; ++pos) {
        Block* b = m_blocks[pos];
        const Extent e = LineExtent(*b);
        // A run never joins a run it overlaps by more than kerning: on words stacked on one
        // spot the walk skips them in bulk.
        const bool run = b->GetKind() == Block::e_run;
        const CandidateIndex::Shape shape = ShapeOf(*b);
        const CandidateIndex::Probe probe{shape, kKerningOverlap, run};
        bool merged = false;
        m_open.Walk(b->m_box.y2, e.lo, e.hi, m_radius[pos], [&](size_t apos) {
            Block* a = m_blocks[apos];
            if (a->LineReach() > b->m_box.y2) {
                m_open.Remove(apos);
                return false;
            }
            Block* m = a->MergeLine(*b, pool);
            if (!m) return false;
            m_blocks[apos] = m;
            m_blocks[pos] = nullptr;
            // The joined block holds the runs of both: the larger radius covers them all.
            m_radius[apos] = MaxRadius(m_radius[apos], m_radius[pos]);
            const Extent me = LineExtent(*m);
            m_open.Set(apos, me.lo, me.hi, m->LineReach(), m_radius[apos]);
            merged = true;
            return true;
        }, probe);
        if (!merged) m_open.Set(pos, e.lo, e.hi, b->LineReach(), m_radius[pos], run ? &shape : nullptr);
    }
    Compact();
    return m_blocks.size() != n;
}

void TextLayout::JoinParagraphs(BlockPool& pool) {
    const size_t n = m_blocks.size();
    m_open.Reset(n, CandidateIndex::e_step);
    for (size_t pos = 0; pos < n; ++pos) {
        Block* b = m_blocks[pos];
        // The lines of a paragraph overlap horizontally; a paragraph joins nothing that
        // follows.
        const bool para = b->GetKind() == Block::e_para;
        const Extent e = para ? kNowhere : ExtentOf(b->m_box);
        // A line is never the next of a line less than a minimal step above it: on words
        // stacked on one spot the walk skips them in bulk.
        const CandidateIndex::Shape shape = ShapeOf(*b);
        const CandidateIndex::Probe probe{shape, kMinParaStep, !para};
        bool merged = false;
        m_open.Walk(b->m_box.y2, e.lo, e.hi, 0, [&](size_t apos) {
            Block* a = m_blocks[apos];
            if (a->ParaReach() > b->m_box.y2) {
                m_open.Remove(apos);
                return false;
            }
            Block* m = a->MergePara(*b, pool);
            if (!m) return false;
            m_blocks[apos] = m;
            m_blocks[pos] = nullptr;
            const Extent me = ExtentOf(m->m_box);
            m_open.Set(apos, me.lo, me.hi, m->ParaReach(), 0);
            merged = true;
            return true;
        }, probe);
        if (!merged) {
            const Extent own = ExtentOf(b->m_box);
            m_open.Set(pos, own.lo, own.hi, b->ParaReach(), 0, para ? nullptr : &shape);
        }
    }
    Compact();
}

}  // namespace lum::PDF
