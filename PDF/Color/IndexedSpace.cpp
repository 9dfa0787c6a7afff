// Indexed: a value picks an entry of the lookup table, whose bytes are components of the base
// space.
#include <algorithm>
#include <cmath>

#include "Common/Exception.h"
#include "Filters/FilterReader.h"
#include "PDF/Color/ColorSpaceFamilies.h"
#include "SDF/Obj.h"

namespace lum::PDF::Color {

Indexed::Indexed(SDF::Obj* arr, int depth) {
    LUM_CHECK(arr->Size() >= 4, "Indexed needs a base, hival and a lookup table");
    m_base = OpenNestedColorSpace(arr->GetAt(1), depth + 1);
    LUM_CHECK(m_base.GetType() != ColorSpace::e_pattern, "A Pattern can't be the base of Indexed");
    m_base_components = m_base.GetComponentNum();

    SDF::Obj* hival = arr->GetAt(2);
    LUM_CHECK(hival && hival->IsNumber(), "Indexed needs a number for hival");
    // Below -1 every index is above it anyway; the clamp keeps the arithmetic in range.
    m_highval = int(std::trunc(std::clamp(hival->GetNumber(), -1.0, 1e6)));
    LUM_CHECK(m_highval<256, "Indexed hival above 255");

    const int lookup_sz = (m_highval + 1) * m_base_components;
    SDF::Obj* lookup = arr->GetAt(3);
    if (lookup && lookup->IsString()) {
        const UInt8* bytes = lookup->GetBuffer();
        const size_t have = std::min<size_t>(size_t(lookup->Size()), size_t(lookup_sz));
        if (bytes) m_lookup.assign(bytes, bytes + have);
    } else if (lookup && lookup->IsStream()) {
        auto filter = lookup->GetDecodedStream();
        Filters::FilterReader reader(filter.get());
        m_lookup.resize(size_t(lookup_sz));
        m_lookup.resize(reader.Read(m_lookup.data(), m_lookup.size()));
    } else {
        LUM_FAIL("Indexed needs a string or stream for its lookup table");
    }
    LUM_CHECK_AS(int(m_lookup.size()) >= lookup_sz, "(int)lookup->Size()>=lookup_sz",
                 "Indexed lookup table shorter than hival asks");
    ReadRanges();
}

void Indexed::ReadRanges() { m_base.InitComponentRanges(m_low, m_width); }

void Indexed::InitComponentRanges(std::vector<double>& low, std::vector<double>& range,
                                  int bits) const {
    low = {0.0};
    range = {std::ldexp(1.0, std::clamp(bits, 1, 16)) - 1};
}

void Indexed::SetBaseColorSpace(const ColorSpace& cs) {
    LUM_CHECK(cs && cs.GetComponentNum() == m_base_components,
              "The base of Indexed must keep its number of components");
    m_base = cs;
    ReadRanges();
}

void Indexed::BaseComponents(int index, double* out) const {
    const UInt8* entry = m_lookup.data() + size_t(index) * size_t(m_base_components);
    for (int i = 0; i < m_base_components; ++i)
        out[i] = entry[i] / 255.0 * m_width[size_t(i)] + m_low[size_t(i)];
}

void Indexed::GetBaseColor(UInt8 index, ColorPt& out) const {
    out = ColorPt();
    out.SetColorantNum(m_base_components);
    if (index <= m_highval) BaseComponents(index, out.Data());
}

void Indexed::ToRGB(const double* in, int n, double rgb[3]) const {
    const double index = std::trunc(Component(in, n, 0) + 0.5);
    rgb[0] = rgb[1] = rgb[2] = 0;
    if (!(index >= 0 && index <= m_highval)) return;
    double base[ColorPt::kMax];
    BaseComponents(int(index), base);
    m_base.GetImpl()->ToRGB(base, m_base_components, rgb);
}

}  // namespace lum::PDF::Color
