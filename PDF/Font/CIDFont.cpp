#include "PDF/Font/CIDFont.h"

#include <algorithm>
#include <cstring>
#include <vector>

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

// W and W2 are read in one pass each, a group at a time: a list (CID, then an array of
// metrics) or a range (first CID, last CID, metrics). An element that a group needs and the
// array doesn't have fails the read, and with it the font.
void CIDFont::ReadWidths() {
    SDF::Obj* w = mp_font_dict->FindObj(SDF::e_W);
    if (w && w->IsArray()) {
        const UInt64 n = w->Size();
        std::vector<Int32> list;
        for (UInt64 i = 0; i < n && m_widths.Size() < Limits::kMaxCIDMetricEntries;) {
            const UInt32 cid = CidOf(w->GetAt(UInt32(i)));
            SDF::Obj* second = w->GetAt(UInt32(i + 1));
            if (!second->IsNumber()) {
                const UInt64 count =
                    std::min<UInt64>(second->Size(), Limits::kMaxCIDMetricEntries - m_widths.Size());
                list.clear();
                for (UInt32 k = 0; k < count; ++k) list.push_back(IntOf(second->GetAt(k)));
                m_widths.AddList(cid, list.data(), list.size());
                i += 2;
            } else {
                m_widths.AddRange(cid, CidOf(second), IntOf(w->GetAt(UInt32(i + 2))));
                i += 3;
            }
        }
    }
    m_widths.Finish();
    m_widths.ForEachAnswer([this](Int32 width) { m_max_width = std::max(m_max_width, width); });
    m_has_charset = mp_font_dict->FindObj("_CharSet") != nullptr;
}

void CIDFont::ReadVerticalMetrics() {
    SDF::Obj* dw2 = mp_font_dict->FindObj(SDF::e_DW2);
    if (dw2 && dw2->IsArray() && dw2->Size() == 2) {
        m_default_vy = IntOf(dw2->GetAt(0));
        m_default_w1y = IntOf(dw2->GetAt(1));
    }
    SDF::Obj* w2 = mp_font_dict->FindObj(SDF::e_W2);
    if (w2 && w2->IsArray()) {
        const UInt64 n = w2->Size();
        std::vector<VerticalMetrics> list;
        for (UInt64 i = 0; i < n && m_vertical.Size() < Limits::kMaxCIDMetricEntries;) {
            const UInt32 cid = CidOf(w2->GetAt(UInt32(i)));
            SDF::Obj* second = w2->GetAt(UInt32(i + 1));
            if (!second->IsNumber()) {
                // Whole triples only: a last one cut short is dropped.
                const UInt64 count = std::min<UInt64>(second->Size() / 3,
                                                      Limits::kMaxCIDMetricEntries - m_vertical.Size());
                list.clear();
                for (UInt32 k = 0; k < count; ++k)
                    list.push_back({IntOf(second->GetAt(3 * k)), IntOf(second->GetAt(3 * k + 1)),
                                    IntOf(second->GetAt(3 * k + 2))});
                m_vertical.AddList(cid, list.data(), list.size());
                i += 2;
            } else {
                const VerticalMetrics m{IntOf(w2->GetAt(UInt32(i + 2))), IntOf(w2->GetAt(UInt32(i + 3))),
                                        IntOf(w2->GetAt(UInt32(i + 4)))};
                m_vertical.AddRange(cid, CidOf(second), m);
                i += 5;
            }
        }
    }
    m_vertical.Finish();
}

double CIDFont::GetWidth(UInt32 cid) {
    if (const Int32* w = m_widths.Find(cid)) return *w;
    if (m_has_charset) return AddSubstituteWidth(cid);
    return m_default_width;
}

double CIDFont::AddSubstituteWidth(UInt32 cid) {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    if (auto it = m_added_widths.find(cid); it != m_added_widths.end()) return it->second;
    if (m_added_widths.size() >= Limits::kMaxCIDMetricEntries) return m_default_width;
    const double measured = GetSubstGlyphWidth(cid);
    const Int32 width = Int32(std::clamp(measured, -2147483648.0, 2147483647.0));
    m_added_widths.emplace(cid, width);
    SDF::Obj* w = mp_font_dict->FindObj(SDF::e_W);
    if (!w || !w->IsArray()) w = mp_font_dict->PutArray(SDF::e_W);
    auto* one = new SDF::Array();
    one->PushBack(new SDF::Number(width));
    w->PushBack(new SDF::Number(cid));
    w->PushBack(one);
    return width;
}

double CIDFont::GetMaxWidth() { return m_max_width; }

double CIDFont::GetVerticalAdvance(UInt32 cid, double& vx, double& vy) {
    if (const VerticalMetrics* m = m_vertical.Find(cid)) {
        vx = m->vx;
        vy = m->vy;
        return m->w1;
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
