#pragma once
// An affine matrix of page geometry, six doubles a b c d h v as the PDF standard writes them.
// A point is a row vector multiplied from the left: x' = a x + c y + h, y' = b x + d y + v.
// So `A * B` is "A, then B": a point goes through A first.
#include <cmath>

namespace lum::Common {

struct Matrix2D {
    double m_a = 1, m_b = 0, m_c = 0, m_d = 1, m_h = 0, m_v = 0;

    constexpr Matrix2D() = default;
    constexpr Matrix2D(double a, double b, double c, double d, double h, double v)
        : m_a(a), m_b(b), m_c(c), m_d(d), m_h(h), m_v(v) {}

    static constexpr Matrix2D Translation(double h, double v) { return {1, 0, 0, 1, h, v}; }
    static constexpr Matrix2D Scale(double sx, double sy) { return {sx, 0, 0, sy, 0, 0}; }

    // This, then `o`.
    constexpr Matrix2D operator*(const Matrix2D& o) const {
        return {m_a * o.m_a + m_b * o.m_c,         m_a * o.m_b + m_b * o.m_d,
                m_c * o.m_a + m_d * o.m_c,         m_c * o.m_b + m_d * o.m_d,
                m_h * o.m_a + m_v * o.m_c + o.m_h, m_h * o.m_b + m_v * o.m_d + o.m_v};
    }
    Matrix2D& operator*=(const Matrix2D& o) { return *this = *this * o; }

    constexpr void Mult(double& x, double& y) const {
        const double nx = m_a * x + m_c * y + m_h;
        y = m_b * x + m_d * y + m_v;
        x = nx;
    }

    constexpr double Determinant() const { return m_a * m_d - m_b * m_c; }

    // False, leaving `out` alone, when the matrix has no inverse (or its determinant isn't a
    // finite non-zero number).
    bool Inverse(Matrix2D& out) const {
        const double det = Determinant();
        if (det == 0 || !std::isfinite(det)) return false;
        const double r = 1.0 / det;
        out = {m_d * r,  -m_b * r, -m_c * r, m_a * r, (m_c * m_v - m_d * m_h) * r,
               (m_b * m_h - m_a * m_v) * r};
        return true;
    }

    constexpr bool operator==(const Matrix2D& o) const {
        return m_a == o.m_a && m_b == o.m_b && m_c == o.m_c && m_d == o.m_d && m_h == o.m_h &&
               m_v == o.m_v;
    }
};

}  // namespace lum::Common
