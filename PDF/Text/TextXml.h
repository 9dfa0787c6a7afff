#pragma once
// The page as XML: flows, paragraphs, lines and words with their boxes and styles.
#include <string>

#include "Common/Types.h"
#include "PDF/Rect.h"

namespace lum {
class UString;
}

namespace lum::PDF {

class TextExtractorImpl;

// What the Page element says about the page.
struct XmlPageInfo {
    Int32 number = 0;  // in the document, from 1
    Rect crop_box;
    Rect media_box;
    Int32 rotate = 0;  // degrees
};

// Replaces `out` with the XML of `store`; `flags` are the TextXmlFlag values.
void WriteXml(const TextExtractorImpl& store, const XmlPageInfo& page, UInt32 flags,
              UString& out);

// Word text as XML character data: UTF-8 with markup characters escaped, or with `ascii` plain
// ASCII with character references. Appends to `out`.
void AppendXmlText(std::string& out, const Unicode* units, Int32 count, bool ascii);

}  // namespace lum::PDF
