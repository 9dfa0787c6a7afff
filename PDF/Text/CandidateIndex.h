#pragma once
// The blocks still open to a join during one pass over a layout, in the pass's order. The pass
// walks them from the front for each new block: a block gone out of vertical reach leaves the
// list when the walk meets it, the first one that joins ends the walk. Most blocks of a wide
// page can do neither, since a join needs the two boxes horizontally within a radius: a tree
// over the positions keeps, for each range, the extreme reach and edges, and the walk skips
// every range where no block can leave or join. It meets the same blocks in the same order as
// the plain walk, only without those that would have stayed untouched. A pass may also give
// the shape of its lone blocks and of the block it looks for, so that the walk skips a range
// whose blocks a join rule rejects as a whole (words stacked on one spot).
#include <cmath>
#include <limits>
#include <vector>

#include "Common/Types.h"

namespace lum::PDF {

class CandidateIndex {
public:
    // The box edges and font height of a block, for the rules below.
    struct Shape {
        double x1, x2, y1, height;
    };
    // What a pass's walks may reject in bulk, for the block of shape `shape` they look for:
    // e_overlap: blocks overlapping it horizontally by more than `factor` x their own font
    //   height (a run never joins a run it overlaps so far);
    // e_step: blocks whose y1 lies less than `factor` x their own font height from its y1
    //   (too close to be the line before it in a paragraph).
    enum Rule : UInt8 { e_none, e_overlap, e_step };
    struct Probe {
        Shape shape{};
        double factor = 0;
        bool active = false;
    };

    // Empties the index for positions [0, n), for walks under `rule`.
    void Reset(size_t n, Rule rule = e_none);

    // Opens position `pos` (or updates it): the block reaches down to `reach` and spans
    // [x1, x2]; it joins boxes within `radius` of it. NaN makes a block always met. Only a
    // block given a `shape` may be rejected by a probe's rule.
    void Set(size_t pos, double x1, double x2, double reach, double radius,
             const Shape* shape = nullptr);
    void Remove(size_t pos);

    // Calls visit(pos) in order of position for each open block that reaches above `y`, or
    // that may join [x1, x2] within `radius` (the larger of the two radii counts) and isn't
    // rejected by the pass's rule for an active probe; stops when visit answers true. visit may Set or Remove the
    // position it was given.
    template <class Visit>
    void Walk(double y, double x1, double x2, double radius, Visit visit, const Probe& probe);
    // The same with no probe. (Not a default argument: a nested class's member initializers
    // can't serve one inside the enclosing class.)
    template <class Visit>
    void Walk(double y, double x1, double x2, double radius, Visit visit) {
        Walk(y, x1, x2, radius, visit, Probe{});
    }
    // Removes the open blocks at positions [0, end) that reach above `y`.
    void RemoveAbove(double y, size_t end) {
        if (m_nodes.empty()) return;
        m_y = y;
        DescendAbove(1, 0, m_leaves, end);
    }
    bool IsOpen(size_t pos) const { return pos < m_leaves && m_nodes[m_leaves + pos].open != 0; }

private:
    struct Node {
        double reach;     // highest reach
        double lo, lo_r;  // lowest x1, and x1 less the radius
        double hi, hi_r;  // highest x2, and x2 plus the radius
        size_t open;      // open positions
    };
    // The highest of three numbers of each block's shape, chosen by the rule so that one
    // bound holds for a whole range: x1, -x2, height under e_overlap; y1, -y1, -height under
    // e_step. A block without a valid shape has them all infinite and is never rejected.
    // Kept beside the nodes, and only under a rule, so that the plain walks stay as small.
    struct Bounds {
        double u, v, w;
    };
    static constexpr double kInf = std::numeric_limits<double>::infinity();
    static constexpr Node kClosed{-kInf, kInf, kInf, -kInf, -kInf, 0};
    static constexpr Bounds kNoBounds{-kInf, -kInf, -kInf};

    void Pull(size_t node);
    bool Meets(size_t node) const {
        const Node& n = m_nodes[node];
        if (n.open == 0) return false;
        if (n.reach > m_y) return true;
        const double lo = std::min(n.lo_r, n.lo - m_radius);
        const double hi = std::max(n.hi_r, n.hi + m_radius);
        if (!(lo <= m_x2 && hi >= m_x1)) return false;
        return !m_probe.active || m_rule == e_none || !Rejects(m_bounds[node]);
    }
    // Whether the rule rejects every block of a node.
    bool Rejects(const Bounds& n) const;
    template <class Visit>
    bool Descend(size_t node, Visit& visit);
    void DescendAbove(size_t node, size_t lo, size_t hi, size_t end) {
        // The depth is the tree's height, the log of the block count.
        const Node& n = m_nodes[node];
        if (n.open == 0 || lo >= end || !(n.reach > m_y)) return;
        if (node >= m_leaves) {
            Remove(lo);
            return;
        }
        const size_t mid = lo + (hi - lo) / 2;
        DescendAbove(2 * node, lo, mid, end);
        DescendAbove(2 * node + 1, mid, hi, end);
    }

    std::vector<Node> m_nodes;  // heap order: 1 is the root, leaves from m_leaves on
    std::vector<Bounds> m_bounds;  // the same order, under a rule
    size_t m_leaves = 0;
    double m_y = 0, m_x1 = 0, m_x2 = 0, m_radius = 0;
    Rule m_rule = e_none;
    Probe m_probe;
};

template <class Visit>
void CandidateIndex::Walk(double y, double x1, double x2, double radius, Visit visit,
                          const Probe& probe) {
    if (m_nodes.empty()) return;
    m_y = y;
    m_probe = probe;
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
    if (!Meets(node)) return false;
    if (node >= m_leaves) return visit(node - m_leaves);
    return Descend(2 * node, visit) || Descend(2 * node + 1, visit);
}

}  // namespace lum::PDF
