// JBIG2Decode: an embedded JBIG2 stream with its globals, at an image size of up to 4095 x 4095.
// Header: [width lo][width hi][height lo][height hi][globals length lo][globals length hi],
// then the globals, then the page data.
// fuzz-run: seed-script tools/gen-image-seeds.py
#include "Common/Exception.h"
#include "Filters/JBIG2Decode.h"
#include "FilterFuzzSupport.h"

using namespace lum::Filters;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 6) return 0;
    const int width = (data[0] | (data[1] << 8)) & 0xFFF;
    const int height = (data[2] | (data[3] << 8)) & 0xFFF;
    size_t globals = size_t(data[4] | (data[5] << 8));
    data += 6;
    size -= 6;
    if (globals > size) globals = size;
    std::unique_ptr<Filter> g;
    if (globals) g = std::make_unique<ExtBufInputFilter>(data, globals);
    try {
        JBIG2Decode d(lum::fuzz::Input(data, size, globals), std::move(g), width, height);
        lum::fuzz::Drain(d);
    } catch (const lum::Common::Exception&) {
        // Every failure of the stage raises; that is its answer.
    }
    return 0;
}
