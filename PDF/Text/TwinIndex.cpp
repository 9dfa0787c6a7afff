#include "PDF/Text/TwinIndex.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "PDF/Text/DuplicateFinder.h"

namespace lum::PDF {

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

std::uint64_t Mix(std::uint64_t h, std::uint64_t v) {
    h ^= v + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2);
    h *= 0xff51afd7ed558ccdULL;
    return h ^ (h >> 33);
}

// The range of edges within `tolerance` x the font height of `edge`, as SameRun measures
// them: widened by far more than the rounding of its subtraction, so that the range holds
// every edge SameRun accepts. False when SameRun accepts none.
bool Reach(double edge, double height, double tolerance, double& lo, double& hi) {
    const double t = tolerance * height;
    if (!(t > 0) || !std::isfinite(edge)) return false;
    if (t == kInf) {
        lo = -kInf;
        hi = kInf;
        return true;
    }
    const double m = t + 1e-9 * (std::fabs(edge) + t);
    lo = edge - m;
    hi = edge + m;
    return true;
}

}  // namespace

std::uint64_t TwinIndex::LetterKey(const TRun& r) {
    std::uint64_t h = Mix(0, r.FragCount());
    const GlyphArena& arena = r.Arena();
    for (UInt32 f = 0; f < r.FragCount(); ++f) {
        const WordFrag& frag = r.Frag(f);
        h = Mix(h, frag.count);
        for (UInt32 g = 0; g < frag.count; ++g) h = Mix(h, arena.Glyph(frag, g).unit);
    }
    return h;
}

void TwinIndex::AddEntry(const TRun& r, size_t pos) {
    Entry e;
    if (!Reach(r.m_box.x1, r.m_font_height, kTwinHorizontalTolerance, e.lo_x, e.hi_x) ||
        !Reach(r.m_box.y1, r.m_font_height, kTwinVerticalTolerance, e.lo_y, e.hi_y))
        return;
    e.key = LetterKey(r);
    e.pos = UInt32(pos);
    m_entries.push_back(e);
}

void TwinIndex::Build(const std::vector<Block*>& blocks, size_t n) {
    m_entries.clear();
    for (size_t pos = 0; pos < n; ++pos)
        if (blocks[pos]) ForEachRun(*blocks[pos], [&](const TRun& r) { AddEntry(r, pos); });
    std::sort(m_entries.begin(), m_entries.end(), [](const Entry& a, const Entry& b) {
        return a.key != b.key ? a.key < b.key : a.pos < b.pos;
    });

    // The slots of each position's entries, by counting.
    m_first.assign(n + 1, 0);
    for (const Entry& e : m_entries) ++m_first[e.pos + 1];
    for (size_t p = 0; p < n; ++p) m_first[p + 1] += m_first[p];
    m_slots.resize(m_entries.size());
    std::vector<UInt32> fill(m_first.begin(), m_first.end() - 1);
    for (size_t i = 0; i < m_entries.size(); ++i) m_slots[fill[m_entries[i].pos]++] = UInt32(i);

    m_leaves = 1;
    while (m_leaves < m_entries.size()) m_leaves *= 2;
    m_nodes.assign(2 * m_leaves, Node{0, kInf, -kInf, kInf, -kInf});
}

void TwinIndex::Mark(size_t pos, UInt32 open) {
    if (pos + 1 >= m_first.size()) return;
    for (UInt32 s = m_first[pos]; s < m_first[pos + 1]; ++s) {
        const size_t slot = m_slots[s];
        const Entry& e = m_entries[slot];
        Node& leaf = m_nodes[m_leaves + slot];
        leaf = open ? Node{1, e.lo_x, e.hi_x, e.lo_y, e.hi_y} : Node{0, kInf, -kInf, kInf, -kInf};
        Pull(m_leaves + slot);
    }
}

void TwinIndex::Pull(size_t node) {
    for (node /= 2; node >= 1; node /= 2) {
        const Node& a = m_nodes[2 * node];
        const Node& b = m_nodes[2 * node + 1];
        m_nodes[node] = {a.open + b.open, std::min(a.lo_x, b.lo_x), std::max(a.hi_x, b.hi_x),
                         std::min(a.lo_y, b.lo_y), std::max(a.hi_y, b.hi_y)};
    }
}

void TwinIndex::Descend(size_t node, size_t lo, size_t hi, size_t from, size_t to, double x,
                        double y, std::vector<size_t>& out) const {
    // The depth is the tree's height, the log of the entry count.
    const Node& n = m_nodes[node];
    if (n.open == 0 || hi <= from || to <= lo) return;
    if (!(n.lo_x <= x && x <= n.hi_x && n.lo_y <= y && y <= n.hi_y)) return;
    if (node >= m_leaves) {
        out.push_back(m_entries[lo].pos);
        return;
    }
    const size_t mid = lo + (hi - lo) / 2;
    Descend(2 * node, lo, mid, from, to, x, y, out);
    Descend(2 * node + 1, mid, hi, from, to, x, y, out);
}

void TwinIndex::Candidates(Block& b, std::vector<size_t>& out) const {
    if (m_entries.empty()) return;
    ForEachRun(b, [&](const TRun& s) {
        const std::uint64_t key = LetterKey(s);
        const auto first = std::lower_bound(m_entries.begin(), m_entries.end(), key,
                                            [](const Entry& e, std::uint64_t k) { return e.key < k; });
        const auto last = std::upper_bound(first, m_entries.end(), key,
                                           [](std::uint64_t k, const Entry& e) { return k < e.key; });
        if (first == last) return;
        Descend(1, 0, m_leaves, size_t(first - m_entries.begin()), size_t(last - m_entries.begin()),
                s.m_box.x1, s.m_box.y1, out);
    });
}

}  // namespace lum::PDF
