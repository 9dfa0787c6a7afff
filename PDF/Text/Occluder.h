#pragma once
// Images that may hide text drawn before them (the hidden-text switch), and the two tests
// of hidden text: the first image drawn after a run that holds the whole run, and whether a
// glyph lies under any image from that one on.
#include <cstddef>
#include <vector>

#include "Common/Types.h"
#include "PDF/Rect.h"

namespace lum::PDF {

// An image on the page that may cover text drawn before it.
struct Occluder {
    Int64 order = 0;  // the element counter at the image
    Rect box;         // page frame
    bool not_opaque = false;
};

class OccluderSet {
public:
    void Clear();
    void Add(const Occluder& o) { m_items.push_back(o); }
    size_t Size() const { return m_items.size(); }
    const Occluder& operator[](size_t k) const { return m_items[k]; }

    // Once the page's images are all in: content order, and the boxes that let a search stop
    // early (the union of the boxes from each image to the last).
    void Seal();

    // The index of the first image drawn after `order` (an element counter), not marked
    // not_opaque, whose box holds `box` whole; Size() when there is none. Boxes are compared
    // as they stand.
    size_t FindCover(Int64 order, const Rect& box);
    // Whether `box` lies inside the box of any image from index `from` on.
    bool Hides(size_t from, const Rect& box);

private:
    // Counts one box comparison; false once the page's budget is spent.
    bool Spend();
    // The grid of images by cell, for pages of many images; left empty for few.
    void BuildGrid();
    // The images whose boxes reach the cell of point (x, y), in index order; null when the
    // point lies outside every image or there is no grid.
    const std::vector<UInt32>* CellAt(double x, double y) const;

    std::vector<Occluder> m_items;
    std::vector<Rect> m_opaque_from;  // union of the opaque boxes from index k on
    std::vector<Rect> m_any_from;     // union of all boxes from index k on
    UInt64 m_tests = 0;

    // A box holds another only if it holds the other's middle, so the images that may hold a
    // box are those listed in the cell of its middle.
    Rect m_grid_box;
    int m_columns = 0, m_rows = 0;
    double m_cell_w = 0, m_cell_h = 0;
    std::vector<std::vector<UInt32>> m_cells;
};

}  // namespace lum::PDF
