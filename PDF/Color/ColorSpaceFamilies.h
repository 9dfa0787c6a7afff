#pragma once
// The colour space families. Each reads its parameters once, in its constructor, and raises
// there when they are broken; afterwards it only converts. Spaces inside spaces (an Indexed
// base, an alternate) are handles, opened through the document's table with their depth.
#include <string>
#include <vector>

#include "PDF/Color/ColorSpaceImpl.h"
#include "PDF/Color/Function.h"

namespace lum::PDF::Color {

// The space of `obj` nested `depth` levels inside another: through the document's table of
// shared resources like a top-level space. Raises for a broken space and for e_null.
ColorSpace OpenNestedColorSpace(SDF::Obj* obj, int depth);

// --- Device families and Pattern ---

class DeviceGray final : public ColorSpaceImpl {
public:
    ColorSpace::Type GetType() const override { return ColorSpace::e_device_gray; }
    int GetComponentNum() const override { return 1; }
    void Convert2Gray(const ColorPt& in, ColorPt& out) const override;
    void Convert2CMYK(const ColorPt& in, ColorPt& out) const override;
    void ToRGB(const double* in, int n, double rgb[3]) const override;
    ColorSpaceImpl* Clone() const override { return new DeviceGray(*this); }
};

class DeviceRGB final : public ColorSpaceImpl {
public:
    ColorSpace::Type GetType() const override { return ColorSpace::e_device_rgb; }
    int GetComponentNum() const override { return 3; }
    void ToRGB(const double* in, int n, double rgb[3]) const override;
    ColorSpaceImpl* Clone() const override { return new DeviceRGB(*this); }
};

class DeviceCMYK final : public ColorSpaceImpl {
public:
    ColorSpace::Type GetType() const override { return ColorSpace::e_device_cmyk; }
    int GetComponentNum() const override { return 4; }
    void InitColor(ColorPt& out) const override;
    void Convert2CMYK(const ColorPt& in, ColorPt& out) const override;
    void ToRGB(const double* in, int n, double rgb[3]) const override;
    ColorSpaceImpl* Clone() const override { return new DeviceCMYK(*this); }
};

// A pattern has no colour of its own; an uncoloured one paints in its underlying space, whose
// components the colour then holds.
class Pattern final : public ColorSpaceImpl {
public:
    Pattern() = default;
    // [/Pattern base]
    Pattern(SDF::Obj* arr, int depth);
    ColorSpace::Type GetType() const override { return ColorSpace::e_pattern; }
    int GetComponentNum() const override { return m_base ? m_base.GetComponentNum() : 1; }
    ColorSpace GetBaseColorSpace() const override { return m_base; }
    void SetBaseColorSpace(const ColorSpace& cs) override { m_base = cs; }
    // Through the underlying space when there is one; black without.
    void ToRGB(const double* in, int n, double rgb[3]) const override;
    ColorSpaceImpl* Clone() const override { return new Pattern(*this); }

private:
    ColorSpace m_base = ColorSpace::Empty();
};

// --- CIE-based families ---

struct WhitePoint {
    double x = 1, y = 1, z = 1;
};

// XYZ to RGB by the sRGB primaries, each channel scaled so that the white point comes out as
// 1 1 1, then clamped and taken to gamma 2.
void XYZToRGB(const WhitePoint& white, double x, double y, double z, double rgb[3]);

class CalGray final : public ColorSpaceImpl {
public:
    explicit CalGray(SDF::Obj* dict);
    ColorSpace::Type GetType() const override { return ColorSpace::e_cal_gray; }
    int GetComponentNum() const override { return 1; }
    void ToRGB(const double* in, int n, double rgb[3]) const override;
    ColorSpaceImpl* Clone() const override { return new CalGray(*this); }

private:
    WhitePoint m_white;
    double m_black[3] = {0, 0, 0};  // kept; the conversion doesn't use it
    double m_gamma = 1;
};

class CalRGB final : public ColorSpaceImpl {
public:
    explicit CalRGB(SDF::Obj* dict);
    ColorSpace::Type GetType() const override { return ColorSpace::e_cal_rgb; }
    int GetComponentNum() const override { return 3; }
    void ToRGB(const double* in, int n, double rgb[3]) const override;
    ColorSpaceImpl* Clone() const override { return new CalRGB(*this); }

private:
    WhitePoint m_white;
    double m_black[3] = {0, 0, 0};
    double m_gamma[3] = {1, 1, 1};
    double m_matrix[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
};

class Lab final : public ColorSpaceImpl {
public:
    explicit Lab(SDF::Obj* dict);
    ColorSpace::Type GetType() const override { return ColorSpace::e_lab; }
    int GetComponentNum() const override { return 3; }
    void InitComponentRanges(std::vector<double>& low, std::vector<double>& range,
                             int bits) const override;
    void ToRGB(const double* in, int n, double rgb[3]) const override;
    ColorSpaceImpl* Clone() const override { return new Lab(*this); }

private:
    WhitePoint m_white;
    double m_range[4] = {-100, 100, -100, 100};  // amin amax bmin bmax
};

// --- Spaces through another space ---

// An ICC profile is never applied: the colour goes through the alternate space.
class ICC final : public ColorSpaceImpl {
public:
    ICC(SDF::Obj* stream, int depth);
    ColorSpace::Type GetType() const override { return ColorSpace::e_icc; }
    int GetComponentNum() const override { return m_component_num; }
    void InitComponentRanges(std::vector<double>& low, std::vector<double>& range,
                             int bits) const override;
    ColorSpace GetAlternateColorSpace() const override { return m_alternate; }
    void SetAlternateColorSpace(const ColorSpace& cs) override;
    SDF::Obj* GetICCProfile() const override { return mp_profile; }
    void ToRGB(const double* in, int n, double rgb[3]) const override;
    ColorSpaceImpl* Clone() const override { return new ICC(*this); }

private:
    int m_component_num = 0;
    ColorSpace m_alternate;
    std::vector<double> m_range;  // 2 per component
    SDF::Obj* mp_profile = nullptr;
};

class Indexed final : public ColorSpaceImpl {
public:
    Indexed(SDF::Obj* arr, int depth);
    ColorSpace::Type GetType() const override { return ColorSpace::e_indexed; }
    int GetComponentNum() const override { return 1; }
    void InitComponentRanges(std::vector<double>& low, std::vector<double>& range,
                             int bits) const override;
    ColorSpace GetBaseColorSpace() const override { return m_base; }
    void SetBaseColorSpace(const ColorSpace& cs) override;
    int GetHighVal() const override { return m_highval; }
    const UInt8* GetLookupTable() const override { return m_lookup.data(); }
    void GetBaseColor(UInt8 index, ColorPt& out) const override;
    int GetBaseCompNum() const override { return m_base_components; }
    void ToRGB(const double* in, int n, double rgb[3]) const override;
    ColorSpaceImpl* Clone() const override { return new Indexed(*this); }

private:
    // The base components of entry `index` (0..hival).
    void BaseComponents(int index, double* out) const;
    void ReadRanges();

    ColorSpace m_base;
    int m_base_components = 0;
    int m_highval = 0;
    std::vector<UInt8> m_lookup;  // (hival + 1) x base components
    std::vector<double> m_low, m_width;
};

// Separation (one colourant) and DeviceN (up to 32): the tint transform into the alternate
// space. A Separation of All is the gray of 1 - tint.
class TintSpace final : public ColorSpaceImpl {
public:
    TintSpace(SDF::Obj* arr, bool device_n, int depth);
    ~TintSpace() override;
    ColorSpace::Type GetType() const override {
        return m_device_n ? ColorSpace::e_device_n : ColorSpace::e_separation;
    }
    int GetComponentNum() const override { return m_component_num; }
    ColorSpace GetAlternateColorSpace() const override { return m_alternate; }
    void SetAlternateColorSpace(const ColorSpace& cs) override;
    const Function* GetTintFunction() const override { return mp_tint.get(); }
    bool IsAll() const override { return m_all; }
    bool IsNone() const override { return m_none; }
    const std::vector<std::string>& GetColorantNames() const override { return m_names; }
    SDF::Obj* GetAttributes() const override { return mp_attributes; }
    void ToRGB(const double* in, int n, double rgb[3]) const override;
    ColorSpaceImpl* Clone() const override { return new TintSpace(*this); }

private:
    bool m_device_n;
    bool m_all = false;
    bool m_none = false;
    int m_component_num = 1;
    std::vector<std::string> m_names;
    ColorSpace m_alternate;
    FunctionRef mp_tint;  // empty for a Separation of All
    SDF::Obj* mp_attributes = nullptr;
};

}  // namespace lum::PDF::Color
