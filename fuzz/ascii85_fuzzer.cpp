// ASCII85Decode, reading the input whole or, with the first byte odd, in 1 KiB windows.
#include "Filters/ASCII85Decode.h"
#include "FilterFuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    lum::Filters::ASCII85Decode d(lum::fuzz::Input(data, size, 1, data[0] & 1));
    lum::fuzz::Drain(d, 777);
    return 0;
}
