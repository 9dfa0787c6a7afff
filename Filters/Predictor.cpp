#include "Filters/Predictor.h"

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Filters/PNGPredictorDecode.h"
#include "Filters/TIFFPredictorDecode.h"

namespace lum::Filters {

size_t PredictorRowSize(Int64 columns, Int64 colors, Int64 bits_per_component) {
    LUM_CHECK(columns >= 0 && colors >= 0 && bits_per_component >= 0 &&
                  colors <= Limits::kMaxPredictorColors &&
                  bits_per_component <= Limits::kMaxPredictorBits,
              "Bad predictor parameters");
    // colors x bits fits easily; columns is checked against the bound before multiplying.
    UInt64 bits_per_pixel = static_cast<UInt64>(colors) * static_cast<UInt64>(bits_per_component);
    UInt64 max_bits = static_cast<UInt64>(Limits::kMaxPredictorRowBytes) * 8;
    LUM_CHECK(bits_per_pixel == 0 || static_cast<UInt64>(columns) <= max_bits / bits_per_pixel,
              "Bad predictor parameters");
    UInt64 row = (static_cast<UInt64>(columns) * bits_per_pixel + 7) / 8;
    LUM_CHECK(row <= Limits::kMaxPredictorRowBytes, "Bad predictor parameters");
    return static_cast<size_t>(row);
}

std::unique_ptr<Filter> CreatePredictorFilter(std::unique_ptr<Filter> input, Int64 predictor,
                                              Int64 columns, Int64 colors,
                                              Int64 bits_per_component) {
    if (predictor <= 1) return input;
    PredictorRowSize(columns, colors, bits_per_component);
    auto c = static_cast<UInt32>(columns);
    auto n = static_cast<UInt32>(colors);
    auto b = static_cast<UInt32>(bits_per_component);
    if (predictor == 2) return std::make_unique<TIFFPredictorDecode>(std::move(input), c, n, b);
    if (predictor >= 10 && predictor <= 15)
        return std::make_unique<PNGPredictorDecode>(std::move(input), c, n, b);
    LUM_FAIL("Unknown predictor function.");
}

}  // namespace lum::Filters
