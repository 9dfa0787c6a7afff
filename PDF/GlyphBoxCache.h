#pragma once
// The box of every glyph a document shows, measured once in the document's life: a font and
// a character code give a box in glyph units (font units of the outline with y growing
// downwards; for Type 3 the units of the glyph description) and one bit, whether the glyph has
// an outline at all, which is what decides white space for the text engine. Per font the
// cache also gathers the union of the boxes of glyphs with outlines: their common height.
//
// One cache per document, in the document's attachment slot. Every operation takes the
// cache's mutex for its lookup or its insertion only, never while a glyph is measured: two
// extractors measuring one glyph at once both store the same value.
#include <map>
#include <mutex>
#include <unordered_map>

#include "PDF/CharData.h"
#include "PDF/Font/Font.h"
#include "PDF/Rect.h"
#include "PDF/Text/GlyphMeasure.h"
#include "SDF/DocImpl.h"

namespace lum::PDF {

// The text engine asks through GlyphMeasure; FormSet (the forms and glyph procedures being
// walked) is the engine's.
class GlyphBoxCache : public SDF::DocAttachment, public GlyphMeasure {
public:
    // The cache of `doc`, made at first use.
    static GlyphBoxCache& Of(SDF::DocImpl& doc);
    // The cache of the document a font dictionary lives in; a font outside any document gets
    // a process-wide cache (tests, fonts made in memory).
    static GlyphBoxCache& Of(SDF::Obj* font_dict);

    // The box of a character's glyph, from its origin (x1 0) to at least its advance; true
    // when the glyph has an outline with an area.
    bool GetGlyphBox(const Font& font, const CharData& character, Rect& box, FormSet& forms);
    // The union of the boxes with outline of a font seen so far; a zero box for none.
    Rect GetFontExtent(SDF::Obj* font_dict);
    // True while a font has glyphs and none of them has an outline.
    bool IsBlankFont(const Font& font) override;

    // GlyphMeasure.
    bool GlyphBox(const Font& font, const CharData& ch, Rect& box, FormSet& forms) override {
        return GetGlyphBox(font, ch, box, forms);
    }
    Rect FontExtent(SDF::Obj* font) override { return GetFontExtent(font); }

private:
    using CodeBoxes = std::unordered_map<UInt32, Rect>;
    struct FontEntry {
        CodeBoxes with_outline;
        CodeBoxes without_outline;
        Rect extent;
        bool has_extent = false;
    };

    // Measures a glyph: its box in glyph units, and whether it has an outline.
    bool Measure(const Font& font, const CharData& character, Rect& box, FormSet& forms);
    bool MeasureType3(const Font& font, UInt32 code, Rect& box, FormSet& forms);

    std::mutex m_mutex;
    std::map<SDF::Obj*, FontEntry> m_fonts;
};

}  // namespace lum::PDF
