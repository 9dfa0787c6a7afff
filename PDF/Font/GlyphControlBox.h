#pragma once
// The box of an outline's points, control points included: the measure of a glyph everywhere
// (the glyph-box cache, the build-time table of the standard fonts and its test), so that the
// table and the programs answer alike.
#include <algorithm>
#include <vector>

#include "PDF/Rect.h"

namespace lum::PDF::Fnt {

// False when there is no point.
inline bool ControlBox(const std::vector<double>& points, Rect& box) {
    if (points.size() < 2) return false;
    box = Rect(points[0], points[1], points[0], points[1]);
    for (size_t i = 2; i + 1 < points.size(); i += 2) {
        box.x1 = std::min(box.x1, points[i]);
        box.x2 = std::max(box.x2, points[i]);
        box.y1 = std::min(box.y1, points[i + 1]);
        box.y2 = std::max(box.y2, points[i + 1]);
    }
    return true;
}

}  // namespace lum::PDF::Fnt
