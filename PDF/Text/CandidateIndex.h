#pragma once
// The blocks still open to a join during one pass over a layout, in the pass's order. The pass
// walks them from the front for each new block: a block gone out of vertical reach leaves the
// list when the walk meets it, the first one that joins ends the walk. Most blocks of a wide
// page can do neither, since a join needs the two boxes horizontally within a radius: a tree
// over the positions keeps, for each range, the extreme reach and edges, and the walk skips
// every range where no block can leave or join. It meets the same blocks in the same order as
// the plain walk, only without those that would have stayed untouched.
#include <cmath>
#include <limits>
#include <vector>

#include "Common/Types.h"

namespace lum::PDF {

class CandidateIndex {
public:
    // Empties the index for positions [0, n).
    void Reset(size_t n);

    // Opens position `pos` (or updates it): the block reaches down to `reach` and spans
    // [x1, x2]; it joins boxes within `radius` of it. NaN makes a block always met.
    void Set(size_t pos, double x1, double x2, double reach, double radius);
    void Remove(size_t pos);

    // Calls visit(pos) in order of position for each open block that reaches above `y` or may
    // join [x1, x2] within `radius` (the larger of the two radii counts); stops when visit
    // answers true. visit may Set or Remove the position it was given.
    template <class Visit>
    void Walk(double y, double x1, double x2, double radius, Visit visit);

private:
    struct Node {
        double reach;        // highest reach
        double lo, lo_r;     // lowest x1, and x1 less the radius
        double hi, hi_r;     // highest x2, and x2 plus the radius
        size_t open;         // open positions
    };
    static constexpr double kInf = std::numeric_limits<double>::infinity();
    static constexpr Node kClosed{-kInf, kInf, kInf, -kInf, -kInf, 0};

    void Pull(size_t node);
    bool Meets(const Node& n) const {
        if (n.open == 0) return false;
        if (n.reach > m_y) return true;
        const double lo = std::min(n.lo_r, n.lo - m_radius);
        const double hi = std::max(n.hi_r, n.hi + m_radius);
        return lo <= m_x2 && hi >= m_x1;
    }
    template <class Visit>
    bool Descend(size_t node, Visit& visit);

    std::vector<Node> m_nodes;  // heap order: 1 is the root, leaves from m_leaves on
    size_t m_leaves = 0;
    double m_y = 0, m_x1 = 0, m_x2 = 0, m_radius = 0;
};

template <class Visit>
void CandidateIndex::Walk(double y, double x1, double x2, double radius, Visit visit) {
    if (m_nodes.empty()) return;
    m_y = y;
    // A box or radius that compares with nothing meets every block, as the plain walk would.
    const bool unknown = std::isnan(x1) || std::isnan(x2) || std::isnan(radius);
    m_x1 = unknown ? -kInf : x1;
    m_x2 = unknown ? kInf : x2;
    m_radius = unknown ? kInf : radius;
    Descend(1, visit);
}

template <class Visit>
bool CandidateIndex::Descend(size_t node, Visit& visit) {
    // The depth is the tree's height, the log of the block count.
    if (!Meets(m_nodes[node])) return false;
    if (node >= m_leaves) return visit(node - m_leaves);
    return Descend(2 * node, visit) || Descend(2 * node + 1, visit);
}

}  // namespace lum::PDF
