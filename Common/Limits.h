#pragma once
// Every bound the code enforces against hostile input, in one place. Each constant says its
// unit and why it has the value it has; README "Limits" lists them for users.
#include <cstddef>
#include <cstdint>

namespace lum::Limits {

// --- Filters ---

// Bytes. One row of a predictor stage (Columns x Colors x BitsPerComponent / 8). The PNG stage
// holds two rows, so this bounds what a hostile /Columns can make us allocate; 16 MiB is a
// row of a million 16-bit CMYK pixels, far beyond any real image or cross-reference stream.
inline constexpr std::size_t kMaxPredictorRowBytes = std::size_t(16) << 20;

// Components. /Colors of a predictor stage. The TIFF stage keeps running values per colour;
// real colour spaces have at most 32 components (DeviceN), so 256 leaves room and stops a
// /Colors of billions.
inline constexpr std::int64_t kMaxPredictorColors = 256;

// Bits. /BitsPerComponent of a predictor stage: samples are read into 32-bit values.
inline constexpr std::int64_t kMaxPredictorBits = 32;

// --- Objects and parser ---

// --- Cross-reference and document store ---

// --- Document, pages ---

// Pages. A page count (the root's Count) above this is taken as this: the count drives the
// default page list, and a hostile Count of two billion would otherwise select two billion
// numbers that are each looked up and reported. Real documents stay far below it.
inline constexpr std::int32_t kMaxPageCount = 1 << 20;

// Numbers. A single page list token may select at most this many numbers ("2000000000-" on a
// ten-page document would otherwise fill a set with two billion numbers); a wider range is
// a bad token.
inline constexpr std::int64_t kMaxPageListRange = kMaxPageCount;

// Levels. Depth of the page tree walk and of a page's Parent chain. Real trees are a handful
// of levels deep; the cap stops chains built to exhaust the walk (peers use 100 to 1024).
inline constexpr int kMaxPageTreeDepth = 1024;

}  // namespace lum::Limits
