#include "Filters/ASCII85Decode.h"

namespace lum::Filters {

namespace {
inline bool IsSpace85(int c) { return c == 0 || c == 9 || c == 10 || c == 12 || c == 13 || c == 32; }
}  // namespace

ASCII85Decode::ASCII85Decode(std::unique_ptr<Filter> input)
    : ReaderBufFilter(std::move(input), kBufferSize) {}

ASCII85Decode::~ASCII85Decode() = default;

int ASCII85Decode::NextNonSpace() {
    int c;
    do c = m_reader.Get();
    while (c >= 0 && IsSpace85(c));
    return c;
}

bool ASCII85Decode::NextGroup() {
    if (m_end) return false;
    int c = NextNonSpace();
    if (c < 0 || c == '~') {
        m_end = true;
        if (c == '~' && m_reader.Peek() == '>') m_reader.Get();
        return false;
    }
    if (c == 'z') {
        m_out[0] = m_out[1] = m_out[2] = m_out[3] = 0;
        m_out_count = 4;
        m_out_index = 0;
        return true;
    }
    int values[5];
    values[0] = c;
    int k = 1;
    for (; k < 5; ++k) {
        c = NextNonSpace();
        if (c < 0 || c == '~') break;
        values[k] = c;
    }
    int produced = 4;
    if (k < 5) {
        // A partial group: pad with "u" and keep k-1 bytes; the data ends here.
        for (int i = k; i < 5; ++i) values[i] = 'u';
        produced = k - 1;
        m_end = true;
        if (c == '~' && m_reader.Peek() == '>') m_reader.Get();
    }
    UInt32 sum = 0;
    for (int i = 0; i < 5; ++i) sum = sum * 85u + static_cast<UInt32>(values[i] - 33);
    m_out[0] = static_cast<UInt8>(sum >> 24);
    m_out[1] = static_cast<UInt8>(sum >> 16);
    m_out[2] = static_cast<UInt8>(sum >> 8);
    m_out[3] = static_cast<UInt8>(sum);
    m_out_count = produced;
    m_out_index = 0;
    return produced > 0;
}

size_t ASCII85Decode::Process() {
    UInt8* out = m_buf_begin;
    UInt8* const end = m_buf_end;
    while (out < end) {
        if (m_out_index >= m_out_count && !NextGroup()) break;
        while (out < end && m_out_index < m_out_count) *out++ = m_out[m_out_index++];
    }
    return static_cast<size_t>(out - m_buf_begin);
}

void ASCII85Decode::Reset() {
    BufFilter::Reset();
    m_out_count = m_out_index = 0;
    m_end = false;
}

}  // namespace lum::Filters
