#include "PDF/Text/PageCollector.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <utility>

#include "Common/Exception.h"
#include "PDF/CharData.h"
#include "PDF/Color/ColorSpaceCache.h"
#include "PDF/Color/DeviceColor.h"
#include "PDF/ContentResources.h"
#include "PDF/Element.h"
#include "PDF/ElementReader.h"
#include "PDF/GState.h"
#include "PDF/Page.h"
#include "PDF/Text/TextEngine.h"
#include "PDF/Text/TextFlags.h"
#include "SDF/Obj.h"

namespace lum::PDF {

namespace {

using Common::Matrix2D;

// A form's Matrix: six numbers, else the identity.
Matrix2D FormMatrix(SDF::Obj* form) {
    try {
        SDF::Obj* m = form ? form->FindObj(SDF::e_Matrix) : nullptr;
        if (!m || !m->IsArray() || m->Size() < 6) return Matrix2D();
        double v[6];
        for (UInt32 i = 0; i < 6; ++i) {
            SDF::Obj* n = m->GetAt(i);
            if (!n || !n->IsNumber()) return Matrix2D();
            v[i] = n->GetNumber();
        }
        return Matrix2D(v[0], v[1], v[2], v[3], v[4], v[5]);
    } catch (const Common::Exception&) {
        return Matrix2D();
    }
}

bool Contains(const FormSet& forms, const SDF::Obj* obj) {
    return std::find(forms.begin(), forms.end(), obj) != forms.end();
}

void Remove(FormSet& forms, const SDF::Obj* obj) {
    const auto it = std::find(forms.begin(), forms.end(), obj);
    if (it != forms.end()) forms.erase(it);
}

void Intersect(Rect& clip, const Rect& box) {
    Rect r;
    r.IntersectRect(clip, box);  // all zeros when nothing is left
    clip = r;
}

}  // namespace

bool PageCollector::Scan(const Page& page, const Rect* clip, UInt32 flags, bool mirror_mode) {
    m_flags = flags;
    double mirror_width = 0;
    if (mirror_mode) {
        const Rect crop = page.GetCropBox();
        mirror_width = std::fabs(crop.x2 - crop.x1);
    }
    m_engine.Reset(flags, mirror_mode, mirror_width);
    m_element_counter = 0;
    m_clips.clear();
    m_red = m_green = m_blue = 0;

    Rect box = page.GetBox(Page::e_crop);
    if (clip) {
        Rect r;
        if (!r.IntersectRect(box, *clip)) return false;
        box = r;
    }
    box.Normalize();
    m_clips.push_back(box);

    ElementReader reader;
    mp_reader = &reader;
    reader.Begin(page);
    FormSet forms;
    try {
        Walk(reader, forms);
        reader.End();
    } catch (const Common::Exception&) {
        // The walk ends here; what was captured goes on to the layout.
    }
    mp_reader = nullptr;
    return true;
}

void PageCollector::Walk(ElementReader& reader, FormSet& forms) {
    m_engine.Capture().SetPendingSpace(false);
    const bool hidden = m_flags & e_remove_hidden_text;
    while (Element* e = reader.Next()) {
        ++m_element_counter;
        switch (e->GetType()) {
            case Element::e_text_begin:
                TextObject(reader, forms);
                break;
            case Element::e_form:
                if (Contains(forms, e->GetXObject())) return;  // a form that paints itself
                Form(reader, *e, forms);
                break;
            case Element::e_path:
                if (hidden && e->IsClippingPath()) {
                    Rect b;
                    if (e->GetBBox(b)) Intersect(Clip(), b);
                }
                break;
            case Element::e_image:
            case Element::e_inline_image:
                if (hidden) RecordOccluder(*e);
                break;
            case Element::e_group_begin:
                if (hidden) PushClip();
                break;
            case Element::e_group_end:
                if (hidden) PopClip();
                break;
            default:
                // Text outside BT/ET, marked content, shadings and line moves give nothing.
                break;
        }
    }
}

void PageCollector::Form(ElementReader& reader, Element& e, FormSet& forms) {
    SDF::Obj* form = e.GetXObject();
    const Matrix2D ctm = e.GetCTM();
    PushClip();
    forms.push_back(form);
    reader.FormBegin();
    Rect bbox;  // zero when the form has none: its text is dropped
    if (FormXObj(form).GetBBox(bbox)) bbox.Normalize();
    Intersect(Clip(), BoxAround(QuadThrough(FormMatrix(form) * ctm, bbox)));
    Walk(reader, forms);
    reader.End();
    Remove(forms, form);
    PopClip();
}

void PageCollector::TextObject(ElementReader& reader, FormSet& forms) {
    try {
        while (Element* e = reader.Next()) {
            ++m_element_counter;
            const Element::Type type = e->GetType();
            if (type == Element::e_text_end) return;
            // Forms and images inside a text object are passed over, as are q, Q and clips.
            if (type == Element::e_text) TextElement(*e, forms);
        }
    } catch (const Common::Exception&) {
        // The text object ends; the walk passes over the rest of it.
        m_engine.Capture().AbortElement();
    }
}

void PageCollector::ReadFont(const Font& font) {
    m_ctx.known_font = nullptr;
    m_ctx.font = font;
    const Font::Type type = font.GetType();
    m_ctx.type3 = type == Font::e_Type3;
    m_ctx.composite = type == Font::e_Type0;
    m_ctx.horizontal = font.IsHorizontalMode();
    if (m_ctx.type3) {
        m_ctx.type3_matrix = font.GetType3FontMatrix();
        m_ctx.type3_bbox = font.GetBBox();
    } else {
        m_ctx.font_ascent = font.GetAscent();
        m_ctx.font_descent = font.GetDescent();
        m_ctx.units_per_em = font.GetUnitsPerEm();
    }
    m_ctx.font_obj = font.GetSDFObj();
    m_ctx.known_font = font.GetImpl();
    m_ctx.metrics_valid = false;
}

bool PageCollector::SetContext(Element& e, CaptureElement& el) {
    GState& gs = e.GetGState();
    const Font& font = gs.GetFont();
    if (!font.GetImpl() || font.GetImpl() != m_ctx.known_font) ReadFont(font);
    m_ctx.page = e.GetTextMatrix() * e.GetCTM();
    // Size and scale stay in registers: read back from the context as a pair just after
    // being written one by one, they stalled on every element.
    const double size = gs.GetFontSize();
    m_ctx.font_size = size;
    if (!m_frames.Set(m_ctx.page, size, el)) return false;
    const double hs = gs.GetHorizontalScale() / 100.0;
    m_ctx.horizontal_scale = hs;
    m_ctx.render_mode = gs.GetTextRenderMode();
    el.adjustment = e.GetPosAdjustment();

    // Most elements keep the font, size and scale of the one before: their frames too.
    const UInt64 size_bits = std::bit_cast<UInt64>(size), hs_bits = std::bit_cast<UInt64>(hs);
    if (!m_ctx.metrics_valid || size_bits != m_ctx.size_bits || hs_bits != m_ctx.hs_bits) {
        SetMetrics(size, hs);
        m_ctx.size_bits = size_bits;
        m_ctx.hs_bits = hs_bits;
        m_ctx.metrics_valid = true;
    }
    el.glyph = m_ctx.glyph;
    el.font = m_ctx.font_obj;
    el.order = m_element_counter;
    el.clip = &Clip();
    SetColor(e, el);
    return true;
}

void PageCollector::SetMetrics(double size, double hs) {
    const Matrix2D scale(hs * size, 0, 0, size, 0, 0);
    if (m_ctx.type3) {
        const Matrix2D& fm = m_ctx.type3_matrix;
        const Rect& bbox = m_ctx.type3_bbox;
        m_ctx.type3_x_scale = m_ctx.ascent = m_ctx.descent = 0;
        if (bbox.x2 != bbox.x1 && bbox.y2 != bbox.y1 && fm.m_a != 0 && fm.m_d != 0) {
            m_ctx.type3_x_scale = fm.m_a;
            m_ctx.descent = size * bbox.y1 * fm.m_d;
            m_ctx.ascent = size * bbox.y2 * fm.m_d;
        }
        m_ctx.glyph = fm * scale;
    } else {
        double a = m_ctx.font_ascent, d = m_ctx.font_descent;
        if (std::fabs(a - d) < 1.0) {
            a = 950;
            d = -350;
        }
        m_ctx.ascent = size * a / 1000;
        m_ctx.descent = size * d / 1000;
        double u = m_ctx.units_per_em;
        if (u == 0) u = 1000;
        // Outlines come with y growing downwards.
        m_ctx.glyph = Matrix2D(1 / u, 0, 0, -1 / u, 0, 0) * scale;
    }
}

void PageCollector::SetColor(Element& e, CaptureElement& el) {
    GState& gs = e.GetGState();
    double rgb[3];
    // A pattern keeps the colour of the element before.
    if (m_colors.ToRGB(gs.GetFillColorSpace(), gs.GetFillColor(), rgb)) {
        m_red = Color::ColorByte(rgb[0]);
        m_green = Color::ColorByte(rgb[1]);
        m_blue = Color::ColorByte(rgb[2]);
    }
    el.red = m_red;
    el.green = m_green;
    el.blue = m_blue;
}

void PageCollector::TextElement(Element& e, FormSet& forms) {
    CharData it, end;
    e.GetCharIterator(it);
    e.GetCharIteratorEnd(end);
    if (it == end) return;
    CaptureElement el;
    if (!SetContext(e, el)) return;  // a degenerate matrix: no glyphs, no offsets
    TextCapture& capture = m_engine.Capture();
    const bool invisible = m_ctx.render_mode == GState::e_invisible_text;
    const bool drop_invisible = m_flags & e_no_invisible_text;
    if (drop_invisible && invisible && !m_ctx.type3) {
        for (; it != end; ++it) capture.SkipCode(it.bytes);
        return;
    }
    capture.BeginElement(el);
    const Font& font = m_ctx.font;
    // A Type 3 glyph is measured in the context of the forms being walked: not remembered.
    FontGlyphs* known = m_ctx.type3 ? nullptr : &m_memo.For(font.GetSDFObj());
    GlyphInfo fresh;
    // One record for all characters of all elements, each field set for each: a fresh one
    // per character, or per element, was zeroed first.
    CaptureChar& c = m_char;
    for (; it != end; ++it) {
        GlyphInfo& g = known ? known->At(it.char_code) : fresh;
        if (!g.known) {
            g.has_outline = m_measure.GlyphBox(font, it, g.box, forms);
            g.units[0] = 0xFFFE;
            UInt32 count = 0;
            font.MapToUnicode(it.char_code, g.units, 4, count, true);
            g.unit_count = UInt8(std::clamp<UInt32>(count, 1, 4));
            g.known = known != nullptr;
        }
        // The origin from the element's table, not from the iterator's copy just written, and
        // as one pair: the capture reads it as one, and a pair read back just after being
        // written in two halves stalls on every character.
        static_assert(offsetof(CaptureChar, y) == offsetof(CaptureChar, x) + sizeof(double));
        std::memcpy(&c.x, it.positions, 2 * sizeof(double));
        c.bytes = it.bytes;
        c.glyph_box = g.box;
        c.has_outline = g.has_outline;
        c.use_advance = false;
        c.advance_box = Rect();  // read only for a character without an outline
        if (!c.has_outline) {
            c.advance_box = AdvanceBox(it);
            if (invisible && !drop_invisible) {
                // Hidden text of a scanned page: its font often has no outlines at all.
                c.glyph_box = c.advance_box;
                c.use_advance = true;
                if (m_measure.IsBlankFont(font)) c.has_outline = true;
            }
        }
        c.units = g.units;
        c.unit_count = g.unit_count;
        c.last = it.count == 1;
        capture.AddChar(c);
    }
    capture.EndElement();
}

Rect PageCollector::AdvanceBox(const CharData& ch) {
    const Font& font = m_ctx.font;
    const double size = m_ctx.font_size, hs = m_ctx.horizontal_scale;
    const double x = ch.x, y = ch.y;
    Rect box;
    if (m_ctx.composite && !m_ctx.horizontal) {
        const UInt32 cid = font.MapToCID(ch.char_code);
        double vx = 0, vy = 0;
        const double v = font.GetDescendant().GetVerticalAdvance(cid, vx, vy) * size;
        box = Rect(x, y + v + size * font.GetAscent() / 1000, x + size * hs,
                   y + v + size * font.GetDescent() / 1000);
    } else if (!m_ctx.type3) {
        const double w = m_ctx.composite ? font.GetDescendant().GetWidth(font.MapToCID(ch.char_code))
                                         : font.GetWidth(ch.char_code);
        box = Rect(x, y + m_ctx.descent, x + hs * size * w / 1000, y + m_ctx.ascent);
        if (box.x1 > box.x2) std::swap(box.x1, box.x2);
        if (box.y1 > box.y2) std::swap(box.y1, box.y2);
        return box;
    } else {
        double w = font.GetWidth(ch.char_code);
        double ascent = m_ctx.ascent, descent = m_ctx.descent;
        if ((ascent == 0 && descent == 0) || w == 0) {
            // Measure the glyph's description: the union of what it paints, in the text frame.
            if (!font.GetType3GlyphStream(ch.char_code) || !mp_reader) return Rect();
            Rect painted;
            bool any = false;
            mp_reader->Type3FontBegin(ch);
            while (Element* g = mp_reader->Next()) {
                Rect b;
                if (g->GetBBox(b) && b.x2 > b.x1) {
                    if (any) {
                        ExtendBox(painted, b);
                    } else {
                        painted = b;
                        any = true;
                    }
                }
            }
            mp_reader->End();
            Matrix2D to_text;
            const double sx = m_ctx.type3_x_scale != 0 ? m_ctx.type3_x_scale
                                                       : font.GetType3FontMatrix().m_a;
            if (!any || !m_ctx.page.Inverse(to_text) || sx == 0) return Rect();
            const Rect t = BoxAround(QuadThrough(to_text, painted));
            if (t.x2 == t.x1 && t.y2 == t.y1) return Rect();
            if (w == 0 && hs * size * sx != 0) w = (t.x2 - t.x1) / (hs * size * sx);
            if (ascent == 0 && descent == 0) {
                descent = t.y1 - y;
                ascent = t.y2 - y;
            }
            box = Rect(x, y + descent, x + hs * size * sx * w, y + ascent);
        } else {
            box = Rect(x, y + descent, x + hs * size * m_ctx.type3_x_scale * w, y + ascent);
        }
    }
    box.Normalize();
    return box;
}

void PageCollector::RecordOccluder(Element& e) {
    Rect b;
    if (!e.GetBBox(b)) return;
    Rect r;
    if (!r.IntersectRect(b, Clip())) return;
    GState& gs = e.GetGState();
    bool not_opaque = gs.GetFillOpacity() < 1.0 || gs.GetSoftMask() != nullptr || e.IsImageMask();
    if (!not_opaque && e.GetType() == Element::e_image) {
        SDF::Obj* smask = e.GetSoftMask();
        not_opaque = smask && smask->IsStream();
    }
    if (!not_opaque) {
        SDF::Obj* mask = e.GetMask();
        not_opaque = mask && (mask->IsStream() || mask->IsArray());
    }
    m_engine.Occluders().Add({m_element_counter, r, not_opaque});
}

}  // namespace lum::PDF
