#pragma once
// Conversions between UTF-8, UTF-16 and UTF-32. Invalid data raises lum::Common::Exception
// with the failed condition; a source that merely ends inside a sequence is not an error for
// the table converters (they stop and report what they consumed) but is for the whole-text
// block operations, which have nothing left to wait for.
#include <cstddef>
#include <string>
#include <vector>

#include "Common/Types.h"

namespace lum::Uni {

// --- Code points -------------------------------------------------------------------------

// Writes the 2-, 3- or 4-byte UTF-8 form of cp (80 and above) and answers the byte count.
// Refuses values above 10FFFF and surrogate code points.
int CodePoint_to_UTF8_Multi(UInt32 cp, UInt8* out);
// Decodes a sequence of `len` bytes (2 to 4) whose lead byte is in[0]. Raises on a bad
// continuation byte, a surrogate or a value above 10FFFF; overlong forms give their value.
UInt32 CodePoint_from_UTF8_Multi(const UInt8* in, int len);
// Number of bytes of the sequence a lead byte starts, from its leading one bits (0 for ASCII,
// 1 for a continuation byte, up to 8 for FF); callers refuse anything outside 2..4.
int UTF8SequenceLength(UInt8 lead) noexcept;

// Native-order UTF-16: one unit below 10000, a surrogate pair above. Answers the unit count.
int CodePoint_to_UTF16Nat(UInt32 cp, UInt16* out);
void CodePoint_to_UTF16Nat_Surrogate(UInt32 cp, UInt16* out);  // cp in 10000..10FFFF
// Takes the low half by its low 10 bits, without a range check.
UInt32 CodePoint_from_UTF16Nat_Surrogate(UInt16 hi, UInt16 lo) noexcept;
// The same with every unit byte-swapped.
int CodePoint_to_UTF16Swp(UInt32 cp, UInt16* out);
void CodePoint_to_UTF16Swp_Surrogate(UInt32 cp, UInt16* out);
// Byte-swapped units; unlike the native form it refuses a second unit outside DC00..DFFF.
UInt32 CodePoint_from_UTF16Swp_Surrogate(UInt16 hi, UInt16 lo);

// --- Whole-text block operations ---------------------------------------------------------

// UTF-8 to native UTF-16, appended to `out`. Raises on invalid data and on a source that
// ends inside a sequence ("Incomplete Unicode at end of string").
void ToUTF16Native(const char* bytes, size_t size, std::vector<Unicode>& out);
// Native UTF-16 to UTF-8, appended to `out`. Raises on a lone or reversed surrogate.
void FromUTF16Native(const Unicode* units, size_t count, std::string& out);

// --- The converter table -----------------------------------------------------------------

enum UnicodeForm {
    e_utf8 = 0,
    e_utf16_native,
    e_utf16_swapped,
    e_utf32_native,
    e_utf32_swapped,
    e_form_count
};

// What a converter did: source items consumed, target items written. Items are bytes for
// UTF-8, 16-bit units for UTF-16 and 32-bit values for UTF-32.
struct ConvertResult {
    size_t consumed = 0;
    size_t written = 0;
};

// Converts from `src` (src_len items) into `dst` (dst_cap items). It stops without failure
// when the target is full or the source ends inside a sequence, and raises on invalid data.
using Converter = ConvertResult (*)(const void* src, size_t src_len, void* dst, size_t dst_cap);

// Fills the table; called by library start-up, and safe to call again from any thread.
void InitConverterTable();
// The converter between two forms (the same form on both sides copies). Before
// InitConverterTable it answers null.
Converter GetConverter(UnicodeForm from, UnicodeForm to) noexcept;

}  // namespace lum::Uni
