// The byte decoders behind UString's decoding constructor, and the conversions out of a
// UString that can fail. Their failures name this file.
#include <cstring>

#include "Common/Exception.h"
#include "Common/TextEncodingTables.h"
#include "Common/UString.h"
#include "Common/UnicodeUtils.h"

namespace lum {

namespace {

// Widens bytes through `table`, stopping at the first byte whose entry is 0; the units behind
// the stop stay zero, so the length is always the byte count.
void DecodeSingleByte(UString::Storage& s, const UInt8* p, size_t n, const Unicode* table) {
    s.assign(n + 1, 0);
    for (size_t i = 0; i < n; ++i) {
        const Unicode u = table ? table[p[i]] : p[i];
        if (u == 0) break;
        s[i] = u;
    }
}

// Two-byte units from p[0..n), big- or little-endian; the length is n / 2 and the fill stops
// at a unit 0.
void DecodeUnits(UString::Storage& s, const UInt8* p, size_t n, bool big_endian) {
    const size_t len = n / 2;
    s.assign(len + 1, 0);
    for (size_t i = 0; i < len; ++i) {
        const UInt8 a = p[2 * i], b = p[2 * i + 1];
        const auto u = static_cast<Unicode>(big_endian ? (a << 8) | b : (b << 8) | a);
        if (u == 0) break;
        s[i] = u;
    }
}

}  // namespace

void IMPL_LUM_UStringAssignAscii(UString& str, const char* buf, int buf_sz, TextEncoding enc) {
    str.Clear();
    LUM_CHECK(buf, "Null buffer");
    if (buf_sz < 0 && (enc == enc_ascii || enc == enc_utf8))
        buf_sz = static_cast<int>(std::strlen(buf));
    LUM_CHECK(buf_sz>-1, "Buffer size is negative");
    if (buf_sz == 0) return;

    const auto* p = reinterpret_cast<const UInt8*>(buf);
    const auto n = static_cast<size_t>(buf_sz);
    UString::Storage& s = str.Mutable();
    switch (enc) {
        case enc_pdfdoc:
            DecodeSingleByte(s, p, n, Uni::gl_pdfdoc_to_unicode);
            break;
        case enc_winansi:
            DecodeSingleByte(s, p, n, Uni::gl_winansi_to_unicode);
            break;
        case enc_pdftext:
            if (n >= 2 && p[0] == 0xFE && p[1] == 0xFF)
                DecodeUnits(s, p + 2, n - 2, true);
            else if (n >= 2 && p[0] == 0xFF && p[1] == 0xFE)
                DecodeUnits(s, p + 2, n - 2, false);
            else
                DecodeSingleByte(s, p, n, Uni::gl_pdfdoc_to_unicode);
            break;
        case enc_utf16be:
            if (n >= 2 && p[0] == 0xFE && p[1] == 0xFF)
                DecodeUnits(s, p + 2, n - 2, true);
            else
                DecodeUnits(s, p, n, true);
            break;
        case enc_utf8:
            s.clear();
            try {
                Uni::ToUTF16Native(buf, n, s);
            } catch (...) {
                s.clear();  // whole blocks may already stand there, without the terminator
                throw;
            }
            s.push_back(0);
            break;
        case enc_ascii:
        case enc_raw:
        default:  // an unknown value can only come from a cast; widening loses nothing
            DecodeSingleByte(s, p, n, nullptr);
            break;
    }
}

std::string UString::ConvertToUtf8() const {
    std::string out;
    ConvertToUtf8(out);
    return out;
}

void UString::ConvertToUtf8(std::string& out) const {
    out.clear();
    Uni::FromUTF16Native(GetBuffer(), static_cast<size_t>(GetLength()), out);
}

}  // namespace lum
