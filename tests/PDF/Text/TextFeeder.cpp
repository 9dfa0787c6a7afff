#include "PDF/Text/TextFeeder.h"

#include "Common/UString.h"
#include "PDF/Text/TextFlags.h"

namespace lum::test {

using PDF::CaptureChar;
using PDF::CaptureElement;

std::u16string Utf16(std::string_view s) {
    const UString u(std::string(s.data(), s.size()));
    return std::u16string(reinterpret_cast<const char16_t*>(u.GetBuffer()), size_t(u.GetLength()));
}

std::string Utf8(const std::u16string& s) {
    return UString(reinterpret_cast<const Unicode*>(s.data()), int(s.size())).ConvertToUtf8();
}

TextFeeder::TextFeeder(UInt32 flags, bool mirror, double mirror_width) {
    engine.Reset(flags, mirror, mirror_width);
    store.Reset(flags);
}

TextFeeder& TextFeeder::Show(std::string_view text, double x, double y, const FeedElement& e) {
    const std::u16string units = Utf16(text);
    return Feed(units.size(), [&](size_t i) { return std::u16string_view(&units[i], 1); }, x, y, e);
}

TextFeeder& TextFeeder::ShowUnits(const std::vector<std::u16string>& chars, double x, double y,
                                  const FeedElement& e) {
    return Feed(chars.size(), [&](size_t i) { return std::u16string_view(chars[i]); }, x, y, e);
}

template <class Char>
TextFeeder& TextFeeder::Feed(size_t count, Char char_at, double x, double y,
                             const FeedElement& e) {
    CaptureElement el;
    ++m_order;
    if (!PDF::SetElementFrames(e.page, e.size, el)) return *this;
    // Glyph units of 1000 to the em, y growing downwards, as outlines come from the font layer.
    el.glyph = Common::Matrix2D(1.0 / 1000, 0, 0, -1.0 / 1000, 0, 0) *
               Common::Matrix2D(e.size, 0, 0, e.size, 0, 0);
    el.adjustment = e.adjustment;
    el.font = e.font;
    el.red = e.red;
    el.green = e.green;
    el.blue = e.blue;
    el.order = m_order;
    el.clip = &m_clip;
    PDF::TextCapture& cap = engine.Capture();
    cap.BeginElement(el);
    for (size_t i = 0; i < count; ++i) {
        const std::u16string_view ch = char_at(i);
        CaptureChar c;
        c.x = x + double(i) * e.advance * e.size;
        c.y = y;
        c.bytes = 1;
        c.has_outline = ch != u" ";
        c.glyph_box = PDF::Rect(0, -e.ascent * 1000, e.advance * 1000, e.descent * 1000);
        if (!c.has_outline) c.glyph_box = PDF::Rect();
        c.advance_box = PDF::Rect(c.x, c.y - e.descent * e.size, c.x + e.advance * e.size,
                                  c.y + e.ascent * e.size);
        c.units = reinterpret_cast<const Unicode*>(ch.data());
        c.unit_count = int(ch.size());
        c.last = i + 1 == count;
        cap.AddChar(c);
    }
    cap.EndElement();
    return *this;
}

PDF::TextExtractorImpl& TextFeeder::Finish(PDF::FontExtents* extents) {
    engine.Finish(store, extents);
    return store;
}

std::string TextFeeder::Text(bool dehyphen) {
    UString s;
    store.GetAsText(s, dehyphen);
    std::string out;
    for (int i = 0; i < s.GetLength(); ++i) out += s[i] < 0x80 ? char(s[i]) : '?';
    return out;
}

std::string TextFeeder::Lines() {
    std::string t = Text();
    for (char& ch : t)
        if (ch == '\n') ch = '|';
    if (!t.empty() && t.back() == '|') t.pop_back();
    return t;
}

}  // namespace lum::test
