#include "Filters/MemoryFilter.h"

#include <algorithm>
#include <cstring>

#include "Common/Exception.h"
#include "Filters/ExtBufInputFilter.h"

namespace lum::Filters {

namespace {
constexpr size_t kMinSize = 64;
}

MemoryFilter::MemoryFilter(size_t buf_size, bool is_input)
    : BufFilter(nullptr, std::max(buf_size, kMinSize), is_input) {
    std::memset(m_buf_begin, 0, m_buf_size);
    if (m_is_input) ShowWholeBuffer();
}

MemoryFilter::~MemoryFilter() = default;

void MemoryFilter::ShowWholeBuffer() {
    m_cur = m_buf_begin;
    m_avail = m_buf_size;
}

UInt8* MemoryFilter::Begin() {
    Size();
    return m_cur;
}

size_t MemoryFilter::Size() {
    if (m_avail == 0 && !m_is_input) {
        // Writing goes on where it stopped, in a larger buffer.
        size_t pos = static_cast<size_t>(m_cur - m_buf_begin);
        Process();
        m_cur = m_buf_begin + pos;
        m_avail = m_buf_size - pos;
    }
    return m_avail;
}

size_t MemoryFilter::Process() {
    if (m_is_input) return 0;
    size_t pos = static_cast<size_t>(m_cur - m_buf_begin);
    size_t new_size = pos <= m_buf_size ? m_buf_size * 2 : pos + 1024;
    Grow(new_size);
    return m_buf_size - pos;
}

void MemoryFilter::Grow(size_t new_size) {
    std::unique_ptr<UInt8[]> bigger(new UInt8[new_size]);
    size_t keep = std::min(new_size, m_buf_size);
    std::memcpy(bigger.get(), m_buf_begin, keep);
    std::memset(bigger.get() + keep, 0, new_size - keep);
    size_t pos = static_cast<size_t>(m_cur - m_buf_begin);
    m_storage = std::move(bigger);
    m_buf_begin = m_storage.get();
    m_buf_end = m_buf_begin + new_size;
    m_buf_size = new_size;
    m_cur = m_buf_begin + std::min(pos, new_size);
}

void MemoryFilter::Consume(size_t n) {
    BufFilter::Consume(n);
    if (!m_is_input) m_high = std::max(m_high, static_cast<size_t>(m_cur - m_buf_begin));
}

size_t MemoryFilter::Count() { return m_is_input ? m_count : m_high; }

void MemoryFilter::SetStreamLength(size_t bytes) {
    if (m_is_input) m_avail = std::min(m_avail, bytes);
}

void MemoryFilter::Seek(Int64 offset, ReferencePos origin) {
    Int64 base = origin == e_begin ? 0
                 : origin == e_cur ? static_cast<Int64>(m_cur - m_buf_begin)
                                   : static_cast<Int64>(m_is_input ? m_buf_size : m_high);
    // Positions are offsets, so a wild value can't form an out-of-range pointer.
    const Int64 mp_buf_begin = 0;
    const Int64 mp_buf_end = static_cast<Int64>(m_buf_size);
    Int64 new_pos = SeekTarget(base, offset);
    if (m_is_input) {
        LUM_CHECK(new_pos<=mp_buf_end, "new_pos<=mp_buf_end");
    } else {
        new_pos = std::min(new_pos, mp_buf_end);
    }
    LUM_CHECK(mp_buf_begin<=new_pos, "mp_buf_begin<=new_pos");
    Int64 target = new_pos;
    Int64 end = mp_buf_end;
    m_cur = m_buf_begin + target;
    m_avail = static_cast<size_t>(end - target);
}

Int64 MemoryFilter::Tell() { return static_cast<Int64>(m_cur - m_buf_begin); }

std::unique_ptr<Filter> MemoryFilter::CreateInputIterator() {
    size_t size = m_is_input ? m_buf_size : m_high;
    return std::make_unique<ExtBufInputFilter>(m_buf_begin, size);
}

void MemoryFilter::Reset() {
    m_count = 0;
    ShowWholeBuffer();
    if (!m_is_input) m_high = 0;
}

void MemoryFilter::SetAsInputFilter() {
    m_is_input = true;
    m_buf_size = m_high;
    m_buf_end = m_buf_begin + m_high;
    m_count = 0;
    ShowWholeBuffer();
}

}  // namespace lum::Filters
