#include "PDF/Text/CandidateIndex.h"

#include <algorithm>

namespace lum::PDF {

void CandidateIndex::Reset(size_t n, Rule rule) {
    m_rule = rule;
    m_leaves = 1;
    while (m_leaves < n) m_leaves *= 2;
    m_nodes.assign(2 * m_leaves, kClosed);
    if (rule == e_none) {
        m_bounds.clear();
    } else {
        m_bounds.assign(2 * m_leaves, kNoBounds);
    }
}

void CandidateIndex::Set(size_t pos, double x1, double x2, double reach, double radius,
                         const Shape* shape) {
    Node& leaf = m_nodes[m_leaves + pos];
    leaf = kClosed;
    // A reach that compares with nothing never ends the block's turn.
    leaf.open = 1;
    leaf.reach = std::isnan(reach) ? -kInf : reach;
    leaf.lo = x1;
    leaf.hi = x2;
    leaf.lo_r = x1 - radius;
    leaf.hi_r = x2 + radius;
    if (std::isnan(leaf.lo) || std::isnan(leaf.lo_r) || std::isnan(leaf.hi) ||
        std::isnan(leaf.hi_r)) {
        leaf.lo = leaf.lo_r = -kInf;
        leaf.hi = leaf.hi_r = kInf;
    }
    // The rules bound a node by its extremes, which a NaN or a negative height would spoil.
    if (m_rule != e_none) {
        Bounds& b = m_bounds[m_leaves + pos];
        b = {kInf, kInf, kInf};
        if (shape && !std::isnan(shape->x1) && !std::isnan(shape->x2) &&
            !std::isnan(shape->y1) && shape->height >= 0) {
            if (m_rule == e_overlap) {
                b = {shape->x1, -shape->x2, shape->height};
            } else {
                b = {shape->y1, -shape->y1, -shape->height};
            }
        }
    }
    Pull(m_leaves + pos);
}

void CandidateIndex::Remove(size_t pos) {
    m_nodes[m_leaves + pos] = kClosed;
    if (m_rule != e_none) m_bounds[m_leaves + pos] = kNoBounds;
    Pull(m_leaves + pos);
}

void CandidateIndex::Pull(size_t node) {
    for (node /= 2; node >= 1; node /= 2) {
        const Node& a = m_nodes[2 * node];
        const Node& b = m_nodes[2 * node + 1];
        m_nodes[node] = {std::max(a.reach, b.reach), std::min(a.lo, b.lo),
                         std::min(a.lo_r, b.lo_r),   std::max(a.hi, b.hi),
                         std::max(a.hi_r, b.hi_r),   a.open + b.open};
        if (m_rule != e_none) {
            const Bounds& p = m_bounds[2 * node];
            const Bounds& q = m_bounds[2 * node + 1];
            m_bounds[node] = {std::max(p.u, q.u), std::max(p.v, q.v), std::max(p.w, q.w)};
        }
    }
}

bool CandidateIndex::Rejects(const Bounds& n) const {
    // Each bound is the rule's own arithmetic on the node's extremes: rounding is monotone,
    // so it holds for every block of the node. A NaN anywhere rejects nothing.
    const Shape& s = m_probe.shape;
    switch (m_rule) {
        case e_none:
            break;
        case e_overlap: {
            // The least overlap of a block of the node, against the most kerning allowed.
            const double least = std::min(-n.v, s.x2) - std::max(n.u, s.x1);
            return least > m_probe.factor * n.w;
        }
        case e_step: {
            // The farthest y1 of the node, against the least step allowed.
            const double limit = m_probe.factor * -n.w;
            return n.u - s.y1 < limit && s.y1 - -n.v < limit;
        }
    }
    return false;
}

}  // namespace lum::PDF
