#include "Filters/ThreadSafeFilter.h"

#include <algorithm>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "Filters/FilterReader.h"

namespace lum::Filters {

// What all readers of one base share; it dies with the last of them.
struct ThreadSafeFilter::Shared {
    std::unique_ptr<Filter> base;
    std::mutex mutex;
    UInt64 size = 0;
    std::string name;
};

ThreadSafeFilter::ThreadSafeFilter(std::unique_ptr<Filter> base)
    : BufFilter(nullptr, kBufferSize, true), mp_shared(std::make_shared<Shared>()) {
    Filter* m_base_filter = base.get();
    LUM_CHECK(m_base_filter, "The base of a ThreadSafeFilter is missing");
    LUM_CHECK(m_base_filter->CanSeek() && m_base_filter->IsInputFilter(),
              "The base of a ThreadSafeFilter must be a seekable input filter");
    mp_shared->name = std::string("ThreadSafeFilter: ") + base->GetName();
    Int64 here = base->Tell();
    base->Seek(0, e_end);
    mp_shared->size = static_cast<UInt64>(std::max<Int64>(base->Tell(), 0));
    base->Seek(here, e_begin);
    mp_shared->base = std::move(base);
}

ThreadSafeFilter::ThreadSafeFilter(std::shared_ptr<Shared> shared)
    : BufFilter(nullptr, kBufferSize, true), mp_shared(std::move(shared)) {}

ThreadSafeFilter::~ThreadSafeFilter() = default;

const char* ThreadSafeFilter::GetName() const { return mp_shared->name.c_str(); }

size_t ThreadSafeFilter::Process() {
    if (m_limit == 0) return 0;
    if (m_read >= m_fill) {
        size_t want = kBufferSize;
        if (m_limit > 0) want = std::min(want, static_cast<size_t>(m_limit));
        std::lock_guard<std::mutex> lock(mp_shared->mutex);
        Filter* base = mp_shared->base.get();
        base->Seek(static_cast<Int64>(m_pos), e_begin);
        FilterReader reader(base);
        m_fill = reader.Read(m_storage.get(), want);
        reader.FlushReader();
        m_read = 0;
    }
    size_t n = m_fill - m_read;
    if (m_limit > 0) n = std::min(n, static_cast<size_t>(m_limit));
    m_buf_begin = m_storage.get() + m_read;
    m_buf_end = m_buf_begin + n;
    m_read += n;
    m_pos += n;
    if (m_limit > 0) m_limit -= static_cast<Int64>(n);
    return n;
}

void ThreadSafeFilter::Consume(size_t n) { BufFilter::Consume(n); }

void ThreadSafeFilter::SetStreamLength(size_t bytes) {
    // Bytes cut from the window go back to the buffer's unread part.
    size_t before = m_avail;
    m_limit = LimitWindow(bytes);
    m_pos -= before - m_avail;
    m_read -= before - m_avail;
}

Int64 ThreadSafeFilter::Tell() {
    // m_pos is the position behind the window.
    return static_cast<Int64>(m_pos) - static_cast<Int64>(m_avail);
}

void ThreadSafeFilter::Seek(Int64 offset, ReferencePos origin) {
    Int64 base = origin == e_begin ? 0
                 : origin == e_cur ? Tell()
                                   : static_cast<Int64>(mp_shared->size);
    const Int64 target = SeekTarget(base, offset);
    LUM_CHECK_AS(target >= 0 && UInt64(target) <= mp_shared->size,
                 "tmp_offset >= 0 && size_t(tmp_offset) <= m_base_size", "File seek failed");
    m_pos = static_cast<UInt64>(target);
    m_fill = m_read = 0;
    m_cur = m_buf_end;
    m_avail = 0;
}

std::unique_ptr<Filter> ThreadSafeFilter::CreateInputIterator() {
    return std::unique_ptr<Filter>(new ThreadSafeFilter(mp_shared));
}

UString ThreadSafeFilter::GetFilePath() const { return mp_shared->base->GetFilePath(); }

void ThreadSafeFilter::Reset() {
    // The unread rest of the window is fetched again from the base.
    m_pos -= m_avail;
    m_fill = m_read = 0;
    m_count = 0;
    m_cur = m_buf_end;
    m_avail = 0;
}

Filter* ThreadSafeFilter::GetBaseFilter() const { return mp_shared->base.get(); }

UInt64 ThreadSafeFilter::GetBaseSize() const { return mp_shared->size; }

}  // namespace lum::Filters
