#include "Filters/LZWDecode.h"

#include <algorithm>
#include <cstring>

namespace lum::Filters {

namespace {
constexpr int kClearCode = 256;
constexpr int kEodCode = 257;
constexpr int kFirstCode = 258;
}  // namespace

LZWDecode::LZWDecode(std::unique_ptr<Filter> input, int early_change)
    : ReaderBufFilter(std::move(input), kBufferSize), m_early(early_change == 0 ? 0 : 1) {
    for (int i = 0; i < 256; ++i) m_table[i] = Entry{1, 0, static_cast<UInt8>(i)};
    for (int i = 256; i < kTableSize; ++i) m_table[i] = Entry{0, 0, 0};
}

LZWDecode::~LZWDecode() = default;

int LZWDecode::ReadCode() {
    while (m_bit_count < m_width) {
        int b = m_reader.Get();
        if (b < 0) return -1;
        m_bit_buf = (m_bit_buf << 8) | static_cast<UInt32>(b);
        m_bit_count += 8;
    }
    m_bit_count -= m_width;
    return static_cast<int>((m_bit_buf >> m_bit_count) & ((1u << m_width) - 1));
}

void LZWDecode::ClearTable() {
    m_str_len = 0;
    m_str_pos = 0;
    m_next_code = kFirstCode;
    m_width = 9;
    m_first = true;
}

bool LZWDecode::DecodeCode(int code) {
    if (code == kEodCode) return false;
    if (m_next_code >= kTableSize) ClearTable();  // a full table starts over, code kept
    size_t old_len = m_str_len;
    if (code < 256) {
        m_str[0] = static_cast<UInt8>(code);
        m_str_len = 1;
    } else if (code < m_next_code) {
        size_t len = m_table[code].length;
        if (len == 0 || len > sizeof m_str) return false;
        // Walk the prefix chain from the tail; each prefix is a smaller code, so it ends.
        int c = code;
        for (size_t i = len; i > 0; --i) {
            m_str[i - 1] = m_table[c].last;
            c = m_table[c].prefix;
        }
        m_str_len = len;
    } else if (code == m_next_code) {
        if (old_len >= sizeof m_str) return false;
        m_str[old_len] = m_str[0];
        m_str_len = old_len + 1;
    } else {
        return false;  // beyond the table: the data is corrupt
    }
    if (m_first) {
        m_first = false;
    } else if (m_prev_code >= 0) {
        m_table[m_next_code] =
            Entry{static_cast<UInt16>(old_len + 1), static_cast<UInt16>(m_prev_code), m_str[0]};
        ++m_next_code;
        int n = m_next_code + m_early;
        if (n == 512) m_width = 10;
        else if (n == 1024) m_width = 11;
        else if (n == 2048) m_width = 12;
    }
    m_prev_code = code;
    m_str_pos = 0;
    return true;
}

size_t LZWDecode::Process() {
    UInt8* out = m_buf_begin;
    UInt8* const end = m_buf_end;
    while (out < end) {
        if (m_str_pos < m_str_len) {
            size_t k = std::min(m_str_len - m_str_pos, static_cast<size_t>(end - out));
            std::memcpy(out, m_str + m_str_pos, k);
            out += k;
            m_str_pos += k;
            continue;
        }
        if (m_end) break;
        int code = ReadCode();
        while (code == kClearCode) {
            ClearTable();
            code = ReadCode();
        }
        if (code < 0 || !DecodeCode(code)) {
            m_end = true;
            m_str_len = m_str_pos = 0;
        }
    }
    return static_cast<size_t>(out - m_buf_begin);
}

void LZWDecode::Reset() {
    BufFilter::Reset();
    ClearTable();
    m_prev_code = -1;
    m_bit_buf = 0;
    m_bit_count = 0;
    m_end = false;
}

}  // namespace lum::Filters
