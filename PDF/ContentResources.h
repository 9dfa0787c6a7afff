#pragma once
// The resource dictionaries in force while the reader is inside a page and the forms nested
// in it, outermost first. A name that the innermost level doesn't hold is searched for in
// every enclosing level, so that a form that forgot its Resources, or holds only some of
// them, still finds what it means.
#include <string>
#include <vector>

#include "PDF/ColorSpace.h"
#include "PDF/Font/Font.h"
#include "PDF/Rect.h"
#include "SDF/NameTable.h"

namespace lum::SDF {
class Obj;
class Name;
class SDFDoc;
}  // namespace lum::SDF

namespace lum::PDF {

class ContentResources {
public:
    ContentResources() = default;

    // The document gives the default font; may be null (then a missing font is missing).
    void SetDoc(SDF::SDFDoc* doc) { mp_doc = doc; }
    void Push(SDF::Obj* resources) {
        m_levels.push_back(resources);
        // The fonts a level found stay right while the levels below it stay: a new level
        // starts with none.
        if (m_fonts.size() < m_levels.size()) m_fonts.resize(m_levels.size());
        m_fonts[m_levels.size() - 1].clear();
    }
    void Pop() {
        if (!m_levels.empty()) m_levels.pop_back();
    }
    void Clear() { m_levels.clear(); }
    size_t Size() const { return m_levels.size(); }
    // Drops levels down to `size` entries.
    void Resize(size_t size) {
        if (size < m_levels.size()) m_levels.resize(size);
    }

    // `name` in the sub-dictionary `type` of the innermost level that has it, or null; `level`
    // (when given) gets the index of that level, or -1.
    SDF::Obj* GetResource(SDF::StaticName type, const SDF::Name& name, int* level = nullptr) const;

    // A name that no level holds gives the document's default font (Helvetica).
    SDF::Obj* GetFont(const SDF::Name& name) const;
    // The font of GetFont, opened; each name is looked up and opened once per level, since a
    // page selects the same few fonts again and again.
    Font GetFontHandle(const SDF::Name& name);
    // These raise "Missing resource" for a name that no level holds.
    SDF::Obj* GetXObject(const SDF::Name& name) const;
    SDF::Obj* GetShading(const SDF::Name& name) const;
    SDF::Obj* GetPattern(const SDF::Name& name, int* level) const;
    SDF::Obj* GetProperties(const SDF::Name& name) const;
    // Raises only when `required`; else null.
    SDF::Obj* GetColorSpace(const SDF::Name& name, bool required) const;
    // Null for a name that no level holds.
    SDF::Obj* GetExtGState(const SDF::Name& name) const;

private:
    struct KnownFont {
        std::string name;
        Font font;
    };

    std::vector<SDF::Obj*> m_levels;
    // m_fonts[i]: the fonts found while level i was the innermost; entries past the levels
    // held are stale and cleared when their level is pushed again.
    std::vector<std::vector<KnownFont>> m_fonts;
    SDF::SDFDoc* mp_doc = nullptr;
};

// A read-only view of a form XObject's dictionary.
class FormXObj {
public:
    FormXObj() = default;
    explicit FormXObj(SDF::Obj* form) : mp_form(form) {}

    SDF::Obj* GetSDFObj() const { return mp_form; }
    bool IsValid() const { return mp_form != nullptr; }
    // BBox as stored (possibly unordered); false when there is no array of four numbers.
    bool GetBBox(Rect& box) const;
    // The Group dictionary, or null.
    SDF::Obj* GetGroup() const;
    // A group whose S is Transparency.
    bool IsTransparencyGroup() const;
    // The group's CS, or DeviceCMYK when the group has none.
    ColorSpace GetGroupColorSpace() const;
    // The group's I and K flags.
    bool IsIsolated() const;
    bool IsKnockout() const;

private:
    SDF::Obj* mp_form = nullptr;
};

}  // namespace lum::PDF
