#include "PDF/ShadowElement.h"

#include "Common/Exception.h"

namespace lum::PDF {

// --- GStateShadow ---

#define LUM_SHADOW_GET(Ret, Name, attr) \
    Ret GStateShadow::Name() const { return Has(attr) ? m_over.Name() : mp_real->Name(); }

LUM_SHADOW_GET(const ColorSpace&, GetStrokeColorSpace, e_stroke_cs)
LUM_SHADOW_GET(const ColorSpace&, GetFillColorSpace, e_fill_cs)
LUM_SHADOW_GET(const ColorPt&, GetStrokeColor, e_stroke_color)
LUM_SHADOW_GET(const PatternColor&, GetStrokePattern, e_stroke_color)
LUM_SHADOW_GET(const ColorPt&, GetFillColor, e_fill_color)
LUM_SHADOW_GET(const PatternColor&, GetFillPattern, e_fill_color)
LUM_SHADOW_GET(double, GetFlatness, e_flatness)
LUM_SHADOW_GET(GState::LineCap, GetLineCap, e_line_cap)
LUM_SHADOW_GET(GState::LineJoin, GetLineJoin, e_line_join)
LUM_SHADOW_GET(double, GetLineWidth, e_line_width)
LUM_SHADOW_GET(double, GetMiterLimit, e_miter_limit)
LUM_SHADOW_GET(const std::vector<double>&, GetDashes, e_dash_pattern)
LUM_SHADOW_GET(double, GetPhase, e_dash_pattern)
LUM_SHADOW_GET(double, GetCharSpacing, e_char_spacing)
LUM_SHADOW_GET(double, GetWordSpacing, e_word_spacing)
LUM_SHADOW_GET(double, GetHorizontalScale, e_horizontal_scale)
LUM_SHADOW_GET(double, GetLeading, e_leading)
LUM_SHADOW_GET(const Font&, GetFont, e_font)
LUM_SHADOW_GET(double, GetFontSize, e_font)
LUM_SHADOW_GET(GState::TextRenderingMode, GetTextRenderMode, e_text_render_mode)
LUM_SHADOW_GET(double, GetTextRise, e_text_rise)
LUM_SHADOW_GET(bool, GetTextKnockout, e_text_knockout)
LUM_SHADOW_GET(GState::RenderingIntent, GetRenderingIntent, e_rendering_intent)
LUM_SHADOW_GET(GState::BlendMode, GetBlendMode, e_blend_mode)
LUM_SHADOW_GET(double, GetFillOpacity, e_opacity_fill)
LUM_SHADOW_GET(double, GetStrokeOpacity, e_opacity_stroke)
LUM_SHADOW_GET(bool, GetAISFlag, e_alpha_is_shape)
LUM_SHADOW_GET(SDF::Obj*, GetSoftMask, e_soft_mask)
LUM_SHADOW_GET(const Common::Matrix2D&, GetSoftMaskTransform, e_soft_mask)
LUM_SHADOW_GET(bool, GetStrokeOverprint, e_stroke_overprint)
LUM_SHADOW_GET(bool, GetFillOverprint, e_fill_overprint)
LUM_SHADOW_GET(int, GetOverprintMode, e_overprint_mode)
LUM_SHADOW_GET(bool, GetAutoStrokeAdjust, e_auto_stoke_adjust)
LUM_SHADOW_GET(double, GetSmoothnessTolerance, e_smoothnes)
LUM_SHADOW_GET(SDF::Obj*, GetTransferFunct, e_transfer_funct)
LUM_SHADOW_GET(SDF::Obj*, GetBlackGenFunct, e_black_gen_funct)
LUM_SHADOW_GET(SDF::Obj*, GetUCRFunct, e_ucr_funct)
LUM_SHADOW_GET(SDF::Obj*, GetHalftone, e_halftone)

#undef LUM_SHADOW_GET

#define LUM_SHADOW_SET(Name, Type, attr) \
    void GStateShadow::Name(Type value) { \
        m_over.Name(value);               \
        m_set.set(attr);                  \
    }

LUM_SHADOW_SET(SetFlatness, double, e_flatness)
LUM_SHADOW_SET(SetLineCap, LineCap, e_line_cap)
LUM_SHADOW_SET(SetLineJoin, LineJoin, e_line_join)
LUM_SHADOW_SET(SetLineWidth, double, e_line_width)
LUM_SHADOW_SET(SetMiterLimit, double, e_miter_limit)
LUM_SHADOW_SET(SetCharSpacing, double, e_char_spacing)
LUM_SHADOW_SET(SetWordSpacing, double, e_word_spacing)
LUM_SHADOW_SET(SetHorizontalScale, double, e_horizontal_scale)
LUM_SHADOW_SET(SetLeading, double, e_leading)
LUM_SHADOW_SET(SetTextRenderMode, TextRenderingMode, e_text_render_mode)
LUM_SHADOW_SET(SetTextRise, double, e_text_rise)
LUM_SHADOW_SET(SetTextKnockout, bool, e_text_knockout)
LUM_SHADOW_SET(SetRenderingIntent, RenderingIntent, e_rendering_intent)
LUM_SHADOW_SET(SetBlendMode, BlendMode, e_blend_mode)
LUM_SHADOW_SET(SetFillOpacity, double, e_opacity_fill)
LUM_SHADOW_SET(SetStrokeOpacity, double, e_opacity_stroke)
LUM_SHADOW_SET(SetAISFlag, bool, e_alpha_is_shape)
LUM_SHADOW_SET(SetStrokeOverprint, bool, e_stroke_overprint)
LUM_SHADOW_SET(SetFillOverprint, bool, e_fill_overprint)
LUM_SHADOW_SET(SetOverprintMode, int, e_overprint_mode)
LUM_SHADOW_SET(SetAutoStrokeAdjust, bool, e_auto_stoke_adjust)
LUM_SHADOW_SET(SetSmoothnessTolerance, double, e_smoothnes)
LUM_SHADOW_SET(SetBlackGenFunct, SDF::Obj*, e_black_gen_funct)
LUM_SHADOW_SET(SetUCRFunct, SDF::Obj*, e_ucr_funct)
LUM_SHADOW_SET(SetTransferFunct, SDF::Obj*, e_transfer_funct)
LUM_SHADOW_SET(SetHalftone, SDF::Obj*, e_halftone)

#undef LUM_SHADOW_SET

Common::Matrix2D GStateShadow::GetTransform() {
    return Has(e_transform) ? m_over.GetTransform() : mp_real->GetTransform();
}

void GStateShadow::TakeTransform() {
    if (Has(e_transform)) return;
    const Common::Matrix2D change = mp_real->GetTransform();
    const Common::Matrix2D ctm = mp_real_ctm ? *mp_real_ctm : Common::Matrix2D();
    m_over.ResetTransform();
    Common::Matrix2D inverse;
    m_over.SetCTM(change.Inverse(inverse) ? inverse * ctm : ctm);
    m_over.SetTransform(change);
    m_set.set(e_transform);
}

void GStateShadow::SetTransform(const Common::Matrix2D& mtx) {
    TakeTransform();
    m_over.SetTransform(mtx);
}

void GStateShadow::SetTransform(double a, double b, double c, double d, double h, double v) {
    SetTransform(Common::Matrix2D(a, b, c, d, h, v));
}

void GStateShadow::ResetTransform() {
    TakeTransform();
    m_over.ResetTransform();
}

void GStateShadow::SetCTM(const Common::Matrix2D& mtx) {
    m_over.SetCTM(mtx);
    m_set.set(e_transform);
}

void GStateShadow::Concat(double a, double b, double c, double d, double h, double v) {
    Concat(Common::Matrix2D(a, b, c, d, h, v));
}

void GStateShadow::Concat(const Common::Matrix2D& mtx) {
    TakeTransform();
    m_over.Concat(mtx);
}

void GStateShadow::SetStrokeColorSpace(const ColorSpace& cs) {
    m_over.SetStrokeColorSpace(cs);
    m_set.set(e_stroke_cs);
    m_set.set(e_stroke_color);
}

void GStateShadow::SetFillColorSpace(const ColorSpace& cs) {
    m_over.SetFillColorSpace(cs);
    m_set.set(e_fill_cs);
    m_set.set(e_fill_color);
}

void GStateShadow::SetStrokeColor(const PatternColor& pattern, const ColorPt& c) {
    m_over.SetStrokeColor(pattern, c);
    m_set.set(e_stroke_color);
}

void GStateShadow::SetStrokeColor(const PatternColor& pattern) {
    SetStrokeColor(pattern, GetStrokeColor());
}

void GStateShadow::SetStrokeColor(const ColorPt& c) { SetStrokeColor(GetStrokePattern(), c); }

void GStateShadow::SetFillColor(const PatternColor& pattern, const ColorPt& c) {
    m_over.SetFillColor(pattern, c);
    m_set.set(e_fill_color);
}

void GStateShadow::SetFillColor(const PatternColor& pattern) { SetFillColor(pattern, GetFillColor()); }

void GStateShadow::SetFillColor(const ColorPt& c) { SetFillColor(GetFillPattern(), c); }

void GStateShadow::SetDashPattern(const std::vector<double>& dashes, double phase) {
    m_over.SetDashPattern(dashes, phase);
    m_set.set(e_dash_pattern);
}

void GStateShadow::SetFont(const Font& font, double size) {
    m_over.SetFont(font, size);
    m_set.set(e_font);
}

void GStateShadow::SetSoftMask(SDF::Obj* soft_mask, const Common::Matrix2D& ctm) {
    m_over.SetSoftMask(soft_mask, ctm);
    m_set.set(e_soft_mask);
}

// --- ShadowElement ---

void ShadowElement::Attach(Element* real) {
    mp_real = real;
    m_gstate.Attach(real ? &real->GetGState() : nullptr, real ? &real->GetCTM() : nullptr);
    m_has_clip = m_has_stroke = m_has_fill = m_has_winding = m_has_clip_winding = false;
    m_has_points = m_has_types = m_has_text = m_has_text_matrix = false;
    m_has_adjustment = m_has_line_offset = false;
    mp_xobject = nullptr;
}

const UInt8* ShadowElement::GetPathTypes() const {
    if (!m_has_types) return mp_real->GetPathTypes();
    return m_types.empty() ? nullptr : m_types.data();
}

int ShadowElement::GetPathTypesCount() const {
    return m_has_types ? int(m_types.size()) : mp_real->GetPathTypesCount();
}

const double* ShadowElement::GetPathPoints() const {
    if (!m_has_points) return mp_real->GetPathPoints();
    return m_points.empty() ? nullptr : m_points.data();
}

int ShadowElement::GetPointCount() const {
    return m_has_points ? int(m_points.size()) : mp_real->GetPointCount();
}

void ShadowElement::SetPathPoints(const double* points, int count) {
    m_has_points = true;
    m_points.assign(points, points + (count > 0 ? count : 0));
}

void ShadowElement::SetPathTypes(const UInt8* types, int count) {
    m_has_types = true;
    m_types.assign(types, types + (count > 0 ? count : 0));
}

void ShadowElement::SetXObject(SDF::Obj* xobject) {
    const Type type = GetType();
    if (!(xobject && (type == e_image || type == e_form)))
        throw Common::Exception("xobject && (m_element_type == e_image || m_element_type == e_form)",
                                __LINE__, __FILE__, LUM_FUNCTION, "Bad xobj");
    mp_xobject = xobject;
}

const UInt8* ShadowElement::GetTextData() const {
    if (!m_has_text) return mp_real->GetTextData();
    return m_text.empty() ? nullptr : reinterpret_cast<const UInt8*>(m_text.data());
}

int ShadowElement::GetTextDataSize() const {
    return m_has_text ? int(m_text.size()) : mp_real->GetTextDataSize();
}

void ShadowElement::SetTextData(const UInt8* bytes, int size) {
    m_has_text = true;
    m_text.assign(reinterpret_cast<const char*>(bytes), size > 0 ? size_t(size) : 0);
}

void ShadowElement::SetTextData(const std::string& bytes) {
    m_has_text = true;
    m_text = bytes;
}

void ShadowElement::GetNewTextLineOffset(double& x, double& y) const {
    if (!m_has_line_offset) return mp_real->GetNewTextLineOffset(x, y);
    x = m_line_offset_x;
    y = m_line_offset_y;
}

void ShadowElement::SetNewTextLineOffset(double x, double y) {
    m_has_line_offset = true;
    m_line_offset_x = x;
    m_line_offset_y = y;
}

}  // namespace lum::PDF
