#include "Common/UString.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <ostream>

#include "Common/Exception.h"
#include "Common/TextEncodingTables.h"
#include "Common/UnicodeUtils.h"

namespace lum {

namespace {

const Unicode kEmpty[1] = {0};

bool IsHighSurrogate(UInt32 u) noexcept { return u >= 0xD800 && u <= 0xDBFF; }
bool IsLowSurrogate(UInt32 u) noexcept { return u >= 0xDC00 && u <= 0xDFFF; }

size_t UnitLength(const Unicode* value) noexcept {
    size_t n = 0;
    while (value[n]) ++n;
    return n;
}

int CheckedLength(size_t n) {
    LUM_CHECK(n < static_cast<size_t>(std::numeric_limits<int>::max()), "String too long");
    return static_cast<int>(n);
}

const char kHexDigits[] = "0123456789ABCDEF";

}  // namespace

UString::UString(const UString& other) {
    if (!other.Empty()) mp_impl = std::make_unique<Storage>(*other.mp_impl);
}

UString::UString(const Unicode* value) {
    if (value) Assign(value, -1);
}

UString::UString(const Unicode* value, int length) {
    if (value) Assign(value, length);
}

UString::UString(Unicode value) { Assign(&value, 1); }

UString::UString(const wchar_t* value) {
    if (!value) return;
    Storage& s = Mutable();
    s.clear();
    for (; *value; ++value) {
        const auto v = static_cast<UInt32>(*value);
        if (v <= 0xFFFF) {
            // Lone surrogate values stand as units, so the text survives a round trip.
            s.push_back(static_cast<Unicode>(v));
        } else {
            UInt16 pair[2];
            Uni::CodePoint_to_UTF16Nat(v, pair);
            s.insert(s.end(), pair, pair + 2);
        }
    }
    s.push_back(0);
}

UString::UString(const std::wstring& value) : UString(value.c_str()) {}

UString::UString(const char* buf, int buf_sz, TextEncoding enc) {
    IMPL_LUM_UStringAssignAscii(*this, buf, buf_sz, enc);
}

UString::UString(const std::string& utf8) {
    IMPL_LUM_UStringAssignAscii(*this, utf8.data(), CheckedLength(utf8.size()), enc_utf8);
}

UString::~UString() = default;

UString& UString::operator=(const UString& other) { return Assign(other); }


UString::Storage& UString::Mutable() {
    if (!mp_impl) mp_impl = std::make_unique<Storage>();
    return *mp_impl;
}

UString& UString::Assign(const UString& other) {
    if (this == &other) return *this;
    return Assign(other.GetBuffer(), other.GetLength());
}

UString& UString::Assign(const Unicode* value, int length) {
    if (!value || length == 0) {
        Clear();
        return *this;
    }
    const size_t n = length < 0 ? UnitLength(value) : static_cast<size_t>(length);
    CheckedLength(n);
    Storage& s = Mutable();
    const bool inside = !s.empty() && value >= s.data() && value < s.data() + s.size();
    if (inside) {
        // The source would move or be overwritten under us: copy it out first.
        Storage tmp(value, value + n);
        tmp.push_back(0);
        s.swap(tmp);
    } else {
        s.assign(value, value + n);
        s.push_back(0);
    }
    return *this;
}

UString& UString::Append(const UString& other) { return Append(other.GetBuffer(), other.GetLength()); }

UString& UString::Append(const Unicode* value, int length) {
    if (!value || length <= 0) return *this;
    const int old_len = GetLength();
    CheckedLength(static_cast<size_t>(old_len) + static_cast<size_t>(length));
    Storage& s = Mutable();
    const bool inside = !s.empty() && value >= s.data() && value < s.data() + s.size();
    if (inside) {
        const Storage tmp(value, value + length);
        return Append(tmp.data(), length);
    }
    if (!s.empty()) s.pop_back();
    s.insert(s.end(), value, value + length);
    s.push_back(0);
    return *this;
}

UString& UString::Append(Unicode unit) { return Append(&unit, 1); }

UString UString::operator+(const UString& other) const {
    UString result;
    result.Reserve(GetLength() + other.GetLength());
    result.Append(*this);
    result.Append(other);
    return result;
}

UString UString::SubStr(int position, int count) const {
    const int len = GetLength();
    if (position < 0 || position >= len || count == 0) return UString();
    const int avail = len - position;
    const int n = count < 0 || count > avail ? avail : count;
    return UString(GetBuffer() + position, n);
}

const Unicode* UString::GetBuffer() const noexcept {
    return mp_impl && !mp_impl->empty() ? mp_impl->data() : kEmpty;
}

int UString::GetLength() const noexcept {
    return mp_impl && !mp_impl->empty() ? static_cast<int>(mp_impl->size() - 1) : 0;
}

Unicode UString::GetAt(int index) const {
    LUM_CHECK(index >= 0 && index < GetLength(), "Index %d out of range", index);
    return GetBuffer()[index];
}

void UString::Clear() noexcept {
    if (mp_impl) mp_impl->clear();
}

void UString::Resize(int length) {
    LUM_CHECK(length >= 0, "Negative length");
    if (length == 0) {
        Clear();
        return;
    }
    Storage& s = Mutable();
    if (!s.empty()) s.pop_back();
    s.resize(static_cast<size_t>(length), 0);
    s.push_back(0);
}

void UString::Reserve(int length) {
    if (length > 0) Mutable().reserve(static_cast<size_t>(length) + 1);
}

// --- Conversions that can't fail -------------------------------------------------------------

namespace {

// Size of the ASCII form: one byte per unit, six for each unit of 128 or above.
int AsciiSize(const Unicode* p, int len) noexcept {
    int wide = 0;
    for (int i = 0; i < len; ++i) wide += p[i] >= 0x80;
    return len + 5 * wide;
}

// Writes the "\UXXXX" group of a unit; answers the bytes written.
inline int WriteGroup(Unicode u, char* out) noexcept {
    out[0] = '\\';
    out[1] = 'U';
    out[2] = kHexDigits[(u >> 12) & 0xF];
    out[3] = kHexDigits[(u >> 8) & 0xF];
    out[4] = kHexDigits[(u >> 4) & 0xF];
    out[5] = kHexDigits[u & 0xF];
    return 6;
}

}  // namespace

int UString::ConvertToAscii(char* out_buf, int buf_sz, bool null_term) const {
    const Unicode* p = GetBuffer();
    const int len = GetLength();
    if (!out_buf) return AsciiSize(p, len);
    if (buf_sz <= 0) return 0;
    const int room = null_term ? buf_sz - 1 : buf_sz;
    int o = 0;
    for (int i = 0; i < len; ++i) {
        const Unicode u = p[i];
        if (u < 0x80) {
            if (o + 1 > room) break;
            out_buf[o++] = static_cast<char>(u);
        } else {
            if (o + 6 > room) break;
            o += WriteGroup(u, out_buf + o);
        }
    }
    if (null_term) out_buf[o] = 0;
    return o;
}

std::string UString::ConvertToAscii() const {
    const Unicode* p = GetBuffer();
    const int len = GetLength();
    // Sized exactly beforehand, so the loop needs no room checks.
    std::string out(static_cast<size_t>(AsciiSize(p, len)), '\0');
    char* o = out.data();
    for (int i = 0; i < len; ++i) {
        const Unicode u = p[i];
        if (u < 0x80)
            *o++ = static_cast<char>(u);
        else
            o += WriteGroup(u, o);
    }
    return out;
}

int UString::ConvertToUtf32(UInt32* out_buf, int buf_sz) const {
    const Unicode* p = GetBuffer();
    const int len = GetLength();
    int count = 0;
    for (int i = 0; i < len; ++count) {
        const UInt32 u = p[i];
        UInt32 value = u;
        if (!IsHighSurrogate(u)) {
            i += 1;
        } else if (i + 1 < len && IsLowSurrogate(p[i + 1])) {
            value = Uni::CodePoint_from_UTF16Nat_Surrogate(static_cast<UInt16>(u), p[i + 1]);
            i += 2;
        } else {
            // A broken pair still takes both units, so one bad unit can't swallow more.
            value = 129;
            i += i + 1 < len ? 2 : 1;
        }
        if (out_buf && count < buf_sz) out_buf[count] = value;
    }
    return count;
}

std::u32string UString::ConvertToUtf32() const {
    std::u32string out(static_cast<size_t>(ConvertToUtf32(nullptr, 0)), U'\0');
    if (!out.empty())
        ConvertToUtf32(reinterpret_cast<UInt32*>(out.data()), static_cast<int>(out.size()));
    return out;
}

std::wstring UString::ConvertToNativeWString() const {
    const Unicode* p = GetBuffer();
    const int len = GetLength();
    std::wstring out;
    out.reserve(static_cast<size_t>(len));
    for (int i = 0; i < len; ++i) {
        if (IsHighSurrogate(p[i]) && i + 1 < len && IsLowSurrogate(p[i + 1])) {
            out.push_back(static_cast<wchar_t>(Uni::CodePoint_from_UTF16Nat_Surrogate(p[i], p[i + 1])));
            ++i;
        } else {
            out.push_back(static_cast<wchar_t>(p[i]));
        }
    }
    return out;
}

int UString::ConvertToPDFText(char* out_buf, int buf_sz) const {
    const Unicode* p = GetBuffer();
    const int len = GetLength();
    bool single_byte = true;
    for (int i = 0; i < len && single_byte; ++i) single_byte = Uni::UnicodeToPDFDoc(p[i]) >= 0;
    const int size = single_byte ? len : 2 * len + 2;
    if (!out_buf) return size;

    const int n = std::min(size, std::max(buf_sz, 0));
    int o = 0;
    if (single_byte) {
        for (; o < n; ++o) out_buf[o] = static_cast<char>(Uni::UnicodeToPDFDoc(p[o]));
        return o;
    }
    for (int i = -1; o < n; ++i) {
        const Unicode u = i < 0 ? Unicode(0xFEFF) : p[i];
        out_buf[o++] = static_cast<char>(u >> 8);
        if (o < n) out_buf[o++] = static_cast<char>(u & 0xFF);
    }
    return o;
}

std::string UString::ConvertToPDFText() const {
    std::string out(static_cast<size_t>(ConvertToPDFText(nullptr, 0)), '\0');
    if (!out.empty()) ConvertToPDFText(out.data(), static_cast<int>(out.size()));
    return out;
}

int UString::Compare(const UString& other) const noexcept {
    const Unicode* a = GetBuffer();
    const Unicode* b = other.GetBuffer();
    const int la = GetLength(), lb = other.GetLength();
    const int n = std::min(la, lb);
    for (int i = 0; i < n; ++i)
        if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
    return la == lb ? 0 : (la < lb ? -1 : 1);
}

bool UString::operator==(const UString& other) const noexcept {
    const int len = GetLength();
    return len == other.GetLength() &&
           std::memcmp(GetBuffer(), other.GetBuffer(), static_cast<size_t>(len) * sizeof(Unicode)) == 0;
}

std::ostream& operator<<(std::ostream& os, const UString& str) { return os << str.ConvertToAscii(); }

}  // namespace lum
