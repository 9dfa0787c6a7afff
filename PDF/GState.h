#pragma once
// The graphics state of the PDF imaging model as a client of the content reader sees it: an
// element (Element::GetGState) points at the state in force when it was produced. The
// interface is abstract so that an overlay (GStateShadow) can stand in for the real record.
#include <vector>

#include "Common/Matrix2D.h"
#include "Common/Types.h"
#include "PDF/ColorSpace.h"

namespace lum::SDF {
class Obj;
}

namespace lum::PDF {

class Font;

class GState {
public:
    // Attribute identifiers; they index the change list.
    enum GStateAttribute {
        e_transform = 0,
        e_rendering_intent = 1,
        e_stroke_cs = 2,
        e_stroke_color = 3,
        e_fill_cs = 4,
        e_fill_color = 5,
        e_line_width = 6,
        e_line_cap = 7,
        e_line_join = 8,
        e_flatness = 9,
        e_miter_limit = 10,
        e_dash_pattern = 11,
        e_char_spacing = 12,
        e_word_spacing = 13,
        e_horizontal_scale = 14,
        e_leading = 15,
        e_font = 16,
        e_font_size = 17,  // not set by any operation: font and size change together as 16
        e_text_render_mode = 18,
        e_text_rise = 19,
        e_text_knockout = 20,
        e_text_pos_offset = 21,
        e_blend_mode = 22,
        e_opacity_fill = 23,
        e_opacity_stroke = 24,
        e_alpha_is_shape = 25,
        e_soft_mask = 26,
        e_smoothnes = 27,
        e_auto_stoke_adjust = 28,
        e_stroke_overprint = 29,
        e_fill_overprint = 30,
        e_overprint_mode = 31,
        e_transfer_funct = 32,
        e_black_gen_funct = 33,
        e_ucr_funct = 34,
        e_halftone = 35,
        e_null = 36,  // the end of the change list
    };
    static constexpr int kAttributeCount = 36;

    // Caps, joins and modes hold any integer that content gives: 32-bit enums.
    enum LineCap : Int32 { e_butt_cap = 0, e_round_cap = 1, e_square_cap = 2 };
    enum LineJoin : Int32 { e_miter_join = 0, e_round_join = 1, e_bevel_join = 2 };
    enum TextRenderingMode : Int32 {
        e_fill_text = 0,
        e_stroke_text = 1,
        e_fill_stroke_text = 2,
        e_invisible_text = 3,
        e_fill_clip_text = 4,
        e_stroke_clip_text = 5,
        e_fill_stroke_clip_text = 6,
        e_clip_text = 7,
    };
    enum RenderingIntent : Int32 {
        e_absolute_colorimetric = 0,
        e_relative_colorimetric = 1,
        e_saturation = 2,
        e_perceptual = 3,
        e_unknown_intent = 4,
    };
    enum BlendMode : Int32 {
        e_bl_compatible = 0,
        e_bl_normal = 1,
        e_bl_multiply = 2,
        e_bl_screen = 3,
        e_bl_difference = 4,
        e_bl_darken = 5,
        e_bl_lighten = 6,
        e_bl_color_dodge = 7,
        e_bl_color_burn = 8,
        e_bl_exclusion = 9,
        e_bl_hard_light = 10,
        e_bl_overlay = 11,
        e_bl_soft_light = 12,
        e_bl_luminosity = 13,
        e_bl_hue = 14,
        e_bl_saturation = 15,
        e_bl_color = 16,
    };

    // The intent named by `name`; any other name is e_unknown_intent.
    static RenderingIntent GetRenderingIntentType(const char* name);
    // The blend mode named by `name`, or -1 when the name has none.
    static int GetBlendModeType(const char* name);

    virtual ~GState();

    // --- Getters ---
    // The product of what cm concatenated since the reader last reset it (identity when
    // nothing did). The current transformation matrix itself is Element::GetCTM.
    virtual Common::Matrix2D GetTransform() = 0;
    virtual const ColorSpace& GetStrokeColorSpace() const = 0;
    virtual const ColorSpace& GetFillColorSpace() const = 0;
    virtual const ColorPt& GetStrokeColor() const = 0;
    virtual const PatternColor& GetStrokePattern() const = 0;
    virtual const ColorPt& GetFillColor() const = 0;
    virtual const PatternColor& GetFillPattern() const = 0;
    virtual double GetFlatness() const = 0;
    virtual LineCap GetLineCap() const = 0;
    virtual LineJoin GetLineJoin() const = 0;
    virtual double GetLineWidth() const = 0;
    virtual double GetMiterLimit() const = 0;
    // Empty for a solid line.
    virtual const std::vector<double>& GetDashes() const = 0;
    virtual double GetPhase() const = 0;
    virtual double GetCharSpacing() const = 0;
    virtual double GetWordSpacing() const = 0;
    // Percent, as Tz gives it (100 is unscaled).
    virtual double GetHorizontalScale() const = 0;
    virtual double GetLeading() const = 0;
    // An empty handle when no font was set.
    virtual const Font& GetFont() const = 0;
    virtual double GetFontSize() const = 0;
    virtual TextRenderingMode GetTextRenderMode() const = 0;
    virtual double GetTextRise() const = 0;
    virtual bool GetTextKnockout() const = 0;
    virtual RenderingIntent GetRenderingIntent() const = 0;
    virtual BlendMode GetBlendMode() const = 0;
    virtual double GetFillOpacity() const = 0;
    virtual double GetStrokeOpacity() const = 0;
    virtual bool GetAISFlag() const = 0;
    // The soft mask dictionary of the ExtGState that set it, or null for none.
    virtual SDF::Obj* GetSoftMask() const = 0;
    virtual const Common::Matrix2D& GetSoftMaskTransform() const = 0;
    virtual bool GetStrokeOverprint() const = 0;
    virtual bool GetFillOverprint() const = 0;
    virtual int GetOverprintMode() const = 0;
    virtual bool GetAutoStrokeAdjust() const = 0;
    virtual double GetSmoothnessTolerance() const = 0;
    virtual SDF::Obj* GetTransferFunct() const = 0;
    virtual SDF::Obj* GetBlackGenFunct() const = 0;
    virtual SDF::Obj* GetUCRFunct() const = 0;
    virtual SDF::Obj* GetHalftone() const = 0;

    // --- Setters; each marks its attribute in the change list ---
    virtual void SetTransform(const Common::Matrix2D& mtx) = 0;
    virtual void SetTransform(double a, double b, double c, double d, double h, double v) = 0;
    virtual void ResetTransform() = 0;
    // Overwrites the CTM and marks nothing: for the reader alone.
    virtual void SetCTM(const Common::Matrix2D& mtx) = 0;
    virtual void Concat(double a, double b, double c, double d, double h, double v) = 0;
    virtual void Concat(const Common::Matrix2D& mtx) = 0;
    // Also sets the colour to the space's initial colour.
    virtual void SetStrokeColorSpace(const ColorSpace& cs) = 0;
    virtual void SetFillColorSpace(const ColorSpace& cs) = 0;
    virtual void SetStrokeColor(const PatternColor& pattern, const ColorPt& c) = 0;
    virtual void SetStrokeColor(const PatternColor& pattern) = 0;
    virtual void SetStrokeColor(const ColorPt& c) = 0;
    virtual void SetFillColor(const PatternColor& pattern, const ColorPt& c) = 0;
    virtual void SetFillColor(const PatternColor& pattern) = 0;
    virtual void SetFillColor(const ColorPt& c) = 0;
    virtual void SetFlatness(double flatness) = 0;
    virtual void SetLineCap(LineCap cap) = 0;
    virtual void SetLineJoin(LineJoin join) = 0;
    virtual void SetLineWidth(double width) = 0;
    virtual void SetMiterLimit(double limit) = 0;
    virtual void SetDashPattern(const std::vector<double>& dashes, double phase) = 0;
    virtual void SetCharSpacing(double spacing) = 0;
    virtual void SetWordSpacing(double spacing) = 0;
    virtual void SetHorizontalScale(double scale) = 0;
    virtual void SetLeading(double leading) = 0;
    virtual void SetFont(const Font& font, double size) = 0;
    virtual void SetTextRenderMode(TextRenderingMode mode) = 0;
    virtual void SetTextRise(double rise) = 0;
    virtual void SetTextKnockout(bool knockout) = 0;
    virtual void SetRenderingIntent(RenderingIntent intent) = 0;
    virtual void SetBlendMode(BlendMode mode) = 0;
    virtual void SetFillOpacity(double opacity) = 0;
    virtual void SetStrokeOpacity(double opacity) = 0;
    virtual void SetAISFlag(bool alpha_is_shape) = 0;
    // Null clears the soft mask.
    virtual void SetSoftMask(SDF::Obj* soft_mask, const Common::Matrix2D& ctm) = 0;
    virtual void SetStrokeOverprint(bool op) = 0;
    virtual void SetFillOverprint(bool op) = 0;
    virtual void SetOverprintMode(int mode) = 0;
    virtual void SetAutoStrokeAdjust(bool adjust) = 0;
    virtual void SetSmoothnessTolerance(double smoothness) = 0;
    virtual void SetBlackGenFunct(SDF::Obj* funct) = 0;
    virtual void SetUCRFunct(SDF::Obj* funct) = 0;
    virtual void SetTransferFunct(SDF::Obj* funct) = 0;
    virtual void SetHalftone(SDF::Obj* halftone) = 0;
};

// A walk over a state's change list, latest change first, without allocation.
class GStateChangeIterator {
public:
    GStateChangeIterator(const UInt8* links, UInt8 at) : mp_links(links), m_at(at) {}
    GState::GStateAttribute operator*() const { return GState::GStateAttribute(m_at); }
    GStateChangeIterator& operator++() {
        if (m_at < GState::kAttributeCount) m_at = mp_links[m_at];
        return *this;
    }
    bool operator==(const GStateChangeIterator& o) const { return m_at == o.m_at; }

private:
    const UInt8* mp_links;
    UInt8 m_at;
};

}  // namespace lum::PDF
