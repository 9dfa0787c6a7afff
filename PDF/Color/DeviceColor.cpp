#include "PDF/Color/DeviceColor.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace lum::PDF::Color {

namespace {

// Corner colours of the CMYK cube, indexed by the bits c m y k (c the highest): a set bit
// takes the component, a clear one its complement.
constexpr double kCorners[16][3] = {
    {1, 1, 1},                  // c̄ m̄ ȳ k̄
    {0.1373, 0.1216, 0.1255},   // c̄ m̄ ȳ k
    {1, 0.949, 0},              // c̄ m̄ y k̄
    {0.1098, 0.102, 0},         // c̄ m̄ y k
    {0.9255, 0, 0.549},         // c̄ m ȳ k̄
    {0.1412, 0, 0},             // c̄ m ȳ k
    {0.9294, 0.1098, 0.1412},   // c̄ m y k̄
    {0.1333, 0, 0},             // c̄ m y k
    {0, 0.6784, 0.9373},        // c m̄ ȳ k̄
    {0, 0.0588, 0.1412},        // c m̄ ȳ k
    {0, 0.651, 0.3137},         // c m̄ y k̄
    {0, 0.0745, 0},             // c m̄ y k
    {0.1804, 0.1922, 0.5725},   // c m ȳ k̄
    {0, 0, 0.0078},             // c m ȳ k
    {0.2118, 0.2119, 0.2235},   // c m y k̄
    {0, 0, 0},                  // c m y k
};

double Clamp(double v) { return std::clamp(v, 0.0, 1.0); }

}  // namespace

void GrayToRGB(double gray, double rgb[3]) { rgb[0] = rgb[1] = rgb[2] = gray; }

void CMYKToRGB(const double cmyk[4], double rgb[3]) {
    rgb[0] = rgb[1] = rgb[2] = 0;
    for (int corner = 0; corner < 16; ++corner) {
        double w = 1;
        for (int i = 0; i < 4; ++i) {
            const bool set = corner & (8 >> i);
            w *= set ? cmyk[i] : 1 - cmyk[i];
        }
        for (int ch = 0; ch < 3; ++ch) rgb[ch] += w * kCorners[corner][ch];
    }
    for (int ch = 0; ch < 3; ++ch) rgb[ch] = Clamp(rgb[ch]);
}

double RGBToGray(const double rgb[3]) {
    return Clamp(0.3 * rgb[0] + 0.59 * rgb[1] + 0.11 * rgb[2]);
}

void RGBToCMYK(const double rgb[3], double cmyk[4]) {
    const double c = 1 - Clamp(rgb[0]), m = 1 - Clamp(rgb[1]), y = 1 - Clamp(rgb[2]);
    const double k = std::min({c, m, y});
    const double rest = 1 - k;
    cmyk[0] = rest > 0 ? (c - k) / rest : 0;
    cmyk[1] = rest > 0 ? (m - k) / rest : 0;
    cmyk[2] = rest > 0 ? (y - k) / rest : 0;
    cmyk[3] = k;
}

unsigned char ColorByte(double component) {
    const double v = component * 255.0;
    // Beyond the range of a 64-bit integer (or not a number) there are no low bits to keep.
    if (!(std::fabs(v) < 9.2e18)) return 0;
    return static_cast<unsigned char>(static_cast<std::int64_t>(v) & 0xFF);
}

}  // namespace lum::PDF::Color
