#include "PDF/Font/CIDFont.h"

#include <algorithm>
#include <cstring>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Filters/FilterReader.h"
#include "SDF/Obj.h"

namespace lum::PDF::Fnt {

namespace {

// Metrics are integers: a number is truncated as it is read.
Int32 IntOf(SDF::Obj* number) {
    const double v = number->GetNumber();
    if (!(v == v)) return 0;
    return Int32(std::clamp(v, -2147483648.0, 2147483647.0));
}

UInt32 CidOf(SDF::Obj* number) {
    const double v = number->GetNumber();
    if (!(v >= 0)) return 0;
    return v >= 4294967295.0 ? 0xFFFFFFFFu : UInt32(v);
}

}  // namespace

CIDFont::CIDFont(SDF::Obj* font_dict) : FontImpl(font_dict) {
    ReadFontDescriptor();
    if (!mp_font_descriptor)
        throw Common::Exception("mp_font_descriptor", __LINE__, __FILE__,
                                "lum::PDF::Fnt::CIDFont::CIDFont",
                                "The font is missing a FontDescriptor");
    if (SDF::Obj* dw = mp_font_dict->FindObj(SDF::e_DW); dw && dw->IsNumber())
        m_default_width = IntOf(dw);
    ReadWidths();
    ReadVerticalMetrics();
}

void CIDFont::ReadWidths() {
    SDF::Obj* w = mp_font_dict->FindObj(SDF::e_W);
    if (!w || !w->IsArray()) return;
    const UInt64 n = w->Size();
    for (UInt64 i = 0; i + 1 < n;) {
        SDF::Obj* second = w->GetAt(UInt32(i + 1));
        if (!second->IsNumber()) {
            UInt32 cid = CidOf(w->GetAt(UInt32(i)));
            const UInt64 count = second->Size();
            for (UInt32 k = 0; k < count && m_widths.size() < Limits::kMaxCIDMetricEntries; ++k)
                m_widths.emplace(cid++, IntOf(second->GetAt(k)));
            i += 2;
        } else {
            const UInt32 first = CidOf(w->GetAt(UInt32(i))), last = CidOf(second);
            const Int32 width = IntOf(w->GetAt(UInt32(i + 2)));
            for (UInt64 cid = first; cid <= last && m_widths.size() < Limits::kMaxCIDMetricEntries; ++cid)
                m_widths.emplace(UInt32(cid), width);
            i += 3;
        }
    }
}

void CIDFont::ReadVerticalMetrics() {
    SDF::Obj* dw2 = mp_font_dict->FindObj(SDF::e_DW2);
    if (dw2 && dw2->IsArray() && dw2->Size() == 2) {
        m_default_vy = IntOf(dw2->GetAt(0));
        m_default_w1y = IntOf(dw2->GetAt(1));
    }
    SDF::Obj* w2 = mp_font_dict->FindObj(SDF::e_W2);
    if (!w2 || !w2->IsArray()) return;
    const UInt64 n = w2->Size();
    for (UInt64 i = 0; i + 1 < n;) {
        SDF::Obj* second = w2->GetAt(UInt32(i + 1));
        if (!second->IsNumber()) {
            UInt32 cid = CidOf(w2->GetAt(UInt32(i)));
            const UInt64 count = second->Size();
            for (UInt32 k = 0; k + 3 <= count && m_vertical.size() < Limits::kMaxCIDMetricEntries; k += 3)
                m_vertical.emplace(cid++, VerticalMetrics{IntOf(second->GetAt(k)), IntOf(second->GetAt(k + 1)),
                                                          IntOf(second->GetAt(k + 2))});
            i += 2;
        } else {
            const UInt32 first = CidOf(w2->GetAt(UInt32(i))), last = CidOf(second);
            const VerticalMetrics m{IntOf(w2->GetAt(UInt32(i + 2))), IntOf(w2->GetAt(UInt32(i + 3))),
                                    IntOf(w2->GetAt(UInt32(i + 4)))};
            for (UInt64 cid = first; cid <= last && m_vertical.size() < Limits::kMaxCIDMetricEntries; ++cid)
                m_vertical.emplace(UInt32(cid), m);
            i += 5;
        }
    }
}

double CIDFont::GetWidth(UInt32 cid) {
    auto it = m_widths.find(cid);
    return it != m_widths.end() ? it->second : m_default_width;
}

double CIDFont::GetMaxWidth() {
    Int32 best = 0;
    for (const auto& [cid, w] : m_widths) best = std::max(best, w);
    return best;
}

double CIDFont::GetVerticalAdvance(UInt32 cid, double& vx, double& vy) {
    auto it = m_vertical.find(cid);
    if (it != m_vertical.end()) {
        vx = it->second.vx;
        vy = it->second.vy;
        return it->second.w1;
    }
    vx = double(Int32(GetWidth(cid)) / 2);
    vy = m_default_vy;
    return m_default_w1y;
}

bool CIDFont::IsCFF() {
    if (!mp_font_descriptor)
        throw Common::Exception("mp_font_descriptor", __LINE__, __FILE__, LUM_FUNCTION,
                                "CIDFont is missing required FontDescriptor");
    SDF::Obj* ff3 = mp_font_descriptor->FindObj(SDF::e_FontFile3);
    SDF::Obj* sub = ff3 ? ff3->FindObj(SDF::e_Subtype) : nullptr;
    return sub && sub->IsName() &&
           (std::strcmp(sub->GetName(), "CIDFontType0C") == 0 || std::strcmp(sub->GetName(), "OpenType") == 0);
}

CIDType2Font::CIDType2Font(SDF::Obj* font_dict) : CIDFont(font_dict) {
    SDF::Obj* map = mp_font_dict->FindObj(SDF::e_CIDToGIDMap);
    if (!map || !map->IsStream()) return;
    std::unique_ptr<Filters::Filter> stream = map->GetDecodedStream();
    Filters::FilterReader reader(stream.get());
    for (;;) {
        const int hi = reader.Get();
        const int lo = hi < 0 ? -1 : reader.Get();
        if (lo < 0) break;
        if (m_cid_to_gid.size() >= 0x10000) break;  // CIDs are 16-bit in a CIDToGIDMap
        m_cid_to_gid.push_back(UInt16((hi << 8) | lo));
    }
}

}  // namespace lum::PDF::Fnt
