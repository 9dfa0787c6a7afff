// The integer rules at their edges: each conversion is defined for every double.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Common/NumberConversions.h"

using namespace lum;
using namespace lum::Common;

namespace {

const double kNaN = std::nan("");
const double kInf = std::numeric_limits<double>::infinity();

TEST(NumberConversions, EdgesOfEachRule) {
    struct Case {
        double d;
        Int64 saturated;
        Int32 int32;
        UInt32 cut32;
        UInt16 cut16;
        UInt32 u32_or_7;
        UInt64 u64_below_9;
    } cases[] = {
        {-4.9, -4, -4, 0xFFFFFFFCu, 0xFFFC, 7, 9},
        {4.9, 4, 4, 4, 4, 4, 4},
        {-0.0, 0, 0, 0, 0, 0, 0},
        {2147483647.9, 2147483647, 2147483647, 2147483647u, 0xFFFF, 2147483647u, 2147483647u},
        // P in its unsigned form leaves the signed range: the lowest value, no wrap.
        {4294967292.0, 4294967292, INT32_MIN, 4294967292u, 0xFFFC, 4294967292u, 4294967292u},
        {-2147483649.0, -2147483649, INT32_MIN, 2147483647u, 0xFFFF, 7, 9},
        {4294967296.0, 4294967296, INT32_MIN, 0, 0, 7, 4294967296u},
        {65537.0, 65537, 65537, 65537u, 1, 65537u, 65537u},
        {1e19, INT64_MAX, INT32_MIN, 0xFFFFFFFFu, 0xFFFF, 7, 10000000000000000000u},
        {2e19, INT64_MAX, INT32_MIN, 0xFFFFFFFFu, 0xFFFF, 7, ~UInt64(0)},
        {-1e300, INT64_MIN, INT32_MIN, 0, 0, 7, 9},
        {kInf, INT64_MAX, INT32_MIN, 0xFFFFFFFFu, 0xFFFF, 7, ~UInt64(0)},
        {kNaN, 0, INT32_MIN, 0, 0, 7, 9},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.d);
        EXPECT_EQ(c.saturated, TruncateSaturated(c.d));
        EXPECT_EQ(c.int32, TruncateToInt32(c.d));
        EXPECT_EQ(c.cut32, CutTo32(c.d));
        EXPECT_EQ(c.cut16, CutTo16(c.d));
        EXPECT_EQ(c.u32_or_7, TruncateToUInt32Or(c.d, 7));
        EXPECT_EQ(c.u64_below_9, TruncateToUInt64(c.d, 9));
    }
}

}  // namespace
