#include <gtest/gtest.h>

#include "PDF/Color/DeviceColor.h"

namespace Color = lum::PDF::Color;

TEST(DeviceColor, CmykCornersAndMixes) {
    const struct {
        double cmyk[4];
        unsigned char rgb[3];
    } cases[] = {
        {{0, 0, 0, 0}, {255, 255, 255}},
        // Pure K is the dark corner, not black.
        {{0, 0, 0, 1}, {35, 31, 32}},
        {{1, 1, 1, 1}, {0, 0, 0}},
        {{1, 0, 0, 0}, {0, 172, 239}},
        {{0, 1, 0, 0}, {236, 0, 139}},
        {{0, 0, 1, 0}, {255, 241, 0}},
        // Halfway between white and the K corner.
        {{0, 0, 0, 0.5}, {145, 143, 143}},
    };
    for (const auto& c : cases) {
        double rgb[3];
        Color::CMYKToRGB(c.cmyk, rgb);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(Color::ColorByte(rgb[i]), c.rgb[i]) << c.cmyk[0] << c.cmyk[1] << c.cmyk[2] << c.cmyk[3];
    }
}

TEST(DeviceColor, BytesWrapBeyondOne) {
    const struct {
        double v;
        unsigned char byte;
    } cases[] = {{0, 0}, {1, 255}, {0.5, 127}, {2, 254}, {-0.5, 129}, {1e300, 0}};
    for (const auto& c : cases) EXPECT_EQ(Color::ColorByte(c.v), c.byte) << c.v;
}
