// FlateDecode, raw or zlib, with a predictor stage behind it as stream dictionaries ask for.
// Header: [flags][colors][bits][columns]; flags bit 0 raw, bit 1 read the input in 1 KiB
// windows, bits 2-3 predictor (none, TIFF, PNG, PNG).
#include <cstddef>
#include <cstdint>
#include <memory>

#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "Filters/FlateDecode.h"
#include "Filters/Predictor.h"
#include "Filters/ThreadSafeFilter.h"

using namespace lum::Filters;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 4) return 0;
    const uint8_t flags = data[0];
    const int colors = 1 + data[1] % 4;
    const int bits_table[] = {1, 2, 4, 8, 16};
    const int bits = bits_table[data[2] % 5];
    const int columns = 1 + data[3];
    const int predictors[] = {1, 2, 12, 15};
    std::unique_ptr<Filter> f = std::make_unique<ExtBufInputFilter>(data + 4, size - 4);
    if (flags & 2) f = std::make_unique<ThreadSafeFilter>(std::move(f));
    f = std::make_unique<FlateDecode>(std::move(f), flags & 1);
    f = CreatePredictorFilter(std::move(f), predictors[(flags >> 2) & 3], columns, colors, bits);
    // A bomb is read window by window; stop after 64 MiB so a run stays fast.
    FilterReader r(f.get());
    uint8_t buf[4096];
    for (size_t total = 0, n; total < (64u << 20) && (n = r.Read(buf, sizeof buf)) > 0;) total += n;
    return 0;
}
