#include "PDF/Font/Type0Font.h"

#include <algorithm>
#include <mutex>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "PDF/Font/GlyphNames.h"
#include "SDF/Obj.h"

namespace lum::PDF::Fnt {

namespace {

// Type 0 fonts being made on this thread: a descendant that is a Type 0 font (itself, or a
// chain of them) would make fonts for ever.
thread_local int gl_type0_depth = 0;

struct Type0Depth {
    Type0Depth() {
        LUM_CHECK(gl_type0_depth < Limits::kMaxType0Nesting, "Invalid DescendantFonts");
        ++gl_type0_depth;
    }
    ~Type0Depth() { --gl_type0_depth; }
};

}  // namespace

Type0Font::Type0Font(SDF::Obj* font_dict) : FontImpl(font_dict) {
    Type0Depth depth;
    // A missing CMap leaves the font without one: every byte is then a code of CID 0.
    try {
        mp_encoding = CMap::Create(mp_font_dict->FindObj(SDF::e_Encoding));
    } catch (const CMapNotFoundExc&) {
        mp_encoding.reset();
    }
    m_horizontal = mp_encoding ? mp_encoding->IsHorizontal() : true;
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

int Type0Font::MapToCID(const UInt8* bytes, UInt32 length, UInt32& code, UInt32& cid) {
    if (!mp_encoding) {
        code = 0;
        cid = 0;
        return 1;
    }
    const int n = mp_encoding->MapToCID(bytes, int(std::min<UInt32>(length, 0x7FFFFFFF)), code, cid);
    // A CMap reads a missing byte as 0; the string has only what it has.
    return std::clamp<int>(n, 1, int(std::max<UInt32>(length, 1)));
}

UInt32 Type0Font::MapToCID(UInt32 code) { return mp_encoding ? mp_encoding->MapToCID(code) : 0; }

const CMap* Type0Font::CIDToUnicode() {
    if (!m_cid_to_unicode_loaded) {
        m_cid_to_unicode_loaded = true;
        if (m_collection == "Adobe-GB1" || m_collection == "Adobe-CNS1" ||
            m_collection == "Adobe-Japan1" || m_collection == "Adobe-Korea1") {
            // A failure here is the font's, at this mapping: the resources are gone.
            SDF::Name name((m_collection + "-UCS2").c_str());
            mp_cid_to_unicode = CMap::Create(&name);
        }
    }
    return mp_cid_to_unicode.get();
}

bool Type0Font::MapToUnicode(UInt32 code, Unicode* units, int capacity, UInt32& count, bool) {
    if (capacity < 1) return false;
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    if (!m_tounicode_loaded) {
        m_tounicode_loaded = true;
        // A name is a CMap too here: ToUnicode /Identity-H maps every code to itself.
        try {
            mp_tounicode = CMap::Create(mp_font_dict->FindObj(SDF::e_ToUnicode));
        } catch (const Common::Exception&) {
            mp_tounicode.reset();
        }
    }
    bool hit = false;
    UInt32 n = 0;
    if (!mp_tounicode) {
        if (const CMap* by_cid = CIDToUnicode())
            hit = by_cid->MapToUnicode(MapToCID(code), units, capacity, n);
    } else {
        hit = mp_tounicode->MapToUnicode(code, units, capacity, n);
    }
    if (hit && n > 0) {
        count = n;
        FoldFirstUnit(units, count);
        return true;
    }
    return CompositePlaceholder(code, units, count);
}

}  // namespace lum::PDF::Fnt
