#include "Filters/Filter.h"

#include <algorithm>
#include <cstring>

#include "Common/Exception.h"
#include "Common/UString.h"

namespace lum::Filters {

Filter::Filter(std::unique_ptr<Filter> attached) : m_attached(std::move(attached)) {}

Filter::~Filter() {
    // A long chain is destroyed from the reader's end down; unlink iteratively so that a chain
    // of any length can't exhaust the stack.
    std::unique_ptr<Filter> next = std::move(m_attached);
    while (next) {
        std::unique_ptr<Filter> after = std::move(next->m_attached);
        next.reset();
        next = std::move(after);
    }
}

void Filter::AttachFilter(std::unique_ptr<Filter> filter) { m_attached = std::move(filter); }

std::unique_ptr<Filter> Filter::ReleaseAttachedFilter() { return std::move(m_attached); }

Filter* Filter::GetAttachedFilter() { return m_attached.get(); }

Filter* Filter::GetSourceFilter() {
    Filter* f = this;
    while (Filter* next = f->GetAttachedFilter()) f = next;
    return f;
}

const char* Filter::GetDecodeName() const { return GetName(); }

void Filter::SetStreamLength(size_t) {}

void Filter::Flush() {}

bool Filter::CanSeek() { return false; }

void Filter::Seek(Int64, ReferencePos) { LUM_FAIL("Seek is not supported by this filter"); }

Int64 Filter::Tell() { LUM_FAIL("Tell is not supported by this filter"); }

std::unique_ptr<Filter> Filter::CreateInputIterator() {
    LUM_FAIL("CreateInputIterator() is not supported by this filter");
}

UString Filter::GetFilePath() const {
    static const UString empty;
    return empty;
}

// --- BufFilter ---

BufFilter::BufFilter(std::unique_ptr<Filter> attached, size_t buf_size, bool is_input,
                     UInt8* ext_buf)
    : Filter(std::move(attached)),
      m_is_input(is_input),
      m_owns_buffer(ext_buf == nullptr),
      m_buf_begin(ext_buf),
      m_buf_end(ext_buf ? ext_buf + buf_size : nullptr),
      m_buf_size(buf_size),
      m_cur(nullptr),
      m_avail(0),
      m_count(0) {
    if (!ext_buf) {
        m_storage.reset(new UInt8[buf_size ? buf_size : 1]);
        m_buf_begin = m_storage.get();
        m_buf_end = m_buf_begin + buf_size;
    }
    StartWindow();
}

void BufFilter::StartWindow() {
    if (m_is_input) {
        m_cur = m_buf_end;
        m_avail = 0;
    } else {
        m_cur = m_buf_begin;
        m_avail = m_buf_size;
    }
}

Int64 BufFilter::LimitWindow(size_t bytes) {
    if (bytes <= m_avail) {
        m_avail = bytes;
        return 0;
    }
    return static_cast<Int64>(std::min<size_t>(bytes - m_avail, INT64_MAX));
}

BufFilter::~BufFilter() = default;

UInt8* BufFilter::Begin() {
    if (m_avail == 0) Refill();
    return m_cur;
}

size_t BufFilter::Size() {
    if (m_avail == 0) Refill();
    return m_avail;
}

void BufFilter::Consume(size_t n) {
    LUM_CHECK(n <= m_avail, "Consumed more than the window holds");
    m_count += n;
    m_avail -= n;
    m_cur += n;
}

void BufFilter::Refill() {
    // At the end (nothing delivered) the position stays where it is: filters over a fixed
    // buffer keep their position in m_cur.
    size_t n = Process();
    if (n > 0) m_cur = m_buf_begin;
    m_avail = n;
}

size_t BufFilter::Count() { return m_count; }

size_t BufFilter::SetCount(size_t new_count) {
    size_t old = m_count;
    m_count = new_count;
    return old;
}

bool BufFilter::IsInputFilter() { return m_is_input; }

void BufFilter::Reset() {
    m_count = 0;
    StartWindow();
}

void BufFilter::AllocateBuffer(size_t size) {
    m_storage.reset(new UInt8[size ? size : 1]);
    m_owns_buffer = true;
    m_buf_begin = m_storage.get();
    m_buf_end = m_buf_begin + size;
    m_buf_size = size;
    StartWindow();
}

Int64 BufFilter::SeekTarget(Int64 base, Int64 offset) {
    Int64 r;
    if (__builtin_add_overflow(base, offset, &r)) return offset < 0 ? INT64_MIN : INT64_MAX;
    return r;
}

}  // namespace lum::Filters
