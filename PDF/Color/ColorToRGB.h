#pragma once
// The RGB of a colour in its space, for the style of text.
namespace lum::PDF {
class ColorSpace;
class ColorPt;
}  // namespace lum::PDF

namespace lum::PDF::Color {

// Three components in 0 to 1 (the device RGB ones as they stand). False for a Pattern space,
// whose colour isn't converted.
bool ToRGB(const ColorSpace& space, const ColorPt& color, double rgb[3]);

}  // namespace lum::PDF::Color
