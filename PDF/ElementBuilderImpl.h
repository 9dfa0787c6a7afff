#pragma once
// The one element object per reader level, filled again and again. It holds the level's
// graphics state stack, the current path, the text position machinery and the data of the
// element last finished. Buffers are reserved once and only cleared between elements.
#include <memory>
#include <vector>

#include "PDF/Element.h"
#include "PDF/GStateImpl.h"

namespace lum::PDF {

class ElementBuilderImpl final : public Element {
public:
    ElementBuilderImpl();
    ~ElementBuilderImpl() override;
    ElementBuilderImpl(const ElementBuilderImpl&) = delete;
    ElementBuilderImpl& operator=(const ElementBuilderImpl&) = delete;

    // --- ImageBase ---
    const UInt8* GetImageData() const override;
    int GetImageDataSize() const override;
    SDF::Obj* GetImageColorSpace() const override;
    int GetImageWidth() const override;
    int GetImageHeight() const override;
    SDF::Obj* GetDecodeArray() const override;
    int GetBitsPerComponent() const override;
    int GetComponentNum() const override;
    bool IsImageMask() const override;
    bool IsImageInterpolate() const override;
    SDF::Obj* GetMask() const override;
    SDF::Obj* GetSoftMask() const override;
    GState::RenderingIntent GetImageRenderingIntent() const override;

    // --- Element ---
    Type GetType() const override { return m_element_type; }
    GState& GetGState() override { return *mp_state; }
    const Common::Matrix2D& GetCTM() const override { return mp_state->GetCTM(); }
    bool GetBBox(Rect& out) override;
    SDF::Obj* GetParentStructElement() override;
    int GetStructMCID() override;
    bool IsOCVisible() const override { return m_visible; }
    bool IsClippingPath() const override { return m_clip; }
    bool IsStroked() const override;
    bool IsFilled() const override;
    bool IsWindingFill() const override { return m_winding; }
    bool IsClipWindingFill() const override { return m_clip_winding; }
    const UInt8* GetPathTypes() const override;
    int GetPathTypesCount() const override { return int(m_segments.size()); }
    const double* GetPathPoints() const override;
    int GetPointCount() const override { return int(m_points.size()); }
    void SetPathClip(bool clip) override { m_clip = clip; }
    void SetPathStroke(bool stroke) override { m_stroke = stroke; }
    void SetPathFill(bool fill) override { m_fill = fill; }
    void SetWindingFill(bool winding) override { m_winding = winding; }
    void SetClipWindingFill(bool winding) override { m_clip_winding = winding; }
    void SetPathPoints(const double* points, int count) override;
    void SetPathTypes(const UInt8* types, int count) override;
    SDF::Obj* GetXObject() const override;
    void SetXObject(SDF::Obj* xobject) override;
    std::string GetImageRGB() override;
    UString GetTextString() override;
    const UInt8* GetTextData() const override;
    int GetTextDataSize() const override;
    const Common::Matrix2D& GetTextMatrix() const override { return m_text_matrix; }
    void GetCharIterator(CharData& first) const override;
    void GetCharIteratorEnd(CharData& end) const override;
    double GetTextLength() const override { return m_text_length; }
    double GetPosAdjustment() const override { return m_pos_adjustment; }
    void GetNewTextLineOffset(double& x, double& y) const override;
    bool HasTextMatrix() const override { return m_has_text_matrix; }
    void SetTextData(const UInt8* bytes, int size) override;
    void SetTextData(const std::string& bytes) override;
    void SetTextMatrix(const Common::Matrix2D& mtx) override { m_text_matrix = mtx; }
    void SetTextMatrix(double a, double b, double c, double d, double h, double v) override;
    void SetPosAdjustment(double adjust) override { m_pos_adjustment = adjust; }
    void GetEndPosition(double& x, double& y) const override;
    void GetStartPosition(double& x, double& y) const override;
    double UpdateTextMetrics() override;
    void SetNewTextLineOffset(double x, double y) override;
    SDF::Obj* GetShading() const override;
    SDF::Obj* GetMCPropertyDict() const override;
    SDF::Obj* GetMCTag() const override;
    FormXObj GetFormXObj() const override;

    bool ElementReady() const { return m_ready; }
    GStateImpl& State() { return *mp_state; }
    const GStateImpl& State() const { return *mp_state; }

private:
    friend class ElementReaderImpl;

    // --- Level life ---
    // Everything back to a fresh level: one state, a copy of `parent` or a default one.
    void ResetLevel(const GStateImpl* parent);
    // Drops states, owned objects and data (the reader is reused or destroyed).
    void Clear();

    // --- State stack ---
    void PushState();
    // False when only the bottom state is left.
    bool PopState();
    size_t StateDepth() const { return m_states.size(); }

    // The kind, finished.
    void Finish(Type type) {
        m_element_type = type;
        m_ready = true;
    }
    // The state between elements (kind and ready back to 0).
    void ClearKind() {
        m_element_type = e_null;
        m_ready = false;
    }

    // --- Owned objects ---
    void SetTextObject(SDF::Obj* owned);
    // Takes `owned` as the text object and hands the previous one (or null) to the caller.
    SDF::Obj* ExchangeTextObject(SDF::Obj* owned);
    void SetMCTag(SDF::Obj* owned);
    void SetMCProperties(SDF::Obj* properties, bool owned);
    void ReleaseMarkedContent();
    // Drops the colour space and decode array that an inline image took from the stack.
    void ReleaseImage();

    // --- Path ---
    // False (and nothing added) when the path is at its size bound.
    bool AddSegment(UInt8 type, const double* coords, int n);

    // The text string now shown: the Str of Tj, or the string the TJ walk stands at.
    const SDF::Obj* ShownString() const { return mp_shown; }

    // --- Graphics state ---
    GStateImpl* mp_state = nullptr;            // the top of m_states
    std::vector<GStateImpl*> m_states;         // owned, bottom first
    std::vector<GStateImpl*> m_free_states;    // owned, popped states kept for the next q

    // --- Kind ---
    Type m_element_type = e_null;
    bool m_ready = false;
    bool m_visible = true;

    // --- Image ---
    std::vector<UInt8> m_inline_data;
    int m_image_width = -1;
    int m_image_height = -1;
    int m_image_bits = -1;
    int m_image_components = -1;
    SDF::Obj* mp_image_cs = nullptr;      // owned when m_image_owned
    SDF::Obj* mp_decode = nullptr;        // owned when m_image_owned
    bool m_image_owned = false;
    bool m_image_mask = false;
    bool m_image_interpolate = false;
    GState::RenderingIntent m_image_intent = GState::e_unknown_intent;

    // --- Path ---
    std::vector<UInt8> m_segments;
    std::vector<double> m_points;  // path coordinates, or two doubles a character of text
    double m_cur_x = -999.0, m_cur_y = -999.0;      // current point; end of a string
    double m_start_x = -999.0, m_start_y = -999.0;  // subpath start; start of a string
    bool m_clip = false;
    bool m_stroke = false;
    bool m_fill = false;
    bool m_winding = false;
    bool m_clip_winding = false;

    // --- XObject, shading, form ---
    SDF::Obj* mp_xobject = nullptr;

    // --- Text ---
    Common::Matrix2D m_base_matrix;
    Common::Matrix2D m_text_matrix;
    double m_line_x = -999.0, m_line_y = -999.0;          // line start, relative to the text matrix
    bool m_in_text_object = false;
    bool m_string_pending = false;                        // ' or " still to show its string
    double m_line_offset_x = -999.0, m_line_offset_y = -999.0;
    double m_pos_adjustment = 0;
    double m_pending_adjustment = 0;
    SDF::Obj* mp_text_obj = nullptr;      // owned: the Tj string or TJ array
    const SDF::Obj* mp_shown = nullptr;   // the string now shown
    UInt32 m_array_index = 0;
    UInt32 m_array_size = 0;
    double m_text_length = -999.0;
    std::vector<UInt32> m_code_sizes;
    bool m_has_text_matrix = false;

    // --- Marked content ---
    SDF::Obj* mp_mc_tag = nullptr;        // owned
    SDF::Obj* mp_mc_props = nullptr;      // owned when m_mc_props_owned
    bool m_mc_props_owned = false;
    // The structure parents of the level's marked content: the ParentTree entry of its page or
    // form (null for a glyph's level), looked up when a client first asks, since the text road
    // never does and a flat tree of many pages costs a scan per lookup.
    SDF::Obj* mp_struct_owner = nullptr;
    SDF::Obj* mp_struct_parents = nullptr;
    bool m_struct_parents_known = false;

    // --- Colour ---
    // The level's replacements of the device families (DefaultGray, DefaultRGB, DefaultCMYK).
    ColorSpace m_default_cmyk = ColorSpace::CreateDeviceCMYK();
    ColorSpace m_default_rgb = ColorSpace::CreateDeviceRGB();
    ColorSpace m_default_gray = ColorSpace::CreateDeviceGray();
    bool m_has_default_cs = false;

    UInt8 m_compat_depth = 0;
    double m_type3_wx = 0, m_type3_wy = 0;
};

}  // namespace lum::PDF
