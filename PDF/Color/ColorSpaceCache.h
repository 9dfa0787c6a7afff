#pragma once
// The RGB of the fill colours of a page's text, one element after another. Colour spaces are
// parsed once per document by the ColorSpace handles in the graphics state; what this adds is
// the memory of the last conversion, since elements in a row mostly share their colour and a
// tint transform may take thousands of steps.
#include "PDF/ColorSpace.h"

namespace lum::PDF::Color {

class ColorSpaceCache {
public:
    // Three components: each in 0 to 1, but for the device gray and RGB values, which stand as
    // they are. False for a Pattern, which has no colour of its own, and for an empty handle.
    bool ToRGB(const ColorSpace& space, const ColorPt& color, double rgb[3]);

private:
    ColorSpace m_space = ColorSpace::Empty();
    ColorPt m_color;
    double m_rgb[3] = {0, 0, 0};
};

}  // namespace lum::PDF::Color
