#pragma once
// Lookup tables for the codes of ITU-T T.4 and T.6: the white and black run-length codes and
// the two-dimensional mode codes. A decoder peeks at the next bits (most significant first)
// and finds the code in one or two table reads, never bit by bit.
#include <vector>

#include "Common/Types.h"

namespace lum::Filters::Fax {

enum CodeKind : UInt8 {
    e_invalid = 0,  // no code starts with these bits
    e_term,         // terminating run code; `param` is the run length (0 to 63)
    e_makeup,       // make-up run code; `param` is the run length (64 to 2560)
    e_eol,          // 11 zero bits: an end-of-line code, or fill in front of one
    e_ext,          // an extension code (uncompressed mode and other extensions)
    e_pass,         // 2-D pass mode
    e_horiz,        // 2-D horizontal mode
    e_vert,         // 2-D vertical mode; `param` is the offset of a1 from b1 (-3 to 3)
    e_link,         // first-level entry of a long code; `param` indexes the second level
};

struct Code {
    Int16 param;
    UInt8 bits;  // length of the code in bits
    UInt8 kind;
};

// Bits that a run-length lookup needs: the longest white code has 12, the longest black 13.
inline constexpr int kWhiteLookupBits = 12;
inline constexpr int kBlackLookupBits = 13;
// Bits that a mode lookup needs: the longest mode code has 7.
inline constexpr int kModeLookupBits = 7;

// A run-length code table in two levels: the first 8 bits pick an entry; codes longer than
// that share a link entry that picks a block of the second level by the remaining bits. Built
// once, shared by all decoders.
class RunTable {
public:
    explicit RunTable(int lookup_bits);

    // The code at the start of `bits`, which holds the next lookup_bits bits of the data
    // (zero-padded past its end).
    Code Lookup(UInt32 bits) const {
        const Code c = m_first[bits >> m_sub_bits];
        if (c.kind != e_link) [[likely]]
            return c;
        return m_second[size_t(c.param) + (bits & m_sub_mask)];
    }

    // Every code that starts with `pattern` ("0" and "1", at most lookup_bits long) becomes
    // `code`.
    void Add(const char* pattern, Code code);

private:
    int m_sub_bits;
    UInt32 m_sub_mask;
    Code m_first[256];
    std::vector<Code> m_second;
};

// White codes, looked up with kWhiteLookupBits bits; black codes with kBlackLookupBits.
const RunTable& WhiteCodes();
const RunTable& BlackCodes();
// The 2^kModeLookupBits entries of the mode codes. Seven zero bits give e_eol: the caller
// decides from more bits whether an end-of-line code really starts there.
const Code* ModeCodes();

}  // namespace lum::Filters::Fax
