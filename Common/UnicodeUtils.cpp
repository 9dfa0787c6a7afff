#include "Common/UnicodeUtils.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "Common/Exception.h"

namespace lum::Uni {

namespace {

// The block operations go through a fixed stack buffer of this many bytes, so that a long
// text costs no allocation beyond its result.
constexpr size_t kBlockBytes = 16384;
constexpr size_t kBlockUnits = kBlockBytes / sizeof(Unicode);

constexpr UInt16 Swap16(UInt16 v) noexcept { return static_cast<UInt16>((v >> 8) | (v << 8)); }
constexpr UInt32 Swap32(UInt32 v) noexcept {
    return (v >> 24) | ((v >> 8) & 0xFF00u) | ((v << 8) & 0xFF0000u) | (v << 24);
}

constexpr UInt64 kHighBits = 0x8080808080808080ull;

constexpr UInt64 kHighUnitBits = 0xFF80FF80FF80FF80ull;

// Copies the leading run of ASCII bytes of src[0..n), widened, and answers its length. Eight
// bytes are tested at once; the restrict qualifiers let the compiler vectorise the copy.
inline size_t WidenAscii(const UInt8* __restrict src, size_t n, Unicode* __restrict dst) noexcept {
    size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        UInt64 w;
        std::memcpy(&w, src + i, 8);
        if (w & kHighBits) break;
        for (size_t k = 0; k < 8; ++k) dst[i + k] = src[i + k];
    }
    for (; i < n && src[i] < 0x80; ++i) dst[i] = src[i];
    return i;
}

// The reverse: copies the leading run of units below 128, narrowed, four units at a time.
inline size_t NarrowAscii(const Unicode* __restrict src, size_t n, UInt8* __restrict dst) noexcept {
    size_t i = 0;
    for (; i + 4 <= n; i += 4) {
        UInt64 w;
        std::memcpy(&w, src + i, 8);
        if (w & kHighUnitBits) break;
        for (size_t k = 0; k < 4; ++k) dst[i + k] = static_cast<UInt8>(src[i + k]);
    }
    for (; i < n && src[i] < 0x80; ++i) dst[i] = static_cast<UInt8>(src[i]);
    return i;
}

void CheckSequenceLength(int bytesNeeded) {
    LUM_CHECK(!((bytesNeeded < 2) || (bytesNeeded > 4)), "Invalid UTF8 sequence length");
}

void CheckLeadingSurrogate(UInt32 hiUnit) {
    LUM_CHECK(hiUnit <= 0xDBFF, "Bad UTF16 - leading low surrogate");
}

void CheckBlockWrote(size_t writeCount) {
    LUM_CHECK(writeCount>0, "Incomplete Unicode at end of string");
}

// One block of UTF-8 into units. Stops when the target has less room than a pair, or when the
// next sequence runs past the end of the source.
ConvertResult Utf8ToUnitsBlock(const UInt8* src, size_t len, Unicode* dst, size_t cap) {
    size_t i = 0, o = 0;
    while (i < len && o < cap) {
        const size_t run = WidenAscii(src + i, std::min(len - i, cap - o), dst + o);
        i += run;
        o += run;
        if (i >= len || o >= cap || src[i] < 0x80) continue;

        const int bytesNeeded = UTF8SequenceLength(src[i]);
        CheckSequenceLength(bytesNeeded);
        if (static_cast<size_t>(bytesNeeded) > len - i) break;
        const UInt32 cp = CodePoint_from_UTF8_Multi(src + i, bytesNeeded);
        if (cp < 0x10000) {
            dst[o++] = static_cast<Unicode>(cp);
        } else {
            if (cap - o < 2) break;
            CodePoint_to_UTF16Nat_Surrogate(cp, dst + o);
            o += 2;
        }
        i += static_cast<size_t>(bytesNeeded);
    }
    return {i, o};
}

// One block of units into UTF-8. Stops when the target has less room than 4 bytes for a
// non-ASCII unit, or at a high surrogate that is the source's last unit.
ConvertResult UnitsToUtf8Block(const Unicode* src, size_t len, UInt8* dst, size_t cap) {
    size_t i = 0, o = 0;
    while (i < len && o < cap) {
        const size_t run = NarrowAscii(src + i, std::min(len - i, cap - o), dst + o);
        i += run;
        o += run;
        if (i >= len || o >= cap || src[i] < 0x80) continue;
        if (cap - o < 4) break;

        const UInt32 unit = src[i];
        if (unit < 0xD800 || unit > 0xDFFF) {
            o += static_cast<size_t>(CodePoint_to_UTF8_Multi(unit, dst + o));
            ++i;
            continue;
        }
        CheckLeadingSurrogate(unit);
        if (i + 1 >= len) break;
        const UInt32 cp = CodePoint_from_UTF16Nat_Surrogate(static_cast<UInt16>(unit), src[i + 1]);
        o += static_cast<size_t>(CodePoint_to_UTF8_Multi(cp, dst + o));
        i += 2;
    }
    return {i, o};
}

}  // namespace

// --- Code points ---------------------------------------------------------------------------

int UTF8SequenceLength(UInt8 lead) noexcept {
    int n = 0;
    while (n < 8 && (lead & (0x80u >> n))) ++n;
    return n;
}

int CodePoint_to_UTF8_Multi(UInt32 cpIn, UInt8* out) {
    LUM_CHECK(cpIn <= 0x10FFFF, "UTF32 codepoint is out of range");
    LUM_CHECK(!((0xD800 <= cpIn) && (cpIn <= 0xDFFF)), "Bad UTF32 codepoint");
    if (cpIn < 0x800) {
        out[0] = static_cast<UInt8>(0xC0 | (cpIn >> 6));
        out[1] = static_cast<UInt8>(0x80 | (cpIn & 0x3F));
        return 2;
    }
    if (cpIn < 0x10000) {
        out[0] = static_cast<UInt8>(0xE0 | (cpIn >> 12));
        out[1] = static_cast<UInt8>(0x80 | ((cpIn >> 6) & 0x3F));
        out[2] = static_cast<UInt8>(0x80 | (cpIn & 0x3F));
        return 3;
    }
    out[0] = static_cast<UInt8>(0xF0 | (cpIn >> 18));
    out[1] = static_cast<UInt8>(0x80 | ((cpIn >> 12) & 0x3F));
    out[2] = static_cast<UInt8>(0x80 | ((cpIn >> 6) & 0x3F));
    out[3] = static_cast<UInt8>(0x80 | (cpIn & 0x3F));
    return 4;
}

UInt32 CodePoint_from_UTF8_Multi(const UInt8* in, int len) {
    CheckSequenceLength(len);
    UInt32 cp = in[0] & (0x7Fu >> len);
    for (int k = 1; k < len; ++k) {
        const UInt8 inUnit = in[k];
        LUM_CHECK(!( (inUnit & UInt8(0xC0)) != UInt8(0x80) ), "Invalid UTF8 data");
        cp = (cp << 6) | (inUnit & 0x3Fu);
    }
    LUM_CHECK(!((0xD800 <= cp) && (cp <= 0xDFFF)), "Bad UTF8 code point");
    LUM_CHECK(cp <= 0x10FFFF, "UTF8 codepoint is out of range");
    return cp;
}

namespace {
void CheckUtf16Encodable(UInt32 cpIn) {
    LUM_CHECK(cpIn <= 0x10FFFF, "Bad UTF32 - out of range");
    LUM_CHECK(!((0xD800 <= cpIn) && (cpIn <= 0xDFFF)), "Bad UTF32 - surrogate code point");
}
}  // namespace

void CodePoint_to_UTF16Nat_Surrogate(UInt32 cp, UInt16* out) {
    CheckUtf16Encodable(cp);
    const UInt32 v = cp - 0x10000;
    out[0] = static_cast<UInt16>(0xD800 | (v >> 10));
    out[1] = static_cast<UInt16>(0xDC00 | (v & 0x3FF));
}

int CodePoint_to_UTF16Nat(UInt32 cp, UInt16* out) {
    CheckUtf16Encodable(cp);
    if (cp < 0x10000) {
        out[0] = static_cast<UInt16>(cp);
        return 1;
    }
    CodePoint_to_UTF16Nat_Surrogate(cp, out);
    return 2;
}

UInt32 CodePoint_from_UTF16Nat_Surrogate(UInt16 hi, UInt16 lo) noexcept {
    return 0x10000u + ((static_cast<UInt32>(hi & 0x3FF) << 10) | (lo & 0x3FFu));
}

void CodePoint_to_UTF16Swp_Surrogate(UInt32 cp, UInt16* out) {
    CodePoint_to_UTF16Nat_Surrogate(cp, out);
    out[0] = Swap16(out[0]);
    out[1] = Swap16(out[1]);
}

int CodePoint_to_UTF16Swp(UInt32 cp, UInt16* out) {
    const int n = CodePoint_to_UTF16Nat(cp, out);
    for (int k = 0; k < n; ++k) out[k] = Swap16(out[k]);
    return n;
}

UInt32 CodePoint_from_UTF16Swp_Surrogate(UInt16 hi, UInt16 lo) {
    const UInt16 loUnit = Swap16(lo);
    LUM_CHECK(!((loUnit < 0xDC00) || (0xDFFF < loUnit)), "Bad UTF16 - missing low surrogate");
    return CodePoint_from_UTF16Nat_Surrogate(Swap16(hi), loUnit);
}

// --- Block operations ----------------------------------------------------------------------

void ToUTF16Native(const char* bytes, size_t size, std::vector<Unicode>& out) {
    if (size == 0) return;
    // A byte never gives more than one unit, and a pair needs four bytes.
    out.reserve(out.size() + size);
    const auto* src = reinterpret_cast<const UInt8*>(bytes);
    Unicode block[kBlockUnits];
    size_t pos = 0;
    while (pos < size) {
        const ConvertResult r = Utf8ToUnitsBlock(src + pos, size - pos, block, kBlockUnits);
        CheckBlockWrote(r.written);
        out.insert(out.end(), block, block + r.written);
        pos += r.consumed;
    }
}

void FromUTF16Native(const Unicode* units, size_t count, std::string& out) {
    if (count == 0) return;
    out.reserve(out.size() + count);
    UInt8 block[kBlockBytes];
    size_t pos = 0;
    while (pos < count) {
        const ConvertResult r = UnitsToUtf8Block(units + pos, count - pos, block, kBlockBytes);
        CheckBlockWrote(r.written);
        out.append(reinterpret_cast<const char*>(block), r.written);
        pos += r.consumed;
    }
}

// --- Converter table -----------------------------------------------------------------------

namespace {

// Item type of each form: bytes, 16-bit units or 32-bit values.
template <UnicodeForm F> struct FormTraits;
template <> struct FormTraits<e_utf8> { using Item = UInt8; };
template <> struct FormTraits<e_utf16_native> { using Item = UInt16; };
template <> struct FormTraits<e_utf16_swapped> { using Item = UInt16; };
template <> struct FormTraits<e_utf32_native> { using Item = UInt32; };
template <> struct FormTraits<e_utf32_swapped> { using Item = UInt32; };

// Reads one code point at src[0..len): answers the items it spans, or 0 when the source ends
// inside the sequence.
template <UnicodeForm F>
size_t Decode(const typename FormTraits<F>::Item* src, size_t len, UInt32& cp) {
    if constexpr (F == e_utf8) {
        if (src[0] < 0x80) {
            cp = src[0];
            return 1;
        }
        const int bytesNeeded = UTF8SequenceLength(src[0]);
        CheckSequenceLength(bytesNeeded);
        if (static_cast<size_t>(bytesNeeded) > len) return 0;
        cp = CodePoint_from_UTF8_Multi(src, bytesNeeded);
        return static_cast<size_t>(bytesNeeded);
    } else if constexpr (F == e_utf16_native || F == e_utf16_swapped) {
        constexpr bool swapped = F == e_utf16_swapped;
        const UInt16 unit = swapped ? Swap16(src[0]) : src[0];
        if (unit < 0xD800 || unit > 0xDFFF) {
            cp = unit;
            return 1;
        }
        CheckLeadingSurrogate(unit);
        if (len < 2) return 0;
        cp = swapped ? CodePoint_from_UTF16Swp_Surrogate(src[0], src[1])
                     : CodePoint_from_UTF16Nat_Surrogate(src[0], src[1]);
        return 2;
    } else {
        cp = F == e_utf32_swapped ? Swap32(src[0]) : src[0];
        return 1;
    }
}

// Writes one code point if it fits in `cap` items: answers the items written, or 0.
template <UnicodeForm F>
size_t Encode(UInt32 cp, typename FormTraits<F>::Item* dst, size_t cap) {
    if constexpr (F == e_utf8) {
        if (cp < 0x80) {
            if (cap < 1) return 0;
            dst[0] = static_cast<UInt8>(cp);
            return 1;
        }
        UInt8 tmp[4];
        const auto n = static_cast<size_t>(CodePoint_to_UTF8_Multi(cp, tmp));
        if (n > cap) return 0;
        std::memcpy(dst, tmp, n);
        return n;
    } else if constexpr (F == e_utf16_native || F == e_utf16_swapped) {
        UInt16 tmp[2];
        const auto n = static_cast<size_t>(F == e_utf16_swapped ? CodePoint_to_UTF16Swp(cp, tmp)
                                                                 : CodePoint_to_UTF16Nat(cp, tmp));
        if (n > cap) return 0;
        std::memcpy(dst, tmp, n * sizeof(UInt16));
        return n;
    } else {
        if (cap < 1) return 0;
        dst[0] = F == e_utf32_swapped ? Swap32(cp) : cp;
        return 1;
    }
}

template <UnicodeForm From, UnicodeForm To>
ConvertResult Convert(const void* src_v, size_t src_len, void* dst_v, size_t dst_cap) {
    const auto* src = static_cast<const typename FormTraits<From>::Item*>(src_v);
    auto* dst = static_cast<typename FormTraits<To>::Item*>(dst_v);
    ConvertResult r;
    while (r.consumed < src_len && r.written < dst_cap) {
        UInt32 cp = 0;
        const size_t in = Decode<From>(src + r.consumed, src_len - r.consumed, cp);
        if (in == 0) break;
        const size_t out = Encode<To>(cp, dst + r.written, dst_cap - r.written);
        if (out == 0) break;
        r.consumed += in;
        r.written += out;
    }
    return r;
}

template <UnicodeForm From>
void FillRow(std::atomic<Converter>* row) {
    row[e_utf8].store(&Convert<From, e_utf8>, std::memory_order_relaxed);
    row[e_utf16_native].store(&Convert<From, e_utf16_native>, std::memory_order_relaxed);
    row[e_utf16_swapped].store(&Convert<From, e_utf16_swapped>, std::memory_order_relaxed);
    row[e_utf32_native].store(&Convert<From, e_utf32_native>, std::memory_order_relaxed);
    row[e_utf32_swapped].store(&Convert<From, e_utf32_swapped>, std::memory_order_relaxed);
}

std::atomic<Converter> gl_converters[e_form_count][e_form_count];

}  // namespace

void InitConverterTable() {
    FillRow<e_utf8>(gl_converters[e_utf8]);
    FillRow<e_utf16_native>(gl_converters[e_utf16_native]);
    FillRow<e_utf16_swapped>(gl_converters[e_utf16_swapped]);
    FillRow<e_utf32_native>(gl_converters[e_utf32_native]);
    FillRow<e_utf32_swapped>(gl_converters[e_utf32_swapped]);
}

Converter GetConverter(UnicodeForm from, UnicodeForm to) noexcept {
    if (from < 0 || from >= e_form_count || to < 0 || to >= e_form_count) return nullptr;
    return gl_converters[from][to].load(std::memory_order_relaxed);
}

}  // namespace lum::Uni
