#include "PDF/Font/Encodings.h"

namespace lum::PDF::Fnt {

const char* const* FindBaseEncoding(std::string_view name, EncodingKind& kind) {
    struct Base {
        std::string_view name;
        const char* const* table;
        EncodingKind kind;
    };
    static constexpr Base kBases[] = {
        {"MacRomanEncoding", gl_mac_roman_encoding, e_mac_roman},
        {"MacExpertEncoding", gl_mac_expert_encoding, e_mac_expert},
        {"WinAnsiEncoding", gl_win_ansi_encoding, e_win_ansi},
        {"StandardEncoding", gl_standard_encoding, e_standard},
    };
    for (const Base& b : kBases) {
        if (b.name == name) {
            kind = b.kind;
            return b.table;
        }
    }
    return nullptr;
}

int MacRomanCodeOf(std::string_view name) {
    UInt16 code = 0;
    return FindGlyphName(gl_mac_roman_codes, gl_mac_roman_codes_size, name, code) ? code : -1;
}

bool IsInStandardEncodings(std::string_view name) {
    // MacRomanEncoding holds every name of WinAnsiEncoding and of StandardEncoding but a few;
    // the sorted table answers most names, the two scans the rest.
    if (MacRomanCodeOf(name) >= 0) return true;
    for (const char* const* table : {gl_win_ansi_encoding, gl_standard_encoding}) {
        for (int c = 0; c < 256; ++c) {
            if (table[c] && name == table[c]) return true;
        }
    }
    return false;
}

}  // namespace lum::PDF::Fnt
