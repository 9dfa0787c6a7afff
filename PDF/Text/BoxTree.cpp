#include "PDF/Text/BoxTree.h"

namespace lum::PDF {

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr BoxTree::Node kEmpty{0, 0, kInf, -kInf, kInf, -kInf, kInf, -kInf, kInf, -kInf};

}  // namespace

void BoxTree::Build(const std::vector<const Rect*>& boxes) {
    m_leaves = 1;
    while (m_leaves < boxes.size()) m_leaves *= 2;
    m_nodes.assign(2 * m_leaves, kEmpty);
    for (size_t i = 0; i < boxes.size(); ++i) {
        const Rect& r = *boxes[i];
        Node& n = m_nodes[m_leaves + i];
        n.live = 1;
        if (!Plain(r)) {
            n.odd = 1;
            continue;
        }
        n.min_x1 = n.max_x1 = r.x1;
        n.min_x2 = n.max_x2 = r.x2;
        n.min_y1 = n.max_y1 = r.y1;
        n.min_y2 = n.max_y2 = r.y2;
    }
    for (size_t node = m_leaves - 1; node >= 1; --node) Pull(node);
}

void BoxTree::Take(size_t pos) {
    size_t node = m_leaves + pos;
    m_nodes[node] = kEmpty;
    for (node /= 2; node >= 1; node /= 2) Pull(node);
}

void BoxTree::Pull(size_t node) {
    const Node& a = m_nodes[2 * node];
    const Node& b = m_nodes[2 * node + 1];
    Node& n = m_nodes[node];
    n.live = a.live + b.live;
    n.odd = a.odd + b.odd;
    n.min_x1 = std::min(a.min_x1, b.min_x1);
    n.max_x1 = std::max(a.max_x1, b.max_x1);
    n.min_x2 = std::min(a.min_x2, b.min_x2);
    n.max_x2 = std::max(a.max_x2, b.max_x2);
    n.min_y1 = std::min(a.min_y1, b.min_y1);
    n.max_y1 = std::max(a.max_y1, b.max_y1);
    n.min_y2 = std::min(a.min_y2, b.min_y2);
    n.max_y2 = std::max(a.max_y2, b.max_y2);
}

}  // namespace lum::PDF
