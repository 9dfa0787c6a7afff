#include "SDF/ImageColorInfo.h"

#include <cmath>
#include <cstring>

#include "Common/Exception.h"
#include "SDF/Obj.h"

namespace lum::SDF {

namespace {

struct FamilyName {
    const char* name;
    ImageColorFamily family;
    int components;
};

// Long names and the abbreviations of inline images alike.
const FamilyName kFamilies[] = {
    {"DeviceGray", ImageColorFamily::e_device_gray, 1},
    {"G", ImageColorFamily::e_device_gray, 1},
    {"DeviceRGB", ImageColorFamily::e_device_rgb, 3},
    {"RGB", ImageColorFamily::e_device_rgb, 3},
    {"DeviceCMYK", ImageColorFamily::e_device_cmyk, 4},
    {"CMYK", ImageColorFamily::e_device_cmyk, 4},
    {"CalGray", ImageColorFamily::e_cal_gray, 1},
    {"CalRGB", ImageColorFamily::e_cal_rgb, 3},
    {"Lab", ImageColorFamily::e_lab, 3},
    {"ICCBased", ImageColorFamily::e_icc, 1},
    {"Indexed", ImageColorFamily::e_indexed, 1},
    {"I", ImageColorFamily::e_indexed, 1},
    {"Separation", ImageColorFamily::e_separation, 1},
    {"DeviceN", ImageColorFamily::e_device_n, 1},
    {"Pattern", ImageColorFamily::e_pattern, 1},
};

// Counts of components that a colour space may claim; anything else is taken as 1.
constexpr double kMaxComponents = 32;

int CountOf(Obj* v) {
    if (!v || !v->IsNumber()) return 1;
    const double n = v->GetNumber();
    return n >= 1 && n <= kMaxComponents ? static_cast<int>(n) : 1;
}

ImageColorInfo FromSpace(Obj* cs) {
    ImageColorInfo info;
    if (!cs) return info;
    Obj* family_name = cs;
    if (cs->IsArray()) {
        if (cs->Size() == 0) return ImageColorInfo{ImageColorFamily::e_unknown, 1};
        family_name = cs->GetAt(0);
    }
    if (!family_name || !family_name->IsName()) return ImageColorInfo{ImageColorFamily::e_unknown, 1};
    const char* name = family_name->GetName();
    info = ImageColorInfo{ImageColorFamily::e_unknown, 1};
    for (const FamilyName& f : kFamilies)
        if (std::strcmp(name, f.name) == 0) info = ImageColorInfo{f.family, f.components};
    if (!cs->IsArray()) return info;
    if (info.family == ImageColorFamily::e_icc && cs->Size() > 1) {
        Obj* profile = cs->GetAt(1);
        if (profile && profile->IsStream()) info.components = CountOf(profile->FindObj(e_N));
    } else if (info.family == ImageColorFamily::e_device_n && cs->Size() > 1) {
        Obj* names = cs->GetAt(1);
        if (names && names->IsArray() && names->Size() >= 1 && names->Size() <= kMaxComponents)
            info.components = static_cast<int>(names->Size());
    }
    return info;
}

}  // namespace

ImageColorInfo ReadImageColorInfo(Obj* image) {
    if (!image) return ImageColorInfo{};
    try {
        Obj* cs = image->FindObj(e_ColorSpace);
        if (!cs) cs = image->FindObj(e_CS);
        return FromSpace(cs);
    } catch (const Common::Exception&) {
        // A colour space that can't be loaded counts as unknown; the image still decodes.
        return ImageColorInfo{ImageColorFamily::e_unknown, 1};
    }
}

Filters::JPXParams JPXParamsFromImage(Obj* image) {
    Filters::JPXParams p;
    if (!image) return p;  // inline data: nothing to read the shape from
    const ImageColorInfo info = ReadImageColorInfo(image);
    p.own_colors = info.family == ImageColorFamily::e_none;
    p.components = p.own_colors ? 1 : info.components;
    p.bits = 8;
    if (info.family == ImageColorFamily::e_indexed || info.family == ImageColorFamily::e_separation ||
        info.family == ImageColorFamily::e_device_n) {
        Obj* bpc = image->FindObj(e_BitsPerComponent);
        if (bpc && bpc->IsNumber() && std::isfinite(bpc->GetNumber())) {
            const double b = std::trunc(bpc->GetNumber());
            p.bits = b >= 1 && b <= 16 ? static_cast<int>(b) : 8;
        }
    }
    p.stripe = image->FindObj(e_Decode) != nullptr || info.family == ImageColorFamily::e_icc;
    return p;
}

}  // namespace lum::SDF
