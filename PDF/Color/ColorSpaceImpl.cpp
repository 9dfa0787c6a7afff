#include "PDF/Color/ColorSpaceImpl.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "PDF/Color/ColorSpaceFamilies.h"
#include "PDF/Color/DeviceColor.h"
#include "SDF/Obj.h"

namespace lum::PDF::Color {

namespace {

// The process-wide spaces hold one reference of their own, so that handles never free them.
template <class Space>
ColorSpaceImpl* Immortal() {
    static Space* space = [] {
        auto* s = new Space();
        s->AddRef();
        return s;
    }();
    return space;
}

UInt8 ToByte(double v) { return UInt8(std::lround(std::clamp(v, 0.0, 1.0) * 255.0)); }

// Reads `pixels` samples of `n` bytes through the component ranges and hands each colour to
// `convert`, which writes `out_n` values in 0 to 1.
template <class Convert>
void ConvertSamples(const ColorSpaceImpl& cs, const UInt8* in, UInt8* out, size_t pixels,
                    int out_n, Convert&& convert) {
    const int n = cs.GetComponentNum();
    std::vector<double> low, range;
    cs.InitComponentRanges(low, range, 8);
    ColorPt color, result;
    color.SetColorantNum(n);
    for (size_t p = 0; p < pixels; ++p) {
        double* c = color.Data();
        for (int i = 0; i < n; ++i) c[i] = low[size_t(i)] + in[i] * range[size_t(i)] / 255.0;
        in += n;
        convert(color, result);
        for (int i = 0; i < out_n; ++i) *out++ = ToByte(result.Get(i));
    }
}

}  // namespace

ColorSpaceImpl* ColorSpaceImpl::GetDevice(ColorSpace::Type family) {
    switch (family) {
        case ColorSpace::e_device_gray: return Immortal<DeviceGray>();
        case ColorSpace::e_device_rgb: return Immortal<DeviceRGB>();
        case ColorSpace::e_device_cmyk: return Immortal<DeviceCMYK>();
        case ColorSpace::e_pattern: return Immortal<Pattern>();
        default: return nullptr;
    }
}

ColorSpaceImpl* ColorSpaceImpl::Create(SDF::Obj* obj, int depth) {
    LUM_CHECK(depth < Limits::kMaxColorNesting, "Color spaces nested too deep");
    const ColorSpace::Type type = ColorSpace::GetType(obj);
    if (type == ColorSpace::e_null) return nullptr;
    SDF::Obj* param = obj->IsArray() && obj->Size() > 1 ? obj->GetAt(1) : nullptr;
    ColorSpaceImpl* made = nullptr;
    switch (type) {
        case ColorSpace::e_cal_gray: made = new CalGray(param); break;
        case ColorSpace::e_cal_rgb: made = new CalRGB(param); break;
        case ColorSpace::e_lab: made = new Lab(param); break;
        case ColorSpace::e_icc: made = new ICC(obj->IsStream() ? obj : param, depth); break;
        case ColorSpace::e_indexed: made = new Indexed(obj, depth); break;
        case ColorSpace::e_separation: made = new TintSpace(obj, false, depth); break;
        case ColorSpace::e_device_n: made = new TintSpace(obj, true, depth); break;
        case ColorSpace::e_pattern:
            if (!param) return GetDevice(type);
            made = new Pattern(obj, depth);
            break;
        default: return GetDevice(type);  // a device name, or an array of one
    }
    made->SetObj(obj);
    return made;
}

ColorSpaceImpl::~ColorSpaceImpl() = default;

void ColorSpaceImpl::SetObj(SDF::Obj* obj) { mp_obj = obj && obj->GetDoc() ? obj : nullptr; }

void ColorSpaceImpl::NotApplicable(const char* op) {
    LUM_FAIL("%s() can't be applied to this type of color space.", op);
}

void ColorSpaceImpl::InitColor(ColorPt& out) const {
    out = ColorPt();
    out.SetColorantNum(GetComponentNum());
}

void ColorSpaceImpl::InitComponentRanges(std::vector<double>& low, std::vector<double>& range,
                                         int) const {
    low.assign(size_t(GetComponentNum()), 0.0);
    range.assign(size_t(GetComponentNum()), 1.0);
}

void ColorSpaceImpl::Convert2Gray(const ColorPt& in, ColorPt& out) const {
    double rgb[3];
    ToRGB(in.Data(), in.GetColorantNum(), rgb);
    out = ColorPt(RGBToGray(rgb), 0, 0, 0, 1);
}

void ColorSpaceImpl::Convert2RGB(const ColorPt& in, ColorPt& out) const {
    double rgb[3];
    ToRGB(in.Data(), in.GetColorantNum(), rgb);
    out = ColorPt(rgb[0], rgb[1], rgb[2], 0, 3);
}

void ColorSpaceImpl::Convert2CMYK(const ColorPt& in, ColorPt& out) const {
    double rgb[3], cmyk[4];
    ToRGB(in.Data(), in.GetColorantNum(), rgb);
    RGBToCMYK(rgb, cmyk);
    out = ColorPt(cmyk[0], cmyk[1], cmyk[2], cmyk[3], 4);
}

void ColorSpaceImpl::Convert2Gray(const UInt8* in, UInt8* out, size_t pixels) const {
    ConvertSamples(*this, in, out, pixels, 1,
                   [this](const ColorPt& c, ColorPt& r) { Convert2Gray(c, r); });
}

void ColorSpaceImpl::Convert2RGB(const UInt8* in, UInt8* out, size_t pixels) const {
    ConvertSamples(*this, in, out, pixels, 3,
                   [this](const ColorPt& c, ColorPt& r) { Convert2RGB(c, r); });
}

void ColorSpaceImpl::Convert2CMYK(const UInt8* in, UInt8* out, size_t pixels) const {
    ConvertSamples(*this, in, out, pixels, 4,
                   [this](const ColorPt& c, ColorPt& r) { Convert2CMYK(c, r); });
}

ColorSpace ColorSpaceImpl::GetAlternateColorSpace() const { NotApplicable("GetAlternateColorSpace"); }
void ColorSpaceImpl::SetAlternateColorSpace(const ColorSpace&) { NotApplicable("SetAlternateColorSpace"); }
ColorSpace ColorSpaceImpl::GetBaseColorSpace() const { NotApplicable("GetBaseColorSpace"); }
void ColorSpaceImpl::SetBaseColorSpace(const ColorSpace&) { NotApplicable("SetBaseColorSpace"); }
int ColorSpaceImpl::GetHighVal() const { NotApplicable("GetHighVal"); }
const UInt8* ColorSpaceImpl::GetLookupTable() const { NotApplicable("GetLookupTable"); }
void ColorSpaceImpl::GetBaseColor(UInt8, ColorPt&) const { NotApplicable("GetBaseColor"); }
int ColorSpaceImpl::GetBaseCompNum() const { NotApplicable("GetBaseCompNum"); }
const Function* ColorSpaceImpl::GetTintFunction() const { NotApplicable("GetTintFunction"); }
bool ColorSpaceImpl::IsAll() const { NotApplicable("IsAll"); }
bool ColorSpaceImpl::IsNone() const { NotApplicable("IsNone"); }
const std::vector<std::string>& ColorSpaceImpl::GetColorantNames() const {
    NotApplicable("GetColorantNames");
}
SDF::Obj* ColorSpaceImpl::GetAttributes() const { NotApplicable("GetAttributes"); }
SDF::Obj* ColorSpaceImpl::GetICCProfile() const { NotApplicable("GetICCProfile"); }

}  // namespace lum::PDF::Color
