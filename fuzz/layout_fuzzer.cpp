// Bytes in, a laid-out page out: the bytes are read as text elements (a matrix,
// an origin, a size, and characters with their units, outlines and glyph boxes)
// that go through capture, line and paragraph assembly, duplicate removal,
// flows, the store and both text forms. No PDF is parsed, so every run reaches
// the geometry.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "PDF/Text/TextEngine.h"
#include "PDF/Text/TextExtractorImpl.h"
#include "PDF/Text/TextXml.h"

namespace {

using namespace lum;
using namespace lum::PDF;

class Bytes {
public:
    Bytes(const uint8_t* data, size_t size) : m_p(data), m_end(data + size) {}
    bool Empty() const { return m_p >= m_end; }
    uint8_t U8() { return m_p < m_end ? *m_p++ : 0; }
    int16_t S16() { return int16_t(U8() | (U8() << 8)); }
    // A coordinate: mostly page-sized, sometimes huge or tiny.
    double Coord() {
        const int16_t v = S16();
        switch (U8() & 7) {
            case 0:
                return v * 1e300;
            case 1:
                return v * 1e-9;
            default:
                return v / 16.0;
        }
    }

private:
    const uint8_t* m_p;
    const uint8_t* m_end;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Bytes in(data, size);
    const UInt32 flags = in.U8() & 31;
    const bool mirror = in.U8() & 1;
    static TextEngine engine;
    static TextExtractorImpl store;
    engine.Reset(flags, mirror, 612);
    store.Reset(flags);
    const Rect clip(-1e4, -1e4, 1e4, 1e4);
    Int64 order = 0;
    while (!in.Empty()) {
        CaptureElement el;
        const Common::Matrix2D t(in.S16() / 256.0, in.S16() / 256.0, in.S16() / 256.0,
                                 in.S16() / 256.0, in.Coord(), in.Coord());
        const double font_size = in.U8() / 4.0;
        if (!SetElementFrames(t, font_size, el)) continue;
        el.glyph = Common::Matrix2D(font_size / 1000, 0, 0, -font_size / 1000, 0, 0);
        el.adjustment = in.S16();
        el.order = ++order;
        el.clip = &clip;
        el.red = in.U8();
        TextCapture& cap = engine.Capture();
        // As the text object loop: an exception (a glyph matrix of zeros) ends the
        // element.
        try {
            cap.BeginElement(el);
            const int n = in.U8() & 31;
            double x = in.Coord() / 8, y = in.Coord() / 8;
            for (int i = 0; i < n && !in.Empty(); ++i) {
                CaptureChar c;
                const uint8_t kind = in.U8();
                Unicode units[4] = {Unicode(0x20 + (kind & 0x3F)), 0xFB01, 0x05D0, 0xD800};
                c.units = units;
                c.unit_count = 1 + ((kind >> 6) & 3);
                c.has_outline = kind % 5 != 0;
                c.x = x;
                c.y = y;
                c.glyph_box = Rect(in.S16(), in.S16(), in.S16(), in.S16());
                c.glyph_box.Normalize();
                c.advance_box = Rect(x, y - 2, x + 5, y + 7);
                c.use_advance = kind % 7 == 0;
                c.last = i + 1 == n;
                cap.AddChar(c);
                x += in.S16() / 64.0;
                y += (kind & 1) ? in.S16() / 64.0 : 0;
            }
            cap.EndElement();
        } catch (const Common::Exception&) {
            cap.AbortElement();
        }
    }
    engine.Finish(store, nullptr);
    UString text;
    store.GetAsText(text, true);
    store.GetAsText(text, false);
    WriteXml(store, XmlPageInfo{}, 11, text);
    try {
        // Styles ask the font of each style, and these runs have none: "Bad font".
        WriteXml(store, XmlPageInfo{}, 15, text);
    } catch (const Common::Exception&) {
    }
    return 0;
}
