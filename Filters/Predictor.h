#pragma once
// The predictor stage behind FlateDecode or LZWDecode, chosen from /DecodeParms:
//
//   /Predictor          absent or <= 1: no stage; 2: TIFFPredictorDecode;
//                       10..15: PNGPredictorDecode (each row's tag decides, not the value);
//                       anything else: raise "Unknown predictor function."
//   /Columns            default 1
//   /Colors             default 1
//   /BitsPerComponent   default 8
//
// e.g. chain = CreatePredictorFilter(std::move(chain), predictor, columns, colors, bpc);
//
// Parameters that no real stream has (colors 0 or above Limits::kMaxPredictorColors, bits
// above 32, a row above Limits::kMaxPredictorRowBytes, negative values) raise
// "Bad predictor parameters" rather than allocate or misread.
#include <memory>

#include "Filters/Filter.h"

namespace lum::Filters {

// Answers `input` unchanged for predictor <= 1, else `input` behind the predictor stage.
std::unique_ptr<Filter> CreatePredictorFilter(std::unique_ptr<Filter> input, Int64 predictor,
                                              Int64 columns, Int64 colors, Int64 bits_per_component);

// Row size in bytes for the parameters, after the checks above (raises on failure).
size_t PredictorRowSize(Int64 columns, Int64 colors, Int64 bits_per_component);

}  // namespace lum::Filters
