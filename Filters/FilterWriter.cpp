#include "Filters/FilterWriter.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "Common/Exception.h"
#include "Filters/FilterReader.h"

namespace lum::Filters {

void FilterWriter::AttachFilter(Filter* filter) {
    HandOver();
    mp_filter = filter;
}

void FilterWriter::HandOver() {
    if (mp_filter && m_cur != m_mark) mp_filter->Consume(static_cast<size_t>(m_cur - m_mark));
    m_mark = m_cur = m_end = nullptr;
}

void FilterWriter::Refill() {
    HandOver();
    size_t n = mp_filter ? mp_filter->Size() : 0;
    if (n == 0) LUM_FAIL("No space left to write to the filter");
    m_mark = m_cur = mp_filter->Begin();
    m_end = m_cur + n;
}

void FilterWriter::WriteBuffer(const void* bytes, size_t n) {
    const UInt8* src = static_cast<const UInt8*>(bytes);
    while (n > 0) {
        if (m_cur == m_end) Refill();
        size_t k = std::min(n, static_cast<size_t>(m_end - m_cur));
        std::memcpy(m_cur, src, k);
        m_cur += k;
        src += k;
        n -= k;
    }
}

void FilterWriter::WriteFilter(FilterReader& reader) {
    while (reader.Refill()) {
        size_t n = reader.WindowSize();
        WriteBuffer(reader.WindowBegin(), n);
        reader.Skip(n);
    }
}

namespace {
template <typename T>
void WriteDecimal(FilterWriter& w, const char* fmt, T v) {
    char buf[32];
    int n = std::snprintf(buf, sizeof buf, fmt, v);
    w.WriteBuffer(buf, static_cast<size_t>(n));
}
}  // namespace

void FilterWriter::WriteInt16(Int16 v) { WriteDecimal(*this, "%d", static_cast<int>(v)); }
void FilterWriter::WriteUInt16(UInt16 v) { WriteDecimal(*this, "%u", static_cast<unsigned>(v)); }
void FilterWriter::WriteInt32(Int32 v) { WriteDecimal(*this, "%ld", static_cast<long>(v)); }
void FilterWriter::WriteUInt32(UInt32 v) {
    WriteDecimal(*this, "%lu", static_cast<unsigned long>(v));
}
void FilterWriter::WriteInt64(Int64 v) { WriteDecimal(*this, "%lld", static_cast<long long>(v)); }
void FilterWriter::WriteUInt64(UInt64 v) {
    WriteDecimal(*this, "%llu", static_cast<unsigned long long>(v));
}

void FilterWriter::WriteHexBuffer(const UInt8* bytes, size_t n) {
    static const char kDigits[] = "0123456789ABCDEF";
    for (size_t i = 0; i < n; ++i) {
        WriteUChar(static_cast<UInt8>(kDigits[bytes[i] >> 4]));
        WriteUChar(static_cast<UInt8>(kDigits[bytes[i] & 15]));
    }
}

void FilterWriter::Flush() {
    HandOver();
    if (mp_filter) mp_filter->Flush();
}

void FilterWriter::FlushAll() {
    Flush();
    if (!mp_filter) return;
    for (Filter* f = mp_filter->GetAttachedFilter(); f; f = f->GetAttachedFilter()) f->Flush();
}

size_t FilterWriter::Count() {
    if (!mp_filter) return 0;
    return mp_filter->Count() + static_cast<size_t>(m_cur - m_mark);
}

Int64 FilterWriter::Tell() {
    HandOver();
    return mp_filter ? mp_filter->Tell() : 0;
}

void FilterWriter::Seek(Int64 offset, Filter::ReferencePos origin) {
    HandOver();
    if (mp_filter) mp_filter->Seek(offset, origin);
}

}  // namespace lum::Filters
