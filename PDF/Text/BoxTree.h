#pragma once
// The boxes of a sorted list of blocks, some of them taken: a tree over the positions keeps,
// for each range, the extreme edges of the live boxes, so that a search walks only the ranges
// whose extremes allow what it looks for. A box that is not ordered or holds a NaN compares
// unlike the others: its range is always walked, and its own test decides.
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "Common/Types.h"
#include "PDF/Rect.h"

namespace lum::PDF {

class BoxTree {
public:
    struct Node {
        UInt32 live = 0, odd = 0;  // live positions; of those, the odd boxes
        // Extremes of the other live boxes.
        double min_x1, max_x1, min_x2, max_x2, min_y1, max_y1, min_y2, max_y2;
    };

    // All positions live.
    void Build(const std::vector<const Rect*>& boxes);
    void Take(size_t pos);

    // Whether a box is ordered and free of NaN: the extremes bound only such boxes.
    static bool Plain(const Rect& r) { return r.x1 <= r.x2 && r.y1 <= r.y2; }

    // Calls leaf(pos) for the live positions in [from, to), forward or backward, walking only
    // into ranges that hold an odd box or for which test(node) holds (tested on arrival, so a
    // search may narrow as it goes); stops when leaf answers true, and answers whether it did.
    template <class Test, class Leaf>
    bool Walk(size_t from, size_t to, bool forward, Test test, Leaf leaf) const {
        if (from >= to || m_nodes.empty()) return false;
        return Descend(1, 0, m_leaves, from, to, forward, test, leaf);
    }

private:
    static constexpr double kInf = std::numeric_limits<double>::infinity();
    void Pull(size_t node);

    template <class Test, class Leaf>
    bool Descend(size_t node, size_t lo, size_t hi, size_t from, size_t to, bool forward,
                 Test& test, Leaf& leaf) const {
        // The depth is the tree's height, the log of the block count.
        const Node& n = m_nodes[node];
        if (n.live == 0 || hi <= from || to <= lo) return false;
        if (n.odd == 0 && !test(n)) return false;
        if (node >= m_leaves) return leaf(lo);
        const size_t mid = lo + (hi - lo) / 2;
        if (forward)
            return Descend(2 * node, lo, mid, from, to, forward, test, leaf) ||
                   Descend(2 * node + 1, mid, hi, from, to, forward, test, leaf);
        return Descend(2 * node + 1, mid, hi, from, to, forward, test, leaf) ||
               Descend(2 * node, lo, mid, from, to, forward, test, leaf);
    }

    std::vector<Node> m_nodes;  // heap order: 1 is the root, leaves from m_leaves on
    size_t m_leaves = 0;
};

}  // namespace lum::PDF
