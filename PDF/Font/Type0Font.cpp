#include "PDF/Font/Type0Font.h"

#include "Common/Exception.h"
#include "SDF/Obj.h"

namespace lum::PDF::Fnt {

Type0Font::Type0Font(SDF::Obj* font_dict) : FontImpl(font_dict) {
    // The encoding CMap is read with the CMaps; without one every byte is a code of CID 0.
    SDF::Obj* descendants = mp_font_dict->Get(SDF::e_DescendantFonts)->second;
    m_descendant = Font(descendants->GetAt(0));
    m_descendant.GetImpl()->SetHMode(m_horizontal);
    try {
        SDF::Obj* info = m_descendant.GetSDFObj()->FindObj(SDF::e_CIDSystemInfo);
        SDF::Obj* registry = info ? info->FindObj(SDF::e_Registry) : nullptr;
        SDF::Obj* ordering = info ? info->FindObj(SDF::e_Ordering) : nullptr;
        if (registry && ordering && registry->IsString() && ordering->IsString()) {
            m_collection.assign(reinterpret_cast<const char*>(registry->GetBuffer()),
                                size_t(registry->Size()));
            m_collection += '-';
            m_collection.append(reinterpret_cast<const char*>(ordering->GetBuffer()),
                                size_t(ordering->Size()));
        }
    } catch (const Common::Exception&) {
        m_collection.clear();
    }
}

Type0Font::~Type0Font() = default;

int Type0Font::MapToCID(const UInt8*, UInt32, UInt32& code, UInt32& cid) {
    code = 0;
    cid = 0;
    return 1;
}

UInt32 Type0Font::MapToCID(UInt32) { return 0; }

bool Type0Font::MapToUnicode(UInt32 code, Unicode* units, int capacity, UInt32& count, bool) {
    if (capacity < 1) return false;
    count = 1;
    units[0] = code < 6399 ? Unicode(0xE000 + code) : Unicode(0xFFFD);
    return false;
}

}  // namespace lum::PDF::Fnt
