#include "PDF/ElementBuilderImpl.h"

#include <cstring>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Filters/JPXDecode.h"
#include "PDF/StructParents.h"
#include "SDF/Obj.h"

namespace lum::PDF {

namespace {

constexpr size_t kInlineReserve = 1024;
constexpr size_t kSegmentReserve = 256;
constexpr size_t kPointReserve = 1024;

// A number of an image dictionary, or -1.
int ImageNumber(SDF::Obj* image, SDF::StaticName key) {
    if (!image) return -1;
    try {
        const double v = image->FindNumber(key, -1);
        return v >= -1 && v < 2147483647.0 ? int(v) : -1;
    } catch (const Common::Exception&) {
        return -1;
    }
}

SDF::Obj* ImageEntry(SDF::Obj* image, SDF::StaticName key) {
    if (!image) return nullptr;
    try {
        return image->FindObj(key);
    } catch (const Common::Exception&) {
        return nullptr;
    }
}

bool ImageFlag(SDF::Obj* image, SDF::StaticName key) {
    SDF::Obj* v = ImageEntry(image, key);
    return v && v->IsBool() && v->GetBool();
}

// The components of a JPEG 2000 image that names no colour space: its codestream's own, read
// from the header behind the other filters of the chain. -1 for any other image.
int OwnJPXComponents(SDF::Obj* image) {
    SDF::Obj* filter = ImageEntry(image, SDF::e_Filter);
    if (filter && filter->IsArray()) filter = filter->Size() > 0 ? filter->GetAt(UInt32(filter->Size() - 1)) : nullptr;
    if (!filter || !filter->IsName() || std::strcmp(filter->GetName(), "JPXDecode") != 0) return -1;
    auto coded = image->GetDecodedStream(true);
    UInt32 width = 0, height = 0;
    int components = -1, bits = 0;
    return coded && Filters::JPXDecode::ReadHeader(*coded, width, height, components, bits) ? components : -1;
}

}  // namespace

ImageBase::~ImageBase() = default;

ElementBuilderImpl::ElementBuilderImpl() {
    m_inline_data.reserve(kInlineReserve);
    m_segments.reserve(kSegmentReserve);
    m_points.reserve(kPointReserve);
    m_states.push_back(new GStateImpl());
    mp_state = m_states.back();
}

ElementBuilderImpl::~ElementBuilderImpl() {
    Clear();
    for (GStateImpl* s : m_states) delete s;
    for (GStateImpl* s : m_free_states) delete s;
}

void ElementBuilderImpl::Clear() {
    SetTextObject(nullptr);
    ReleaseMarkedContent();
    ReleaseImage();
    m_inline_data.clear();
}

void ElementBuilderImpl::ReleaseImage() {
    if (m_image_owned) {
        SDF::DeleteDirect(mp_image_cs);
        SDF::DeleteDirect(mp_decode);
    }
    mp_image_cs = mp_decode = nullptr;
    m_image_owned = false;
}

// --- Level life and the state stack ---

void ElementBuilderImpl::ResetLevel(const GStateImpl* parent) {
    Clear();
    while (PopState()) {
    }
    if (parent)
        *mp_state = *parent;
    else
        *mp_state = GStateImpl();

    ClearKind();
    m_visible = true;
    m_image_width = m_image_height = m_image_bits = m_image_components = -1;
    m_image_mask = m_image_interpolate = false;
    m_image_intent = GState::e_unknown_intent;
    m_segments.clear();
    m_points.clear();
    m_cur_x = m_cur_y = m_start_x = m_start_y = -999.0;
    m_clip = m_stroke = m_fill = m_winding = m_clip_winding = false;
    mp_xobject = nullptr;
    m_base_matrix = Common::Matrix2D();
    m_text_matrix = Common::Matrix2D();
    m_line_x = m_line_y = -999.0;
    m_in_text_object = false;
    m_string_pending = false;
    m_line_offset_x = m_line_offset_y = -999.0;
    m_pos_adjustment = m_pending_adjustment = 0;
    mp_shown = nullptr;
    m_array_index = m_array_size = 0;
    m_text_length = -999.0;
    m_code_sizes.clear();
    m_has_text_matrix = false;
    mp_struct_owner = nullptr;
    mp_struct_parents = nullptr;
    m_struct_parents_known = false;
    m_default_cmyk = ColorSpace::CreateDeviceCMYK();
    m_default_rgb = ColorSpace::CreateDeviceRGB();
    m_default_gray = ColorSpace::CreateDeviceGray();
    m_has_default_cs = false;
    m_compat_depth = 0;
    m_type3_wx = m_type3_wy = 0;
}

void ElementBuilderImpl::PushState() {
    GStateImpl* next;
    if (!m_free_states.empty()) {
        next = m_free_states.back();
        m_free_states.pop_back();
        *next = *mp_state;
    } else {
        next = new GStateImpl(*mp_state);
    }
    m_states.push_back(next);
    mp_state = next;
}

bool ElementBuilderImpl::PopState() {
    if (m_states.size() <= 1) return false;
    GStateImpl* top = m_states.back();
    m_states.pop_back();
    top->ReleaseShared();
    m_free_states.push_back(top);
    mp_state = m_states.back();
    return true;
}

// --- Owned objects ---

void ElementBuilderImpl::SetTextObject(SDF::Obj* owned) {
    SDF::DeleteDirect(ExchangeTextObject(owned));
}

SDF::Obj* ElementBuilderImpl::ExchangeTextObject(SDF::Obj* owned) {
    SDF::Obj* old = mp_text_obj;
    mp_text_obj = owned;
    mp_shown = owned && owned->IsString() ? owned : nullptr;
    m_array_index = 0;
    m_array_size = owned && owned->IsArray() ? UInt32(owned->Size()) : 0;
    return old;
}

void ElementBuilderImpl::SetMCTag(SDF::Obj* owned) {
    SDF::DeleteDirect(mp_mc_tag);
    mp_mc_tag = owned;
}

void ElementBuilderImpl::SetMCProperties(SDF::Obj* properties, bool owned) {
    if (m_mc_props_owned) SDF::DeleteDirect(mp_mc_props);
    mp_mc_props = properties;
    m_mc_props_owned = owned;
}

void ElementBuilderImpl::ReleaseMarkedContent() {
    SetMCTag(nullptr);
    SetMCProperties(nullptr, false);
}

// --- Image ---

const UInt8* ElementBuilderImpl::GetImageData() const {
    return m_element_type == e_inline_image && !m_inline_data.empty() ? m_inline_data.data()
                                                                      : nullptr;
}

int ElementBuilderImpl::GetImageDataSize() const {
    return m_element_type == e_inline_image ? int(m_inline_data.size()) : 0;
}

SDF::Obj* ElementBuilderImpl::GetImageColorSpace() const {
    if (m_element_type == e_inline_image) return mp_image_cs;
    return m_element_type == e_image ? ImageEntry(mp_xobject, SDF::e_ColorSpace) : nullptr;
}

int ElementBuilderImpl::GetImageWidth() const {
    if (m_element_type == e_inline_image) return m_image_width;
    return m_element_type == e_image ? ImageNumber(mp_xobject, SDF::e_Width) : -1;
}

int ElementBuilderImpl::GetImageHeight() const {
    if (m_element_type == e_inline_image) return m_image_height;
    return m_element_type == e_image ? ImageNumber(mp_xobject, SDF::e_Height) : -1;
}

SDF::Obj* ElementBuilderImpl::GetDecodeArray() const {
    if (m_element_type == e_inline_image) return mp_decode;
    return m_element_type == e_image ? ImageEntry(mp_xobject, SDF::e_Decode) : nullptr;
}

int ElementBuilderImpl::GetBitsPerComponent() const {
    if (m_element_type == e_inline_image) return m_image_bits;
    if (m_element_type != e_image) return -1;
    return ImageFlag(mp_xobject, SDF::e_ImageMask) ? 1
                                                   : ImageNumber(mp_xobject, SDF::e_BitsPerComponent);
}

int ElementBuilderImpl::GetComponentNum() const {
    if (m_element_type == e_inline_image) return m_image_components;
    if (m_element_type != e_image) return -1;
    if (ImageFlag(mp_xobject, SDF::e_ImageMask)) return 1;
    try {
        SDF::Obj* space = ImageEntry(mp_xobject, SDF::e_ColorSpace);
        if (!space) return OwnJPXComponents(mp_xobject);
        const ColorSpace cs(space);
        return cs ? cs.GetComponentNum() : -1;
    } catch (const Common::Exception&) {
        return -1;  // a broken colour space or stream
    }
}

bool ElementBuilderImpl::IsImageMask() const {
    if (m_element_type == e_inline_image) return m_image_mask;
    return ImageFlag(mp_xobject, SDF::e_ImageMask);
}

bool ElementBuilderImpl::IsImageInterpolate() const {
    if (m_element_type == e_inline_image) return m_image_interpolate;
    return ImageFlag(mp_xobject, SDF::e_Interpolate);
}

SDF::Obj* ElementBuilderImpl::GetMask() const {
    return m_element_type == e_inline_image ? nullptr : ImageEntry(mp_xobject, SDF::e_Mask);
}

SDF::Obj* ElementBuilderImpl::GetSoftMask() const {
    return m_element_type == e_inline_image ? nullptr : ImageEntry(mp_xobject, SDF::e_SMask);
}

GState::RenderingIntent ElementBuilderImpl::GetImageRenderingIntent() const {
    if (m_element_type == e_inline_image) return m_image_intent;
    SDF::Obj* intent = ImageEntry(mp_xobject, SDF::e_Intent);
    if (intent && intent->IsName()) return GState::GetRenderingIntentType(intent->GetName());
    return mp_state->GetRenderingIntent();
}

std::string ElementBuilderImpl::GetImageRGB() { LUM_FAIL("Not Implemented"); }

// --- Path ---

bool ElementBuilderImpl::IsStroked() const {
    if (m_element_type == e_path) return m_stroke;
    if (m_element_type != e_text) return false;
    const int mode = mp_state->GetTextRenderMode();
    return mode == 1 || mode == 2 || mode == 5 || mode == 6;
}

bool ElementBuilderImpl::IsFilled() const {
    if (m_element_type == e_path) return m_fill;
    if (m_element_type != e_text) return false;
    const int mode = mp_state->GetTextRenderMode();
    return mode == 0 || mode == 2 || mode == 4 || mode == 6;
}

const UInt8* ElementBuilderImpl::GetPathTypes() const {
    return m_segments.empty() ? nullptr : m_segments.data();
}

const double* ElementBuilderImpl::GetPathPoints() const {
    return m_points.empty() ? nullptr : m_points.data();
}

void ElementBuilderImpl::SetPathPoints(const double* points, int count) {
    m_points.assign(points, points + (count > 0 ? count : 0));
}

void ElementBuilderImpl::SetPathTypes(const UInt8* types, int count) {
    m_segments.assign(types, types + (count > 0 ? count : 0));
}

bool ElementBuilderImpl::AddSegment(UInt8 type, const double* coords, int n) {
    if (m_points.size() + size_t(n) > Limits::kMaxPathDoubles) return false;
    m_segments.push_back(type);
    m_points.insert(m_points.end(), coords, coords + n);
    return true;
}

// --- Objects ---

SDF::Obj* ElementBuilderImpl::GetXObject() const {
    return m_element_type == e_image || m_element_type == e_form || m_element_type == e_shading
               ? mp_xobject
               : nullptr;
}

void ElementBuilderImpl::SetXObject(SDF::Obj* xobject) {
    if (!(xobject && (m_element_type == e_image || m_element_type == e_form)))
        throw Common::Exception("xobject && (m_element_type == e_image || m_element_type == e_form)",
                                __LINE__, __FILE__, LUM_FUNCTION, "Bad xobj");
    mp_xobject = xobject;
}

SDF::Obj* ElementBuilderImpl::GetShading() const {
    return m_element_type == e_shading ? mp_xobject : nullptr;
}

FormXObj ElementBuilderImpl::GetFormXObj() const {
    LUM_CHECK_OBJECT(m_element_type == e_form, "Not an e_form");
    return FormXObj(mp_xobject);
}

SDF::Obj* ElementBuilderImpl::GetMCPropertyDict() const { return mp_mc_props; }

SDF::Obj* ElementBuilderImpl::GetMCTag() const { return mp_mc_tag; }

int ElementBuilderImpl::GetStructMCID() {
    SDF::Obj* mcid = ImageEntry(mp_mc_props && mp_mc_props->IsDict() ? mp_mc_props : nullptr,
                                SDF::e_MCID);
    if (!mcid || !mcid->IsNumber()) return -1;
    const double v = mcid->GetNumber();
    return v >= 0 && v < 2147483647.0 ? int(v) : -1;
}

SDF::Obj* ElementBuilderImpl::GetParentStructElement() {
    const int mcid = GetStructMCID();
    if (mcid < 0) return nullptr;
    if (!m_struct_parents_known) {
        mp_struct_parents = LookUpStructParents(mp_struct_owner);
        m_struct_parents_known = true;
    }
    if (!mp_struct_parents) return nullptr;
    try {
        if (!mp_struct_parents->IsArray() || UInt64(mcid) >= mp_struct_parents->Size())
            return nullptr;
        SDF::Obj* parent = mp_struct_parents->GetAt(UInt32(mcid));
        return parent && (parent->IsDict() || parent->IsStream()) ? parent : nullptr;
    } catch (const Common::Exception&) {
        return nullptr;
    }
}

// --- Text fields ---

void ElementBuilderImpl::GetNewTextLineOffset(double& x, double& y) const {
    x = m_line_offset_x;
    y = m_line_offset_y;
}

void ElementBuilderImpl::SetNewTextLineOffset(double x, double y) {
    m_line_offset_x = x;
    m_line_offset_y = y;
}

void ElementBuilderImpl::SetTextMatrix(double a, double b, double c, double d, double h, double v) {
    m_text_matrix = Common::Matrix2D(a, b, c, d, h, v);
}

void ElementBuilderImpl::GetEndPosition(double& x, double& y) const {
    x = m_cur_x;
    y = m_cur_y;
}

void ElementBuilderImpl::GetStartPosition(double& x, double& y) const {
    x = m_start_x;
    y = m_start_y;
}

void ElementBuilderImpl::SetTextData(const UInt8* bytes, int size) {
    SetTextObject(new SDF::Str(bytes, size > 0 ? size_t(size) : 0));
}

void ElementBuilderImpl::SetTextData(const std::string& bytes) {
    SetTextData(reinterpret_cast<const UInt8*>(bytes.data()), int(bytes.size()));
}

const UInt8* ElementBuilderImpl::GetTextData() const {
    return mp_shown ? mp_shown->GetBuffer() : nullptr;
}

int ElementBuilderImpl::GetTextDataSize() const {
    return mp_shown ? int(mp_shown->Size()) : 0;
}

}  // namespace lum::PDF
