#pragma once
// The two single-byte encodings that PDF text strings and simple fonts fall back on.
#include "Common/Types.h"

namespace lum::Uni {

// Byte to unit. Byte 0 gives 0; an undefined byte gives U+FFFD.
extern const Unicode gl_pdfdoc_to_unicode[256];   // PDFDocEncoding
extern const Unicode gl_winansi_to_unicode[256];  // Windows code page 1252

// The PDFDocEncoding byte of a unit, or -1 when it has none. NUL, the control codes other
// than tab, line feed and carriage return, U+007F, U+00A0, U+00AD and U+FFFD have none, so a
// string that holds them must be written as UTF-16.
int UnicodeToPDFDoc(Unicode u) noexcept;

}  // namespace lum::Uni
