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

// The hash of a run's letters: equal for the runs that SameRun takes for copies.
std::uint64_t LetterKey(const TRun& r) {
    std::uint64_t h = Mix(0, r.FragCount());
    const GlyphArena& arena = r.Arena();
    for (UInt32 f = 0; f < r.FragCount(); ++f) {
        const WordFrag& frag = r.Frag(f);
        h = Mix(h, frag.count);
        for (UInt32 g = 0; g < frag.count; ++g) h = Mix(h, arena.Glyph(frag, g).unit);
    }
    return h;
}

// Groups up to this size are searched entry by entry.
constexpr UInt32 kScanGroup = 32;
constexpr UInt32 kNoGroup = 0xFFFFFFFF;

}  // namespace

UInt32 TwinIndex::GroupOf(std::uint64_t key) {
    const size_t mask = m_keys.size() - 1;
    size_t i = size_t(key) & mask;
    while (m_groups[i] != kNoGroup && m_keys[i] != key) i = (i + 1) & mask;
    if (m_groups[i] == kNoGroup) {
        m_keys[i] = key;
        m_groups[i] = UInt32(m_group_first.size());
        m_group_first.push_back(0);
    }
    return m_groups[i];
}

void TwinIndex::Build(const std::vector<Block*>& blocks, size_t n) {
    size_t runs = 0;
    for (size_t pos = 0; pos < n; ++pos)
        if (blocks[pos]) ForEachRun(*blocks[pos], [&](const TRun&) { ++runs; });
    size_t size = 16;
    while (size < 2 * runs) size *= 2;
    m_keys.resize(size);
    m_groups.assign(size, kNoGroup);
    m_group_first.clear();
    m_queries.clear();
    m_scratch.clear();
    m_query_first.resize(n + 1);
    m_first.assign(n + 1, 0);
    for (size_t pos = 0; pos < n; ++pos) {
        m_query_first[pos] = UInt32(m_queries.size());
        if (!blocks[pos]) continue;
        ForEachRun(*blocks[pos], [&](const TRun& r) {
            const UInt32 group = GroupOf(LetterKey(r));
            m_queries.push_back({group, r.m_box.x1, r.m_box.y1});
            Entry e;
            if (!Reach(r.m_box.x1, r.m_font_height, kTwinHorizontalTolerance, e.lo_x, e.hi_x) ||
                !Reach(r.m_box.y1, r.m_font_height, kTwinVerticalTolerance, e.lo_y, e.hi_y))
                return;
            e.pos = UInt32(pos);
            e.group = group;
            e.removed = false;
            m_scratch.push_back(e);
            ++m_group_first[group];
            ++m_first[pos + 1];
        });
    }
    m_query_first[n] = UInt32(m_queries.size());

    // Entries by group, in order of position within each: a counting sort.
    UInt32 sum = 0;
    for (UInt32& g : m_group_first) {
        const UInt32 count = g;
        g = sum;
        sum += count;
    }
    m_group_first.push_back(sum);
    for (size_t p = 0; p < n; ++p) m_first[p + 1] += m_first[p];
    m_entries.resize(m_scratch.size());
    m_slots.resize(m_scratch.size());
    std::vector<UInt32>& fill = m_group_first;  // advanced past each group, then restored
    for (size_t i = 0; i < m_scratch.size(); ++i) {
        const UInt32 slot = fill[m_scratch[i].group]++;
        m_entries[slot] = m_scratch[i];
        m_slots[i] = slot;  // the scratch is in order of position
    }
    for (size_t g = fill.size() - 1; g > 0; --g) fill[g] = fill[g - 1];
    fill[0] = 0;

    bool large = false;
    for (size_t g = 0; g + 1 < m_group_first.size() && !large; ++g) large = Large(UInt32(g));
    m_nodes.clear();
    m_leaves = 0;
    if (!large) return;
    m_leaves = 1;
    while (m_leaves < m_entries.size()) m_leaves *= 2;
    m_nodes.assign(2 * m_leaves, kClosedNode);
    for (size_t i = 0; i < m_entries.size(); ++i) {
        const Entry& e = m_entries[i];
        m_nodes[m_leaves + i] = {1, e.lo_x, e.hi_x, e.lo_y, e.hi_y};
    }
    for (size_t node = m_leaves - 1; node >= 1; --node) PullOne(node);
}

bool TwinIndex::Large(UInt32 group) const {
    return m_group_first[group + 1] - m_group_first[group] > kScanGroup;
}

void TwinIndex::Remove(size_t pos) {
    if (pos + 1 >= m_first.size()) return;
    for (UInt32 s = m_first[pos]; s < m_first[pos + 1]; ++s) {
        const size_t slot = m_slots[s];
        Entry& e = m_entries[slot];
        e.removed = true;
        if (m_nodes.empty()) continue;
        m_nodes[m_leaves + slot] = kClosedNode;
        for (size_t node = (m_leaves + slot) / 2; node >= 1; node /= 2) PullOne(node);
    }
}

void TwinIndex::PullOne(size_t node) {
    const Node& a = m_nodes[2 * node];
    const Node& b = m_nodes[2 * node + 1];
    m_nodes[node] = {a.open + b.open, std::min(a.lo_x, b.lo_x), std::max(a.hi_x, b.hi_x),
                     std::min(a.lo_y, b.lo_y), std::max(a.hi_y, b.hi_y)};
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

void TwinIndex::Candidates(size_t pos, std::vector<size_t>& out) const {
    if (pos + 1 >= m_query_first.size()) return;
    const auto before = [&](UInt32 from, UInt32 to) {
        // Entries of a group stand in order of position.
        UInt32 lo = from, hi = to;
        while (lo < hi) {
            const UInt32 mid = lo + (hi - lo) / 2;
            if (m_entries[mid].pos >= pos) {
                hi = mid;
            } else {
                lo = mid + 1;
            }
        }
        return lo;
    };
    for (UInt32 q = m_query_first[pos]; q < m_query_first[pos + 1]; ++q) {
        const Query& s = m_queries[q];
        const UInt32 from = m_group_first[s.group], to = m_group_first[s.group + 1];
        if (Large(s.group)) {
            Descend(1, 0, m_leaves, from, before(from, to), s.x1, s.y1, out);
            continue;
        }
        for (UInt32 i = from; i < to; ++i) {
            const Entry& e = m_entries[i];
            if (e.pos >= pos) break;
            if (e.removed) continue;
            if (e.lo_x <= s.x1 && s.x1 <= e.hi_x && e.lo_y <= s.y1 && s.y1 <= e.hi_y)
                out.push_back(e.pos);
        }
    }
}

}  // namespace lum::PDF
