#include "Filters/FilterReader.h"

#include <algorithm>

namespace lum::Filters {

void FilterReader::AttachFilter(Filter* filter) {
    FlushReader();
    mp_filter = filter;
}

bool FilterReader::Refill() {
    if (m_cur != m_end) return true;
    if (!mp_filter) return false;
    if (m_cur != m_mark) mp_filter->Consume(static_cast<size_t>(m_cur - m_mark));
    size_t n = mp_filter->Size();
    if (n == 0) {
        m_mark = m_cur = m_end = nullptr;
        return false;
    }
    m_mark = m_cur = mp_filter->Begin();
    m_end = m_cur + n;
    return true;
}

size_t FilterReader::Read(UInt8* buf, size_t n) {
    size_t done = 0;
    while (done < n) {
        if (m_cur == m_end && !Refill()) break;
        size_t k = std::min(n - done, static_cast<size_t>(m_end - m_cur));
        std::memcpy(buf + done, m_cur, k);
        m_cur += k;
        done += k;
    }
    return done;
}

size_t FilterReader::Skip(size_t n) {
    size_t done = 0;
    while (done < n) {
        if (m_cur == m_end && !Refill()) break;
        size_t k = std::min(n - done, static_cast<size_t>(m_end - m_cur));
        m_cur += k;
        done += k;
    }
    return done;
}

size_t FilterReader::Count() {
    if (!mp_filter) return 0;
    return mp_filter->Count() + static_cast<size_t>(m_cur - m_mark);
}

Int64 FilterReader::Tell() {
    FlushReader();
    return mp_filter ? mp_filter->Tell() : 0;
}

void FilterReader::Seek(Int64 offset, Filter::ReferencePos origin) {
    FlushReader();
    if (mp_filter) mp_filter->Seek(offset, origin);
}

void FilterReader::FlushReader() {
    if (mp_filter && m_cur != m_mark) mp_filter->Consume(static_cast<size_t>(m_cur - m_mark));
    m_mark = m_cur = m_end = nullptr;
}

void FilterReader::Flush() {
    FlushReader();
    if (mp_filter) mp_filter->Flush();
}

}  // namespace lum::Filters
