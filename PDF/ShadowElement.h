#pragma once
// Overlays on a real state and a real element: a getter answers from the overlay when its
// attribute was set there, and otherwise asks the real object; a setter never touches the
// real object. A client can so alter what it sees of an element (as a basis for writing
// content back) while the interpreter's own state runs on unharmed. Resetting an overlay
// is a matter of clearing flags.
#include <bitset>
#include <vector>

#include "PDF/Element.h"
#include "PDF/GStateImpl.h"

namespace lum::PDF {

class GStateShadow final : public GState {
public:
    GStateShadow() = default;
    // `real_ctm` is the real element's CTM, which relative transform changes start from.
    void Attach(GState* real, const Common::Matrix2D* real_ctm) {
        mp_real = real;
        mp_real_ctm = real_ctm;
        m_set.reset();
    }

    Common::Matrix2D GetTransform() override;
    const ColorSpace& GetStrokeColorSpace() const override;
    const ColorSpace& GetFillColorSpace() const override;
    const ColorPt& GetStrokeColor() const override;
    const PatternColor& GetStrokePattern() const override;
    const ColorPt& GetFillColor() const override;
    const PatternColor& GetFillPattern() const override;
    double GetFlatness() const override;
    LineCap GetLineCap() const override;
    LineJoin GetLineJoin() const override;
    double GetLineWidth() const override;
    double GetMiterLimit() const override;
    const std::vector<double>& GetDashes() const override;
    double GetPhase() const override;
    double GetCharSpacing() const override;
    double GetWordSpacing() const override;
    double GetHorizontalScale() const override;
    double GetLeading() const override;
    const Font& GetFont() const override;
    double GetFontSize() const override;
    TextRenderingMode GetTextRenderMode() const override;
    double GetTextRise() const override;
    bool GetTextKnockout() const override;
    RenderingIntent GetRenderingIntent() const override;
    BlendMode GetBlendMode() const override;
    double GetFillOpacity() const override;
    double GetStrokeOpacity() const override;
    bool GetAISFlag() const override;
    SDF::Obj* GetSoftMask() const override;
    const Common::Matrix2D& GetSoftMaskTransform() const override;
    bool GetStrokeOverprint() const override;
    bool GetFillOverprint() const override;
    int GetOverprintMode() const override;
    bool GetAutoStrokeAdjust() const override;
    double GetSmoothnessTolerance() const override;
    SDF::Obj* GetTransferFunct() const override;
    SDF::Obj* GetBlackGenFunct() const override;
    SDF::Obj* GetUCRFunct() const override;
    SDF::Obj* GetHalftone() const override;

    void SetTransform(const Common::Matrix2D& mtx) override;
    void SetTransform(double a, double b, double c, double d, double h, double v) override;
    void ResetTransform() override;
    void SetCTM(const Common::Matrix2D& mtx) override;
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

    // The CTM as the overlay sees it.
    const Common::Matrix2D& GetCTM(const Common::Matrix2D& real_ctm) const {
        return m_set[e_transform] ? m_over.GetCTM() : real_ctm;
    }

private:
    bool Has(GStateAttribute a) const { return m_set[a]; }
    // Before a relative change of the transform, the overlay starts from the real one.
    void TakeTransform();

    GState* mp_real = nullptr;
    const Common::Matrix2D* mp_real_ctm = nullptr;
    GStateImpl m_over;
    std::bitset<kAttributeCount> m_set;
};

class ShadowElement final : public Element {
public:
    ShadowElement() = default;
    // Repoints the overlay at `real` with nothing overridden.
    void Attach(Element* real);
    Element* GetReal() const { return mp_real; }

    const UInt8* GetImageData() const override { return mp_real->GetImageData(); }
    int GetImageDataSize() const override { return mp_real->GetImageDataSize(); }
    SDF::Obj* GetImageColorSpace() const override { return mp_real->GetImageColorSpace(); }
    int GetImageWidth() const override { return mp_real->GetImageWidth(); }
    int GetImageHeight() const override { return mp_real->GetImageHeight(); }
    SDF::Obj* GetDecodeArray() const override { return mp_real->GetDecodeArray(); }
    int GetBitsPerComponent() const override { return mp_real->GetBitsPerComponent(); }
    int GetComponentNum() const override { return mp_real->GetComponentNum(); }
    bool IsImageMask() const override { return mp_real->IsImageMask(); }
    bool IsImageInterpolate() const override { return mp_real->IsImageInterpolate(); }
    SDF::Obj* GetMask() const override { return mp_real->GetMask(); }
    SDF::Obj* GetSoftMask() const override { return mp_real->GetSoftMask(); }
    GState::RenderingIntent GetImageRenderingIntent() const override {
        return mp_real->GetImageRenderingIntent();
    }

    Type GetType() const override { return mp_real->GetType(); }
    GState& GetGState() override { return m_gstate; }
    const Common::Matrix2D& GetCTM() const override { return m_gstate.GetCTM(mp_real->GetCTM()); }
    bool GetBBox(Rect& out) override { return mp_real->GetBBox(out); }
    SDF::Obj* GetParentStructElement() override { return mp_real->GetParentStructElement(); }
    int GetStructMCID() override { return mp_real->GetStructMCID(); }
    bool IsOCVisible() const override { return mp_real->IsOCVisible(); }
    bool IsClippingPath() const override { return m_has_clip ? m_clip : mp_real->IsClippingPath(); }
    bool IsStroked() const override { return m_has_stroke ? m_stroke : mp_real->IsStroked(); }
    bool IsFilled() const override { return m_has_fill ? m_fill : mp_real->IsFilled(); }
    bool IsWindingFill() const override { return m_has_winding ? m_winding : mp_real->IsWindingFill(); }
    bool IsClipWindingFill() const override {
        return m_has_clip_winding ? m_clip_winding : mp_real->IsClipWindingFill();
    }
    const UInt8* GetPathTypes() const override;
    int GetPathTypesCount() const override;
    const double* GetPathPoints() const override;
    int GetPointCount() const override;
    void SetPathClip(bool clip) override { m_has_clip = true, m_clip = clip; }
    void SetPathStroke(bool stroke) override { m_has_stroke = true, m_stroke = stroke; }
    void SetPathFill(bool fill) override { m_has_fill = true, m_fill = fill; }
    void SetWindingFill(bool winding) override { m_has_winding = true, m_winding = winding; }
    void SetClipWindingFill(bool winding) override {
        m_has_clip_winding = true, m_clip_winding = winding;
    }
    void SetPathPoints(const double* points, int count) override;
    void SetPathTypes(const UInt8* types, int count) override;
    SDF::Obj* GetXObject() const override { return mp_xobject ? mp_xobject : mp_real->GetXObject(); }
    void SetXObject(SDF::Obj* xobject) override;
    std::string GetImageRGB() override { return mp_real->GetImageRGB(); }
    UString GetTextString() override { return mp_real->GetTextString(); }
    const UInt8* GetTextData() const override;
    int GetTextDataSize() const override;
    const Common::Matrix2D& GetTextMatrix() const override {
        return m_has_text_matrix ? m_text_matrix : mp_real->GetTextMatrix();
    }
    void GetCharIterator(CharData& first) const override { mp_real->GetCharIterator(first); }
    void GetCharIteratorEnd(CharData& end) const override { mp_real->GetCharIteratorEnd(end); }
    double GetTextLength() const override { return mp_real->GetTextLength(); }
    double GetPosAdjustment() const override {
        return m_has_adjustment ? m_adjustment : mp_real->GetPosAdjustment();
    }
    void GetNewTextLineOffset(double& x, double& y) const override;
    bool HasTextMatrix() const override { return m_has_text_matrix || mp_real->HasTextMatrix(); }
    void SetTextData(const UInt8* bytes, int size) override;
    void SetTextData(const std::string& bytes) override;
    void SetTextMatrix(const Common::Matrix2D& mtx) override {
        m_has_text_matrix = true;
        m_text_matrix = mtx;
    }
    void SetTextMatrix(double a, double b, double c, double d, double h, double v) override {
        SetTextMatrix(Common::Matrix2D(a, b, c, d, h, v));
    }
    void SetPosAdjustment(double adjust) override {
        m_has_adjustment = true;
        m_adjustment = adjust;
    }
    void GetEndPosition(double& x, double& y) const override { mp_real->GetEndPosition(x, y); }
    void GetStartPosition(double& x, double& y) const override { mp_real->GetStartPosition(x, y); }
    // Measuring is the interpreter's: the overlay answers what the real element measured.
    double UpdateTextMetrics() override { return mp_real->GetTextLength(); }
    void SetNewTextLineOffset(double x, double y) override;
    SDF::Obj* GetShading() const override { return mp_real->GetShading(); }
    SDF::Obj* GetMCPropertyDict() const override { return mp_real->GetMCPropertyDict(); }
    SDF::Obj* GetMCTag() const override { return mp_real->GetMCTag(); }
    FormXObj GetFormXObj() const override { return mp_real->GetFormXObj(); }

private:
    Element* mp_real = nullptr;
    GStateShadow m_gstate;
    bool m_has_clip = false, m_clip = false;
    bool m_has_stroke = false, m_stroke = false;
    bool m_has_fill = false, m_fill = false;
    bool m_has_winding = false, m_winding = false;
    bool m_has_clip_winding = false, m_clip_winding = false;
    bool m_has_points = false;
    std::vector<double> m_points;
    bool m_has_types = false;
    std::vector<UInt8> m_types;
    SDF::Obj* mp_xobject = nullptr;
    bool m_has_text = false;
    std::string m_text;
    bool m_has_text_matrix = false;
    Common::Matrix2D m_text_matrix;
    bool m_has_adjustment = false;
    double m_adjustment = 0;
    bool m_has_line_offset = false;
    double m_line_offset_x = 0, m_line_offset_y = 0;
};

}  // namespace lum::PDF
