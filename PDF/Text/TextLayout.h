#pragma once
// The blocks of one text direction on a page, and the columns (flows) they are cut into.
#include <vector>

#include "Common/Types.h"
#include "PDF/Text/CandidateIndex.h"
#include "PDF/Text/TextBlocks.h"
#include "PDF/Text/TwinIndex.h"

namespace lum::PDF {

class DuplicateFinder;

// A column in reading order: its blocks from top to bottom, and the box around them.
struct Flow {
    std::vector<Block*> blocks;
    Rect box;
};

class TextLayout {
public:
    void Reset(UInt32 flags) {
        m_blocks.clear();
        m_flags = flags;
    }
    void Add(Block* b) { m_blocks.push_back(b); }
    size_t Count() const { return m_blocks.size(); }

    // Sorts the blocks from the top, removes duplicates, joins lines until nothing changes,
    // then joins paragraphs in one pass.
    void Reflow(BlockPool& pool, DuplicateFinder& finder);
    // Cuts the blocks into flows, appended to `out` in reading order; empties the layout.
    void BuildFlows(std::vector<Flow>& out);

    std::vector<Block*> m_blocks;

private:
    void SortFromTop();
    void PurgeDuplicates(DuplicateFinder& finder);
    bool JoinLinesOnce(BlockPool& pool);
    void JoinParagraphs(BlockPool& pool);
    // Drops the removed (null) positions, keeping the order.
    void Compact();

    UInt32 m_flags = 0;
    CandidateIndex m_open;         // scratch: blocks a pass may still join
    std::vector<double> m_radius;  // scratch: the join radius of each position
    TwinIndex m_twins;             // scratch: the runs of the purge, by their letters
    std::vector<size_t> m_candidates;
};

}  // namespace lum::PDF
