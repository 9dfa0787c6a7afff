#pragma once
// The flat store of one page's text: the text units with their separators, a character offset
// and a quad for each unit, the lines table of line and word records, and the styles along
// the text. Everything the outputs read is here; the layout's blocks are gone by then.
#include <memory>
#include <unordered_map>
#include <vector>

#include "Common/Types.h"
#include "PDF/Text/TextGeometry.h"

namespace lum {
class UString;
}
namespace lum::SDF {
class Obj;
}

namespace lum::PDF {

struct StyleRecord {
    SDF::Obj* font = nullptr;  // the font key; null without a font
    double font_size = 0;      // the run's font height in the page frame
    UInt8 red = 0, green = 0, blue = 0;
};

struct StyleRun {
    UInt64 last_unit = 0;  // index of the run's last text unit
    StyleRecord* style = nullptr;
};

// Separator offsets in the character offset table.
inline constexpr Int32 kBlankOffset = -1;
inline constexpr Int32 kNewlineOffset = -2;

// Indexes in a line record of the lines table.
enum LineRecordIndex {
    e_line_words = 0,   // words; negative for a rotated line (-0.1 when it has none)
    e_line_size = 1,    // size of the record in doubles
    e_line_flow = 2,
    e_line_para = 3,    // 0 outside any paragraph
    e_line_hyphen = 4,  // 1.0 when the line ends in a hyphen that splits a word
    e_line_box = 5,     // x1 y1 x2 y2 in the page frame
    e_line_quad = 9,    // rotated lines only
};
inline constexpr int kAxisLineHeader = 9;
inline constexpr int kRotatedLineHeader = 17;
// Word records: glyph count, first unit, length, then the word's x1 x2 (axis-aligned line) or
// its box and quad (rotated line), then the glyphs' geometry.
inline constexpr int kAxisWordHeader = 5;
inline constexpr int kRotatedWordHeader = 15;

// The dehyphenation filter of plain text: a word split by a hyphen at a line's end is joined,
// its line break moving behind the word's second half; rows of blanks keep their last one, and
// newlines with nothing before them since the last one go. Replaces `out`.
void Dehyphenate(const Unicode* text, size_t count, std::vector<Unicode>& out);

class TextExtractorImpl {
public:
    TextExtractorImpl();
    ~TextExtractorImpl();
    TextExtractorImpl(const TextExtractorImpl&) = delete;
    TextExtractorImpl& operator=(const TextExtractorImpl&) = delete;

    // Empties the store and keeps `flags`; the vectors keep their room.
    void Reset(UInt32 flags);

    // Writing, in the order of the text.
    void BeginLine(const Rect& box, const Quad& quad, bool axis_aligned);
    void EndLine();
    void StoreGlyph(Unicode unit, Int32 offset, const Rect& box, const Quad& quad,
                    SDF::Obj* font, double font_size, UInt8 red, UInt8 green, UInt8 blue);
    // Closes the open word behind a blank or a newline.
    void EndWord(bool newline);
    void BeginFlow() { ++m_flow_counter; }
    void BeginPara() {
        ++m_para_counter;
        m_in_para = true;
    }
    void EndPara() { m_in_para = false; }

    // Reading.
    UInt32 GetWordCount() const { return m_word_counter; }
    UInt32 GetFlags() const { return m_flags; }
    const std::vector<double>& Lines() const { return m_lines; }
    const std::vector<Unicode>& Text() const { return m_text; }
    const std::vector<Int32>& Offsets() const { return m_offsets; }
    const std::vector<double>& UnitQuads() const { return m_unit_quads; }
    const std::vector<StyleRun>& StyleRuns() const { return m_style_runs; }
    // The style of text unit `unit`: that of the first style run that reaches it, or null.
    const StyleRecord* StyleAt(UInt64 unit) const;

    // The text buffer, or with `dehyphen` the buffer with words split at line ends joined and
    // rows of blanks collapsed.
    void GetAsText(UString& out, bool dehyphen) const;

private:
    void RecordStyle(SDF::Obj* font, double size, UInt8 red, UInt8 green, UInt8 blue);
    void AppendUnit(Unicode unit, Int32 offset, const double* quad);

    bool m_line_axis = true;
    Int64 m_line_start = 0;
    UInt32 m_para_counter = 0;
    UInt32 m_flow_counter = 0;
    bool m_in_para = false;
    std::vector<double> m_lines;
    std::vector<double> m_word_geometry;
    UInt32 m_word_counter = 0;
    Int64 m_word_start = 0;
    bool m_word_closed = true;
    UInt32 m_flags = 0;
    std::vector<Unicode> m_text;
    std::vector<Int32> m_offsets;
    std::vector<double> m_unit_quads;
    std::vector<std::unique_ptr<StyleRecord>> m_styles;
    std::vector<StyleRun> m_style_runs;
    // The styles of each font and colour, in the order of m_styles, so that the search for a
    // style of the same size looks at a few records instead of all of them.
    std::unordered_map<UInt64, std::vector<StyleRecord*>> m_style_index;
};

}  // namespace lum::PDF
