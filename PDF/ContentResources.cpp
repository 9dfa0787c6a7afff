#include "PDF/ContentResources.h"

#include <cstring>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "SDF/DocImpl.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

namespace lum::PDF {

namespace {

// Every typed lookup fails under the name of the core lookup.
[[noreturn]] void MissingResource(int line) {
    throw Common::Exception("res", line, __FILE__, "lum::PDF::ContentResources::GetResource",
                            "Missing resource");
}

// The value of `key` in `dict` when `dict` is a dictionary or a stream; null otherwise, and null when
// reading the dictionary fails: a damaged level counts as one without the entry.
SDF::Obj* FindIn(SDF::Obj* dict, const SDF::Name& key) {
    try {
        if (!dict || !(dict->IsDict() || dict->IsStream())) return nullptr;
        return dict->FindObj(key);
    } catch (const Common::Exception&) {
        return nullptr;
    }
}

}  // namespace

SDF::Obj* ContentResources::GetResource(SDF::StaticName type, const SDF::Name& name,
                                        int* level) const {
    if (level) *level = -1;
    const SDF::Name type_key(type);
    for (size_t i = m_levels.size(); i-- > 0;) {
        SDF::Obj* sub = FindIn(m_levels[i], type_key);
        if (!sub) continue;
        if (SDF::Obj* hit = FindIn(sub, name)) {
            if (level) *level = int(i);
            return hit;
        }
    }
    return nullptr;
}

SDF::Obj* ContentResources::GetFont(const SDF::Name& name) const {
    if (SDF::Obj* font = GetResource(SDF::e_Font, name)) return font;
    SDF::DocImpl* doc = mp_doc ? mp_doc->GetImpl() : nullptr;
    SDF::Obj* fallback = doc ? doc->GetDefaultFont() : nullptr;
    if (!fallback) MissingResource(__LINE__);
    return fallback;
}

Font ContentResources::GetFontHandle(const SDF::Name& name) {
    const char* text = name.GetName();
    if (m_levels.empty()) return Font(GetFont(name));
    std::vector<KnownFont>& known = m_fonts[m_levels.size() - 1];
    for (const KnownFont& k : known)
        if (k.name == text) return k.font;
    Font font(GetFont(name));
    if (known.size() < Limits::kMaxKnownFontsPerLevel) known.push_back({text, font});
    return font;
}

SDF::Obj* ContentResources::GetXObject(const SDF::Name& name) const {
    SDF::Obj* res = GetResource(SDF::e_XObject, name);
    if (!res) MissingResource(__LINE__);
    return res;
}

SDF::Obj* ContentResources::GetShading(const SDF::Name& name) const {
    SDF::Obj* res = GetResource(SDF::e_Shading, name);
    if (!res) MissingResource(__LINE__);
    return res;
}

SDF::Obj* ContentResources::GetPattern(const SDF::Name& name, int* level) const {
    SDF::Obj* res = GetResource(SDF::e_Pattern, name, level);
    if (!res) MissingResource(__LINE__);
    return res;
}

SDF::Obj* ContentResources::GetProperties(const SDF::Name& name) const {
    SDF::Obj* res = GetResource(SDF::e_Properties, name);
    if (!res) MissingResource(__LINE__);
    return res;
}

SDF::Obj* ContentResources::GetColorSpace(const SDF::Name& name, bool required) const {
    SDF::Obj* res = GetResource(SDF::e_ColorSpace, name);
    if (!res && required) MissingResource(__LINE__);
    return res;
}

SDF::Obj* ContentResources::GetExtGState(const SDF::Name& name) const {
    return GetResource(SDF::e_ExtGState, name);
}

// --- FormXObj ---

bool FormXObj::GetBBox(Rect& box) const {
    try {
        SDF::Obj* arr = mp_form ? mp_form->FindObj(SDF::e_BBox) : nullptr;
        if (!arr || !arr->IsArray() || arr->Size() < 4) return false;
        for (UInt32 i = 0; i < 4; ++i)
            if (!arr->GetAt(i)->IsNumber()) return false;
        box = Rect(arr);
        return true;
    } catch (const Common::Exception&) {
        return false;
    }
}

SDF::Obj* FormXObj::GetGroup() const {
    SDF::Obj* group = FindIn(mp_form, SDF::e_Group);
    return group && group->IsDict() ? group : nullptr;
}

bool FormXObj::IsTransparencyGroup() const {
    SDF::Obj* s = FindIn(GetGroup(), SDF::e_S);
    return s && s->IsName() && std::strcmp(s->GetName(), "Transparency") == 0;
}

ColorSpace FormXObj::GetGroupColorSpace() const {
    if (SDF::Obj* cs = FindIn(GetGroup(), SDF::e_CS)) return ColorSpace(cs);
    return ColorSpace::CreateDeviceCMYK();
}

bool FormXObj::IsIsolated() const {
    SDF::Obj* v = FindIn(GetGroup(), SDF::e_I);
    return v && v->IsBool() && v->GetBool();
}

bool FormXObj::IsKnockout() const {
    SDF::Obj* v = FindIn(GetGroup(), SDF::e_K);
    return v && v->IsBool() && v->GetBool();
}

}  // namespace lum::PDF
