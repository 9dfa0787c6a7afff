// CCITTFaxDecode with every parameter the stream dictionary can set.
// Header: [flags][K][Columns lo][Columns hi][Rows lo][Rows hi][DamagedRowsBeforeError];
// flags bit 0 EndOfLine, 1 EncodedByteAlign, 2 EndOfBlock, 3 BlackIs1. K is signed.
// fuzz-run: seed-script tools/gen-image-seeds.py
#include "Common/Exception.h"
#include "Filters/CCITTFaxDecode.h"
#include "FilterFuzzSupport.h"

using namespace lum::Filters;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 7) return 0;
    CCITTFaxParams p;
    p.end_of_line = data[0] & 1;
    p.encoded_byte_align = data[0] & 2;
    p.end_of_block = data[0] & 4;
    p.black_is_1 = data[0] & 8;
    p.k = static_cast<int8_t>(data[1]);
    p.columns = data[2] | (data[3] << 8);
    p.rows = data[4] | (data[5] << 8);
    p.damaged_rows_before_error = data[6];
    try {
        CCITTFaxDecode d(lum::fuzz::Input(data, size, 7), p);
        lum::fuzz::Drain(d);
    } catch (const lum::Common::Exception&) {
        // Impossible run lengths raise; that is the decoder's answer, not a fault.
    }
    return 0;
}
