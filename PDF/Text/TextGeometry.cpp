#include "PDF/Text/TextGeometry.h"

#include <algorithm>
#include <utility>

namespace lum::PDF {

namespace {

// Axes within this distance of the page axes are the page axes: the union is then a plain
// box, free of the rounding of a projection.
constexpr double kPageAxisTolerance = 0.0001;

struct Vec {
    double x = 0, y = 0;
};

// The unit vector from corner i to corner i + 1 of the quad at `q`; a zero edge stays zero.
Vec EdgeDirection(const double* q, int i) {
    const int j = (i + 1) % 4;
    Vec e{q[2 * j] - q[2 * i], q[2 * j + 1] - q[2 * i + 1]};
    const double len = std::hypot(e.x, e.y);
    if (len > 0) {
        e.x /= len;
        e.y /= len;
    }
    return e;
}

bool Normalise(Vec& v) {
    const double len = std::hypot(v.x, v.y);
    if (!(len > 0) || !std::isfinite(len)) return false;
    v.x /= len;
    v.y /= len;
    return true;
}

}  // namespace

Quad QuadOnBox(const Matrix2D& m, const Rect& box) {
    const double xs = m.m_a >= 0 ? box.x1 : box.x2, xe = m.m_a >= 0 ? box.x2 : box.x1;
    const double ys = m.m_d >= 0 ? box.y1 : box.y2, ye = m.m_d >= 0 ? box.y2 : box.y1;
    return Quad{{xs, ys, xe, ys, xe, ye, xs, ye}};
}

void MergeQuads(Quad& quad, const double* others, int count) {
    // Upright rectangles, the case of most text, have the page axes for mean axes as long as
    // one of them has a width and one a height; their union is then the box around them.
    bool upright = IsUprightRect(quad.v);
    bool has_width = quad.v[2] > quad.v[0], has_height = quad.v[7] > quad.v[1];
    for (int k = 0; upright && k < count; ++k) {
        const double* o = others + 8 * k;
        upright = IsUprightRect(o);
        has_width = has_width || o[2] > o[0];
        has_height = has_height || o[7] > o[1];
    }
    if (upright && has_width && has_height) {
        double x1 = quad.v[0], y1 = quad.v[1], x2 = quad.v[2], y2 = quad.v[7];
        for (int k = 0; k < count; ++k) {
            const double* o = others + 8 * k;
            x1 = std::min(x1, o[0]);
            y1 = std::min(y1, o[1]);
            x2 = std::max(x2, o[2]);
            y2 = std::max(y2, o[7]);
        }
        quad = Quad{{x1, y1, x2, y1, x2, y2, x1, y2}};
        return;
    }

    Vec u, v;
    auto add_axes = [&](const double* q) {
        const Vec e0 = EdgeDirection(q, 0), e1 = EdgeDirection(q, 1);
        const Vec e2 = EdgeDirection(q, 2), e3 = EdgeDirection(q, 3);
        u.x += e0.x - e2.x;
        u.y += e0.y - e2.y;
        v.x += e1.x - e3.x;
        v.y += e1.y - e3.y;
    };
    add_axes(quad.v);
    for (int k = 0; k < count; ++k) add_axes(others + 8 * k);
    // The division by the number of quads doesn't change a direction; normalising is enough.
    const bool has_u = Normalise(u), has_v = Normalise(v);
    if (!has_u && !has_v) {
        u = {1, 0};
        v = {0, 1};
    } else if (!has_u) {
        u = {-v.y, v.x};
    } else if (!has_v) {
        v = {-u.y, u.x};
    }

    const bool page_axes = std::fabs(u.x - 1) < kPageAxisTolerance &&
                           std::fabs(u.y) < kPageAxisTolerance &&
                           std::fabs(v.x) < kPageAxisTolerance &&
                           std::fabs(v.y - 1) < kPageAxisTolerance;
    // Coordinates along the axes: the inverse of the basis (u, v). For axes that are nearly
    // parallel the basis is replaced by u and its normal, which keeps the inverse finite.
    double det = u.x * v.y - u.y * v.x;
    if (!page_axes && std::fabs(det) < 1e-9) {
        v = {-u.y, u.x};
        det = 1;
    }
    double umin = INFINITY, umax = -INFINITY, vmin = INFINITY, vmax = -INFINITY;
    auto project = [&](const double* q) {
        for (int i = 0; i < 8; i += 2) {
            double pu = q[i], pv = q[i + 1];
            if (!page_axes) {
                pu = (q[i] * v.y - q[i + 1] * v.x) / det;
                pv = (q[i + 1] * u.x - q[i] * u.y) / det;
            }
            umin = std::min(umin, pu);
            umax = std::max(umax, pu);
            vmin = std::min(vmin, pv);
            vmax = std::max(vmax, pv);
        }
    };
    project(quad.v);
    for (int k = 0; k < count; ++k) project(others + 8 * k);

    const double corners[8] = {umin, vmin, umax, vmin, umax, vmax, umin, vmax};
    for (int i = 0; i < 8; i += 2) {
        if (page_axes) {
            quad.v[i] = corners[i];
            quad.v[i + 1] = corners[i + 1];
        } else {
            quad.v[i] = corners[i] * u.x + corners[i + 1] * v.x;
            quad.v[i + 1] = corners[i] * u.y + corners[i + 1] * v.y;
        }
    }
}

}  // namespace lum::PDF
