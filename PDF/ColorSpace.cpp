#include "PDF/ColorSpace.h"

#include <algorithm>
#include <cstring>

#include "Common/Exception.h"
#include "PDF/Color/ColorSpaceFamilies.h"
#include "SDF/Obj.h"
#include "SDF/SharedResource.h"

namespace lum::PDF {

// --- ColorPt ---

ColorPt::ColorPt(double c0, double c1, double c2, double c3, int count)
    : m_count(std::clamp(count, 0, kInline)) {
    const double first[kInline] = {c0, c1, c2, c3};
    std::copy(first, first + m_count, m_inline);
}

ColorPt::ColorPt(const ColorPt& o) : m_count(o.m_count) {
    if (o.mp_heap) {
        mp_heap.reset(new double[kMax]);
        std::copy(o.mp_heap.get(), o.mp_heap.get() + kMax, mp_heap.get());
    } else {
        std::copy(o.m_inline, o.m_inline + kInline, m_inline);
    }
}

ColorPt& ColorPt::operator=(const ColorPt& o) {
    if (this == &o) return *this;
    if (o.mp_heap) {
        if (!mp_heap) mp_heap.reset(new double[kMax]);
        std::copy(o.mp_heap.get(), o.mp_heap.get() + kMax, mp_heap.get());
    } else {
        mp_heap.reset();
        std::copy(o.m_inline, o.m_inline + kInline, m_inline);
    }
    m_count = o.m_count;
    return *this;
}

ColorPt::ColorPt(ColorPt&& o) noexcept : m_count(o.m_count), mp_heap(std::move(o.mp_heap)) {
    std::copy(o.m_inline, o.m_inline + kInline, m_inline);
}

ColorPt& ColorPt::operator=(ColorPt&& o) noexcept {
    m_count = o.m_count;
    mp_heap = std::move(o.mp_heap);
    std::copy(o.m_inline, o.m_inline + kInline, m_inline);
    return *this;
}

void ColorPt::SetColorantNum(int count) {
    count = std::clamp(count, 0, kMax);
    if (count > kInline && !mp_heap) {
        mp_heap.reset(new double[kMax]());
        std::copy(m_inline, m_inline + kInline, mp_heap.get());
    }
    double* c = Data();
    std::fill(c + std::min(m_count, count), c + count, 0.0);
    m_count = count;
}

void ColorPt::Set(int i, double value) {
    if (i < 0 || i >= kMax) return;
    if (i >= m_count) SetColorantNum(i + 1);
    Data()[i] = value;
}

bool ColorPt::operator==(const ColorPt& o) const noexcept {
    return m_count == o.m_count && std::equal(Data(), Data() + m_count, o.Data());
}

// --- Classification ---

ColorSpace::Type ColorSpace::FamilyOfName(const char* name) {
    struct Family {
        const char* name;
        Type type;
    };
    static constexpr Family kFamilies[] = {
        {"DeviceGray", e_device_gray}, {"G", e_device_gray},     {"DeviceRGB", e_device_rgb},
        {"RGB", e_device_rgb},         {"DeviceCMYK", e_device_cmyk}, {"CMYK", e_device_cmyk},
        {"CalGray", e_cal_gray},       {"CalRGB", e_cal_rgb},     {"Lab", e_lab},
        {"ICCBased", e_icc},           {"Indexed", e_indexed},    {"I", e_indexed},
        {"Pattern", e_pattern},        {"Separation", e_separation}, {"DeviceN", e_device_n},
    };
    for (const Family& f : kFamilies)
        if (std::strcmp(name, f.name) == 0) return f.type;
    return e_null;
}

ColorSpace::Type ColorSpace::GetType(SDF::Obj* obj) {
    if (!obj) return e_null;
    try {
        if (obj->IsName()) return FamilyOfName(obj->GetName());
        if (obj->IsArray()) {
            SDF::Obj* first = obj->Size() > 0 ? obj->GetAt(0) : nullptr;
            return first && first->IsName() ? FamilyOfName(first->GetName()) : e_null;
        }
        if (obj->IsStream() && obj->FindObj(SDF::e_N)) return e_icc;
    } catch (const Common::Exception&) {
        // An entry that can't be loaded leaves the object unclassified.
    }
    return e_null;
}

// --- Opening ---

namespace {

// A space without parameters: a device name, or an array of nothing more ([/DeviceRGB],
// [/Pattern]).
bool IsParameterless(SDF::Obj* obj, ColorSpace::Type type) {
    if (type <= ColorSpace::e_device_cmyk) return true;
    return type == ColorSpace::e_pattern && !(obj->IsArray() && obj->Size() > 1);
}

Color::ColorSpaceImpl* Open(SDF::Obj* obj, int depth) {
    const ColorSpace::Type type = ColorSpace::GetType(obj);
    if (type == ColorSpace::e_null) return nullptr;
    if (IsParameterless(obj, type)) {
        Color::ColorSpaceImpl* device = Color::ColorSpaceImpl::GetDevice(type);
        device->AddRef();
        return device;
    }
    SDF::SharedResource* res = SDF::OpenSharedResource(
        obj, [depth](SDF::Obj* o) -> SDF::SharedResource* { return Color::ColorSpaceImpl::Create(o, depth); });
    auto* impl = dynamic_cast<Color::ColorSpaceImpl*>(res);
    if (!impl) {
        // The object was opened as something else (a font, a function): one of its own.
        res->Release();
        impl = Color::ColorSpaceImpl::Create(obj, depth);
        impl->AddRef();
    }
    return impl;
}

}  // namespace

namespace Color {

ColorSpace OpenNestedColorSpace(SDF::Obj* obj, int depth) {
    Color::ColorSpaceImpl* impl = Open(obj, depth);
    LUM_CHECK(impl, "Unknown color space");
    ColorSpace cs(impl);
    impl->Release();  // the handle holds its own reference
    return cs;
}

}  // namespace Color

// --- The handle ---

#define LUM_CS_IMPL() \
    LUM_CHECK_OBJECT(mp_impl, "NULL ColorSpace"); \
    const Color::ColorSpaceImpl& impl = *mp_impl

ColorSpace::ColorSpace() noexcept : ColorSpace(CreateDeviceGray()) {}

ColorSpace::ColorSpace(SDF::Obj* obj) : mp_impl(Open(obj, 0)) {}

ColorSpace::ColorSpace(Color::ColorSpaceImpl* impl) noexcept : mp_impl(impl) {
    if (mp_impl) mp_impl->AddRef();
}

ColorSpace::ColorSpace(const ColorSpace& other) noexcept : mp_impl(other.mp_impl) {
    if (mp_impl) mp_impl->AddRef();
}

ColorSpace::ColorSpace(ColorSpace&& other) noexcept : mp_impl(other.mp_impl) {
    other.mp_impl = nullptr;
}

ColorSpace& ColorSpace::operator=(const ColorSpace& other) noexcept {
    if (other.mp_impl) other.mp_impl->AddRef();
    if (mp_impl) mp_impl->Release();
    mp_impl = other.mp_impl;
    return *this;
}

ColorSpace& ColorSpace::operator=(ColorSpace&& other) noexcept {
    if (this != &other) {
        if (mp_impl) mp_impl->Release();
        mp_impl = other.mp_impl;
        other.mp_impl = nullptr;
    }
    return *this;
}

ColorSpace::~ColorSpace() {
    if (mp_impl) mp_impl->Release();
}

ColorSpace ColorSpace::CreateDeviceGray() noexcept {
    return ColorSpace(Color::ColorSpaceImpl::GetDevice(e_device_gray));
}
ColorSpace ColorSpace::CreateDeviceRGB() noexcept {
    return ColorSpace(Color::ColorSpaceImpl::GetDevice(e_device_rgb));
}
ColorSpace ColorSpace::CreateDeviceCMYK() noexcept {
    return ColorSpace(Color::ColorSpaceImpl::GetDevice(e_device_cmyk));
}
ColorSpace ColorSpace::CreatePattern() noexcept {
    return ColorSpace(Color::ColorSpaceImpl::GetDevice(e_pattern));
}

ColorSpace ColorSpace::FromFamily(Type family) noexcept {
    switch (family) {
        case e_device_rgb:
        case e_device_cmyk:
        case e_pattern: return ColorSpace(Color::ColorSpaceImpl::GetDevice(family));
        default: return CreateDeviceGray();
    }
}

ColorSpace::Type ColorSpace::GetType() const {
    LUM_CS_IMPL();
    return impl.GetType();
}

bool ColorSpace::IsDevice() const { return GetType() <= e_device_cmyk; }

int ColorSpace::GetComponentNum() const {
    LUM_CS_IMPL();
    return impl.GetComponentNum();
}

SDF::Obj* ColorSpace::GetSDFObj() const {
    LUM_CS_IMPL();
    return impl.GetSDFObj();
}

void ColorSpace::InitColor(ColorPt& out) const {
    LUM_CS_IMPL();
    impl.InitColor(out);
}

void ColorSpace::InitComponentRanges(std::vector<double>& low, std::vector<double>& range,
                                     int bits) const {
    LUM_CS_IMPL();
    impl.InitComponentRanges(low, range, bits);
}

void ColorSpace::Convert2Gray(const ColorPt& in, ColorPt& out) const {
    LUM_CS_IMPL();
    impl.Convert2Gray(in, out);
}

void ColorSpace::Convert2RGB(const ColorPt& in, ColorPt& out) const {
    LUM_CS_IMPL();
    impl.Convert2RGB(in, out);
}

void ColorSpace::Convert2CMYK(const ColorPt& in, ColorPt& out) const {
    LUM_CS_IMPL();
    impl.Convert2CMYK(in, out);
}

void ColorSpace::Convert2Gray(const UInt8* in, UInt8* out, size_t pixels) const {
    LUM_CS_IMPL();
    impl.Convert2Gray(in, out, pixels);
}

void ColorSpace::Convert2RGB(const UInt8* in, UInt8* out, size_t pixels) const {
    LUM_CS_IMPL();
    impl.Convert2RGB(in, out, pixels);
}

void ColorSpace::Convert2CMYK(const UInt8* in, UInt8* out, size_t pixels) const {
    LUM_CS_IMPL();
    impl.Convert2CMYK(in, out, pixels);
}

ColorSpace ColorSpace::GetAlternateColorSpace() const {
    LUM_CS_IMPL();
    return impl.GetAlternateColorSpace();
}

ColorSpace ColorSpace::GetBaseColorSpace() const {
    LUM_CS_IMPL();
    return impl.GetBaseColorSpace();
}

ColorSpace ColorSpace::WithBaseColorSpace(const ColorSpace& base) const {
    LUM_CS_IMPL();
    impl.GetBaseColorSpace();  // raises for a family without a base
    std::unique_ptr<Color::ColorSpaceImpl> copy(impl.Clone());
    copy->SetBaseColorSpace(base);
    return ColorSpace(copy.release());
}

int ColorSpace::GetHighVal() const {
    LUM_CS_IMPL();
    return impl.GetHighVal();
}

const UInt8* ColorSpace::GetLookupTable() const {
    LUM_CS_IMPL();
    return impl.GetLookupTable();
}

void ColorSpace::GetBaseColor(UInt8 index, ColorPt& out) const {
    LUM_CS_IMPL();
    impl.GetBaseColor(index, out);
}

int ColorSpace::GetBaseCompNum() const {
    LUM_CS_IMPL();
    return impl.GetBaseCompNum();
}

const Color::Function* ColorSpace::GetTintFunction() const {
    LUM_CS_IMPL();
    return impl.GetTintFunction();
}

bool ColorSpace::IsAll() const {
    LUM_CS_IMPL();
    return impl.IsAll();
}

bool ColorSpace::IsNone() const {
    LUM_CS_IMPL();
    return impl.IsNone();
}

const std::vector<std::string>& ColorSpace::GetColorantNames() const {
    LUM_CS_IMPL();
    return impl.GetColorantNames();
}

SDF::Obj* ColorSpace::GetAttributes() const {
    LUM_CS_IMPL();
    return impl.GetAttributes();
}

SDF::Obj* ColorSpace::GetICCProfile() const {
    LUM_CS_IMPL();
    return impl.GetICCProfile();
}

}  // namespace lum::PDF
