// DCTDecode: JPEG data with the stream's ColorTransform.
// Header: [ColorTransform: 0, 1, or anything else for none given][flags]; flags bit 0 reads
// the input through 1 KiB windows of a shared file view, as a document's streams are read.
// fuzz-run: seed-script tools/gen-image-seeds.py
#include <cstddef>
#include <cstdint>
#include <memory>

#include "Common/Exception.h"
#include "Filters/DCTDecode.h"
#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "Filters/ThreadSafeFilter.h"

using namespace lum::Filters;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const lum::Int64 transform = data[0] <= 1 ? data[0] : -1;
    std::unique_ptr<Filter> f = std::make_unique<ExtBufInputFilter>(data + 2, size - 2);
    if (data[1] & 1) f = std::make_unique<ThreadSafeFilter>(std::move(f));
    try {
        DCTDecode d(std::move(f), transform);
        FilterReader r(&d);
        uint8_t buf[4096];
        for (size_t total = 0, n; total < (64u << 20) && (n = r.Read(buf, sizeof buf)) > 0;) total += n;
    } catch (const lum::Common::Exception&) {
        // What libjpeg can't decode raises with its message; that is the stage's answer.
    }
    return 0;
}
