// LZMADecode, the resource file's decoder, which any stream may name as `_lumLZMA`. Header:
// [flags]; bit 0 reads the input in 1 KiB windows. It raises on bad data, which is its way of
// failing: only crashes, leaks and hangs are findings.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "Common/Exception.h"
#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "Filters/LZMADecode.h"
#include "Filters/ThreadSafeFilter.h"

using namespace lum::Filters;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    std::unique_ptr<Filter> f = std::make_unique<ExtBufInputFilter>(data + 1, size - 1);
    if (data[0] & 1) f = std::make_unique<ThreadSafeFilter>(std::move(f));
    f = std::make_unique<LZMADecode>(std::move(f));
    FilterReader r(f.get());
    uint8_t buf[4096];
    try {
        for (size_t total = 0, n; total < (64u << 20) && (n = r.Read(buf, sizeof buf)) > 0;)
            total += n;
    } catch (const lum::Common::Exception&) {
    }
    return 0;
}
