#pragma once
// Feeds the text engine with glyphs of our own making, as the page walk would: elements of
// characters with a font size, a page matrix and glyph boxes, without any PDF. A blank (' ')
// is a glyph without an outline.
#include <string>
#include <string_view>
#include <cstddef>
#include <vector>

#include "Common/Matrix2D.h"
#include "PDF/Text/TextEngine.h"
#include "PDF/Text/TextExtractorImpl.h"

namespace lum::SDF { class Obj; }

namespace lum::test {

struct FeedElement {
    // Text matrix then CTM.
    Common::Matrix2D page;
    double size = 10;
    // Advance of each character in em, and its glyph's height above and below the baseline.
    double advance = 0.5;
    double ascent = 0.7, descent = 0.2;
    double adjustment = 0;
    SDF::Obj* font = nullptr;
    UInt8 red = 0, green = 0, blue = 0;
};

class TextFeeder {
public:
    explicit TextFeeder(UInt32 flags = 0, bool mirror = false, double mirror_width = 612);

    // One element showing `text` (UTF-8) from (x, y) of the text frame. Characters that
    // start a run of `\x01`-style escapes aren't special: every code point is a character.
    TextFeeder& Show(std::string_view text, double x, double y, const FeedElement& e = {});
    // The same with explicit units per character (a character may map to several).
    TextFeeder& ShowUnits(const std::vector<std::u16string>& chars, double x, double y,
                          const FeedElement& e = {});
    // Clip box of the following elements (default: a large page).
    TextFeeder& Clip(const PDF::Rect& r) {
        m_clip = r;
        return *this;
    }

    // Layout and writing into the store.
    PDF::TextExtractorImpl& Finish(PDF::FontExtents* extents = nullptr);

    std::string Text(bool dehyphen = false);
    // The words of each line, as "w1 w2|w3|..." with lines joined by '|'.
    std::string Lines();

    PDF::TextEngine engine;
    PDF::TextExtractorImpl store;

private:
    template <class Char>
    TextFeeder& Feed(size_t count, Char char_at, double x, double y, const FeedElement& e);

    PDF::Rect m_clip{-1e6, -1e6, 1e6, 1e6};
    Int64 m_order = 0;
};

std::string Utf8(const std::u16string& s);
std::u16string Utf16(std::string_view s);

}  // namespace lum::test
