#include "PDF/Color/ColorSpaceImpl.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Filters/FilterReader.h"
#include "PDF/Color/DeviceColor.h"
#include "PDF/Color/Function.h"
#include "SDF/Obj.h"

namespace lum::PDF::Color {

namespace {

double Clamp01(double v) { return std::clamp(v, 0.0, 1.0); }
double Comp(const double* in, int n, int i) { return i < n ? in[i] : 0.0; }

// --- Device families ---

class DeviceGray final : public ColorSpaceImpl {
public:
    ColorSpace::Type GetType() const override { return ColorSpace::e_device_gray; }
    int GetComponentNum() const override { return 1; }
    void Convert2RGB(const double* in, int n, double rgb[3]) const override {
        GrayToRGB(Comp(in, n, 0), rgb);
    }
};

class DeviceRGB final : public ColorSpaceImpl {
public:
    ColorSpace::Type GetType() const override { return ColorSpace::e_device_rgb; }
    int GetComponentNum() const override { return 3; }
    void Convert2RGB(const double* in, int n, double rgb[3]) const override {
        for (int i = 0; i < 3; ++i) rgb[i] = Comp(in, n, i);
    }
};

class DeviceCMYK final : public ColorSpaceImpl {
public:
    ColorSpace::Type GetType() const override { return ColorSpace::e_device_cmyk; }
    int GetComponentNum() const override { return 4; }
    void Convert2RGB(const double* in, int n, double rgb[3]) const override {
        const double cmyk[4] = {Comp(in, n, 0), Comp(in, n, 1), Comp(in, n, 2), Comp(in, n, 3)};
        CMYKToRGB(cmyk, rgb);
    }
};

// --- CIE-based families ---

struct WhitePoint {
    double x = 1, y = 1, z = 1;
};

WhitePoint ReadWhitePoint(SDF::Obj* dict) {
    const std::vector<double> w = ReadNumbers(dict ? dict->FindObj(SDF::e_WhitePoint) : nullptr);
    LUM_CHECK(w.size() >= 3, "Missing WhitePoint");
    return {w[0], w[1], w[2]};
}

// XYZ to RGB by the sRGB primaries, scaled so that the white point comes out as 1 1 1, then
// clamped and taken to gamma 2.
void XYZToRGB(const WhitePoint& wp, double x, double y, double z, double rgb[3]) {
    static constexpr double kM[3][3] = {{3.240449, -1.537136, -0.498531},
                                        {-0.969265, 1.876011, 0.041556},
                                        {0.055643, -0.204026, 1.057229}};
    for (int i = 0; i < 3; ++i) {
        const double white = kM[i][0] * wp.x + kM[i][1] * wp.y + kM[i][2] * wp.z;
        const double v = kM[i][0] * x + kM[i][1] * y + kM[i][2] * z;
        const double scaled = white != 0 ? v / white : v;
        rgb[i] = std::sqrt(Clamp01(scaled));
    }
}

class CalGray final : public ColorSpaceImpl {
public:
    explicit CalGray(SDF::Obj* dict) : m_white(ReadWhitePoint(dict)) {
        SDF::Obj* g = dict->FindObj(SDF::e_Gamma);
        if (g && g->IsNumber()) m_gamma = g->GetNumber();
    }
    ColorSpace::Type GetType() const override { return ColorSpace::e_cal_gray; }
    int GetComponentNum() const override { return 1; }
    void Convert2RGB(const double* in, int n, double rgb[3]) const override {
        const double a = std::pow(Clamp01(Comp(in, n, 0)), m_gamma);
        XYZToRGB(m_white, a * m_white.x, a * m_white.y, a * m_white.z, rgb);
    }

private:
    WhitePoint m_white;
    double m_gamma = 1;
};

class CalRGB final : public ColorSpaceImpl {
public:
    explicit CalRGB(SDF::Obj* dict) : m_white(ReadWhitePoint(dict)) {
        const std::vector<double> g = ReadNumbers(dict->FindObj(SDF::e_Gamma));
        if (g.size() >= 3) std::copy(g.begin(), g.begin() + 3, m_gamma);
        const std::vector<double> m = ReadNumbers(dict->FindObj(SDF::e_Matrix));
        if (m.size() >= 9) std::copy(m.begin(), m.begin() + 9, m_matrix);
    }
    ColorSpace::Type GetType() const override { return ColorSpace::e_cal_rgb; }
    int GetComponentNum() const override { return 3; }
    void Convert2RGB(const double* in, int n, double rgb[3]) const override {
        double v[3];
        for (int i = 0; i < 3; ++i) v[i] = std::pow(Clamp01(Comp(in, n, i)), m_gamma[i]);
        const double* m = m_matrix;
        XYZToRGB(m_white, v[0] * m[0] + v[1] * m[3] + v[2] * m[6],
                 v[0] * m[1] + v[1] * m[4] + v[2] * m[7], v[0] * m[2] + v[1] * m[5] + v[2] * m[8],
                 rgb);
    }

private:
    WhitePoint m_white;
    double m_gamma[3] = {1, 1, 1};
    double m_matrix[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
};

class Lab final : public ColorSpaceImpl {
public:
    explicit Lab(SDF::Obj* dict) : m_white(ReadWhitePoint(dict)) {
        const std::vector<double> r = ReadNumbers(dict->FindObj(SDF::e_Range));
        if (r.size() >= 4) std::copy(r.begin(), r.begin() + 4, m_range);
    }
    ColorSpace::Type GetType() const override { return ColorSpace::e_lab; }
    int GetComponentNum() const override { return 3; }
    void GetRange(int i, double& lo, double& hi) const override {
        if (i == 0) {
            lo = 0;
            hi = 100;
        } else {
            lo = m_range[2 * (i - 1)];
            hi = m_range[2 * (i - 1) + 1];
        }
    }
    void Convert2RGB(const double* in, int n, double rgb[3]) const override {
        const double l = std::clamp(Comp(in, n, 0), 0.0, 100.0);
        const double a = std::clamp(Comp(in, n, 1), std::min(m_range[0], m_range[1]),
                                    std::max(m_range[0], m_range[1]));
        const double b = std::clamp(Comp(in, n, 2), std::min(m_range[2], m_range[3]),
                                    std::max(m_range[2], m_range[3]));
        const double m = (l + 16) / 116, lx = m + a / 500, lz = m - b / 200;
        XYZToRGB(m_white, F(lx) * m_white.x, F(m) * m_white.y, F(lz) * m_white.z, rgb);
    }

private:
    static double F(double t) {
        return t >= 0.20689655172413793 ? t * t * t
                                        : (t - 0.13793103448275862) * 0.12841854934601665;
    }
    WhitePoint m_white;
    double m_range[4] = {-100, 100, -100, 100};
};

// --- Spaces through another space ---

// An ICC profile is never applied: its colours go through the alternate space.
class ICC final : public ColorSpaceImpl {
public:
    ICC(SDF::Obj* stream, int depth) {
        SDF::Obj* n = stream ? stream->FindObj(SDF::e_N) : nullptr;
        LUM_CHECK(n && n->IsNumber(), "ICC stream without N");
        m_n = int(n->GetNumber());
        if (SDF::Obj* alt = stream->FindObj(SDF::e_Alternate)) m_alternate = Create(alt, depth + 1);
        if (!m_alternate) {
            switch (m_n) {
                case 1: m_alternate = CreateDevice(ColorSpace::e_device_gray); break;
                case 3: m_alternate = CreateDevice(ColorSpace::e_device_rgb); break;
                case 4: m_alternate = CreateDevice(ColorSpace::e_device_cmyk); break;
                default: LUM_FAIL("Bad number of ICC components");
            }
        }
    }
    ColorSpace::Type GetType() const override { return ColorSpace::e_icc; }
    int GetComponentNum() const override { return m_n; }
    void Convert2RGB(const double* in, int n, double rgb[3]) const override {
        m_alternate->Convert2RGB(in, n, rgb);
    }

private:
    int m_n = 0;
    std::unique_ptr<ColorSpaceImpl> m_alternate;
};

class Indexed final : public ColorSpaceImpl {
public:
    Indexed(SDF::Obj* arr, int depth) {
        LUM_CHECK(arr->Size() >= 4, "Bad Indexed color space");
        m_base = Create(arr->GetAt(1), depth + 1);
        LUM_CHECK(m_base && m_base->GetType() != ColorSpace::e_pattern, "Bad Indexed base");
        SDF::Obj* hival = arr->GetAt(2);
        LUM_CHECK(hival && hival->IsNumber(), "Bad Indexed hival");
        const int m_highval = int(std::trunc(std::clamp(hival->GetNumber(), -1.0, 1e6)));
        LUM_CHECK(m_highval<256, "Bad Indexed hival");
        m_hival = m_highval;
        const int n = m_base->GetComponentNum();
        const size_t lookup_sz = size_t(m_hival + 1) * size_t(n);
        ReadLookup(arr->GetAt(3), lookup_sz);
        LUM_CHECK(m_lookup.size() >= lookup_sz, "Indexed lookup table too short");
    }
    ColorSpace::Type GetType() const override { return ColorSpace::e_indexed; }
    int GetComponentNum() const override { return 1; }
    void Convert2RGB(const double* in, int n, double rgb[3]) const override {
        const double index = std::trunc(Comp(in, n, 0) + 0.5);
        rgb[0] = rgb[1] = rgb[2] = 0;
        if (!(index >= 0 && index <= m_hival)) return;
        const int k = m_base->GetComponentNum();
        double base[32];
        for (int i = 0; i < k && i < 32; ++i) {
            double lo, hi;
            m_base->GetRange(i, lo, hi);
            base[i] = m_lookup[size_t(index) * size_t(k) + size_t(i)] / 255.0 * (hi - lo) + lo;
        }
        m_base->Convert2RGB(base, std::min(k, 32), rgb);
    }

private:
    void ReadLookup(SDF::Obj* lookup, size_t need) {
        LUM_CHECK(lookup, "Missing Indexed lookup");
        if (lookup->IsString()) {
            const UInt8* b = lookup->GetBuffer();
            if (b) m_lookup.assign(b, b + lookup->Size());
        } else if (lookup->IsStream()) {
            auto filter = lookup->GetDecodedStream();
            Filters::FilterReader reader(filter.get());
            m_lookup.resize(need);
            m_lookup.resize(reader.Read(m_lookup.data(), need));
        }
    }

    std::unique_ptr<ColorSpaceImpl> m_base;
    int m_hival = 0;
    std::vector<UInt8> m_lookup;
};

// Separation and DeviceN: the tint transform into the alternate space.
class Tinted final : public ColorSpaceImpl {
public:
    Tinted(SDF::Obj* arr, bool device_n, int depth) : m_device_n(device_n) {
        LUM_CHECK(arr->Size() >= 4, "Bad special color space");
        SDF::Obj* names = arr->GetAt(1);
        if (device_n) {
            LUM_CHECK(names && names->IsArray(), "Bad DeviceN names");
            const UInt64 m_component_num = names->Size();
            LUM_CHECK(m_component_num <= 32, "Too many DeviceN components");
            m_n = int(m_component_num);
        } else {
            m_all = names && names->IsName() && std::strcmp(names->GetName(), "All") == 0;
        }
        m_alternate = Create(arr->GetAt(2), depth + 1);
        LUM_CHECK(m_alternate && m_alternate->GetType() != ColorSpace::e_pattern,
                  "Bad alternate color space");
        if (!m_all) m_tint = Function::Create(arr->GetAt(3), 0);
    }
    ColorSpace::Type GetType() const override {
        return m_device_n ? ColorSpace::e_device_n : ColorSpace::e_separation;
    }
    int GetComponentNum() const override { return m_n; }
    void Convert2RGB(const double* in, int n, double rgb[3]) const override {
        if (m_all) {
            GrayToRGB(1 - Comp(in, n, 0), rgb);
            return;
        }
        double out[32] = {};
        m_tint->Eval(in, n, out);
        m_alternate->Convert2RGB(out, m_tint->OutputCount(), rgb);
    }

private:
    bool m_device_n;
    bool m_all = false;
    int m_n = 1;
    std::unique_ptr<ColorSpaceImpl> m_alternate;
    std::unique_ptr<Function> m_tint;
};

class Pattern final : public ColorSpaceImpl {
public:
    ColorSpace::Type GetType() const override { return ColorSpace::e_pattern; }
    int GetComponentNum() const override { return 1; }
    void Convert2RGB(const double*, int, double rgb[3]) const override { rgb[0] = rgb[1] = rgb[2] = 0; }
};

}  // namespace

std::unique_ptr<ColorSpaceImpl> ColorSpaceImpl::CreateDevice(ColorSpace::Type family) {
    switch (family) {
        case ColorSpace::e_device_gray: return std::make_unique<DeviceGray>();
        case ColorSpace::e_device_rgb: return std::make_unique<DeviceRGB>();
        case ColorSpace::e_device_cmyk: return std::make_unique<DeviceCMYK>();
        case ColorSpace::e_pattern: return std::make_unique<Pattern>();
        default: return nullptr;
    }
}

std::unique_ptr<ColorSpaceImpl> ColorSpaceImpl::Create(SDF::Obj* obj, int depth) {
    LUM_CHECK(depth < Limits::kMaxColorNesting, "Color spaces nested too deep");
    if (!obj) return nullptr;
    if (obj->IsName()) return CreateDevice(ColorSpace::FamilyOfName(obj->GetName()));
    if (obj->IsStream()) return std::make_unique<ICC>(obj, depth);
    if (!obj->IsArray() || obj->Size() == 0) return nullptr;
    SDF::Obj* family = obj->GetAt(0);
    if (!family || !family->IsName()) return nullptr;
    const ColorSpace::Type type = ColorSpace::FamilyOfName(family->GetName());
    SDF::Obj* param = obj->Size() > 1 ? obj->GetAt(1) : nullptr;
    switch (type) {
        case ColorSpace::e_cal_gray: return std::make_unique<CalGray>(param);
        case ColorSpace::e_cal_rgb: return std::make_unique<CalRGB>(param);
        case ColorSpace::e_lab: return std::make_unique<Lab>(param);
        case ColorSpace::e_icc: return std::make_unique<ICC>(param, depth);
        case ColorSpace::e_indexed: return std::make_unique<Indexed>(obj, depth);
        case ColorSpace::e_separation: return std::make_unique<Tinted>(obj, false, depth);
        case ColorSpace::e_device_n: return std::make_unique<Tinted>(obj, true, depth);
        default: return CreateDevice(type);
    }
}

bool ColorSpaceCache::ToRGB(const ColorSpace& space, const ColorPt& color, double rgb[3]) {
    const ColorSpace::Type type = space.GetType();
    if (type == ColorSpace::e_pattern) return false;
    double in[ColorPt::kMax];
    const int n = color.GetColorantNum();
    for (int i = 0; i < n; ++i) in[i] = color.Get(i);
    rgb[0] = rgb[1] = rgb[2] = 0;
    if (space.IsDevice() || !space.GetSDFObj()) {
        // The device families need no object: one shared instance each.
        static const DeviceGray gray;
        static const DeviceRGB rgb_space;
        static const DeviceCMYK cmyk;
        switch (type) {
            case ColorSpace::e_device_gray: gray.Convert2RGB(in, n, rgb); break;
            case ColorSpace::e_device_rgb: rgb_space.Convert2RGB(in, n, rgb); break;
            case ColorSpace::e_device_cmyk: cmyk.Convert2RGB(in, n, rgb); break;
            default: break;
        }
        return true;
    }
    auto [it, added] = m_spaces.try_emplace(space.GetSDFObj());
    if (added) {
        try {
            it->second = ColorSpaceImpl::Create(space.GetSDFObj());
        } catch (const Common::Exception&) {
            // A broken space: its colour reads as black.
        }
    }
    if (!it->second) return true;
    if (it->second->GetType() == ColorSpace::e_pattern) return false;
    it->second->Convert2RGB(in, n, rgb);
    return true;
}

}  // namespace lum::PDF::Color
