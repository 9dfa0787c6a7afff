#pragma once
// The text engine's public face: Begin analyses one page into a flat store of lines and words
// in reading order; the store is then read as plain text, XML, or word by word through the
// Line and Word cursors, which stay valid until the next Begin.
#include <memory>

#include "Common/Matrix2D.h"
#include "Common/Types.h"
#include "PDF/Page.h"
#include "PDF/Rect.h"
#include "PDF/Text/TextFlags.h"

namespace lum {
class UString;
}

namespace lum::PDF {

class TextExtractorImpl;
class TextEngine;
class CaptureTrace;
class GlyphMemo;
namespace Color {
class ColorSpaceCache;
}
struct StyleRecord;

class TextExtractor {
public:
    // A style of the text: font, size and fill colour. Every query of a null style raises
    // "Style is empty".
    class Style {
    public:
        Style() = default;
        explicit Style(const StyleRecord* s) : mp_imp(s) {}

        // The font's name without a subset tag and without a ",Style" suffix.
        UString GetFontName() const;
        // The run's font height in the page frame, not the size operand.
        double GetFontSize() const;
        bool IsSerif() const;
        // Red, green, blue.
        void GetColor(UInt8 rgb[3]) const;

        bool IsNull() const { return mp_imp == nullptr; }
        bool operator==(const Style& o) const { return mp_imp == o.mp_imp; }
        bool operator!=(const Style& o) const { return mp_imp != o.mp_imp; }
        const StyleRecord* Record() const { return mp_imp; }

    private:
        const StyleRecord* mp_imp = nullptr;
    };

    class Word {
    public:
        Word() = default;
        Word(const double* line, const double* word, const Unicode* text, Int32 num_words,
             Int32 place, const TextExtractorImpl* store)
            : mp_line(line), mp_word(word), mp_text(text), m_num_words(num_words),
              m_place(place), mp_store(store) {}

        bool IsValid() const { return mp_word != nullptr; }
        Word GetNextWord() const;
        // The word's units and their count.
        const Unicode* GetString() const;
        Int32 GetStringLen() const;
        Int32 GetNumGlyphs() const;
        // On an axis-aligned line x from the word and y from the line; on a rotated line the
        // word's own box.
        Rect GetBBox() const;
        // The style of most of the word's units; null for an empty word.
        Style GetStyle() const;

    private:
        bool IsRotated() const { return mp_line[0] < 0; }

        const double* mp_line = nullptr;
        const double* mp_word = nullptr;
        const Unicode* mp_text = nullptr;
        Int32 m_num_words = 0;
        Int32 m_place = 0;
        const TextExtractorImpl* mp_store = nullptr;
    };

    class Line {
    public:
        Line() = default;
        Line(const double* line, const Unicode* text, Int32 num_lines, Int32 place,
             const TextExtractorImpl* store)
            : mp_line(line), mp_text(text), m_num_lines(num_lines), m_place(place),
              mp_store(store) {}

        bool IsValid() const { return mp_line != nullptr; }
        Line GetNextLine() const;
        Int32 GetNumWords() const;
        Word GetFirstWord() const;
        bool IsRotated() const { return mp_line[0] < 0; }
        // In the page frame: the box, and for a rotated line the quad.
        Rect GetBBox() const;
        Int32 GetFlowID() const;
        // 0 for a line outside any paragraph.
        Int32 GetParagraphID() const;
        // The line ends in a hyphen that splits a word.
        bool EndsWithHyphen() const;
        // The style that most of its words have; null without words.
        Style GetStyle() const;

    private:
        const double* mp_line = nullptr;
        const Unicode* mp_text = nullptr;
        Int32 m_num_lines = 0;
        Int32 m_place = 0;
        const TextExtractorImpl* mp_store = nullptr;
    };

    TextExtractor();
    ~TextExtractor();
    TextExtractor(const TextExtractor&) = delete;
    TextExtractor& operator=(const TextExtractor&) = delete;

    // Analyses `page`, within `clip` (page frame) when it is given; `flags` are the
    // TextExtractorFlag switches. An invalid page gives an empty result.
    void Begin(const Page& page, const Rect* clip = nullptr, UInt32 flags = 0);

    UInt32 GetWordCount() const;
    // The text buffer: one newline per line; with `dehyphen`, words split at a line's end
    // joined and rows of blanks collapsed. `out` is replaced.
    void GetAsText(UString& out, bool dehyphen = true) const;
    // The page as XML; `flags` are the TextXmlFlag values. `out` is replaced.
    void GetAsXML(UString& out, UInt32 flags = 0) const;
    Line GetFirstLine() const;

    // For right-to-left pages: the page is mirrored (x := width - x) before the layout.
    void SetMirrorMode(bool on) { m_mirror_mode = on; }
    bool GetMirrorMode() const { return m_mirror_mode; }
    // The mirror matrix of the last Begin in mirror mode, and its inverse; identity otherwise.
    const Common::Matrix2D& GetMirrorMatrix() const { return m_mirror; }
    const Common::Matrix2D& GetMirrorInverse() const { return m_mirror_inverse; }

    // For developer tools: every captured character and run of the following Begin calls.
    void SetCaptureTrace(CaptureTrace* trace);

    // The store, for the engine's own writers.
    const TextExtractorImpl& Store() const { return *mp_impl; }

private:
    std::unique_ptr<TextExtractorImpl> mp_impl;
    std::unique_ptr<TextEngine> mp_engine;
    // What the extractor learns of a document's colour spaces and character codes.
    std::unique_ptr<Color::ColorSpaceCache> mp_colors;
    std::unique_ptr<GlyphMemo> mp_glyphs;
    const void* mp_doc = nullptr;  // the document they belong to
    Page m_page;
    UInt32 m_flags = 0;
    bool m_mirror_mode = false;
    Common::Matrix2D m_mirror;
    Common::Matrix2D m_mirror_inverse;
};

// A Line cursor on the first line of `store`; ended when there is none.
TextExtractor::Line FirstLine(const TextExtractorImpl& store);

}  // namespace lum::PDF
