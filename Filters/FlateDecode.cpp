#include "Filters/FlateDecode.h"

#include <zlib.h>

#include <algorithm>
#include <climits>

namespace lum::Filters {

FlateDecode::FlateDecode(std::unique_ptr<Filter> input, bool raw)
    : BufFilter(std::move(input), kBufferSize, true),
      mp_zs(std::make_unique<z_stream>()),
      m_zlib(!raw) {
    *mp_zs = z_stream{};
    // A failed init leaves a filter that delivers nothing.
    m_ok = inflateInit2(mp_zs.get(), -MAX_WBITS) == Z_OK;
    m_end = !m_ok;
}

FlateDecode::~FlateDecode() {
    if (m_ok) inflateEnd(mp_zs.get());
}

void FlateDecode::SkipInput(size_t n) {
    Filter* in = m_attached.get();
    while (in && n > 0) {
        const size_t k = std::min(n, in->Size());
        if (k == 0) return;
        in->Consume(k);
        n -= k;
    }
}

bool FlateDecode::ReadHeader() {
    Filter* in = m_attached.get();
    while (m_head_have < 2) {
        if (!in || in->Size() == 0) return false;
        m_head[m_head_have++] = *in->Begin();
        in->Consume(1);
    }
    // zlib's own tests, in its order: the check bits, the method, the window size. A preset
    // dictionary is never there: its id is read and the data ends.
    const unsigned cmf = m_head[0], flg = m_head[1];
    if ((cmf * 256 + flg) % 31 != 0 || (cmf & 0x0F) != Z_DEFLATED || (cmf >> 4) + 8 > MAX_WBITS)
        return false;
    if (flg & 0x20) {
        SkipInput(4);
        return false;
    }
    return true;
}

size_t FlateDecode::Process() {
    if (m_end) return 0;
    if (m_zlib && m_head_have < 2 && !ReadHeader()) {
        m_end = true;
        return 0;
    }
    z_stream& zs = *mp_zs;
    zs.next_out = m_buf_begin;
    zs.avail_out = static_cast<uInt>(m_buf_size);
    Filter* in = m_attached.get();
    while (zs.avail_out > 0) {
        size_t n = in ? in->Size() : 0;
        if (n == 0) {
            // The input is used up: let zlib hand over what it still holds, then end.
            zs.next_in = nullptr;
            zs.avail_in = 0;
            inflate(&zs, Z_FINISH);
            m_end = true;
            break;
        }
        zs.next_in = in->Begin();
        zs.avail_in = static_cast<uInt>(std::min<size_t>(n, UINT_MAX));
        uInt before = zs.avail_in;
        int rc = inflate(&zs, Z_NO_FLUSH);
        in->Consume(before - zs.avail_in);
        // Stream end and every error alike end the data, keeping what was produced.
        if (rc != Z_OK) {
            if (rc == Z_STREAM_END && m_zlib) SkipInput(4);  // the checksum
            m_end = true;
            break;
        }
    }
    return m_buf_size - zs.avail_out;
}

void FlateDecode::Reset() {
    BufFilter::Reset();
    if (m_ok) {
        inflateReset(mp_zs.get());
        m_end = false;
        m_head_have = 0;
    }
}

}  // namespace lum::Filters
