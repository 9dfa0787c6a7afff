// ICCBased: the profile is never applied (no colour management here); the colour goes through
// the alternate space, or the device space of as many components.
#include <algorithm>

#include "Common/Exception.h"
#include "PDF/Color/ColorSpaceFamilies.h"
#include "PDF/Color/Function.h"
#include "SDF/Obj.h"

namespace lum::PDF::Color {

ICC::ICC(SDF::Obj* stream, int depth) {
    LUM_CHECK(stream && stream->IsStream(), "ICCBased without a profile stream");
    SDF::Obj* n = stream->FindObj(SDF::e_N);
    LUM_CHECK(n && n->IsNumber(), "ICC stream without N");
    const double count = n->GetNumber();
    LUM_CHECK(count >= 1 && count <= ColorPt::kMax, "Bad number of ICC components");
    m_component_num = int(count);
    mp_profile = stream->GetDoc() ? stream->GetDirect() : nullptr;

    // A broken alternate (or one that leads back here) gives way to the rule by N.
    ColorSpace alternate = ColorSpace::Empty();
    if (SDF::Obj* obj = stream->FindObj(SDF::e_Alternate)) {
        try {
            alternate = OpenNestedColorSpace(obj, depth + 1);
        } catch (const Common::Exception&) {
        }
    }
    if (alternate && alternate.GetType() != ColorSpace::e_pattern) {
        m_alternate = alternate;
    } else {
        switch (m_component_num) {
            case 1: m_alternate = ColorSpace::CreateDeviceGray(); break;
            case 3: m_alternate = ColorSpace::CreateDeviceRGB(); break;
            case 4: m_alternate = ColorSpace::CreateDeviceCMYK(); break;
            default: LUM_FAIL("An ICC space of %d components needs an Alternate", m_component_num);
        }
    }
    m_range = ReadNumbers(stream->FindObj(SDF::e_Range), size_t(2 * m_component_num));
    if (m_range.size() != size_t(2 * m_component_num)) {
        m_range.clear();
        for (int i = 0; i < m_component_num; ++i) m_range.insert(m_range.end(), {0.0, 1.0});
    }
}

void ICC::InitComponentRanges(std::vector<double>& low, std::vector<double>& range, int) const {
    low.resize(size_t(m_component_num));
    range.resize(size_t(m_component_num));
    for (size_t i = 0; i < low.size(); ++i) {
        low[i] = m_range[2 * i];
        range[i] = m_range[2 * i + 1] - m_range[2 * i];
    }
}

void ICC::SetAlternateColorSpace(const ColorSpace& cs) {
    LUM_CHECK(cs, "NULL ColorSpace");
    m_alternate = cs;
}

void ICC::ToRGB(const double* in, int n, double rgb[3]) const {
    m_alternate.GetImpl()->ToRGB(in, n, rgb);
}

}  // namespace lum::PDF::Color
