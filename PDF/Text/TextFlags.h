#pragma once
// The switches of TextExtractor::Begin, each named after the tool's option that sets it.
#include "Common/Types.h"

namespace lum::PDF {

enum TextExtractorFlag : UInt32 {
    e_no_ligatures = 1,         // ligature characters stay as they are
    e_no_dup_remove = 2,        // text drawn twice is kept twice
    e_punct_break = 4,          // every punctuation unit is a word of its own
    e_remove_hidden_text = 8,   // text under opaque images is dropped; clip paths are tracked
    e_no_invisible_text = 16,   // text in rendering mode 3 is dropped
};

// The flags of GetAsXML.
enum TextXmlFlag : UInt32 {
    e_xml_words_as_elements = 1,
    e_xml_output_bbox = 2,
    e_xml_output_styles = 4,
    e_xml_utf16 = 8,
};

}  // namespace lum::PDF
