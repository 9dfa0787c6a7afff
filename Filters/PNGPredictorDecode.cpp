#include "Filters/PNGPredictorDecode.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "Filters/Predictor.h"

namespace lum::Filters {

PNGPredictorDecode::PNGPredictorDecode(std::unique_ptr<Filter> input, UInt32 columns, UInt32 colors,
                                       UInt32 bits_per_component)
    : ReaderBufFilter(std::move(input), kBufferSize),
      m_pixel_size((static_cast<size_t>(colors) * bits_per_component + 7) / 8),
      m_row_size(PredictorRowSize(columns, colors, bits_per_component)),
      m_rows(2 * m_row_size, 0),
      mp_cur_row(m_rows.data()),
      mp_prev_row(m_rows.data() + m_row_size) {}

PNGPredictorDecode::~PNGPredictorDecode() = default;

void PNGPredictorDecode::DecodeRow(int tag, size_t n) {
    UInt8* cur = mp_cur_row;
    const UInt8* prev = mp_prev_row;
    const size_t ps = m_pixel_size;
    switch (tag) {
        case 1:  // Sub
            for (size_t i = ps; i < n; ++i) cur[i] = static_cast<UInt8>(cur[i] + cur[i - ps]);
            break;
        case 2:  // Up
            for (size_t i = 0; i < n; ++i) cur[i] = static_cast<UInt8>(cur[i] + prev[i]);
            break;
        case 3:  // Average, the sum at full width
            for (size_t i = 0; i < n; ++i) {
                unsigned a = i >= ps ? cur[i - ps] : 0;
                cur[i] = static_cast<UInt8>(cur[i] + ((a + prev[i]) >> 1));
            }
            break;
        case 4:  // Paeth
            for (size_t i = 0; i < n; ++i) {
                int a = i >= ps ? cur[i - ps] : 0;
                int b = prev[i];
                int c = i >= ps ? prev[i - ps] : 0;
                int p = a + b - c;
                int pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
                int pred = (pa <= pb && pa <= pc) ? a : (pb <= pc ? b : c);
                cur[i] = static_cast<UInt8>(cur[i] + pred);
            }
            break;
        default:  // None, and tags outside the table pass the row unchanged
            break;
    }
}

size_t PNGPredictorDecode::Process() {
    UInt8* out = m_buf_begin;
    UInt8* const end = m_buf_end;
    while (out < end) {
        if (m_range_begin < m_range_end) {
            size_t k = std::min(static_cast<size_t>(m_range_end - m_range_begin),
                                static_cast<size_t>(end - out));
            std::memcpy(out, m_range_begin, k);
            out += k;
            m_range_begin += k;
            continue;
        }
        if (m_end) break;
        std::swap(mp_cur_row, mp_prev_row);
        int tag = m_reader.Get();
        if (tag < 0) tag = 255;
        size_t n = m_row_size ? m_reader.Read(mp_cur_row, m_row_size) : 0;
        if (n == 0) {
            m_end = true;
            break;
        }
        DecodeRow(tag, n);
        m_range_begin = mp_cur_row;
        m_range_end = mp_cur_row + n;
        if (n != m_row_size) m_end = true;
    }
    return static_cast<size_t>(out - m_buf_begin);
}

void PNGPredictorDecode::Reset() {
    BufFilter::Reset();
    std::fill(m_rows.begin(), m_rows.end(), 0);
    m_range_begin = m_range_end = nullptr;
    m_end = false;
}

}  // namespace lum::Filters
