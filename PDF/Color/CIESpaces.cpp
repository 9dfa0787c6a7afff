// The CIE-based families: CalGray, CalRGB and Lab, each to XYZ by its own rule and then to
// RGB by the one XYZ step.
#include <algorithm>
#include <cmath>
#include <vector>

#include "Common/Exception.h"
#include "PDF/Color/ColorSpaceFamilies.h"
#include "PDF/Color/Function.h"
#include "SDF/Obj.h"

namespace lum::PDF::Color {

namespace {

// Not a number clamps to 0.
double Clamp01(double v) { return v > 0 ? (v < 1 ? v : 1) : 0; }

SDF::Obj* Entry(SDF::Obj* dict, const SDF::Name& key) {
    return dict && dict->IsDict() ? dict->FindObj(key) : nullptr;
}

WhitePoint ReadWhitePoint(SDF::Obj* dict) {
    const std::vector<double> w = ReadNumbers(Entry(dict, SDF::e_WhitePoint), 3);
    LUM_CHECK(w.size() == 3, "Missing WhitePoint");
    return {w[0], w[1], w[2]};
}

void ReadBlackPoint(SDF::Obj* dict, double black[3]) {
    const std::vector<double> b = ReadNumbers(Entry(dict, SDF::e_BlackPoint), 3);
    if (b.size() == 3) std::copy(b.begin(), b.end(), black);
}

// x to the power of the gamma; a result that isn't finite (a hostile gamma) is 0.
double Power(double x, double gamma) {
    const double v = std::pow(x, gamma);
    return std::isfinite(v) ? v : 0.0;
}

}  // namespace

void XYZToRGB(const WhitePoint& white, double x, double y, double z, double rgb[3]) {
    static constexpr double kM[3][3] = {{3.240449, -1.537136, -0.498531},
                                        {-0.969265, 1.876011, 0.041556},
                                        {0.055643, -0.204026, 1.057229}};
    for (int i = 0; i < 3; ++i) {
        const double w = kM[i][0] * white.x + kM[i][1] * white.y + kM[i][2] * white.z;
        const double v = kM[i][0] * x + kM[i][1] * y + kM[i][2] * z;
        // A white point whose channel comes out as 0 can't be scaled to 1; the channel stands.
        const double scaled = w != 0 ? v / w : v;
        rgb[i] = std::sqrt(Clamp01(std::isfinite(scaled) ? scaled : 0.0));
    }
}

CalGray::CalGray(SDF::Obj* dict) : m_white(ReadWhitePoint(dict)) {
    ReadBlackPoint(dict, m_black);
    SDF::Obj* g = Entry(dict, SDF::e_Gamma);
    if (g && g->IsNumber() && std::isfinite(g->GetNumber())) m_gamma = g->GetNumber();
}

void CalGray::ToRGB(const double* in, int n, double rgb[3]) const {
    const double a = Power(Clamp01(Component(in, n, 0)), m_gamma);
    XYZToRGB(m_white, a * m_white.x, a * m_white.y, a * m_white.z, rgb);
}

CalRGB::CalRGB(SDF::Obj* dict) : m_white(ReadWhitePoint(dict)) {
    ReadBlackPoint(dict, m_black);
    const std::vector<double> g = ReadNumbers(Entry(dict, SDF::e_Gamma), 3);
    if (g.size() == 3) std::copy(g.begin(), g.end(), m_gamma);
    const std::vector<double> m = ReadNumbers(Entry(dict, SDF::e_Matrix), 9);
    if (m.size() == 9) std::copy(m.begin(), m.end(), m_matrix);
}

void CalRGB::ToRGB(const double* in, int n, double rgb[3]) const {
    double v[3];
    for (int i = 0; i < 3; ++i) v[i] = Power(Clamp01(Component(in, n, i)), m_gamma[i]);
    const double* m = m_matrix;
    XYZToRGB(m_white, v[0] * m[0] + v[1] * m[3] + v[2] * m[6],
             v[0] * m[1] + v[1] * m[4] + v[2] * m[7], v[0] * m[2] + v[1] * m[5] + v[2] * m[8], rgb);
}

Lab::Lab(SDF::Obj* dict) : m_white(ReadWhitePoint(dict)) {
    const std::vector<double> r = ReadNumbers(Entry(dict, SDF::e_Range), 4);
    if (r.size() == 4) std::copy(r.begin(), r.end(), m_range);
}

void Lab::InitComponentRanges(std::vector<double>& low, std::vector<double>& range, int) const {
    low = {0, m_range[0], m_range[2]};
    range = {100, m_range[1] - m_range[0], m_range[3] - m_range[2]};
}

void Lab::ToRGB(const double* in, int n, double rgb[3]) const {
    // A range given upside down is taken the right way up.
    const auto within = [](double v, double a, double b) {
        return std::clamp(v, std::min(a, b), std::max(a, b));
    };
    const double l = within(Component(in, n, 0), 0, 100);
    const double a = within(Component(in, n, 1), m_range[0], m_range[1]);
    const double b = within(Component(in, n, 2), m_range[2], m_range[3]);
    const double m = (l + 16) / 116, lx = m + a / 500, lz = m - b / 200;
    const auto f = [](double t) {
        return t >= 0.20689655172413793 ? t * t * t
                                        : (t - 0.13793103448275862) * 0.12841854934601665;
    };
    XYZToRGB(m_white, f(lx) * m_white.x, f(m) * m_white.y, f(lz) * m_white.z, rgb);
}

}  // namespace lum::PDF::Color
