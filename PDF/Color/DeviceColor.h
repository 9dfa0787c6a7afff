#pragma once
// RGB of the device colour spaces, the conversions every other family ends in.
namespace lum::PDF::Color {

// r = g = b = the gray, as it stands.
void GrayToRGB(double gray, double rgb[3]);
// The sum over the 16 corners of the CMYK cube, each weighted by the product of its
// coordinates (c or 1 - c, ...), with a fixed RGB colour per corner; each result clamped.
void CMYKToRGB(const double cmyk[4], double rgb[3]);
// The other way, for the gray and CMYK conversions of the families that have no rule of their
// own: luminance by the NTSC weights, and CMYK with full undercolour removal.
double RGBToGray(const double rgb[3]);
void RGBToCMYK(const double rgb[3], double cmyk[4]);

// Each byte of a fill colour: the low eight bits of the component times 255, truncated, so
// that a component beyond 1 wraps.
unsigned char ColorByte(double component);

}  // namespace lum::PDF::Color
