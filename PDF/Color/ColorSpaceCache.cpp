#include "PDF/Color/ColorSpaceCache.h"

#include <algorithm>

#include "PDF/Color/ColorSpaceImpl.h"

namespace lum::PDF::Color {

bool ColorSpaceCache::ToRGB(const ColorSpace& space, const ColorPt& color, double rgb[3]) {
    ColorSpaceImpl* impl = space.GetImpl();
    if (!impl || impl->GetType() == ColorSpace::e_pattern) return false;
    if (!(space == m_space && color == m_color)) {
        impl->ToRGB(color.Data(), color.GetColorantNum(), m_rgb);
        m_space = space;
        m_color = color;
    }
    std::copy(m_rgb, m_rgb + 3, rgb);
    return true;
}

}  // namespace lum::PDF::Color
