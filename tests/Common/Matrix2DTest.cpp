#include <gtest/gtest.h>

#include "Common/Matrix2D.h"

using lum::Common::Matrix2D;

namespace {

void ExpectPoint(const Matrix2D& m, double x, double y, double want_x, double want_y) {
    m.Mult(x, y);
    EXPECT_DOUBLE_EQ(x, want_x);
    EXPECT_DOUBLE_EQ(y, want_y);
}

}  // namespace

// The product is "left, then right": a scale then a translation moves the scaled point, the
// other order scales the translation too.
TEST(Matrix2D, ProductAppliesLeftOperandFirst) {
    const Matrix2D scale = Matrix2D::Scale(2, 3);
    const Matrix2D move = Matrix2D::Translation(10, 20);
    ExpectPoint(scale * move, 1, 1, 12, 23);
    ExpectPoint(move * scale, 1, 1, 22, 63);
    const Matrix2D quarter(0, 1, -1, 0, 0, 0);  // a quarter turn counter-clockwise
    ExpectPoint(quarter * move, 1, 0, 10, 21);
}

TEST(Matrix2D, InverseUndoesAndSingularIsRefused) {
    const Matrix2D m(2, 1, -1, 3, 5, -7);
    Matrix2D inv;
    ASSERT_TRUE(m.Inverse(inv));
    ExpectPoint(m * inv, 4, -2, 4, -2);

    for (const Matrix2D& bad : {Matrix2D(0, 0, 0, 0, 1, 1), Matrix2D(1, 2, 2, 4, 0, 0),
                                Matrix2D(1e308, 0, 0, 1e308, 0, 0)}) {
        Matrix2D out(9, 9, 9, 9, 9, 9);
        EXPECT_FALSE(bad.Inverse(out));
        EXPECT_EQ(out, Matrix2D(9, 9, 9, 9, 9, 9));
    }
}
