#pragma once
// Reads bytes from a filter a window at a time: the filter is touched once per window, never
// once per byte. The reader does not own its filter.
#include <cstring>

#include "Filters/Filter.h"

namespace lum::Filters {

class FilterReader {
public:
    FilterReader() = default;
    explicit FilterReader(Filter* filter) : mp_filter(filter) {}
    FilterReader(const FilterReader&) = delete;
    FilterReader& operator=(const FilterReader&) = delete;

    // Hands what was read to the old filter, then reads from `filter` (may be null).
    void AttachFilter(Filter* filter);
    Filter* GetAttachedFilter() const { return mp_filter; }

    // The next byte, 0 to 255, or -1 at the end of the data (and again on every later call).
    int Get() {
        if (m_cur == m_end && !Refill()) return -1;
        return *m_cur++;
    }
    // The next byte without moving, or -1 at the end.
    int Peek() {
        if (m_cur == m_end && !Refill()) return -1;
        return *m_cur;
    }
    // Copies up to n bytes; fewer only at the end of the data.
    size_t Read(UInt8* buf, size_t n);
    // Moves over up to n bytes; answers how many were passed.
    size_t Skip(size_t n);

    // Bytes read through this reader and its filter since the filter's count was reset.
    size_t Count();
    Int64 Tell();
    void Seek(Int64 offset, Filter::ReferencePos origin = Filter::e_begin);

    // Hands the bytes read so far to the filter with Consume and forgets the window; the
    // unread rest of the window stays with the filter, for whoever reads it next.
    void FlushReader();
    // FlushReader, then Flush of the filter.
    void Flush();

    // The unread part of the current window, for callers that scan in bulk. Advance with
    // Skip after looking.
    const UInt8* WindowBegin() const { return m_cur; }
    size_t WindowSize() const { return static_cast<size_t>(m_end - m_cur); }
    // Skip within the window: `n` is at most WindowSize().
    void Advance(size_t n) { m_cur += n; }
    // Loads the next window when the current one is used up; false at the end of the data.
    bool Refill();

private:
    Filter* mp_filter = nullptr;
    const UInt8* m_mark = nullptr;  // start of the window; m_cur - m_mark bytes are read
    const UInt8* m_cur = nullptr;
    const UInt8* m_end = nullptr;
};

}  // namespace lum::Filters
