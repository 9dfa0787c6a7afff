#pragma once
// The runs of a layout's blocks indexed for the purge of copies: a copy has the same letters
// as its original and stands at nearly the same place, so the runs are grouped by a hash of
// their letters, and within a group a tree over the positions keeps the extreme reach of each
// range. The search for the copies of a block then meets only runs of its own letters near
// it, however many other runs lie on the same spot.
#include <cstdint>
#include <vector>

#include "Common/Types.h"
#include "PDF/Text/TextBlocks.h"

namespace lum::PDF {

class TwinIndex {
public:
    // Indexes the runs of blocks [0, n), all closed. Null blocks hold nothing.
    void Build(const std::vector<Block*>& blocks, size_t n);
    // Opens or closes the runs of the block at `pos`.
    void Open(size_t pos) { Mark(pos, 1); }
    void Close(size_t pos) { Mark(pos, 0); }

    // Appends to `out` the open positions holding a run that SameRun could take for a copy
    // of a run of `b` (each position once per such run, in no order).
    void Candidates(Block& b, std::vector<size_t>& out) const;

    // The hash of a run's letters: equal for runs that SameRun takes for copies.
    static std::uint64_t LetterKey(const TRun& r);

private:
    // A run of an indexed block with the ranges where the x1 and y1 of its copies may lie.
    struct Entry {
        std::uint64_t key;
        UInt32 pos;
        double lo_x, hi_x, lo_y, hi_y;
    };
    struct Node {
        UInt32 open;
        double lo_x, hi_x, lo_y, hi_y;  // extremes of the open entries
    };

    void Mark(size_t pos, UInt32 open);
    void Pull(size_t node);
    // Adds the entry of `r` at `pos` unless no run can be its copy.
    void AddEntry(const TRun& r, size_t pos);
    void Descend(size_t node, size_t lo, size_t hi, size_t from, size_t to, double x, double y,
                 std::vector<size_t>& out) const;

    std::vector<Entry> m_entries;   // by key, then position
    std::vector<UInt32> m_first;    // entries of position p: m_slots[m_first[p], m_first[p+1])
    std::vector<UInt32> m_slots;
    std::vector<Node> m_nodes;      // heap order over m_entries: 1 is the root
    size_t m_leaves = 0;
};

}  // namespace lum::PDF
