#include "Filters/BitStream.h"

namespace lum::Filters {

UInt32 BitStreamReader::ReadBits(int width) {
    while (m_count < width) {
        int b = m_reader.Get();
        m_bits = (m_bits << 8) | static_cast<UInt64>(b < 0 ? 0 : b);
        m_count += 8;
    }
    m_count -= width;
    UInt64 mask = (UInt64(1) << width) - 1;
    return static_cast<UInt32>((m_bits >> m_count) & mask);
}

bool BitStreamReader::AtEnd() { return m_count == 0 && m_reader.Peek() < 0; }

void BitStreamBufWriter::WriteBits(UInt32 value, int width) {
    UInt64 mask = (UInt64(1) << width) - 1;
    m_bits = (m_bits << width) | (value & mask);
    m_count += width;
    while (m_count >= 8) {
        m_count -= 8;
        if (m_cur < m_end) *m_cur++ = static_cast<UInt8>(m_bits >> m_count);
    }
}

void BitStreamBufWriter::Flush() {
    if (m_count == 0 || m_cur >= m_end) return;
    int pad = 8 - m_count;
    UInt8 keep = static_cast<UInt8>(*m_cur & ((1u << pad) - 1));
    *m_cur++ = static_cast<UInt8>((m_bits << pad) | keep);
    m_count = 0;
}

}  // namespace lum::Filters
