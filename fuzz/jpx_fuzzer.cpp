// JPXDecode: JPEG 2000 data (JP2 or raw codestream) in both shapes. Nothing may leave the
// stage but bytes: a broken stream is an empty one.
// Header: [flags][components][bits]; flags bit 0 stripe, bit 1 own colours; components is
// signed (-1 for inline data).
// fuzz-run: seed-script tools/gen-image-seeds.py
#include <cstddef>
#include <cstdint>
#include <memory>

#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "Filters/JPXDecode.h"

using namespace lum::Filters;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    JPXParams p;
    p.stripe = data[0] & 1;
    p.own_colors = data[0] & 2;
    p.components = static_cast<int8_t>(data[1]);
    p.bits = data[2] % 17;
    JPXDecode d(std::make_unique<ExtBufInputFilter>(data + 3, size - 3), p);
    FilterReader r(&d);
    uint8_t buf[4096];
    for (size_t total = 0, n; total < (64u << 20) && (n = r.Read(buf, sizeof buf)) > 0;) total += n;
    return 0;
}
