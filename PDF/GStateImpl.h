#pragma once
// The graphics state record that the reader keeps for each level of q nesting. A flat record:
// a push copies it and bumps the handful of counted shares it holds (font, dash array).
#include <memory>
#include <vector>

#include "PDF/Font/Font.h"
#include "PDF/GState.h"

namespace lum::PDF {

class GStateImpl final : public GState {
public:
    GStateImpl();
    GStateImpl(const GStateImpl& other) = default;
    GStateImpl& operator=(const GStateImpl& other) = default;
    ~GStateImpl() override;

    Common::Matrix2D GetTransform() override;
    const ColorSpace& GetStrokeColorSpace() const override { return m_stroke_cs; }
    const ColorSpace& GetFillColorSpace() const override { return m_fill_cs; }
    const ColorPt& GetStrokeColor() const override { return m_stroke_color; }
    const PatternColor& GetStrokePattern() const override { return m_stroke_pattern; }
    const ColorPt& GetFillColor() const override { return m_fill_color; }
    const PatternColor& GetFillPattern() const override { return m_fill_pattern; }
    double GetFlatness() const override { return m_flatness; }
    LineCap GetLineCap() const override { return m_line_cap; }
    LineJoin GetLineJoin() const override { return m_line_join; }
    double GetLineWidth() const override { return m_line_width; }
    double GetMiterLimit() const override { return m_miter_limit; }
    const std::vector<double>& GetDashes() const override;
    double GetPhase() const override { return m_dash_phase; }
    double GetCharSpacing() const override { return m_char_spacing; }
    double GetWordSpacing() const override { return m_word_spacing; }
    double GetHorizontalScale() const override { return m_horizontal_scale; }
    double GetLeading() const override { return m_leading; }
    const Font& GetFont() const override { return m_font; }
    double GetFontSize() const override { return m_font_size; }
    TextRenderingMode GetTextRenderMode() const override { return m_render_mode; }
    double GetTextRise() const override { return m_text_rise; }
    bool GetTextKnockout() const override { return m_text_knockout; }
    RenderingIntent GetRenderingIntent() const override { return m_intent; }
    BlendMode GetBlendMode() const override { return m_blend_mode; }
    double GetFillOpacity() const override { return m_fill_opacity; }
    double GetStrokeOpacity() const override { return m_stroke_opacity; }
    bool GetAISFlag() const override { return m_alpha_is_shape; }
    SDF::Obj* GetSoftMask() const override { return mp_soft_mask; }
    const Common::Matrix2D& GetSoftMaskTransform() const override { return m_softmask_ctm; }
    bool GetStrokeOverprint() const override { return m_stroke_overprint; }
    bool GetFillOverprint() const override { return m_fill_overprint; }
    int GetOverprintMode() const override { return m_overprint_mode; }
    bool GetAutoStrokeAdjust() const override { return m_stroke_adjust; }
    double GetSmoothnessTolerance() const override { return m_smoothness; }
    SDF::Obj* GetTransferFunct() const override { return mp_transfer; }
    SDF::Obj* GetBlackGenFunct() const override { return mp_black_generation; }
    SDF::Obj* GetUCRFunct() const override { return mp_undercolor_removal; }
    SDF::Obj* GetHalftone() const override { return mp_halftone; }

    void SetTransform(const Common::Matrix2D& mtx) override;
    void SetTransform(double a, double b, double c, double d, double h, double v) override;
    void ResetTransform() override;
    void SetCTM(const Common::Matrix2D& mtx) override { m_ctm = mtx; }
    void Concat(double a, double b, double c, double d, double h, double v) override;
    void Concat(const Common::Matrix2D& mtx) override;
    void SetStrokeColorSpace(const ColorSpace& cs) override;
    void SetFillColorSpace(const ColorSpace& cs) override;
    void SetStrokeColor(const PatternColor& pattern, const ColorPt& c) override;
    void SetStrokeColor(const PatternColor& pattern) override;
    void SetStrokeColor(const ColorPt& c) override;
    void SetFillColor(const PatternColor& pattern, const ColorPt& c) override;
    void SetFillColor(const PatternColor& pattern) override;
    void SetFillColor(const ColorPt& c) override;
    void SetFlatness(double flatness) override;
    void SetLineCap(LineCap cap) override;
    void SetLineJoin(LineJoin join) override;
    void SetLineWidth(double width) override;
    void SetMiterLimit(double limit) override;
    void SetDashPattern(const std::vector<double>& dashes, double phase) override;
    void SetCharSpacing(double spacing) override;
    void SetWordSpacing(double spacing) override;
    void SetHorizontalScale(double scale) override;
    void SetLeading(double leading) override;
    void SetFont(const Font& font, double size) override;
    void SetTextRenderMode(TextRenderingMode mode) override;
    void SetTextRise(double rise) override;
    void SetTextKnockout(bool knockout) override;
    void SetRenderingIntent(RenderingIntent intent) override;
    void SetBlendMode(BlendMode mode) override;
    void SetFillOpacity(double opacity) override;
    void SetStrokeOpacity(double opacity) override;
    void SetAISFlag(bool alpha_is_shape) override;
    void SetSoftMask(SDF::Obj* soft_mask, const Common::Matrix2D& ctm) override;
    void SetStrokeOverprint(bool op) override;
    void SetFillOverprint(bool op) override;
    void SetOverprintMode(int mode) override;
    void SetAutoStrokeAdjust(bool adjust) override;
    void SetSmoothnessTolerance(double smoothness) override;
    void SetBlackGenFunct(SDF::Obj* funct) override;
    void SetUCRFunct(SDF::Obj* funct) override;
    void SetTransferFunct(SDF::Obj* funct) override;
    void SetHalftone(SDF::Obj* halftone) override;

    // --- For the reader ---
    const Common::Matrix2D& GetCTM() const { return m_ctm; }
    // Sets the colour without touching the space (the device colour operators).
    void SetStrokeColorSpaceOnly(const ColorSpace& cs);
    void SetFillColorSpaceOnly(const ColorSpace& cs);
    // The change matrix back to identity, without marking (at every Next).
    void ClearChangeMatrix() { m_change_matrix = Common::Matrix2D(); }
    // Strips what a popped state shares, before it enters the free list.
    void ReleaseShared();

    // --- Change list ---
    void MarkChanged(GStateAttribute attr);
    bool IsChanged(GStateAttribute attr) const {
        return attr < kAttributeCount && m_change_links[attr] != kUnchanged;
    }
    GStateChangeIterator ChangesBegin() const { return {m_change_links, m_change_head}; }
    GStateChangeIterator ChangesEnd() const { return {m_change_links, UInt8(e_null)}; }
    void ClearChangeList();

private:
    static constexpr UInt8 kUnchanged = 37;

    Common::Matrix2D m_ctm;
    Common::Matrix2D m_change_matrix;
    Common::Matrix2D m_softmask_ctm;
    ColorPt m_stroke_color;
    PatternColor m_stroke_pattern;
    ColorSpace m_stroke_cs;
    ColorPt m_fill_color;
    PatternColor m_fill_pattern;
    ColorSpace m_fill_cs;
    RenderingIntent m_intent = e_relative_colorimetric;
    double m_flatness = 1.0;
    LineCap m_line_cap = e_butt_cap;
    LineJoin m_line_join = e_miter_join;
    double m_line_width = 1.0;
    double m_miter_limit = 10.0;
    double m_dash_phase = 0;
    std::shared_ptr<const std::vector<double>> mp_dashes;  // null: a solid line
    TextRenderingMode m_render_mode = e_fill_text;
    double m_char_spacing = 0;
    double m_word_spacing = 0;
    double m_horizontal_scale = 100.0;
    double m_leading = 0;
    Font m_font;
    double m_font_size = 0;
    double m_text_rise = 0;
    bool m_text_knockout = true;
    BlendMode m_blend_mode = e_bl_normal;
    double m_fill_opacity = 1.0;
    double m_stroke_opacity = 1.0;
    bool m_alpha_is_shape = false;
    SDF::Obj* mp_soft_mask = nullptr;
    bool m_stroke_overprint = false;
    bool m_fill_overprint = false;
    UInt8 m_overprint_mode = 0;
    bool m_stroke_adjust = false;
    double m_smoothness = 0.1;
    SDF::Obj* mp_transfer = nullptr;
    SDF::Obj* mp_black_generation = nullptr;
    SDF::Obj* mp_undercolor_removal = nullptr;
    SDF::Obj* mp_halftone = nullptr;
    // Byte i: kUnchanged, or the attribute changed before i. The head is the latest.
    UInt8 m_change_links[kAttributeCount];
    UInt8 m_change_head = e_null;
};

}  // namespace lum::PDF
