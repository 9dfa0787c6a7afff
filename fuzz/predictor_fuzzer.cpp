// The predictor stages alone, on raw rows. Header: [kind][colors][bits][columns lo][columns hi];
// kind bit 0 chooses TIFF or PNG, bit 1 reads the input in 1 KiB windows.
#include <exception>

#include "Filters/Predictor.h"
#include "FilterFuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 5) return 0;
    const int colors = data[1] % 34;  // 0 and above the usual 32 too
    const int bits = data[2] % 34;    // every width from 0 to 33, the bad ones raise
    // Up to 4095 columns: wider rows only cost time per input, they reach no new code.
    const int columns = data[3] | ((data[4] & 0x0F) << 8);
    std::unique_ptr<lum::Filters::Filter> f;
    try {
        f = lum::Filters::CreatePredictorFilter(lum::fuzz::Input(data, size, 5, data[0] & 2),
                                                (data[0] & 1) ? 2 : 10, columns, colors, bits);
    } catch (const std::exception&) {
        return 0;
    }
    lum::fuzz::Drain(*f, 1000);
    return 0;
}
