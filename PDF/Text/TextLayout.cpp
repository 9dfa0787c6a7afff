// Reflow of a finished layout: the sort, the purge of duplicates, and the joining of blocks
// into lines and paragraphs by geometry alone.
#include "PDF/Text/TextLayout.h"

#include <algorithm>

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
    auto add_line = [&](const TLine& line) {
        for (TRun* r : line.m_runs)
            if (keep(*r)) out.push_back(r);
    };
    switch (b.GetKind()) {
        case Block::e_run:
            if (keep(static_cast<TRun&>(b))) out.push_back(&b);
            break;
        case Block::e_line:
            add_line(static_cast<TLine&>(b));
            break;
        case Block::e_para:
            for (const TLine* line : static_cast<TPara&>(b).m_lines) add_line(*line);
            break;
    }
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
        m_candidates.clear();
        const size_t n = m_blocks.size();
        for (size_t pos = 0; pos < n; ++pos) {
            Block* b = m_blocks[pos];
            bool taken_apart = false;
            size_t keep = 0;
            size_t i = 0;
            for (; i < m_candidates.size(); ++i) {
                const size_t apos = m_candidates[i];
                Block* a = m_blocks[apos];
                // Sorted by falling top: nothing that follows reaches a block wholly above.
                if (a->m_box.y1 > b->m_box.y2) continue;
                if (finder.IsDuplicate(*a, *b)) {
                    changed = true;
                    // Both blocks are taken apart: a's runs go to the end of the list, and
                    // of b only the runs without a twin.
                    AppendRuns(*a, m_blocks, [](const TRun&) { return true; });
                    if (b->GetKind() != Block::e_run)
                        AppendRuns(*b, m_blocks, [&](const TRun& r) { return !finder.InSet(r); });
                    m_blocks[apos] = nullptr;
                    m_blocks[pos] = nullptr;
                    taken_apart = true;
                    ++i;  // a's entry goes too
                    break;
                }
                m_candidates[keep++] = apos;
            }
            // The entries behind the one that ended the walk stay.
            for (; i < m_candidates.size(); ++i) m_candidates[keep++] = m_candidates[i];
            m_candidates.resize(keep);
            if (!taken_apart) m_candidates.push_back(pos);
        }
        Compact();
    }
}

bool TextLayout::JoinLinesOnce(BlockPool& pool) {
    const size_t before = m_blocks.size();
    m_candidates.clear();
    for (size_t pos = 0; pos < m_blocks.size(); ++pos) {
        Block* b = m_blocks[pos];
        bool merged = false;
        size_t keep = 0;
        size_t i = 0;
        for (; i < m_candidates.size(); ++i) {
            const size_t apos = m_candidates[i];
            Block* a = m_blocks[apos];
            if (a->LineReach() > b->m_box.y2) continue;
            m_candidates[keep++] = apos;
            if (Block* m = a->MergeLine(*b, pool)) {
                m_blocks[apos] = m;
                m_blocks[pos] = nullptr;
                merged = true;
                ++i;
                break;
            }
        }
        for (; i < m_candidates.size(); ++i) m_candidates[keep++] = m_candidates[i];
        m_candidates.resize(keep);
        if (!merged) m_candidates.push_back(pos);
    }
    Compact();
    return m_blocks.size() != before;
}

void TextLayout::JoinParagraphs(BlockPool& pool) {
    m_candidates.clear();
    for (size_t pos = 0; pos < m_blocks.size(); ++pos) {
        Block* b = m_blocks[pos];
        bool merged = false;
        size_t keep = 0;
        size_t i = 0;
        for (; i < m_candidates.size(); ++i) {
            const size_t apos = m_candidates[i];
            Block* a = m_blocks[apos];
            if (a->ParaReach() > b->m_box.y2) continue;
            m_candidates[keep++] = apos;
            if (Block* m = a->MergePara(*b, pool)) {
                m_blocks[apos] = m;
                m_blocks[pos] = nullptr;
                merged = true;
                ++i;
                break;
            }
        }
        for (; i < m_candidates.size(); ++i) m_candidates[keep++] = m_candidates[i];
        m_candidates.resize(keep);
        if (!merged) m_candidates.push_back(pos);
    }
    Compact();
}

}  // namespace lum::PDF
