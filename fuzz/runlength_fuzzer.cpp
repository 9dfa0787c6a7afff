// RunLengthDecode, reading the input whole or, with the first byte odd, in 1 KiB windows.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "Filters/RunLengthDecode.h"
#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "Filters/ThreadSafeFilter.h"

using namespace lum::Filters;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    std::unique_ptr<Filter> f = std::make_unique<ExtBufInputFilter>(data + 1, size - 1);
    if (data[0] & 1) f = std::make_unique<ThreadSafeFilter>(std::move(f));
    RunLengthDecode d(std::move(f));
    FilterReader r(&d);
    uint8_t buf[777];
    while (r.Read(buf, sizeof buf) > 0) {
    }
    return 0;
}
