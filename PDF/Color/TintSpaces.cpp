// Separation and DeviceN: the components are tints of colourants, turned by the tint transform
// into components of the alternate space.
#include <algorithm>
#include <cstring>

#include "Common/Exception.h"
#include "PDF/Color/ColorSpaceFamilies.h"
#include "PDF/Color/DeviceColor.h"
#include "PDF/Color/Function.h"
#include "SDF/Obj.h"

namespace lum::PDF::Color {

namespace {

std::string NameOf(SDF::Obj* obj) { return obj && obj->IsName() ? obj->GetName() : ""; }

}  // namespace

TintSpace::TintSpace(SDF::Obj* arr, bool device_n, int depth) : m_device_n(device_n) {
    LUM_CHECK(arr->Size() >= 4, "%s needs names, an alternate space and a tint transform",
              device_n ? "DeviceN" : "Separation");
    SDF::Obj* names = arr->GetAt(1);
    if (device_n) {
        LUM_CHECK(names && names->IsArray(), "DeviceN needs an array of colourant names");
        m_component_num = int(std::min<UInt64>(names->Size(), UInt64(ColorPt::kMax) + 1));
        LUM_CHECK(m_component_num <= 32, "DeviceN of more than 32 colourants");
        LUM_CHECK(m_component_num >= 1, "DeviceN without colourants");
        m_none = true;
        for (int i = 0; i < m_component_num; ++i) {
            m_names.push_back(NameOf(names->GetAt(UInt32(i))));
            m_none = m_none && m_names.back() == "None";
        }
        SDF::Obj* attributes = arr->Size() > 4 ? arr->GetAt(4) : nullptr;
        if (attributes && attributes->IsDict() && attributes->GetDoc()) mp_attributes = attributes;
    } else {
        LUM_CHECK(names && names->IsName(), "Separation needs a colourant name");
        m_names.push_back(names->GetName());
        m_all = m_names[0] == "All";
        m_none = m_names[0] == "None";
    }
    // All needs neither the alternate nor the transform: a broken one doesn't break the space.
    try {
        m_alternate = OpenNestedColorSpace(arr->GetAt(2), depth + 1);
        LUM_CHECK(m_alternate.GetType() != ColorSpace::e_pattern,
                  "A Pattern can't be the alternate of %s", device_n ? "DeviceN" : "Separation");
        mp_tint = Function::Open(arr->GetAt(3));
    } catch (const Common::Exception&) {
        if (!m_all) throw;
        m_alternate = ColorSpace::Empty();
        mp_tint = FunctionRef();
    }
}

TintSpace::~TintSpace() = default;

void TintSpace::SetAlternateColorSpace(const ColorSpace& cs) {
    LUM_CHECK(cs, "NULL ColorSpace");
    m_alternate = cs;
}

void TintSpace::ToRGB(const double* in, int n, double rgb[3]) const {
    if (m_all) {
        GrayToRGB(1 - Component(in, n, 0), rgb);
        return;
    }
    double out[Function::kMaxValues] = {};
    mp_tint->Eval(in, n, out);
    m_alternate.GetImpl()->ToRGB(out, mp_tint->OutputCount(), rgb);
}

}  // namespace lum::PDF::Color
