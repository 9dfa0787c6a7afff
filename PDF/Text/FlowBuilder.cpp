// Reading order: the blocks of a layout are cut into flows, each a column read from the top.
// A flow starts at the leftmost block of the top row and goes down, depth first, through
// blocks that stay within the free room beside the blocks above them.
#include <algorithm>
#include <cmath>

#include "PDF/Text/BoxTree.h"
#include "PDF/Text/TextLayout.h"

namespace lum::PDF {

namespace {

// A flow doesn't reach further down than this, in font heights of its last block.
constexpr double kMaxFlowGap = 4.0;
// The first block of a flow looks past blocks beside it that start further right than this,
// in its font heights.
constexpr double kFarRight = 5.0;
// Blocks whose edges are closer than this share of the smaller font height start or end
// together.
constexpr double kEdgeTolerance = 0.3;
constexpr double kUnbounded = 1e200;

struct Span {
    double lo = -kUnbounded, hi = kUnbounded;
};

// The list of one BuildFlows: blocks sorted from the top; a block taken into a flow leaves a
// hole, and the holes at the front are skipped for good. A block whose top stands higher than
// another's top by more than the tallest block's height lies wholly above it: the searches
// below start behind those, by binary search on the tops. Within that, each search is the walk
// from the front that the comments describe; the box tree skips the ranges of blocks that
// could neither answer nor end it, so the answers are those of the plain walk.
class FlowList {
public:
    explicit FlowList(std::vector<Block*>& blocks) : m_blocks(blocks) {
        m_top.reserve(blocks.size());
        std::vector<const Rect*> boxes;
        boxes.reserve(blocks.size());
        for (const Block* b : blocks) {
            m_top.push_back(b->m_box.y2);
            m_tallest = std::max(m_tallest, b->m_box.y2 - b->m_box.y1);
            boxes.push_back(&b->m_box);
        }
        m_tree.Build(boxes);
    }

    bool Empty() {
        SkipHoles();
        return m_first == m_blocks.size();
    }
    size_t First() {
        SkipHoles();
        return m_first;
    }
    size_t Size() const { return m_blocks.size(); }
    Block* At(size_t i) const { return m_blocks[i]; }
    void Take(size_t i) {
        m_blocks[i] = nullptr;
        m_tree.Take(i);
    }

    // The leftmost block of the row that `best` (at position `best_pos`) starts, looking
    // from `from` on; answers its position.
    size_t PickLeftmost(size_t best_pos, size_t from) const {
        // Only a block below or above `best` ends the row, and only one that starts left of
        // it takes its place.
        auto test = [&](const BoxTree::Node& n) {
            const Rect& best = m_blocks[best_pos]->m_box;
            return !BoxTree::Plain(best) || n.max_y1 > best.y2 || n.min_y2 < best.y1 ||
                   n.min_x2 <= best.x1 || n.min_x1 < best.x1;
        };
        m_tree.Walk(from, Size(), true, test, [&](size_t i) {
            const Block* a = m_blocks[i];
            const Block* best = m_blocks[best_pos];
            if (SepY(*a, *best) > 0) return true;
            if (best->m_box.x1 >= a->m_box.x2) {
                best_pos = i;  // wholly to the left
                return false;
            }
            const double t = kEdgeTolerance * std::min(a->m_font_height, best->m_font_height);
            if (std::fabs(a->m_box.x1 - best->m_box.x1) > t &&
                std::fabs(a->m_box.x2 - best->m_box.x2) > t && a->m_box.x1 < best->m_box.x1)
                best_pos = i;
            return false;
        });
        return best_pos;
    }

    // The block that continues the flow below `b` within `span`, or Size().
    size_t FindNext(const Block& b, const Span& span) {
        const double h = b.m_font_height;
        const bool plain = BoxTree::Plain(b.m_box) && std::isfinite(h) &&
                           !std::isnan(span.lo) && !std::isnan(span.hi);
        // A block too far below ends the search; one that starts above b's top within the
        // span answers it.
        auto test = [&](const BoxTree::Node& n) {
            return !plain || b.m_box.y1 > kMaxFlowGap * h + n.min_y2 ||
                   (n.min_y1 < b.m_box.y2 && n.max_x1 >= span.lo && n.min_x2 <= span.hi);
        };
        size_t found = Size();
        m_tree.Walk(StartBelow(b.m_box.y2), Size(), true, test, [&](size_t i) {
            const Block* a = m_blocks[i];
            if (b.m_box.y1 > kMaxFlowGap * h + a->m_box.y2) return true;
            if (a->m_box.y1 < b.m_box.y2 && a->m_box.x1 >= span.lo && a->m_box.x2 <= span.hi) {
                found = PickLeftmost(i, i + 1);
                return true;
            }
            return false;
        });
        return found;
    }

    // The free room beside `b`: up to the nearest blocks on either side that share its height.
    // The first block of a flow (`limit`) looks past blocks far to its right.
    Span SideBounds(const Block& b, bool limit) {
        const Rect& box = b.m_box;
        const bool plain = BoxTree::Plain(box);
        const size_t from = StartBelow(box.y2);
        // The blocks looked at end with the first one wholly below b.
        size_t to = Size();
        m_tree.Walk(
            from, Size(), true,
            [&](const BoxTree::Node& n) { return !plain || n.min_y2 < box.y1; },
            [&](size_t i) {
                const Block* c = m_blocks[i];
                if (c == &b || !(box.y1 > c->m_box.y2)) return false;
                to = i;
                return true;
            });
        Span s;
        auto take = [&](size_t i) {
            const Block* c = m_blocks[i];
            if (c == &b) return false;
            if (SepY(b, *c) > 0) return false;
            if (limit && c->m_box.x1 - box.x2 > kFarRight * b.m_font_height) return false;
            if (box.x1 > c->m_box.x1) s.lo = std::max(s.lo, std::min(c->m_box.x2, box.x1));
            if (c->m_box.x2 > box.x2) s.hi = std::min(s.hi, std::max(c->m_box.x1, box.x2));
            return false;
        };
        // Both bounds are extremes, found in any order: each walk starts next to b, where
        // the nearest blocks of a row stand, and passes over ranges that can't come closer.
        auto beside = [&](const BoxTree::Node& n) {
            return n.max_y2 >= box.y1 && n.min_y1 <= box.y2;
        };
        m_tree.Walk(from, to, false, [&](const BoxTree::Node& n) {
            return !plain || (beside(n) && n.min_x1 < box.x1 && std::min(n.max_x2, box.x1) > s.lo);
        }, take);
        m_tree.Walk(from, to, true, [&](const BoxTree::Node& n) {
            return !plain || (beside(n) && n.max_x2 > box.x2 && std::max(n.min_x1, box.x2) < s.hi);
        }, take);
        return s;
    }

private:
    // The first live position whose block may reach down to `top` or below.
    size_t StartBelow(double top) {
        const double limit = top + m_tallest;
        const size_t first = First();
        const auto it = std::partition_point(m_top.begin() + std::ptrdiff_t(first), m_top.end(),
                                             [&](double y2) { return y2 > limit; });
        return size_t(it - m_top.begin());
    }

    void SkipHoles() {
        while (m_first < m_blocks.size() && !m_blocks[m_first]) ++m_first;
    }

    std::vector<Block*>& m_blocks;
    BoxTree m_tree;
    std::vector<double> m_top;  // y2 of each position, taken or not: sorted, falling
    double m_tallest = 0;
    size_t m_first = 0;
};

}  // namespace

void TextLayout::BuildFlows(std::vector<Flow>& out) {
    SortFromTop();
    FlowList list(m_blocks);
    struct Entry {
        Block* block;
        Span span;
    };
    std::vector<Entry> stack;
    while (!list.Empty()) {
        const size_t first = list.First();
        const size_t start = list.PickLeftmost(first, first + 1);
        Block* s = list.At(start);
        Flow& flow = out.emplace_back();
        flow.blocks.push_back(s);
        flow.box = s->m_box;
        stack.clear();
        stack.push_back({s, list.SideBounds(*s, true)});
        list.Take(start);
        while (!stack.empty()) {
            const Entry top = stack.back();
            const size_t next = list.FindNext(*top.block, top.span);
            if (next == list.Size()) {
                stack.pop_back();
                continue;
            }
            Block* n = list.At(next);
            flow.blocks.push_back(n);
            ExtendBox(flow.box, n->m_box);
            stack.push_back({n, list.SideBounds(*n, false)});
            list.Take(next);
        }
    }
    m_blocks.clear();
}

}  // namespace lum::PDF
