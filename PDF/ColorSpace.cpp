#include "PDF/ColorSpace.h"

#include <algorithm>
#include <cstring>

#include "Common/Exception.h"
#include "SDF/Obj.h"

namespace lum::PDF {

ColorPt::ColorPt(double c0, double c1, double c2, double c3, int count)
    : m_count(std::clamp(count, 0, kMax)) {
    const double first[4] = {c0, c1, c2, c3};
    for (int i = 0; i < 4 && i < m_count; ++i) m_c[i] = first[i];
}

void ColorPt::SetColorantNum(int count) noexcept {
    count = std::clamp(count, 0, kMax);
    for (int i = m_count; i < count; ++i) m_c[i] = 0;
    m_count = count;
}

void ColorPt::Set(int i, double value) noexcept {
    if (i < 0 || i >= kMax) return;
    if (i >= m_count) SetColorantNum(i + 1);
    m_c[i] = value;
}

bool ColorPt::operator==(const ColorPt& o) const noexcept {
    if (m_count != o.m_count) return false;
    for (int i = 0; i < m_count; ++i)
        if (m_c[i] != o.m_c[i]) return false;
    return true;
}

ColorSpace ColorSpace::FromFamily(Type family) {
    switch (family) {
        case e_device_rgb: return CreateDeviceRGB();
        case e_device_cmyk: return CreateDeviceCMYK();
        case e_pattern: return ColorSpace(e_pattern, 1);
        default: return CreateDeviceGray();
    }
}

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

ColorSpace::ColorSpace(SDF::Obj* obj) : m_type(e_null), m_components(0), mp_obj(obj) {
    if (!obj) return;
    try {
        if (obj->IsName()) {
            m_type = FamilyOfName(obj->GetName());
        } else if (obj->IsArray()) {
            SDF::Obj* first = obj->Size() > 0 ? obj->GetAt(0) : nullptr;
            if (first && first->IsName()) m_type = FamilyOfName(first->GetName());
        } else if (obj->IsStream() && obj->FindObj(SDF::e_N)) {
            m_type = e_icc;
        }
        switch (m_type) {
            case e_device_rgb:
            case e_cal_rgb:
            case e_lab:
                m_components = 3;
                break;
            case e_device_cmyk:
                m_components = 4;
                break;
            case e_icc: {
                SDF::Obj* profile = obj->IsStream() ? obj
                                    : obj->Size() > 1 ? obj->GetAt(1)
                                                      : nullptr;
                const double n = profile && profile->IsStream() ? profile->FindNumber(SDF::e_N, 0) : 0;
                m_components = n >= 1 && n <= ColorPt::kMax ? int(n) : 0;
                if (m_components == 0) m_type = e_null;
                break;
            }
            case e_device_n: {
                SDF::Obj* names = obj->IsArray() && obj->Size() > 1 ? obj->GetAt(1) : nullptr;
                const UInt64 n = names && names->IsArray() ? names->Size() : 0;
                if (n < 1 || n > UInt64(ColorPt::kMax)) {
                    m_type = e_null;
                    break;
                }
                m_components = int(n);
                break;
            }
            case e_null:
                break;
            default:
                m_components = 1;
        }
    } catch (const Common::Exception&) {
        m_type = e_null;
        m_components = 0;
    }
}

void ColorSpace::InitColor(ColorPt& out) const {
    out = ColorPt();
    out.SetColorantNum(m_components);
    if (m_type == e_device_cmyk) out.Set(3, 1.0);
}

}  // namespace lum::PDF
