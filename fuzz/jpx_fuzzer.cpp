// JPXDecode: JPEG 2000 data (JP2 or raw codestream) in both shapes. Nothing may leave the
// stage but bytes: a broken stream is an empty one.
// Header: [flags][components][bits]; flags bit 0 stripe, bit 1 own colours; components is
// signed (-1 for inline data).
// fuzz-run: seed-script tools/gen-image-seeds.py
#include "Filters/JPXDecode.h"
#include "FilterFuzzSupport.h"

using namespace lum::Filters;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    JPXParams p;
    p.stripe = data[0] & 1;
    p.own_colors = data[0] & 2;
    p.components = static_cast<int8_t>(data[1]);
    p.bits = data[2] % 17;
    JPXDecode d(lum::fuzz::Input(data, size, 3), p);
    lum::fuzz::Drain(d);
    return 0;
}
