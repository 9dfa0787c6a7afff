#pragma once
// Small helpers shared by the cross-reference parser and the rebuild: turning the doubles of
// parsed numbers into the integer fields of table entries.
#include <cmath>
#include <cstring>

#include "Common/Types.h"

namespace lum::SDF::XRefUtil {

// A number as a signed integer, truncated toward zero and saturated; NaN gives 0.
inline Int64 ToInt64(double d) noexcept {
    if (!(d == d)) return 0;
    if (d >= 9.2233720368547758e18) return INT64_MAX;
    if (d <= -9.2233720368547758e18) return INT64_MIN;
    return static_cast<Int64>(d);
}

// A count or number as the table's unsigned integer: negative values wrap as two's
// complement, so a count of -1 makes an end below its start, which the callers refuse.
inline UInt64 ToUInt64(double d) noexcept { return static_cast<UInt64>(ToInt64(d)); }
// An offset: a negative or absurd one becomes a value no seek accepts.
inline UInt64 ToOffset(double d) noexcept {
    return d >= 0 && d < 1.8446744073709552e19 ? static_cast<UInt64>(d) : ~UInt64(0);
}
inline UInt32 CutTo32(double d) noexcept { return static_cast<UInt32>(ToUInt64(d)); }
inline UInt16 CutTo16(double d) noexcept { return static_cast<UInt16>(ToUInt64(d)); }

inline bool StartsWith(const char* word, const char* prefix) noexcept {
    return std::strncmp(word, prefix, std::strlen(prefix)) == 0;
}


}  // namespace lum::SDF::XRefUtil
