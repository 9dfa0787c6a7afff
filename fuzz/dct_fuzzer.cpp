// DCTDecode: JPEG data with the stream's ColorTransform.
// Header: [ColorTransform: 0, 1, or anything else for none given][flags]; flags bit 0 reads
// the input through 1 KiB windows of a shared file view, as a document's streams are read.
// fuzz-run: seed-script tools/gen-image-seeds.py
#include "Common/Exception.h"
#include "Filters/DCTDecode.h"
#include "FilterFuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const lum::Int64 transform = data[0] <= 1 ? data[0] : -1;
    try {
        lum::Filters::DCTDecode d(lum::fuzz::Input(data, size, 2, data[1] & 1), transform);
        lum::fuzz::Drain(d);
    } catch (const lum::Common::Exception&) {
        // What libjpeg can't decode raises with its message; that is the stage's answer.
    }
    return 0;
}
