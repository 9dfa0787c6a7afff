// LZWDecode. Header: [flags]; bit 0 early change, bit 1 read the input in 1 KiB windows.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "Filters/LZWDecode.h"
#include "Filters/ThreadSafeFilter.h"

using namespace lum::Filters;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    std::unique_ptr<Filter> f = std::make_unique<ExtBufInputFilter>(data + 1, size - 1);
    if (data[0] & 2) f = std::make_unique<ThreadSafeFilter>(std::move(f));
    LZWDecode d(std::move(f), data[0] & 1);
    FilterReader r(&d);
    uint8_t buf[4096];
    for (size_t total = 0, n; total < (64u << 20) && (n = r.Read(buf, sizeof buf)) > 0;) total += n;
    return 0;
}
