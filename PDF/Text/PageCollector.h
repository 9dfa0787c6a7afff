#pragma once
// The worker of one Begin: walks the elements of a page and of the forms it paints, keeps the
// clip box, fixes the frames and style of each text element, measures each character, and
// hands the characters to the capture. Images are recorded as occluders for the hidden-text
// test. Font questions end here; what follows works from geometry.
#include <vector>

#include "Common/Types.h"
#include "PDF/Font/Font.h"
#include "PDF/Rect.h"
#include "PDF/Text/GlyphMeasure.h"
#include "PDF/Text/GlyphMemo.h"
#include "PDF/Text/TextCapture.h"

namespace lum::PDF {

class Element;
class ElementReader;
class Page;
class TextEngine;
namespace Color {
class ColorSpaceCache;
}

class PageCollector {
public:
    PageCollector(TextEngine& engine, GlyphMeasure& measure, GlyphMemo& memo,
                  Color::ColorSpaceCache& colors)
        : m_engine(engine), m_measure(measure), m_memo(memo), m_colors(colors) {}

    // Captures the page within `clip` (page frame) when given. False when the clip box misses
    // the page: nothing was captured. An exception of the reader's Begin leaves to the caller;
    // one raised during the walk ends the walk, and what was captured stays.
    bool Scan(const Page& page, const Rect* clip, UInt32 flags, bool mirror_mode);

private:
    // The style and frames of one text element.
    struct TextContext {
        Font font;
        bool type3 = false;
        bool composite = false;
        double type3_x_scale = 0;
        bool horizontal = true;
        double font_size = 0;
        double horizontal_scale = 1;
        double ascent = 0, descent = 0;  // text frame
        Common::Matrix2D page;           // T
        int render_mode = 0;
        // What the font itself answers, read when the font changes: most elements keep the
        // font of the one before.
        FontImpl* known_font = nullptr;
        SDF::Obj* font_obj = nullptr;
        double font_ascent = 0, font_descent = 0;
        int units_per_em = 0;
        Common::Matrix2D type3_matrix;
        Rect type3_bbox;
        // What the font, size and scale give, for the size and scale of these bits.
        bool metrics_valid = false;
        UInt64 size_bits = 0, hs_bits = 0;
        Common::Matrix2D glyph;  // S: glyph units to the text frame
    };

    void Walk(ElementReader& reader, FormSet& forms);
    void TextObject(ElementReader& reader, FormSet& forms);
    void TextElement(Element& e, FormSet& forms);
    void Form(ElementReader& reader, Element& e, FormSet& forms);
    void RecordOccluder(Element& e);
    // Fills the context and the capture's element; false for a degenerate page matrix.
    bool SetContext(Element& e, CaptureElement& el);
    void ReadFont(const Font& font);
    // Ascent, descent, the Type 3 scale and S of the font in force at `size` and scale `hs`.
    void SetMetrics(double size, double hs);
    void SetColor(Element& e, CaptureElement& el);
    // The box that the advance of a character covers, in the text frame.
    Rect AdvanceBox(const CharData& ch);

    Rect& Clip() { return m_clips.back(); }
    void PushClip() { m_clips.push_back(m_clips.back()); }
    void PopClip() {
        if (m_clips.size() > 1) m_clips.pop_back();
    }

    TextEngine& m_engine;
    GlyphMeasure& m_measure;
    GlyphMemo& m_memo;
    Color::ColorSpaceCache& m_colors;
    UInt32 m_flags = 0;
    Int64 m_element_counter = 0;
    std::vector<Rect> m_clips;
    TextContext m_ctx;
    ElementFrames m_frames;
    CaptureChar m_char;
    UInt8 m_red = 0, m_green = 0, m_blue = 0;  // the fill colour of the element before
    ElementReader* mp_reader = nullptr;
};

}  // namespace lum::PDF
