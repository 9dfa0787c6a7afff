// LZWDecode. Header: [flags]; bit 0 early change, bit 1 read the input in 1 KiB windows.
#include "Filters/LZWDecode.h"
#include "FilterFuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    lum::Filters::LZWDecode d(lum::fuzz::Input(data, size, 1, data[0] & 2), data[0] & 1);
    lum::fuzz::Drain(d);
    return 0;
}
