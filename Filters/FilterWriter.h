#pragma once
// Writes bytes into an output filter's window, handing full windows to the filter. The writer
// does not own its filter, and does not flush on destruction: call Flush or FlushAll.
#include <string_view>

#include "Filters/Filter.h"

namespace lum::Filters {

class FilterReader;

class FilterWriter {
public:
    FilterWriter() = default;
    explicit FilterWriter(Filter* filter) : mp_filter(filter) {}
    FilterWriter(const FilterWriter&) = delete;
    FilterWriter& operator=(const FilterWriter&) = delete;

    // Hands what was written to the old filter (without flushing it) and writes to `filter`.
    void AttachFilter(Filter* filter);
    Filter* GetAttachedFilter() const { return mp_filter; }

    // Raise (condition "false") when the filter has no space left after a refill.
    void WriteUChar(UInt8 c) {
        if (m_cur == m_end) Refill();
        *m_cur++ = c;
    }
    void WriteBuffer(const void* bytes, size_t n);
    void WriteString(std::string_view s) { WriteBuffer(s.data(), s.size()); }
    // Copies the reader to its end.
    void WriteFilter(FilterReader& reader);

    // Decimal text of the value.
    void WriteInt16(Int16 v);
    void WriteUInt16(UInt16 v);
    void WriteInt32(Int32 v);
    void WriteUInt32(UInt32 v);
    void WriteInt64(Int64 v);
    void WriteUInt64(UInt64 v);

    // Each byte as two capital hexadecimal digits.
    void WriteHexBuffer(const UInt8* bytes, size_t n);

    // Hands the bytes written to the filter, clears the window and flushes the filter.
    void Flush();
    // Flush, then Flush of every filter down the chain, in order.
    void FlushAll();

    // Bytes written through this writer and its filter since the filter's count was reset.
    size_t Count();
    Int64 Tell();
    void Seek(Int64 offset, Filter::ReferencePos origin = Filter::e_begin);

private:
    void Refill();
    void HandOver();

    Filter* mp_filter = nullptr;
    UInt8* m_mark = nullptr;
    UInt8* m_cur = nullptr;
    UInt8* m_end = nullptr;
};

}  // namespace lum::Filters
