#pragma once
// Geometry of the text engine: quads, boxes through matrices, the union of oriented quads, and
// the two double comparisons that allow rounding noise only.
#include <cfloat>
#include <cmath>

#include "Common/Matrix2D.h"
#include "PDF/Rect.h"

namespace lum::PDF {

using Common::Matrix2D;

// Four corners in the order of the text: lower left, lower right, upper right, upper left of
// the text's own frame; x and y alternate.
struct Quad {
    double v[8] = {0, 0, 0, 0, 0, 0, 0, 0};
};

// |b - a| below one unit in the last place at the larger operand's exponent.
inline bool ApproxEqual(double a, double b) {
    int e = 0;
    std::frexp(std::fmax(std::fabs(a), std::fabs(b)), &e);
    return std::fabs(b - a) < std::ldexp(DBL_EPSILON, e);
}

// a - b beyond that same bound.
inline bool DefinitelyGreater(double a, double b) {
    int e = 0;
    std::frexp(std::fmax(std::fabs(a), std::fabs(b)), &e);
    return a - b > std::ldexp(DBL_EPSILON, e);
}

inline bool IsZeroMatrix(const Matrix2D& m) {
    return ApproxEqual(m.m_a, 0) && ApproxEqual(m.m_b, 0) && ApproxEqual(m.m_c, 0) &&
           ApproxEqual(m.m_d, 0) && ApproxEqual(m.m_h, 0) && ApproxEqual(m.m_v, 0);
}

// Grows `box` (ordered) to hold `other` (ordered).
inline void ExtendBox(Rect& box, const Rect& other) {
    box.x1 = std::fmin(box.x1, other.x1);
    box.y1 = std::fmin(box.y1, other.y1);
    box.x2 = std::fmax(box.x2, other.x2);
    box.y2 = std::fmax(box.y2, other.y2);
}

// The ordered box around the four corners.
Rect BoxAround(const Quad& q);

// The corners of `box` through `m`, starting at the text's start at its bottom: x1 and x2 trade
// places when m.a is negative, y1 and y2 when m.d is.
Quad QuadThrough(const Matrix2D& m, const Rect& box);

// Each corner of `q` through `m`.
Quad MapQuad(const Matrix2D& m, const Quad& q);

// The corners of `box` laid in the order of the text (x from x1 to x2 when m.a >= 0, else
// back; y likewise by m.d), without mapping them.
Quad QuadOnBox(const Matrix2D& m, const Rect& box);

// The union of oriented quads: `quad` becomes the quad, along the mean axes of all of them,
// that holds `quad` and the `count` quads whose 8 x `count` coordinates start at `others`.
void MergeQuads(Quad& quad, const double* others, int count);
inline void MergeQuads(Quad& quad, const Quad& other) { MergeQuads(quad, other.v, 1); }

// True when `box` (after ordering and widening by 1.0 on each side) lies wholly beside `clip`.
bool IsOutside(Rect box, const Rect& clip);

// True when every coordinate of `box` is a finite number of at most `limit` in magnitude.
inline bool IsBounded(const Rect& box, double limit) {
    return std::fabs(box.x1) <= limit && std::fabs(box.y1) <= limit &&
           std::fabs(box.x2) <= limit && std::fabs(box.y2) <= limit;
}

}  // namespace lum::PDF
