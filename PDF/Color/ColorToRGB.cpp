#include "PDF/Color/ColorToRGB.h"

#include "PDF/Color/DeviceColor.h"
#include "PDF/ColorSpace.h"

namespace lum::PDF::Color {

namespace {

// The device space of a colour with `n` components.
bool DeviceRGBOf(const ColorPt& c, int n, double rgb[3]) {
    switch (n) {
        case 1: GrayToRGB(c.Get(0), rgb); return true;
        case 3:
            for (int i = 0; i < 3; ++i) rgb[i] = c.Get(i);
            return true;
        case 4: {
            const double cmyk[4] = {c.Get(0), c.Get(1), c.Get(2), c.Get(3)};
            CMYKToRGB(cmyk, rgb);
            return true;
        }
        default: return false;
    }
}

}  // namespace

bool ToRGB(const ColorSpace& space, const ColorPt& color, double rgb[3]) {
    switch (space.GetType()) {
        case ColorSpace::e_pattern: return false;
        case ColorSpace::e_device_gray: return DeviceRGBOf(color, 1, rgb);
        case ColorSpace::e_device_rgb: return DeviceRGBOf(color, 3, rgb);
        case ColorSpace::e_device_cmyk: return DeviceRGBOf(color, 4, rgb);
        default:
            // The calibrated, ICC and special families read as the device space of as many
            // components until their own conversions are in; anything else is black.
            if (!DeviceRGBOf(color, space.GetComponentNum(), rgb)) rgb[0] = rgb[1] = rgb[2] = 0;
            return true;
    }
}

}  // namespace lum::PDF::Color
