#pragma once
// The runs of a layout's blocks indexed for the purge of copies: a copy has the same letters
// as its original and stands at nearly the same place, so the runs are grouped by a hash of
// their letters, and the search for the copies of a block meets only runs of its own letters
// near it, however many other runs lie on the same spot. A large group (one word drawn all
// over the page) keeps a tree over its runs with the extreme places of each range.
#include <cstdint>
#include <limits>
#include <vector>

#include "Common/Types.h"
#include "PDF/Text/TextBlocks.h"

namespace lum::PDF {

class TwinIndex {
public:
    // Indexes the runs of blocks [0, n); a null block holds none.
    void Build(const std::vector<Block*>& blocks, size_t n);
    // Takes the runs of the block at `pos` out of every later search.
    void Remove(size_t pos);

    // Appends to `out` the positions before `pos`, not removed, holding a run that SameRun
    // could take for a copy of a run of the block at `pos` (a position once per such run, in
    // no order).
    void Candidates(size_t pos, std::vector<size_t>& out) const;

private:
    // A run of an indexed block, with the ranges where the x1 and y1 of its copies lie.
    struct Entry {
        double lo_x, hi_x, lo_y, hi_y;
        UInt32 pos;
        UInt32 group;
        bool removed;
    };
    // A run of the block at a position, as a search for its copies.
    struct Query {
        UInt32 group;
        double x1, y1;
    };
    struct Node {
        UInt32 open;
        double lo_x, hi_x, lo_y, hi_y;  // extremes of the open entries
    };
    static constexpr double kInf = std::numeric_limits<double>::infinity();
    static constexpr Node kClosedNode{0, kInf, -kInf, kInf, -kInf};

    UInt32 GroupOf(std::uint64_t key);
    void PullOne(size_t node);
    bool Large(UInt32 group) const;
    void Descend(size_t node, size_t lo, size_t hi, size_t from, size_t to, double x, double y,
                 std::vector<size_t>& out) const;

    // Letter hashes to groups: open addressing, a power of two in size.
    std::vector<std::uint64_t> m_keys;
    std::vector<UInt32> m_groups;
    std::vector<UInt32> m_group_first;  // entries of group g: [m_group_first[g], [g+1])
    std::vector<Entry> m_entries;       // by group, then position
    std::vector<UInt32> m_first;        // entries of position p: m_slots[m_first[p], [p+1])
    std::vector<UInt32> m_slots;
    std::vector<UInt32> m_query_first;  // queries of position p: [m_query_first[p], [p+1])
    std::vector<Query> m_queries;
    std::vector<Entry> m_scratch;
    std::vector<Node> m_nodes;  // heap order over m_entries: 1 is the root; empty without a
                                // large group. Removed entries are closed.
    size_t m_leaves = 0;
};

}  // namespace lum::PDF
