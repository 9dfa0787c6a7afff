#pragma once
// The object behind a ColorSpace handle: one class per family, read once from the space's
// object, shared by every handle of the document that names that object, and read-only once
// made. Conversions to RGB follow the family's formulas; gray and CMYK go through RGB where a
// family has no rule of its own.
#include <string>
#include <vector>

#include "PDF/ColorSpace.h"
#include "SDF/SharedResource.h"

namespace lum::PDF::Color {

class Function;

class ColorSpaceImpl : public SDF::SharedResource {
public:
    // The space of `obj`, made now (not through the table). Raises for a space that is broken;
    // null for what the classification calls e_null. `depth` counts the spaces this one stands
    // in (an Indexed base, an alternate); spaces nest at most Limits::kMaxColorNesting deep.
    static ColorSpaceImpl* Create(SDF::Obj* obj, int depth = 0);
    // The process-wide device spaces and the Pattern space without base; never freed.
    static ColorSpaceImpl* GetDevice(ColorSpace::Type family);

    // --- Operations, in their fixed order ---
    ~ColorSpaceImpl() override;
    virtual SDF::Obj* GetSDFObj() const { return mp_obj; }
    virtual ColorSpace::Type GetType() const = 0;
    virtual int GetComponentNum() const = 0;
    virtual void InitColor(ColorPt& out) const;
    virtual void InitComponentRanges(std::vector<double>& low, std::vector<double>& range,
                                     int bits) const;
    virtual void Convert2Gray(const UInt8* in, UInt8* out, size_t pixels) const;
    virtual void Convert2Gray(const ColorPt& in, ColorPt& out) const;
    virtual void Convert2RGB(const UInt8* in, UInt8* out, size_t pixels) const;
    virtual void Convert2RGB(const ColorPt& in, ColorPt& out) const;
    virtual void Convert2CMYK(const UInt8* in, UInt8* out, size_t pixels) const;
    virtual void Convert2CMYK(const ColorPt& in, ColorPt& out) const;
    virtual ColorSpace GetAlternateColorSpace() const;
    virtual void SetAlternateColorSpace(const ColorSpace& cs);
    virtual ColorSpace GetBaseColorSpace() const;
    virtual void SetBaseColorSpace(const ColorSpace& cs);
    virtual int GetHighVal() const;
    virtual const UInt8* GetLookupTable() const;
    virtual void GetBaseColor(UInt8 index, ColorPt& out) const;
    virtual int GetBaseCompNum() const;
    virtual const Function* GetTintFunction() const;
    virtual bool IsAll() const;
    virtual bool IsNone() const;
    virtual const std::vector<std::string>& GetColorantNames() const;
    virtual SDF::Obj* GetAttributes() const;
    virtual SDF::Obj* GetICCProfile() const;

    // --- The shared core of the conversions ---
    // RGB of the `n` components at `in` (a component past `n` counts as 0), each in 0 to 1
    // but for DeviceRGB, whose components stand as they are.
    virtual void ToRGB(const double* in, int n, double rgb[3]) const = 0;
    // A copy that can be changed (SetBaseColorSpace), for the default space substitution.
    virtual ColorSpaceImpl* Clone() const = 0;

protected:
    ColorSpaceImpl() = default;
    ColorSpaceImpl(const ColorSpaceImpl& o) : SDF::SharedResource(), mp_obj(o.mp_obj) {}
    // Keeps the object the space was read from, if it belongs to a document: an operand of
    // cs lives only until the next operator.
    void SetObj(SDF::Obj* obj);
    // "<op>() can't be applied to this type of color space."
    [[noreturn]] static void NotApplicable(const char* op);

private:
    SDF::Obj* mp_obj = nullptr;
};

// The component at `i` of `n` at `in`, 0 past the end.
inline double Component(const double* in, int n, int i) { return i < n ? in[i] : 0.0; }

}  // namespace lum::PDF::Color
