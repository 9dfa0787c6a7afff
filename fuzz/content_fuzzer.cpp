// Bytes in as a page's whole content stream: every operator, form, Type 3 glyph and inline
// image the reader meets, with every question a client asks of the elements.
#include <cstddef>
#include <cstdint>
#include <string>

#include "ContentFuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    lum::fuzz::ReadContent(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
