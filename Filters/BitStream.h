#pragma once
// Reading and writing bit fields, most significant bit first, of widths 1 to 32.
#include "Filters/FilterReader.h"

namespace lum::Filters {

// Reads from a filter; bits beyond the end of the data read as 0.
class BitStreamReader {
public:
    explicit BitStreamReader(Filter* filter) : m_reader(filter) {}
    UInt32 ReadBits(int width);
    bool AtEnd();

private:
    FilterReader m_reader;
    UInt64 m_bits = 0;
    int m_count = 0;
};

// Writes into a caller's buffer; writes past its end are dropped.
class BitStreamBufWriter {
public:
    BitStreamBufWriter(UInt8* buf, size_t size) : m_cur(buf), m_end(buf + size) {}
    void WriteBits(UInt32 value, int width);
    // Writes out a last partial byte, padded with the bits that stood there.
    void Flush();

private:
    UInt8* m_cur;
    UInt8* m_end;
    UInt64 m_bits = 0;
    int m_count = 0;
};

}  // namespace lum::Filters
