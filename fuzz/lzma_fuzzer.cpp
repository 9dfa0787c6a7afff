// LZMADecode, the resource file's decoder, which any stream may name as `_lumLZMA`. Header:
// [flags]; bit 0 reads the input in 1 KiB windows. It raises on bad data, which is its way of
// failing: only crashes, leaks and hangs are findings.
#include "Common/Exception.h"
#include "Filters/LZMADecode.h"
#include "FilterFuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    lum::Filters::LZMADecode d(lum::fuzz::Input(data, size, 1, data[0] & 1));
    try {
        lum::fuzz::Drain(d);
    } catch (const lum::Common::Exception&) {
    }
    return 0;
}
