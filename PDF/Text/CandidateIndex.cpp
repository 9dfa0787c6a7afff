#include "PDF/Text/CandidateIndex.h"

#include <algorithm>

namespace lum::PDF {

void CandidateIndex::Reset(size_t n) {
    m_leaves = 1;
    while (m_leaves < n) m_leaves *= 2;
    m_nodes.assign(2 * m_leaves, kClosed);
}

void CandidateIndex::Set(size_t pos, double x1, double x2, double reach, double radius) {
    Node& leaf = m_nodes[m_leaves + pos];
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
    Pull(m_leaves + pos);
}

void CandidateIndex::Remove(size_t pos) {
    m_nodes[m_leaves + pos] = kClosed;
    Pull(m_leaves + pos);
}

void CandidateIndex::Pull(size_t node) {
    for (node /= 2; node >= 1; node /= 2) {
        const Node& a = m_nodes[2 * node];
        const Node& b = m_nodes[2 * node + 1];
        m_nodes[node] = {std::max(a.reach, b.reach), std::min(a.lo, b.lo),
                         std::min(a.lo_r, b.lo_r), std::max(a.hi, b.hi),
                         std::max(a.hi_r, b.hi_r), a.open + b.open};
    }
}

}  // namespace lum::PDF
