#include "PDF/GStateImpl.h"

#include <cstring>

namespace lum::PDF {

GState::~GState() = default;

GState::RenderingIntent GState::GetRenderingIntentType(const char* name) {
    if (std::strcmp(name, "AbsoluteColorimetric") == 0) return e_absolute_colorimetric;
    if (std::strcmp(name, "RelativeColorimetric") == 0) return e_relative_colorimetric;
    if (std::strcmp(name, "Saturation") == 0) return e_saturation;
    if (std::strcmp(name, "Perceptual") == 0) return e_perceptual;
    return e_unknown_intent;
}

int GState::GetBlendModeType(const char* name) {
    static constexpr const char* kNames[] = {
        "Compatible", "Normal",   "Multiply",  "Screen",    "Difference", "Darken",
        "Lighten",    "ColorDodge", "ColorBurn", "Exclusion", "HardLight", "Overlay",
        "SoftLight",  "Luminosity", "Hue",     "Saturation", "Color"};
    if (std::strlen(name) < 2) return -1;
    for (int i = 0; i < int(std::size(kNames)); ++i)
        if (std::strcmp(name, kNames[i]) == 0) return i;
    return -1;
}

GStateImpl::GStateImpl() { ClearChangeList(); }

GStateImpl::~GStateImpl() = default;

void GStateImpl::MarkChanged(GStateAttribute attr) {
    if (attr >= kAttributeCount || m_change_links[attr] != kUnchanged) return;
    m_change_links[attr] = m_change_head;
    m_change_head = UInt8(attr);
}

void GStateImpl::ClearChangeList() {
    std::memset(m_change_links, kUnchanged, sizeof m_change_links);
    m_change_head = e_null;
}

void GStateImpl::ReleaseShared() {
    m_stroke_cs = ColorSpace();
    m_fill_cs = ColorSpace();
    m_stroke_color = ColorPt();
    m_fill_color = ColorPt();
    m_stroke_pattern = PatternColor();
    m_fill_pattern = PatternColor();
    mp_dashes.reset();
    m_font = Font();
}

const std::vector<double>& GStateImpl::GetDashes() const {
    static const std::vector<double> kSolid;
    return mp_dashes ? *mp_dashes : kSolid;
}

Common::Matrix2D GStateImpl::GetTransform() {
    if (!IsChanged(e_transform)) m_change_matrix = Common::Matrix2D();
    return m_change_matrix;
}

void GStateImpl::SetTransform(const Common::Matrix2D& mtx) {
    MarkChanged(e_transform);
    // A change matrix without an inverse is taken out as identity.
    Common::Matrix2D inverse;
    if (m_change_matrix.Inverse(inverse)) m_ctm = inverse * m_ctm;
    m_change_matrix = mtx;
    m_ctm = mtx * m_ctm;
}

void GStateImpl::SetTransform(double a, double b, double c, double d, double h, double v) {
    SetTransform(Common::Matrix2D(a, b, c, d, h, v));
}

void GStateImpl::ResetTransform() {
    MarkChanged(e_transform);
    m_change_matrix = Common::Matrix2D();
}

void GStateImpl::Concat(double a, double b, double c, double d, double h, double v) {
    Concat(Common::Matrix2D(a, b, c, d, h, v));
}

void GStateImpl::Concat(const Common::Matrix2D& mtx) {
    MarkChanged(e_transform);
    m_ctm = mtx * m_ctm;
    m_change_matrix = mtx * m_change_matrix;
}

void GStateImpl::SetStrokeColorSpace(const ColorSpace& cs) {
    SetStrokeColorSpaceOnly(cs);
    MarkChanged(e_stroke_color);
    cs.InitColor(m_stroke_color);
    m_stroke_pattern = PatternColor();
}

void GStateImpl::SetFillColorSpace(const ColorSpace& cs) {
    SetFillColorSpaceOnly(cs);
    MarkChanged(e_fill_color);
    cs.InitColor(m_fill_color);
    m_fill_pattern = PatternColor();
}

void GStateImpl::SetStrokeColorSpaceOnly(const ColorSpace& cs) {
    MarkChanged(e_stroke_cs);
    m_stroke_cs = cs;
}

void GStateImpl::SetFillColorSpaceOnly(const ColorSpace& cs) {
    MarkChanged(e_fill_cs);
    m_fill_cs = cs;
}

void GStateImpl::SetStrokeColor(const PatternColor& pattern, const ColorPt& c) {
    MarkChanged(e_stroke_color);
    m_stroke_pattern = pattern;
    m_stroke_color = c;
}

void GStateImpl::SetStrokeColor(const PatternColor& pattern) {
    MarkChanged(e_stroke_color);
    m_stroke_pattern = pattern;
}

void GStateImpl::SetStrokeColor(const ColorPt& c) {
    MarkChanged(e_stroke_color);
    m_stroke_color = c;
}

void GStateImpl::SetFillColor(const PatternColor& pattern, const ColorPt& c) {
    MarkChanged(e_fill_color);
    m_fill_pattern = pattern;
    m_fill_color = c;
}

void GStateImpl::SetFillColor(const PatternColor& pattern) {
    MarkChanged(e_fill_color);
    m_fill_pattern = pattern;
}

void GStateImpl::SetFillColor(const ColorPt& c) {
    MarkChanged(e_fill_color);
    m_fill_color = c;
}

#define LUM_GSTATE_SETTER(Name, Type, field, attr) \
    void GStateImpl::Name(Type value) {            \
        MarkChanged(attr);                         \
        field = value;                             \
    }

LUM_GSTATE_SETTER(SetFlatness, double, m_flatness, e_flatness)
LUM_GSTATE_SETTER(SetLineCap, LineCap, m_line_cap, e_line_cap)
LUM_GSTATE_SETTER(SetLineJoin, LineJoin, m_line_join, e_line_join)
LUM_GSTATE_SETTER(SetLineWidth, double, m_line_width, e_line_width)
LUM_GSTATE_SETTER(SetMiterLimit, double, m_miter_limit, e_miter_limit)
LUM_GSTATE_SETTER(SetCharSpacing, double, m_char_spacing, e_char_spacing)
LUM_GSTATE_SETTER(SetWordSpacing, double, m_word_spacing, e_word_spacing)
LUM_GSTATE_SETTER(SetHorizontalScale, double, m_horizontal_scale, e_horizontal_scale)
LUM_GSTATE_SETTER(SetLeading, double, m_leading, e_leading)
LUM_GSTATE_SETTER(SetTextRenderMode, TextRenderingMode, m_render_mode, e_text_render_mode)
LUM_GSTATE_SETTER(SetTextRise, double, m_text_rise, e_text_rise)
LUM_GSTATE_SETTER(SetTextKnockout, bool, m_text_knockout, e_text_knockout)
LUM_GSTATE_SETTER(SetRenderingIntent, RenderingIntent, m_intent, e_rendering_intent)
LUM_GSTATE_SETTER(SetBlendMode, BlendMode, m_blend_mode, e_blend_mode)
LUM_GSTATE_SETTER(SetFillOpacity, double, m_fill_opacity, e_opacity_fill)
LUM_GSTATE_SETTER(SetStrokeOpacity, double, m_stroke_opacity, e_opacity_stroke)
LUM_GSTATE_SETTER(SetAISFlag, bool, m_alpha_is_shape, e_alpha_is_shape)
LUM_GSTATE_SETTER(SetStrokeOverprint, bool, m_stroke_overprint, e_stroke_overprint)
LUM_GSTATE_SETTER(SetFillOverprint, bool, m_fill_overprint, e_fill_overprint)
LUM_GSTATE_SETTER(SetAutoStrokeAdjust, bool, m_stroke_adjust, e_auto_stoke_adjust)
LUM_GSTATE_SETTER(SetSmoothnessTolerance, double, m_smoothness, e_smoothnes)
LUM_GSTATE_SETTER(SetBlackGenFunct, SDF::Obj*, mp_black_generation, e_black_gen_funct)
LUM_GSTATE_SETTER(SetUCRFunct, SDF::Obj*, mp_undercolor_removal, e_ucr_funct)
LUM_GSTATE_SETTER(SetTransferFunct, SDF::Obj*, mp_transfer, e_transfer_funct)
LUM_GSTATE_SETTER(SetHalftone, SDF::Obj*, mp_halftone, e_halftone)

#undef LUM_GSTATE_SETTER

void GStateImpl::SetOverprintMode(int mode) {
    MarkChanged(e_overprint_mode);
    m_overprint_mode = UInt8(mode);
}

void GStateImpl::SetDashPattern(const std::vector<double>& dashes, double phase) {
    MarkChanged(e_dash_pattern);
    mp_dashes = dashes.empty() ? nullptr : std::make_shared<const std::vector<double>>(dashes);
    m_dash_phase = phase;
}

void GStateImpl::SetFont(const Font& font, double size) {
    MarkChanged(e_font);
    m_font = font;
    m_font_size = size;
}

void GStateImpl::SetSoftMask(SDF::Obj* soft_mask, const Common::Matrix2D& ctm) {
    MarkChanged(e_soft_mask);
    mp_soft_mask = soft_mask;
    m_softmask_ctm = ctm;
}

}  // namespace lum::PDF
