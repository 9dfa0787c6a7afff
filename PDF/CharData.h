#pragma once
// One character of a shown string, as the element's character iterator hands it out. The
// record walks the element's own buffers: nothing is copied.
#include "Common/Types.h"

namespace lum::PDF {

struct CharData {
    // Characters remaining, this one included.
    Int32 count = 0;
    // Walks the element's text positions, two doubles (x, y) a character.
    const double* positions = nullptr;
    // Walks the code sizes of a composite font; null for a simple font (every code is a byte).
    const UInt32* code_sizes = nullptr;
    // Walks the raw string.
    const UInt8* text = nullptr;
    // Bytes in the whole string.
    UInt32 text_size = 0;
    // This character's code, big-endian from its bytes.
    UInt32 char_code = 0;
    // This character's origin in text space, before the text matrix: the point goes through
    // the text matrix and then the CTM to reach the page.
    double x = 0;
    double y = 0;
    // This character's first byte, and its code size.
    const UInt8* char_data = nullptr;
    UInt32 bytes = 0;
    // One past the last byte of the string: a code that runs past it reads zero bytes there.
    const UInt8* text_end = nullptr;

    // Moves to the next character; at the last one the record becomes the end.
    CharData& operator++() {
        --count;
        positions += 2;
        text += bytes;
        if (code_sizes) ++code_sizes;
        if (count > 0) Load();
        return *this;
    }

    // Fills the fields of the character that `positions`, `code_sizes` and `text` point at.
    void Load() {
        x = positions[0];
        y = positions[1];
        char_data = text;
        bytes = code_sizes ? *code_sizes : 1;
        char_code = 0;
        for (UInt32 i = 0; i < bytes; ++i)
            char_code = (char_code << 8) | (text + i < text_end ? text[i] : 0);
    }

    bool operator==(const CharData& o) const {
        if (count < 1 && o.count < 1) return true;
        return count == o.count && text == o.text;
    }
    bool operator!=(const CharData& o) const { return !(*this == o); }
};

}  // namespace lum::PDF
