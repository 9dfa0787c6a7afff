// FlateDecode, raw or zlib, with a predictor stage behind it as stream dictionaries ask for.
// Header: [flags][colors][bits][columns]; flags bit 0 raw, bit 1 read the input in 1 KiB
// windows, bits 2-3 predictor (none, TIFF, PNG, PNG).
#include "Filters/FlateDecode.h"
#include "Filters/Predictor.h"
#include "FilterFuzzSupport.h"

using namespace lum::Filters;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 4) return 0;
    const uint8_t flags = data[0];
    const int colors = 1 + data[1] % 4;
    const int bits_table[] = {1, 2, 4, 8, 16};
    const int bits = bits_table[data[2] % 5];
    const int columns = 1 + data[3];
    const int predictors[] = {1, 2, 12, 15};
    std::unique_ptr<Filter> f = std::make_unique<FlateDecode>(lum::fuzz::Input(data, size, 4, flags & 2), flags & 1);
    f = CreatePredictorFilter(std::move(f), predictors[(flags >> 2) & 3], columns, colors, bits);
    lum::fuzz::Drain(*f);
    return 0;
}
