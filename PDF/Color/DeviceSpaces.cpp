// The device families, and Pattern with its underlying space.
#include "Common/Exception.h"
#include "PDF/Color/ColorSpaceFamilies.h"
#include "PDF/Color/DeviceColor.h"
#include "SDF/Obj.h"

namespace lum::PDF::Color {

void DeviceGray::ToRGB(const double* in, int n, double rgb[3]) const {
    GrayToRGB(Component(in, n, 0), rgb);
}

void DeviceGray::Convert2Gray(const ColorPt& in, ColorPt& out) const {
    out = ColorPt(in.Get(0), 0, 0, 0, 1);
}

void DeviceGray::Convert2CMYK(const ColorPt& in, ColorPt& out) const {
    out = ColorPt(0, 0, 0, 1 - in.Get(0), 4);
}

void DeviceRGB::ToRGB(const double* in, int n, double rgb[3]) const {
    for (int i = 0; i < 3; ++i) rgb[i] = Component(in, n, i);
}

void DeviceCMYK::InitColor(ColorPt& out) const { out = ColorPt(0, 0, 0, 1, 4); }

void DeviceCMYK::Convert2CMYK(const ColorPt& in, ColorPt& out) const {
    out = ColorPt(in.Get(0), in.Get(1), in.Get(2), in.Get(3), 4);
}

void DeviceCMYK::ToRGB(const double* in, int n, double rgb[3]) const {
    const double cmyk[4] = {Component(in, n, 0), Component(in, n, 1), Component(in, n, 2),
                            Component(in, n, 3)};
    CMYKToRGB(cmyk, rgb);
}

Pattern::Pattern(SDF::Obj* arr, int depth) {
    m_base = OpenNestedColorSpace(arr->GetAt(1), depth + 1);
    LUM_CHECK(m_base.GetType() != ColorSpace::e_pattern, "A Pattern can't be the base of a Pattern");
}

void Pattern::ToRGB(const double* in, int n, double rgb[3]) const {
    if (m_base) {
        m_base.GetImpl()->ToRGB(in, n, rgb);
        return;
    }
    rgb[0] = rgb[1] = rgb[2] = 0;
}

}  // namespace lum::PDF::Color
