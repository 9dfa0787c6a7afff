#include "PDF/Text/Occluder.h"

#include <algorithm>
#include <cmath>
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

// Images up to this many are searched one by one; the grid pays beyond.
constexpr size_t kGridFrom = 32;
// Cells a side at most, and entries (an image listed in a cell) in all: a page of many large
// images would list each in every cell, and then goes without the grid.
constexpr int kMaxGridSide = 64;
constexpr size_t kMaxGridEntries = size_t(1) << 20;

}  // namespace

void OccluderSet::Clear() {
    m_items.clear();
    m_opaque_from.clear();
    m_any_from.clear();
    m_tests = 0;
    m_cells.clear();
    m_columns = m_rows = 0;
}

void OccluderSet::BuildGrid() {
    m_cells.clear();
    m_columns = m_rows = 0;
    const size_t n = m_items.size();
    if (n < kGridFrom || n > std::numeric_limits<UInt32>::max()) return;
    const Rect& all = m_any_from[0];
    if (!(std::isfinite(all.x1) && std::isfinite(all.y1) && std::isfinite(all.x2) &&
          std::isfinite(all.y2)))
        return;
    const int side = std::clamp(int(std::ceil(std::sqrt(double(n)))), 1, kMaxGridSide);
    m_grid_box = all;
    m_columns = all.x2 > all.x1 ? side : 1;
    m_rows = all.y2 > all.y1 ? side : 1;
    m_cell_w = (all.x2 - all.x1) / m_columns;
    m_cell_h = (all.y2 - all.y1) / m_rows;
    auto cell_range = [&](double lo, double hi, double start, double step, int count, int& a,
                          int& b) {
        a = step > 0 ? std::clamp(int(std::floor((lo - start) / step)), 0, count - 1) : 0;
        b = step > 0 ? std::clamp(int(std::floor((hi - start) / step)), 0, count - 1) : 0;
    };
    size_t entries = 0;
    for (const Occluder& o : m_items) {
        int c1, c2, r1, r2;
        cell_range(o.box.x1, o.box.x2, all.x1, m_cell_w, m_columns, c1, c2);
        cell_range(o.box.y1, o.box.y2, all.y1, m_cell_h, m_rows, r1, r2);
        entries += size_t(c2 - c1 + 1) * size_t(r2 - r1 + 1);
        if (entries > kMaxGridEntries) {
            m_columns = m_rows = 0;
            return;
        }
    }
    m_cells.assign(size_t(m_columns) * size_t(m_rows), {});
    for (size_t k = 0; k < n; ++k) {
        const Rect& b = m_items[k].box;
        int c1, c2, r1, r2;
        cell_range(b.x1, b.x2, all.x1, m_cell_w, m_columns, c1, c2);
        cell_range(b.y1, b.y2, all.y1, m_cell_h, m_rows, r1, r2);
        for (int r = r1; r <= r2; ++r)
            for (int c = c1; c <= c2; ++c)
                m_cells[size_t(r) * size_t(m_columns) + size_t(c)].push_back(UInt32(k));
    }
}

const std::vector<UInt32>* OccluderSet::CellAt(double x, double y) const {
    // Outside the union of all boxes no image holds the point (NaN fails these too).
    if (!(x >= m_grid_box.x1 && x <= m_grid_box.x2 && y >= m_grid_box.y1 && y <= m_grid_box.y2))
        return nullptr;
    // The same arithmetic as the listing, which is monotone: an image listed from the cell of
    // its x1 to the cell of its x2 is listed in the cell of every x between.
    const int c = m_cell_w > 0 ? std::min(int((x - m_grid_box.x1) / m_cell_w), m_columns - 1) : 0;
    const int r = m_cell_h > 0 ? std::min(int((y - m_grid_box.y1) / m_cell_h), m_rows - 1) : 0;
    return &m_cells[size_t(r) * size_t(m_columns) + size_t(c)];
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
    if (n > 0) BuildGrid();
}

bool OccluderSet::Spend() { return ++m_tests <= Limits::kMaxOccluderTests; }

size_t OccluderSet::FindCover(Int64 order, const Rect& box) {
    const size_t n = m_items.size();
    if (m_opaque_from.size() != n + 1) Seal();
    size_t k = size_t(std::upper_bound(m_items.begin(), m_items.end(), order,
                                       [](Int64 o, const Occluder& item) { return o < item.order; }) -
                      m_items.begin());
    if (!m_cells.empty()) {
        const std::vector<UInt32>* cell = CellAt(box.x1 / 2 + box.x2 / 2, box.y1 / 2 + box.y2 / 2);
        if (!cell) return n;
        for (auto it = std::lower_bound(cell->begin(), cell->end(), UInt32(k)); it != cell->end(); ++it) {
            if (!Spend()) return n;
            const Occluder& o = m_items[*it];
            if (!o.not_opaque && Inside(box, o.box)) return *it;
        }
        return n;
    }
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
    if (!m_cells.empty()) {
        const std::vector<UInt32>* cell = CellAt(box.x1 / 2 + box.x2 / 2, box.y1 / 2 + box.y2 / 2);
        if (!cell || from >= n) return false;
        for (auto it = std::lower_bound(cell->begin(), cell->end(), UInt32(from)); it != cell->end(); ++it) {
            if (!Spend()) return false;
            if (Inside(box, m_items[*it].box)) return true;
        }
        return false;
    }
    for (size_t k = from; k < n && Inside(box, m_any_from[k]); ++k) {
        if (!Spend()) return false;
        if (Inside(box, m_items[k].box)) return true;
    }
    return false;
}

}  // namespace lum::PDF
