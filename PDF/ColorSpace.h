#pragma once
// What the content reader keeps of a colour: the space (its family, its object, how many
// components it takes) and the components as the operators gave them. Conversions to RGB and
// the families' own data (Indexed tables, tint transforms) are not read here.
#include "Common/Types.h"

namespace lum::SDF {
class Obj;
}

namespace lum::PDF {

// A colour value: up to kMax components, held inline so that copying a graphics state never
// allocates. DeviceN, the widest family, has at most 32 colourants.
class ColorPt {
public:
    static constexpr int kMax = 32;

    ColorPt() = default;
    ColorPt(double c0, double c1, double c2, double c3, int count);

    int GetColorantNum() const noexcept { return m_count; }
    // Cut to 0..kMax.
    void SetColorantNum(int count) noexcept;
    // 0 outside the components.
    double Get(int i) const noexcept { return i >= 0 && i < m_count ? m_c[i] : 0.0; }
    // Outside 0..kMax-1 nothing happens; a component past the count extends it.
    void Set(int i, double value) noexcept;

    bool operator==(const ColorPt& o) const noexcept;

private:
    int m_count = 1;
    double m_c[kMax] = {};
};

// The pattern of a pattern colour, with the reader level whose resources named it.
struct PatternColor {
    SDF::Obj* mp_pattern = nullptr;
    int m_level = -1;
    bool operator==(const PatternColor&) const = default;
};

class ColorSpace {
public:
    enum Type {
        e_device_gray = 0,
        e_device_rgb = 1,
        e_device_cmyk = 2,
        e_cal_gray = 3,
        e_cal_rgb = 4,
        e_lab = 5,
        e_icc = 6,
        e_indexed = 7,
        e_pattern = 8,
        e_separation = 9,
        e_device_n = 10,
        e_null = 11,
    };

    // DeviceGray, the space of a fresh graphics state.
    ColorSpace() = default;
    // Classifies a name, an array whose first entry names the family, or an ICC profile
    // stream. Anything else is e_null. Never raises: a damaged entry counts as absent.
    explicit ColorSpace(SDF::Obj* obj);

    static ColorSpace CreateDeviceGray() { return ColorSpace(e_device_gray, 1); }
    static ColorSpace CreateDeviceRGB() { return ColorSpace(e_device_rgb, 3); }
    static ColorSpace CreateDeviceCMYK() { return ColorSpace(e_device_cmyk, 4); }

    // A space of a family that takes no parameters (the device families, Pattern).
    static ColorSpace FromFamily(Type family);
    // The same space without its object, for a value whose object won't outlive it.
    ColorSpace Detached() const {
        ColorSpace copy = *this;
        copy.mp_obj = nullptr;
        return copy;
    }

    // The family of a name as content and resources spell it ("G", "DeviceRGB", "ICCBased",
    // ...); e_null for any other name.
    static Type FamilyOfName(const char* name);

    Type GetType() const noexcept { return m_type; }
    bool IsDevice() const noexcept { return m_type <= e_device_cmyk; }
    int GetComponentNum() const noexcept { return m_components; }
    // The object the space was read from; null for the device spaces made by the factories.
    SDF::Obj* GetSDFObj() const noexcept { return mp_obj; }

    // The initial colour: 0 in every component, except 0 0 0 1 for DeviceCMYK.
    void InitColor(ColorPt& out) const;

    bool operator==(const ColorSpace& o) const noexcept {
        return m_type == o.m_type && mp_obj == o.mp_obj;
    }

private:
    ColorSpace(Type type, int components) : m_type(type), m_components(components) {}

    Type m_type = e_device_gray;
    int m_components = 1;
    SDF::Obj* mp_obj = nullptr;
};

}  // namespace lum::PDF
