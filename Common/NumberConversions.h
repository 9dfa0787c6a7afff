#pragma once
// Numbers of a PDF file are doubles (integers and reals are not told apart); the places that
// need an integer take it by one of these rules, each named after what it does at the edges.
// Every one is defined for every double: NaN, infinities and values far out of range included.
#include <cstdint>
#include <cstring>

#include "Common/Types.h"

namespace lum::Common {

// Truncation toward zero, saturated at the range of a signed 64-bit integer; NaN gives 0.
inline Int64 TruncateSaturated(double d) noexcept {
    if (!(d == d)) return 0;
    if (d >= 9.2233720368547758e18) return INT64_MAX;
    if (d <= -9.2233720368547758e18) return INT64_MIN;
    return static_cast<Int64>(d);
}

// Truncation toward zero into a signed 32-bit integer. A value outside the range, and NaN,
// gives -2147483648, as the machine's own conversion does, not the bits of a wrapped form.
inline Int32 TruncateToInt32(double d) noexcept {
    if (!(d > -2147483649.0 && d < 2147483648.0)) return INT32_MIN;
    return static_cast<Int32>(d);
}

// "Cut to n bits": the low bits of the truncated, saturated value, negatives in two's
// complement (a count of -1 becomes the largest value, which the callers' bounds refuse).
inline UInt64 CutTo64(double d) noexcept { return static_cast<UInt64>(TruncateSaturated(d)); }
inline UInt32 CutTo32(double d) noexcept { return static_cast<UInt32>(CutTo64(d)); }
inline UInt16 CutTo16(double d) noexcept { return static_cast<UInt16>(CutTo64(d)); }

// Truncation into an unsigned 32-bit value; negatives, values of 2^32 and more, and NaN give
// `outside`, which the caller picks to fail where it should (a number no table reaches).
inline UInt32 TruncateToUInt32Or(double d, UInt32 outside) noexcept {
    if (!(d >= 0) || d >= 4294967296.0) return outside;
    return static_cast<UInt32>(d);
}

// Truncation into an unsigned 64-bit value: negatives and NaN give `below`, values past the
// range give all bits set (an offset no seek accepts, a length that reads to the end).
inline UInt64 TruncateToUInt64(double d, UInt64 below) noexcept {
    if (!(d >= 0)) return below;
    if (d >= 18446744073709551615.0) return ~UInt64(0);
    return static_cast<UInt64>(d);
}

// Whether the C string `word` begins with `prefix`.
inline bool StartsWith(const char* word, const char* prefix) noexcept {
    return std::strncmp(word, prefix, std::strlen(prefix)) == 0;
}

}  // namespace lum::Common
