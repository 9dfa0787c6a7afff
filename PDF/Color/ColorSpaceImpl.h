#pragma once
// One implementation per colour space family, read once from the space's object, and the
// conversion of a colour point to RGB by the family's formulas.
#include <memory>
#include <unordered_map>

#include "PDF/ColorSpace.h"

namespace lum::SDF { class Obj; }

namespace lum::PDF::Color {

class ColorSpaceImpl {
public:
    virtual ~ColorSpaceImpl() = default;

    // The space of `obj` (a name, an array whose first entry names the family, or an ICC
    // profile stream). Raises for a space that is broken; null for one with no implementation
    // (e_null). `depth` counts the spaces it stands in.
    static std::unique_ptr<ColorSpaceImpl> Create(SDF::Obj* obj, int depth = 0);
    // The device spaces, by family.
    static std::unique_ptr<ColorSpaceImpl> CreateDevice(ColorSpace::Type family);

    virtual ColorSpace::Type GetType() const = 0;
    virtual int GetComponentNum() const = 0;
    // The range of component i, for the Indexed lookup: 0 to 1 but for Lab.
    virtual void GetRange(int i, double& lo, double& hi) const {
        (void)i;
        lo = 0;
        hi = 1;
    }
    // Three components in 0 to 1 (DeviceRGB's as they stand). `in` holds the components; a
    // component past `n` counts as 0.
    virtual void Convert2RGB(const double* in, int n, double rgb[3]) const = 0;
};

// The spaces of one document, each read once, for the fill colour of text.
class ColorSpaceCache {
public:
    // False for a Pattern, which has no colour of its own. A space that can't be read gives
    // black.
    bool ToRGB(const ColorSpace& space, const ColorPt& color, double rgb[3]);

private:
    std::unordered_map<const SDF::Obj*, std::unique_ptr<ColorSpaceImpl>> m_spaces;
};

}  // namespace lum::PDF::Color
