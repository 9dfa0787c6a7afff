#include "PDF/Text/Occluder.h"

#include <algorithm>
#include <limits>

#include "Common/Limits.h"

namespace lum::PDF {

namespace {

bool Inside(const Rect& inner, const Rect& outer) {
    return outer.x1 <= inner.x1 && inner.x2 <= outer.x2 && outer.y1 <= inner.y1 &&
           inner.y2 <= outer.y2;
}

// A union of no boxes: nothing lies inside it.
Rect NoBox() {
    constexpr double inf = std::numeric_limits<double>::infinity();
    return Rect(inf, inf, -inf, -inf);
}

void Widen(Rect& u, const Rect& b) {
    u.x1 = std::min(u.x1, b.x1);
    u.y1 = std::min(u.y1, b.y1);
    u.x2 = std::max(u.x2, b.x2);
    u.y2 = std::max(u.y2, b.y2);
}

}  // namespace

void OccluderSet::Clear() {
    m_items.clear();
    m_opaque_from.clear();
    m_any_from.clear();
    m_tests = 0;
}

void OccluderSet::Seal() {
    // Images arrive in content order; a stable sort keeps that and guards the search below.
    std::stable_sort(m_items.begin(), m_items.end(),
                     [](const Occluder& a, const Occluder& b) { return a.order < b.order; });
    const size_t n = m_items.size();
    m_opaque_from.assign(n + 1, NoBox());
    m_any_from.assign(n + 1, NoBox());
    for (size_t k = n; k-- > 0;) {
        m_opaque_from[k] = m_opaque_from[k + 1];
        m_any_from[k] = m_any_from[k + 1];
        Widen(m_any_from[k], m_items[k].box);
        if (!m_items[k].not_opaque) Widen(m_opaque_from[k], m_items[k].box);
    }
    m_tests = 0;
}

bool OccluderSet::Spend() { return ++m_tests <= Limits::kMaxOccluderTests; }

size_t OccluderSet::FindCover(Int64 order, const Rect& box) {
    const size_t n = m_items.size();
    if (m_opaque_from.size() != n + 1) Seal();
    size_t k = size_t(std::upper_bound(m_items.begin(), m_items.end(), order,
                                       [](Int64 o, const Occluder& item) { return o < item.order; }) -
                      m_items.begin());
    // No opaque image from k on reaches around the box: none of them holds it.
    for (; k < n && Inside(box, m_opaque_from[k]); ++k) {
        if (!Spend()) return n;  // budget spent: the run is kept
        const Occluder& o = m_items[k];
        if (!o.not_opaque && Inside(box, o.box)) return k;
    }
    return n;
}

bool OccluderSet::Hides(size_t from, const Rect& box) {
    const size_t n = m_items.size();
    if (m_any_from.size() != n + 1) Seal();
    for (size_t k = from; k < n && Inside(box, m_any_from[k]); ++k) {
        if (!Spend()) return false;
        if (Inside(box, m_items[k].box)) return true;
    }
    return false;
}

}  // namespace lum::PDF
