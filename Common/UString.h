#pragma once
// The library's text type: a sequence of 16-bit code units (UTF-16 in practice, though any
// unit is allowed, lone surrogates and zero units included). Everything that carries text for
// a user passes through here, so the conversions out of it are the only places where a
// string's bytes are decided.
#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "Common/Types.h"

namespace lum {

// Byte encodings understood by the decoding constructor. The values are stable: callers
// store and compare them.
enum TextEncoding {
    enc_ascii = 0,    // each byte widened to a unit
    enc_pdfdoc = 1,   // PDFDocEncoding
    enc_winansi = 2,  // Windows code page 1252
    enc_pdftext = 3,  // a PDF text string: UTF-16 behind a byte-order mark, else PDFDocEncoding
    enc_utf16be = 4,  // big-endian UTF-16, with or without a byte-order mark
    enc_utf8 = 5,     // UTF-8
    enc_raw = 6       // each byte widened, as enc_ascii
};

class UString;
// Clears `str` and decodes `buf_sz` bytes of `buf` in `enc` into it. A negative size means
// "up to the first NUL" for enc_ascii and enc_utf8 and is refused otherwise.
void IMPL_LUM_UStringAssignAscii(UString& str, const char* buf, int buf_sz, TextEncoding enc);

class UString {
public:
    using Storage = std::vector<Unicode>;

    UString() noexcept = default;
    UString(const UString& other);
    UString(UString&& other) noexcept = default;
    explicit UString(const Unicode* value);           // NUL-terminated
    UString(const Unicode* value, int length);         // `length` units; negative: NUL-terminated
    explicit UString(Unicode value);                   // one unit
    explicit UString(const wchar_t* value);            // a wide string of the platform
    explicit UString(const std::wstring& value);
    // Decodes bytes; a size of -1 means up to the first NUL where the encoding allows it.
    // A null buffer raises, whatever the size.
    UString(const char* buf, int buf_sz, TextEncoding enc = enc_ascii);
    // An 8-bit string object is always UTF-8, its whole size (inner NULs included).
    explicit UString(const std::string& utf8);
    ~UString();

    UString& operator=(const UString& other);
    UString& operator=(UString&& other) noexcept = default;

    UString& Assign(const UString& other);
    // A negative count means NUL-terminated. `value` may point into this string itself.
    UString& Assign(const Unicode* value, int length = -1);
    UString& Append(const UString& other);
    UString& Append(const Unicode* value, int length);
    UString& Append(Unicode unit);
    UString& operator+=(const UString& other) { return Append(other); }
    UString operator+(const UString& other) const;

    // A new string of at most `count` units from `position`; a negative count means to the end.
    // A position beyond the end, or a result of less than one unit, gives an empty string.
    UString SubStr(int position = 0, int count = -1) const;

    const Unicode* GetBuffer() const noexcept;
    int GetLength() const noexcept;
    bool Empty() const noexcept { return GetLength() == 0; }
    // Bounds-checked unit access; raises outside [0, length).
    Unicode GetAt(int index) const;
    Unicode operator[](int index) const { return GetAt(index); }
    void Clear() noexcept;
    // Keeps the first `length` units, or pads with zero units up to it.
    void Resize(int length);
    void Reserve(int length);

    // ASCII form: units below 128 as bytes, every other unit as "\UXXXX" (capital hex digits).
    std::string ConvertToAscii() const;
    // With out_buf null, answers the size the whole text needs (without a terminator). With a
    // buffer, writes whole items only, stopping before the first that wouldn't fit, adds a
    // NUL when `null_term` and there is room for it, and answers the bytes written (NUL excluded).
    int ConvertToAscii(char* out_buf, int buf_sz, bool null_term = true) const;

    // Raises on a lone or reversed surrogate.
    std::string ConvertToUtf8() const;
    void ConvertToUtf8(std::string& out) const;  // replaces `out`, reusing its capacity

    // One value per character; a broken high surrogate gives 129. Stores at most `buf_sz`
    // values (out_buf may be null) and answers how many there are in all.
    int ConvertToUtf32(UInt32* out_buf, int buf_sz) const;
    std::u32string ConvertToUtf32() const;

    // The units in a wide string of the platform. wchar_t is 32 bits here, so a surrogate pair
    // becomes the one code point it stands for; any other unit stands as it is.
    std::wstring ConvertToNativeWString() const;

    // Bytes for a PDF text string: PDFDocEncoding when every unit has a byte there, else
    // FE FF and big-endian units. With out_buf null, answers the size needed; with a buffer,
    // writes the first buf_sz bytes at most and answers the count written.
    std::string ConvertToPDFText() const;
    int ConvertToPDFText(char* out_buf, int buf_sz) const;

    // -1, 0 or 1, comparing units as unsigned numbers; on a common prefix the shorter is less.
    int Compare(const UString& other) const noexcept;
    bool operator==(const UString& other) const noexcept;
    bool operator!=(const UString& other) const noexcept { return !(*this == other); }
    bool operator<(const UString& other) const noexcept { return Compare(other) < 0; }
    bool operator>(const UString& other) const noexcept { return Compare(other) > 0; }
    bool operator<=(const UString& other) const noexcept { return Compare(other) <= 0; }
    bool operator>=(const UString& other) const noexcept { return Compare(other) >= 0; }

private:
    friend void IMPL_LUM_UStringAssignAscii(UString&, const char*, int, TextEncoding);
    Storage& Mutable();  // the owned storage, created on first need

    // A null pointer is the empty string: a fresh or moved-from handle costs no allocation.
    // The storage is either empty or the units followed by one 0 unit. Owned through a smart
    // pointer so that a constructor that fails half-way frees what it made.
    std::unique_ptr<Storage> mp_impl;
};

// Writes the ConvertToAscii form.
std::ostream& operator<<(std::ostream& os, const UString& str);

}  // namespace lum
