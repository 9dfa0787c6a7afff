#pragma once
// Geometry of the text engine: quads, boxes through matrices, the union of oriented quads, and
// the two double comparisons that allow rounding noise only.
#include <algorithm>
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
    if (a == b) return true;
    // The bound lies between eps and 2 eps times the larger magnitude: most answers need no
    // exponent.
    const double diff = std::fabs(b - a), big = std::max(std::fabs(a), std::fabs(b));
    if (diff >= 2 * DBL_EPSILON * big) return false;
    int e = 0;
    std::frexp(std::max(std::fabs(a), std::fabs(b)), &e);
    return std::fabs(b - a) < std::ldexp(DBL_EPSILON, e);
}

// a - b beyond that same bound.
inline bool DefinitelyGreater(double a, double b) {
    if (!(a > b)) return false;
    if (a - b > 2 * DBL_EPSILON * std::max(std::fabs(a), std::fabs(b))) return true;
    int e = 0;
    std::frexp(std::max(std::fabs(a), std::fabs(b)), &e);
    return a - b > std::ldexp(DBL_EPSILON, e);
}

inline bool IsZeroMatrix(const Matrix2D& m) {
    return ApproxEqual(m.m_a, 0) && ApproxEqual(m.m_b, 0) && ApproxEqual(m.m_c, 0) &&
           ApproxEqual(m.m_d, 0) && ApproxEqual(m.m_h, 0) && ApproxEqual(m.m_v, 0);
}

// Grows `box` (ordered) to hold `other` (ordered).
inline void ExtendBox(Rect& box, const Rect& other) {
    box.x1 = std::min(box.x1, other.x1);
    box.y1 = std::min(box.y1, other.y1);
    box.x2 = std::max(box.x2, other.x2);
    box.y2 = std::max(box.y2, other.y2);
}

// The ordered box around the four corners.
inline Rect BoxAround(const Quad& q) {
    const double* v = q.v;
    return Rect(std::min(std::min(v[0], v[2]), std::min(v[4], v[6])),
                std::min(std::min(v[1], v[3]), std::min(v[5], v[7])),
                std::max(std::max(v[0], v[2]), std::max(v[4], v[6])),
                std::max(std::max(v[1], v[3]), std::max(v[5], v[7])));
}

// The corners of `box` through `m`, starting at the text's start at its bottom: x1 and x2 trade
// places when m.a is negative, y1 and y2 when m.d is.
inline Quad QuadThrough(const Matrix2D& m, const Rect& box) {
    const double x1 = m.m_a < 0 ? box.x2 : box.x1, x2 = m.m_a < 0 ? box.x1 : box.x2;
    const double y1 = m.m_d < 0 ? box.y2 : box.y1, y2 = m.m_d < 0 ? box.y1 : box.y2;
    // Each corner is x * (a, b) + y * (c, d) + (h, v); the four share their products.
    const double ax1 = m.m_a * x1 + m.m_h, bx1 = m.m_b * x1 + m.m_v;
    const double ax2 = m.m_a * x2 + m.m_h, bx2 = m.m_b * x2 + m.m_v;
    const double cy1 = m.m_c * y1, dy1 = m.m_d * y1, cy2 = m.m_c * y2, dy2 = m.m_d * y2;
    return Quad{{ax1 + cy1, bx1 + dy1, ax2 + cy1, bx2 + dy1, ax2 + cy2, bx2 + dy2, ax1 + cy2,
                 bx1 + dy2}};
}

// Each corner of `q` through `m`.
inline Quad MapQuad(const Matrix2D& m, const Quad& q) {
    Quad r;
    for (int i = 0; i < 8; i += 2) {
        r.v[i] = m.m_a * q.v[i] + m.m_c * q.v[i + 1] + m.m_h;
        r.v[i + 1] = m.m_b * q.v[i] + m.m_d * q.v[i + 1] + m.m_v;
    }
    return r;
}

// The corners of `box` laid in the order of the text (x from x1 to x2 when m.a >= 0, else
// back; y likewise by m.d), without mapping them.
Quad QuadOnBox(const Matrix2D& m, const Rect& box);

// The union of oriented quads: `quad` becomes the quad, along the mean axes of all of them,
// that holds `quad` and the `count` quads whose 8 x `count` coordinates start at `others`.
void MergeQuads(Quad& quad, const double* others, int count);

// Corners in text order on the page axes: x grows along edge 0, y along edge 1.
inline bool IsUprightRect(const double* v) {
    return v[1] == v[3] && v[5] == v[7] && v[0] == v[6] && v[2] == v[4] && v[2] >= v[0] &&
           v[7] >= v[1];
}

// The case of most text, two upright rectangles, without the call: MergeQuads gives the same.
inline void MergeQuads(Quad& quad, const Quad& other) {
    const double* q = quad.v;
    const double* o = other.v;
    if (IsUprightRect(q) && IsUprightRect(o) && (q[2] > q[0] || o[2] > o[0]) &&
        (q[7] > q[1] || o[7] > o[1])) {
        const double x1 = std::min(q[0], o[0]), y1 = std::min(q[1], o[1]);
        const double x2 = std::max(q[2], o[2]), y2 = std::max(q[7], o[7]);
        quad = Quad{{x1, y1, x2, y1, x2, y2, x1, y2}};
        return;
    }
    MergeQuads(quad, other.v, 1);
}

// True when `box` (after ordering and widening by 1.0 on each side) lies wholly beside `clip`.
inline bool IsOutside(const Rect& box, const Rect& clip) {
    const double x1 = std::min(box.x1, box.x2) - 1.0, x2 = std::max(box.x1, box.x2) + 1.0;
    const double y1 = std::min(box.y1, box.y2) - 1.0, y2 = std::max(box.y1, box.y2) + 1.0;
    return clip.x1 > x2 || x1 > clip.x2 || clip.y1 > y2 || y1 > clip.y2;
}

// True when every coordinate of `box` is a finite number of at most `limit` in magnitude.
inline bool IsBounded(const Rect& box, double limit) {
    return std::fabs(box.x1) <= limit && std::fabs(box.y1) <= limit &&
           std::fabs(box.x2) <= limit && std::fabs(box.y2) <= limit;
}

}  // namespace lum::PDF
