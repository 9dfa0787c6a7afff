#pragma once
// A colour space as content names it, and a colour in it. `ColorSpace` is a value handle on
// the one object that a document makes for a colour space object (shared like fonts, through
// the document's table of shared resources); the device spaces are process-wide objects.
// Copying a handle is cheap (a counted reference); every operation on an empty handle raises
// "NULL ColorSpace".
#include <memory>
#include <string>
#include <vector>

#include "Common/Types.h"

namespace lum::SDF {
class Obj;
}

namespace lum::PDF {

namespace Color {
class ColorSpaceImpl;
class Function;
}  // namespace Color

// A colour value: a list of doubles with room for 4 inline (every family but DeviceN) and
// more on the heap, up to kMax (DeviceN, the widest family, has at most 32 colourants).
class ColorPt {
public:
    static constexpr int kMax = 32;
    static constexpr int kInline = 4;

    ColorPt() = default;
    ColorPt(double c0, double c1, double c2, double c3, int count);
    ColorPt(const ColorPt& o);
    ColorPt& operator=(const ColorPt& o);
    ColorPt(ColorPt&& o) noexcept;
    ColorPt& operator=(ColorPt&& o) noexcept;
    ~ColorPt() = default;

    int GetColorantNum() const noexcept { return m_count; }
    // Cut to 0..kMax; new components are 0.
    void SetColorantNum(int count);
    // 0 outside the components.
    double Get(int i) const noexcept { return i >= 0 && i < m_count ? Data()[i] : 0.0; }
    // Outside 0..kMax-1 nothing happens; a component past the count extends it.
    void Set(int i, double value);
    const double* Data() const noexcept { return mp_heap ? mp_heap.get() : m_inline; }
    double* Data() noexcept { return mp_heap ? mp_heap.get() : m_inline; }

    bool operator==(const ColorPt& o) const noexcept;

private:
    int m_count = 1;
    double m_inline[kInline] = {};
    std::unique_ptr<double[]> mp_heap;  // kMax doubles once more than kInline are needed
};

// The pattern of a pattern colour, with the reader level whose resources named it.
struct PatternColor {
    SDF::Obj* mp_pattern = nullptr;
    int m_level = -1;
    bool operator==(const PatternColor&) const = default;
};

class ColorSpace {
public:
    enum Type {
        e_device_gray = 0,
        e_device_rgb = 1,
        e_device_cmyk = 2,
        e_cal_gray = 3,
        e_cal_rgb = 4,
        e_lab = 5,
        e_icc = 6,
        e_indexed = 7,
        e_pattern = 8,
        e_separation = 9,
        e_device_n = 10,
        e_null = 11,
    };

    // DeviceGray, the space of a fresh graphics state.
    ColorSpace() noexcept;
    // The space of `obj` (a name, an array whose first entry names the family, or an ICC
    // profile stream; a reference is followed), from the document's table of shared resources
    // or made now. What the classification calls e_null (and a null object) gives an empty
    // handle. A space that is broken raises.
    explicit ColorSpace(SDF::Obj* obj);
    // Adopts an implementation (takes one reference); null gives an empty handle.
    explicit ColorSpace(Color::ColorSpaceImpl* impl) noexcept;

    ColorSpace(const ColorSpace& other) noexcept;
    ColorSpace(ColorSpace&& other) noexcept;
    ColorSpace& operator=(const ColorSpace& other) noexcept;
    ColorSpace& operator=(ColorSpace&& other) noexcept;
    ~ColorSpace();

    // An empty handle.
    static ColorSpace Empty() noexcept { return ColorSpace(static_cast<Color::ColorSpaceImpl*>(nullptr)); }
    static ColorSpace CreateDeviceGray() noexcept;
    static ColorSpace CreateDeviceRGB() noexcept;
    static ColorSpace CreateDeviceCMYK() noexcept;
    // A Pattern space without an underlying space.
    static ColorSpace CreatePattern() noexcept;
    // A space of a family that takes no parameters (the device families, Pattern); DeviceGray
    // for any other family.
    static ColorSpace FromFamily(Type family) noexcept;

    // The family of a name as content and resources spell it ("G", "DeviceRGB", "ICCBased",
    // ...); e_null for any other name.
    static Type FamilyOfName(const char* name);
    // The family of a colour space object, by its name or first array entry; a stream with N
    // is ICC. e_null for anything else, and for an object that can't be read.
    static Type GetType(SDF::Obj* obj);

    bool IsValid() const noexcept { return mp_impl != nullptr; }
    explicit operator bool() const noexcept { return mp_impl != nullptr; }
    Color::ColorSpaceImpl* GetImpl() const noexcept { return mp_impl; }
    // The same object (not merely the same family).
    bool operator==(const ColorSpace& o) const noexcept { return mp_impl == o.mp_impl; }

    Type GetType() const;
    bool IsDevice() const;
    int GetComponentNum() const;
    // The object the space was read from; null for the device spaces and for a space read from
    // a value that belongs to no document (an array operand of cs).
    SDF::Obj* GetSDFObj() const;

    // The initial colour: 0 in every component, except 0 0 0 1 for DeviceCMYK.
    void InitColor(ColorPt& out) const;
    // The lowest value and the width of each component's range (Decode defaults of an image
    // of `bits` bits: an Indexed index runs to 2^bits - 1).
    void InitComponentRanges(std::vector<double>& low, std::vector<double>& range,
                             int bits = 8) const;

    // Conversions of a colour point: every result component in 0 to 1 (DeviceRGB's as they
    // stand). Components past the input's count count as 0.
    void Convert2Gray(const ColorPt& in, ColorPt& out) const;
    void Convert2RGB(const ColorPt& in, ColorPt& out) const;
    void Convert2CMYK(const ColorPt& in, ColorPt& out) const;
    // Conversions of `pixels` samples of 8 bits (GetComponentNum bytes each, mapped through
    // the component ranges) into 1, 3 or 4 bytes each.
    void Convert2Gray(const UInt8* in, UInt8* out, size_t pixels) const;
    void Convert2RGB(const UInt8* in, UInt8* out, size_t pixels) const;
    void Convert2CMYK(const UInt8* in, UInt8* out, size_t pixels) const;

    // ICC, Separation and DeviceN.
    ColorSpace GetAlternateColorSpace() const;
    // Indexed, and a Pattern with an underlying space (empty handle without one).
    ColorSpace GetBaseColorSpace() const;
    // The same space with `base` in place of its base: a new object, since spaces are shared
    // and read-only. Indexed and Pattern.
    ColorSpace WithBaseColorSpace(const ColorSpace& base) const;
    // Indexed.
    int GetHighVal() const;
    const UInt8* GetLookupTable() const;
    void GetBaseColor(UInt8 index, ColorPt& out) const;
    int GetBaseCompNum() const;
    // Separation and DeviceN: the tint transform (null for a Separation of All).
    const Color::Function* GetTintFunction() const;
    bool IsAll() const;
    bool IsNone() const;
    const std::vector<std::string>& GetColorantNames() const;
    SDF::Obj* GetAttributes() const;
    // ICC: the profile stream.
    SDF::Obj* GetICCProfile() const;

private:
    Color::ColorSpaceImpl* mp_impl = nullptr;
};

}  // namespace lum::PDF
