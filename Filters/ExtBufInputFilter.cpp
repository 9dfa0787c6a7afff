#include "Filters/ExtBufInputFilter.h"

#include <algorithm>

#include "Common/Exception.h"

namespace lum::Filters {

ExtBufInputFilter::ExtBufInputFilter(const UInt8* buf, size_t size)
    // The buffer is only read; BufFilter keeps non-const pointers for output filters.
    : BufFilter(nullptr, size, true, const_cast<UInt8*>(buf ? buf : reinterpret_cast<const UInt8*>(""))) {
    if (!buf) {
        m_buf_end = m_buf_begin;
        m_buf_size = 0;
    }
    Reset();
}

ExtBufInputFilter::~ExtBufInputFilter() = default;

void ExtBufInputFilter::SetStreamLength(size_t bytes) { m_avail = std::min(m_avail, bytes); }

void ExtBufInputFilter::Seek(Int64 offset, ReferencePos origin) {
    Int64 base = origin == e_begin ? 0
                 : origin == e_cur ? static_cast<Int64>(m_cur - m_buf_begin)
                                   : static_cast<Int64>(m_buf_size);
    // Positions are offsets, so a wild value can't form an out-of-range pointer.
    const Int64 mp_buf_begin = 0;
    const Int64 mp_buf_end = static_cast<Int64>(m_buf_size);
    Int64 new_pos = SeekTarget(base, offset);
    LUM_CHECK(new_pos<=mp_buf_end && mp_buf_begin<=new_pos,
              "new_pos<=mp_buf_end && mp_buf_begin<=new_pos");
    m_cur = m_buf_begin + new_pos;
    m_avail = m_buf_size - static_cast<size_t>(new_pos);
}

Int64 ExtBufInputFilter::Tell() { return static_cast<Int64>(m_cur - m_buf_begin); }

std::unique_ptr<Filter> ExtBufInputFilter::CreateInputIterator() {
    return std::make_unique<ExtBufInputFilter>(m_buf_begin, m_buf_size);
}

void ExtBufInputFilter::Reset() {
    m_count = 0;
    m_cur = m_buf_begin;
    m_avail = m_buf_size;
}

}  // namespace lum::Filters
