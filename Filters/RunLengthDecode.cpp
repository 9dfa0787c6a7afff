#include "Filters/RunLengthDecode.h"

namespace lum::Filters {

RunLengthDecode::RunLengthDecode(std::unique_ptr<Filter> input)
    : ReaderBufFilter(std::move(input), kBufferSize) {}

RunLengthDecode::~RunLengthDecode() = default;

size_t RunLengthDecode::Process() {
    UInt8* out = m_buf_begin;
    UInt8* const end = m_buf_end;
    while (out < end) {
        if (m_left == 0) {
            if (m_end) break;
            int n = m_reader.Get();
            if (n < 0 || n == 128) {
                m_end = true;
                break;
            }
            if (n < 128) {
                m_left = static_cast<size_t>(n) + 1;
                m_repeat = false;
            } else {
                m_left = static_cast<size_t>(257 - n);
                m_repeat = true;
                int b = m_reader.Get();
                m_byte = static_cast<UInt8>(b < 0 ? 255 : b);
            }
        }
        if (m_repeat) {
            while (out < end && m_left > 0) {
                *out++ = m_byte;
                --m_left;
            }
        } else {
            while (out < end && m_left > 0) {
                // A literal run cut by the end of the input is completed with 255.
                int b = m_reader.Get();
                *out++ = static_cast<UInt8>(b < 0 ? 255 : b);
                --m_left;
            }
        }
    }
    return static_cast<size_t>(out - m_buf_begin);
}

void RunLengthDecode::Reset() {
    BufFilter::Reset();
    m_left = 0;
    m_repeat = false;
    m_end = false;
}

}  // namespace lum::Filters
