// Bytes in as an inline image: the first byte picks the filter chain and the second the
// colour space, the next three the width, height and bits per component, and the rest is
// the image's data, followed by more content that must still be read.
#include <cstddef>
#include <cstdint>
#include <string>

#include "ContentFuzzSupport.h"

namespace {

const char* const kFilters[] = {"",
                                "/F /AHx",
                                "/F /A85",
                                "/F /Fl",
                                "/F /RL",
                                "/F /LZW",
                                "/F [/AHx /Fl] /DP [null << /Predictor 12 /Columns 4 >>]",
                                "/F /CCF /DP << /K -1 /Columns 8 >>",
                                "/F /DCT",
                                "/F [/AHx] /DP [null null]",
                                "/F /Fl /DP << /Predictor 2 /Colors 3 /Columns 2 >>"};
const char* const kSpaces[] = {"", "/CS /G", "/CS /RGB", "/CS /CMYK", "/CS /CS",
                               "/IM true", "/CS [/I /RGB 1 <000000FFFFFF>]", "/CS /Nope"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 5) return 0;
    const char* filter = kFilters[data[0] % std::size(kFilters)];
    const char* space = kSpaces[data[1] % std::size(kSpaces)];
    std::string content = "q BI /W " + std::to_string(data[2]) + " /H " + std::to_string(data[3]) +
                          " /BPC " + std::to_string(data[4] % 17) + " " + space + " " + filter +
                          " ID ";
    content.append(reinterpret_cast<const char*>(data + 5), size - 5);
    content += " EI Q BT /F1 10 Tf (after) Tj ET";
    lum::fuzz::ReadContent(content);
    return 0;
}
