#include "Filters/ASCIIHexDecode.h"

namespace lum::Filters {

namespace {

// Hex digit value, 16 for white space (skipped), 17 for anything that ends the data.
struct HexTable {
    UInt8 v[256];
    constexpr HexTable() : v() {
        for (int i = 0; i < 256; ++i) v[i] = 17;
        for (int c : {8, 9, 10, 11, 12, 13, 32}) v[c] = 16;
        for (int i = 0; i < 10; ++i) v['0' + i] = static_cast<UInt8>(i);
        for (int i = 0; i < 6; ++i) {
            v['A' + i] = static_cast<UInt8>(10 + i);
            v['a' + i] = static_cast<UInt8>(10 + i);
        }
    }
};
constexpr HexTable kHex;

}  // namespace

ASCIIHexDecode::ASCIIHexDecode(std::unique_ptr<Filter> input)
    : ReaderBufFilter(std::move(input), kBufferSize) {}

ASCIIHexDecode::~ASCIIHexDecode() = default;

size_t ASCIIHexDecode::Process() {
    UInt8* out = m_buf_begin;
    UInt8* const end = m_buf_end;
    while (out < end && !m_end) {
        int c;
        do c = m_reader.Get();
        while (c >= 0 && kHex.v[c] == 16);
        if (c < 0 || kHex.v[c] > 15) {
            m_end = true;
            break;
        }
        int high = kHex.v[c];
        do c = m_reader.Get();
        while (c >= 0 && kHex.v[c] == 16);
        if (c < 0 || kHex.v[c] > 15) {
            // A lone last digit is the high half of a byte.
            m_end = true;
            *out++ = static_cast<UInt8>(high << 4);
            break;
        }
        *out++ = static_cast<UInt8>((high << 4) | kHex.v[c]);
    }
    return static_cast<size_t>(out - m_buf_begin);
}

void ASCIIHexDecode::Reset() {
    BufFilter::Reset();
    m_end = false;
}

}  // namespace lum::Filters
