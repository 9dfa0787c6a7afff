#include "PDF/Text/TextCapture.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "Common/Limits.h"
#include "PDF/Text/LayoutBuilder.h"
#include "PDF/Text/TextUnicode.h"

namespace lum::PDF {

namespace {

// Points. A glyph whose box reaches beyond this is passed over: no page is that large, and
// beyond it the differences of the layout would overflow or lose all precision.
constexpr double kMaxCoordinate = 1e9;

bool SameBits(const Matrix2D& a, const Matrix2D& b) {
    static_assert(sizeof(Matrix2D) == 6 * sizeof(double));
    return std::memcmp(&a, &b, sizeof(Matrix2D)) == 0;
}

bool IsIdentity(const Matrix2D& m) {
    return ApproxEqual(m.m_a, 1) && ApproxEqual(m.m_b, 0) && ApproxEqual(m.m_c, 0) &&
           ApproxEqual(m.m_d, 1) && ApproxEqual(m.m_h, 0) && ApproxEqual(m.m_v, 0);
}

// 100 / 2π to five decimals: acos of the rotation's cosine in hundredths of a turn.
constexpr double kDirectionScale = 15.91549;

}  // namespace

bool SetElementFrames(const Matrix2D& t, double font_size, CaptureElement& e) {
    ElementFrames frames;
    return frames.Set(t, font_size, e);
}

bool ElementFrames::Set(const Matrix2D& t, double font_size, CaptureElement& e) {
    const double a = t.m_a, b = t.m_b, c = t.m_c, d = t.m_d;
    const UInt64 key[5] = {std::bit_cast<UInt64>(a), std::bit_cast<UInt64>(b),
                           std::bit_cast<UInt64>(c), std::bit_cast<UInt64>(d),
                           std::bit_cast<UInt64>(font_size)};
    if (!m_valid || !std::equal(key, key + 5, m_key)) {
        std::copy(key, key + 5, m_key);
        m_valid = true;
        const double s2 = a * a + b * b;
        m_degenerate = s2 == 0 || !std::isfinite(s2) || !std::isfinite(c) || !std::isfinite(d);
        if (!m_degenerate) {
            const double s = std::sqrt(s2);
            m_s = s;
            m_cos = a / s;
            m_sin = b / s;
            m_dp = (d * a - c * b) / s;
            m_shear = ((c * a + d * b) / s2) * (m_dp / s);
            const double turn = std::acos(std::max(-1.0, std::min(1.0, m_cos))) * kDirectionScale;
            m_direction = static_cast<int>(turn);
            m_upright = ApproxEqual(m_cos, 1) && ApproxEqual(-m_sin, 0) && ApproxEqual(m_sin, 0);
            m_font_height = std::sqrt((font_size * c) * (font_size * c) +
                                      (font_size * d) * (font_size * d));
        }
    }
    if (m_degenerate || !std::isfinite(t.m_h) || !std::isfinite(t.m_v)) return false;
    e.direction = m_direction;
    e.page = t;
    if (m_upright) {
        e.layout = t;
    } else {
        e.layout = Matrix2D(m_s, 0, m_s * m_shear, m_dp, m_sin * t.m_v + m_cos * t.m_h,
                            m_cos * t.m_v - m_sin * t.m_h);
    }
    e.font_height = m_font_height;
    return true;
}

void TextCapture::Reset(UInt32 flags, bool mirror_mode, double mirror_width) {
    m_flags = flags;
    m_mirror_mode = mirror_mode;
    m_mirror_width = mirror_width;
    m_mirror = Matrix2D();
    m_mirror_inverse = Matrix2D();
    if (mirror_mode) {
        m_mirror = Matrix2D(-1, 0, 0, 1, mirror_width, 0);
        m_mirror.Inverse(m_mirror_inverse);
    }
    m_offset_counter = 0;
    m_pending_space = false;
    m_frames_known = false;  // the arena's matrices went with the last page
    ClearFrag();
    mp_run = nullptr;
}

void TextCapture::BeginElement(const CaptureElement& e) {
    m_el = e;
    ClearFrag();
    mp_run = nullptr;
    if (m_mirror_mode && m_el.adjustment != 0) m_el.adjustment = -m_el.adjustment;
    // The strings of a TJ array, and often the elements of a line, have the matrices of the
    // element before, bit for bit: what they give is kept, and so is their entry in the arena.
    if (!m_frames_known || !SameBits(e.page, m_known_page) || !SameBits(e.glyph, m_known_glyph) ||
        !SameBits(e.layout, m_known_layout)) {
        m_m = e.page;
        if (m_mirror_mode) m_m = e.page * m_mirror;
        m_identity = IsIdentity(m_m);
        m_axis = ApproxEqual(m_m.m_b, 0) && ApproxEqual(m_m.m_c, 0) &&
                 DefinitelyGreater(m_m.m_a, 0) && DefinitelyGreater(m_m.m_d, 0);
        m_matrices = m_arena.AddMatrices(e.glyph, m_m);
        m_layout_is_page = e.layout == e.page;
        m_known_page = e.page;
        m_known_glyph = e.glyph;
        m_known_layout = e.layout;
        m_frames_known = true;
    }
    m_no_glyph_yet = true;
    m_box_empty = true;
    m_element_box = Rect();
    if (m_pending_space) {
        m_pending_space = false;
        m_frag.flags |= e_space_before;
    }
}

void TextCapture::AddChar(const CaptureChar& c) {
    m_offset_counter += c.bytes;
    const Int32 offset = static_cast<Int32>(m_offset_counter - c.bytes);
    if (m_arena.GlyphCount() >= Limits::kMaxPageGlyphs) return;

    const Matrix2D& t = m_el.page;
    const Matrix2D& d = m_el.layout;
    const double baseline = d.m_b * c.x + d.m_d * c.y + d.m_v;
    Rect box;
    Quad text_quad;
    if (c.use_advance) {
        box = c.glyph_box;
        text_quad = QuadOnBox(Matrix2D(), box);
    } else {
        Matrix2D gc = m_el.glyph;
        gc.m_h += c.x;
        gc.m_v += c.y;
        text_quad = QuadThrough(gc, c.glyph_box);
        box = BoxAround(text_quad);
    }
    Quad page_quad = QuadThrough(t, box);
    const Rect page_box = BoxAround(page_quad);
    if (!IsBounded(page_box, kMaxCoordinate)) return;
    Rect layout_box_raw = page_box;
    if (!m_layout_is_page) {
        layout_box_raw = BoxAround(QuadThrough(d, box));
        if (!IsBounded(layout_box_raw, kMaxCoordinate)) return;
    }
    if (c.has_outline) {
        if (IsOutside(page_box, *m_el.clip)) return;
    } else if (IsOutside(BoxAround(QuadThrough(t, c.advance_box)), *m_el.clip)) {
        return;
    }

    if (mp_trace) {
        double ox = c.x, oy = c.y;
        t.Mult(ox, oy);
        mp_trace->Char(c.units, c.unit_count, ox, oy, page_box, !c.has_outline);
    }
    Rect layout_box = layout_box_raw;
    if (m_mirror_mode) {
        layout_box.x1 = m_mirror_width - layout_box_raw.x2;
        layout_box.x2 = m_mirror_width - layout_box_raw.x1;
        page_quad = QuadThrough(m_m, box);
    }
    if (!c.has_outline) {
        WhiteSpace(c, box, layout_box, page_quad, text_quad, offset, baseline);
    } else {
        Glyph(c, box, layout_box, page_quad, text_quad, offset, baseline);
    }
}

void TextCapture::WhiteSpace(const CaptureChar& c, const Rect& box, const Rect& layout_box,
                             const Quad& page_quad, const Quad& text_quad, Int32 offset,
                             double baseline) {
    // Blanks at either end of an element stay out of its box.
    if (m_no_glyph_yet) {
        m_element_box = box;
    } else if (m_box_empty) {
        m_box_empty = false;
        m_element_box = box;
    } else if (!c.last) {
        ExtendBox(m_element_box, box);
    }
    if (m_pending_space && mp_run) {
        // A second blank in a row ends the run as it stands, with the quad of its fragments.
        if (mp_trace) mp_trace->Run(*mp_run, m_el.direction);
        m_builder.AddRun(mp_run, m_el.direction, m_el.adjustment);
        mp_run = nullptr;
    }
    if (!m_mirror_mode) {
        if (!m_frag.Empty()) {
            m_frag.flags |= e_space_after;
            EndFragment();
            m_frag.flags |= e_space_before;
        }
        m_pending_space = true;
        return;
    }
    // Mirror mode keeps blanks as glyphs, each a run of its own.
    if (!m_frag.Empty()) PassRun();
    AddUnits(c, box, layout_box, page_quad, text_quad, offset, baseline);
    if (!m_frag.Empty()) PassRun();
}

void TextCapture::Glyph(const CaptureChar& c, const Rect& box, const Rect& layout_box,
                        const Quad& page_quad, const Quad& text_quad, Int32 offset,
                        double baseline) {
    m_no_glyph_yet = false;
    if (m_box_empty) {
        m_box_empty = false;
        m_element_box = box;
    } else {
        ExtendBox(m_element_box, box);
    }
    if (m_pending_space) {
        m_pending_space = false;
        m_frag.flags |= e_space_before;
    }
    AddUnits(c, box, layout_box, page_quad, text_quad, offset, baseline);
}

void TextCapture::AddUnits(const CaptureChar& c, const Rect& box, const Rect& layout_box,
                           const Quad& page_quad, const Quad& text_quad, Int32 offset,
                           double baseline) {
    // A right-to-left character of several units has them reversed.
    const int n = c.unit_count;
    for (int i = 0; i < n; ++i) {
        const Unicode u = (n == 1 || !IsRightToLeft(c.units[i])) ? c.units[i] : c.units[n - 1 - i];
        m_arena.AddGlyph(m_frag, layout_box, page_quad, text_quad, box, c.use_advance, u, offset,
                         baseline, !m_mirror_mode, c.x, c.y, m_matrices);
    }
}

void TextCapture::EndFragment() {
    if (m_frag.Empty()) return;
    if (!mp_run) {
        mp_run = m_pool.NewRun(&m_arena);
        mp_run->mp_font = m_el.font;
        mp_run->m_font_height = m_el.font_height;
        mp_run->m_red = m_el.red;
        mp_run->m_green = m_el.green;
        mp_run->m_blue = m_el.blue;
        mp_run->m_order = m_el.order;
        mp_run->m_baseline = m_frag.baseline;
        mp_run->m_axis_aligned = m_axis;
    }
    mp_run->AddFrag(m_arena.CommitFrag(m_frag));
    ClearFrag();
}

void TextCapture::SetRunBox() {
    mp_run->m_axis_aligned = m_axis;
    Quad q = QuadOnBox(m_m, m_element_box);
    if (!m_identity) q = MapQuad(m_m, q);
    mp_run->m_quad = q;
}

void TextCapture::PassRun() {
    EndFragment();
    if (mp_run) {
        SetRunBox();
        if (mp_trace) mp_trace->Run(*mp_run, m_el.direction);
        m_builder.AddRun(mp_run, m_el.direction, m_el.adjustment);
        mp_run = nullptr;
    }
    ClearFrag();
}

void TextCapture::EndElement() { PassRun(); }

void TextCapture::AbortElement() {
    ClearFrag();
    mp_run = nullptr;
}

}  // namespace lum::PDF
