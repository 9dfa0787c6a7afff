#include "PDF/Text/PageNumber.h"

#include <cmath>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "PDF/Page.h"
#include "PDF/PageIterator.h"
#include "SDF/Obj.h"

namespace lum::PDF {

const PageNumberCache::Kids& PageNumberCache::Read(SDF::Obj* kids) {
    auto [it, added] = m_kids.try_emplace(kids);
    if (!added) return it->second;
    Kids& k = it->second;
    const UInt64 n = kids->Size();
    k.before.reserve(size_t(n) + 1);
    double total = 0;
    k.before.push_back(total);
    for (UInt64 i = 0; i < n; ++i) {
        double held = 0;
        try {
            SDF::Obj* kid = kids->GetAt(UInt32(i));
            if (kid) {
                k.index.try_emplace(kid, UInt32(i));
                k.index.try_emplace(kid->GetDirect(), UInt32(i));
            }
            if (kid && kid->IsDict()) {
                if (PageIterator::IsPageNode(kid)) {
                    held = 1;
                } else if (SDF::Obj* count = kid->FindObj(SDF::e_Count);
                           count && count->IsNumber() && count->GetNumber() > 0) {
                    held = std::trunc(count->GetNumber());
                }
            }
        } catch (const Common::Exception&) {
        }
        total += held;
        k.before.push_back(total);
    }
    return k;
}

Int32 PageNumberCache::Find(const Page& page) {
    if (!page.IsValid()) return 0;
    try {
        SDF::Obj* node = page.GetSDFObj();
        if (node->GetDoc() != mp_doc) {
            m_kids.clear();
            mp_doc = node->GetDoc();
        }
        double number = 1;
        for (int depth = 0; depth < Limits::kMaxPageTreeDepth; ++depth) {
            SDF::Obj* parent = node->FindObj(SDF::e_Parent);
            if (!parent || !parent->IsDict()) break;
            SDF::Obj* kids = parent->FindObj(SDF::e_Kids);
            if (!kids || !kids->IsArray()) return 0;
            const Kids& k = Read(kids);
            auto at = k.index.find(node);
            if (at == k.index.end()) at = k.index.find(node->GetDirect());
            if (at == k.index.end()) return 0;
            number += k.before[at->second];
            node = parent;
        }
        return number <= double(Limits::kMaxPageCount) ? Int32(number) : 0;
    } catch (const Common::Exception&) {
        return 0;
    }
}

}  // namespace lum::PDF
