#include "Filters/TIFFPredictorDecode.h"

#include <algorithm>
#include <cstring>

#include "Filters/BitStream.h"
#include "Filters/ExtBufInputFilter.h"
#include "Filters/Predictor.h"

namespace lum::Filters {

TIFFPredictorDecode::TIFFPredictorDecode(std::unique_ptr<Filter> input, UInt32 columns,
                                         UInt32 colors, UInt32 bits_per_component)
    : ReaderBufFilter(std::move(input), PredictorRowSize(columns, colors, bits_per_component)),
      m_bits(bits_per_component),
      m_colors(colors),
      m_columns(columns),
      m_row_size(m_buf_size),
      m_running(colors, 0),
      m_samples(colors, 0) {
    std::memset(m_buf_begin, 0, m_buf_size);
}

TIFFPredictorDecode::~TIFFPredictorDecode() = default;

void TIFFPredictorDecode::DecodeRow() {
    UInt8* row = m_buf_begin;
    if (m_bits == 8) {
        // Whole bytes: the common case goes without the bit reader.
        for (size_t i = m_colors; i < m_row_size; ++i)
            row[i] = static_cast<UInt8>(row[i] + row[i - m_colors]);
        return;
    }
    if (m_bits == 0 || m_colors == 0 || m_columns == 0) return;
    // The writer never overtakes the reader: each sample goes back where it was read.
    ExtBufInputFilter source(row, m_row_size);
    BitStreamReader in(&source);
    BitStreamBufWriter out(row, m_row_size);
    const int width = static_cast<int>(m_bits);
    const UInt32 mask = m_bits >= 32 ? 0xFFFFFFFFu : ((1u << m_bits) - 1);
    for (UInt32 c = 0; c < m_colors; ++c) {
        m_running[c] = in.ReadBits(width);
        out.WriteBits(m_running[c], width);
    }
    for (UInt32 x = 1; x < m_columns; ++x) {
        for (UInt32 c = 0; c < m_colors; ++c) m_samples[c] = in.ReadBits(width);
        for (UInt32 c = 0; c < m_colors; ++c) {
            m_running[c] += m_samples[c];
            out.WriteBits(m_running[c] & mask, width);
        }
    }
    out.Flush();
}

size_t TIFFPredictorDecode::Process() {
    if (m_end) return 0;
    size_t n = m_row_size ? m_reader.Read(m_buf_begin, m_row_size) : 0;
    if (n == 0) {
        m_end = true;
        return 0;
    }
    DecodeRow();
    return m_buf_size;
}

void TIFFPredictorDecode::Reset() {
    BufFilter::Reset();
    m_end = false;
}

}  // namespace lum::Filters
