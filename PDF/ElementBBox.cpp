// The box of an element in page space, by kind.
#include <algorithm>
#include <cmath>

#include "Common/Exception.h"
#include "PDF/ElementBuilderImpl.h"
#include "PDF/Font/Font.h"
#include "SDF/Obj.h"

namespace lum::PDF {

namespace {

// The default ascent and descent of a font whose own give no height.
constexpr double kFallbackAscent = 950;
constexpr double kFallbackDescent = -350;
// Growth of a box drawn with a hairline (line width 0 or less).
constexpr double kHairline = 0.001;
constexpr double kHalfSqrt2 = 0.707106781;

// The extent of the four corners of (x1, y1, x2, y2) through `m`.
Rect MapBox(double x1, double y1, double x2, double y2, const Common::Matrix2D& m) {
    double xs[4] = {x1, x2, x2, x1}, ys[4] = {y1, y1, y2, y2};
    for (int i = 0; i < 4; ++i) m.Mult(xs[i], ys[i]);
    return Rect(*std::min_element(xs, xs + 4), *std::min_element(ys, ys + 4),
                *std::max_element(xs, xs + 4), *std::max_element(ys, ys + 4));
}

void Grow(Rect& r, double by) {
    r.x1 -= by;
    r.y1 -= by;
    r.x2 += by;
    r.y2 += by;
}

// A form's or shading's BBox (through its Matrix), or false; a damaged entry gives no box.
bool ObjectBox(SDF::Obj* obj, Rect& out) try {
    if (!obj) return false;
    SDF::Obj* arr = obj->FindObj(SDF::e_BBox);
    if (!arr || !arr->IsArray() || arr->Size() < 4) return false;
    Rect box(arr);
    box.Normalize();
    SDF::Obj* mtx = obj->FindObj(SDF::e_Matrix);
    if (mtx && mtx->IsArray() && mtx->Size() >= 6) {
        Common::Matrix2D m(mtx->GetAt(0)->GetNumber(), mtx->GetAt(1)->GetNumber(),
                           mtx->GetAt(2)->GetNumber(), mtx->GetAt(3)->GetNumber(),
                           mtx->GetAt(4)->GetNumber(), mtx->GetAt(5)->GetNumber());
        box = MapBox(box.x1, box.y1, box.x2, box.y2, m);
    }
    out = box;
    return true;
} catch (const Common::Exception&) {
    return false;
}

// Number of coordinates that a segment of `type` carries.
int SegmentDoubles(UInt8 type) {
    switch (type) {
        case Element::e_moveto:
        case Element::e_lineto:
            return 2;
        case Element::e_cubicto:
            return 6;
        case Element::e_conicto:
        case Element::e_rect:
            return 4;
        default:
            return 0;
    }
}

}  // namespace

bool ElementBuilderImpl::GetBBox(Rect& out) {
    out = Rect();
    const Common::Matrix2D& ctm = mp_state->GetCTM();
    switch (m_element_type) {
        case e_image:
        case e_inline_image:
            out = MapBox(0, 0, 1, 1, ctm);
            return true;
        case e_shading:
        case e_form: {
            Rect box;
            if (!ObjectBox(mp_xobject, box)) return false;
            out = MapBox(box.x1, box.y1, box.x2, box.y2, ctm);
            return true;
        }
        case e_path: {
            if (m_segments.empty()) return false;
            double x1 = HUGE_VAL, y1 = HUGE_VAL, x2 = -HUGE_VAL, y2 = -HUGE_VAL;
            auto add = [&](double x, double y) {
                x1 = std::min(x1, x);
                y1 = std::min(y1, y);
                x2 = std::max(x2, x);
                y2 = std::max(y2, y);
            };
            size_t p = 0;
            bool axis_parallel = true;
            double px = 0, py = 0;
            for (UInt8 seg : m_segments) {
                const int n = SegmentDoubles(seg);
                if (p + size_t(n) > m_points.size()) return false;
                const double* c = m_points.data() + p;
                if (seg == e_rect) {
                    add(c[0], c[1]);
                    add(c[0] + c[2], c[1] + c[3]);
                } else {
                    for (int k = 0; k < n; k += 2) add(c[k], c[k + 1]);
                }
                if (seg == e_lineto && c[0] != px && c[1] != py) axis_parallel = false;
                if (seg == e_cubicto || seg == e_conicto) axis_parallel = false;
                if (n >= 2 && seg != e_rect) {
                    px = c[n - 2];
                    py = c[n - 1];
                }
                p += size_t(n);
            }
            if (x1 > x2) return false;  // only closepath segments: no point at all
            if (m_stroke) {
                const double lw = mp_state->GetLineWidth();
                if (lw > 0) {
                    double half = lw / 2;
                    const double miter = mp_state->GetMiterLimit() * lw;
                    const bool move_and_line = m_segments.size() == 2 &&
                                               m_segments[0] == e_moveto &&
                                               m_segments[1] == e_lineto;
                    if (mp_state->GetLineJoin() == GState::e_miter_join && miter > lw &&
                        !move_and_line && !axis_parallel)
                        half = miter / 2;
                    x1 -= half;
                    y1 -= half;
                    x2 += half;
                    y2 += half;
                    out = MapBox(x1, y1, x2, y2, ctm);
                } else {
                    out = MapBox(x1, y1, x2, y2, ctm);
                    Grow(out, kHairline);
                }
                return true;
            }
            out = MapBox(x1, y1, x2, y2, ctm);
            return true;
        }
        case e_text: {
            if (m_points.size() < 2 || m_text_length == 0) return false;
            const Font& font = mp_state->GetFont();
            const double size = mp_state->GetFontSize();
            const double x0 = m_points[0], y0 = m_points[1];
            const Common::Matrix2D m = m_text_matrix * ctm;
            if (font.GetType() != Font::e_Type3) {
                double asc = font.GetAscent(), desc = font.GetDescent();
                if (std::fabs(asc - desc) < 1.0) {
                    asc = kFallbackAscent;
                    desc = kFallbackDescent;
                }
                out = MapBox(x0, y0 + desc * size / 1000, x0 + m_text_length,
                             y0 + asc * size / 1000, m);
                if (IsStroked()) {
                    const double lw = mp_state->GetLineWidth();
                    if (lw > 0) {
                        double hw = lw;
                        const double miter = mp_state->GetMiterLimit() * lw;
                        if (mp_state->GetLineJoin() == GState::e_miter_join && miter > hw)
                            hw = miter;
                        const double s = std::hypot(ctm.m_a * kHalfSqrt2 + ctm.m_b * kHalfSqrt2,
                                                    ctm.m_c * kHalfSqrt2 + ctm.m_d * kHalfSqrt2);
                        Grow(out, s * hw / 2);
                    } else {
                        Grow(out, kHairline);
                    }
                }
                return true;
            }
            const Rect fbox = font.GetBBox();
            if (fbox.y1 == fbox.y2) return false;
            const Rect r = MapBox(fbox.x1, fbox.y1, fbox.x2, fbox.y2,
                                  font.GetType3FontMatrix() * Common::Matrix2D::Scale(size, size));
            const double xl = m_points[m_points.size() - 2];
            out = MapBox(x0 + r.x1, y0 + r.y1, xl + r.x2, y0 + r.y2, m);
            return true;
        }
        default:
            return false;
    }
}

}  // namespace lum::PDF
