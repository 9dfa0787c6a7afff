#include "PDF/Font/Font.h"

#include <typeinfo>

#include "Common/Exception.h"
#include "PDF/Font/FontImpl.h"
#include "SDF/Obj.h"
#include "SDF/SharedResource.h"

namespace lum::PDF {

// Every operation tests the handle and names itself in the failure.
#define LUM_FONT_IMPL() \
    LUM_CHECK_OBJECT(mp_impl, "Bad font"); \
    FontImpl& impl = *mp_impl

Font::Font(SDF::Obj* font_dict) {
    if (!font_dict) return;
    SDF::SharedResource* res = SDF::OpenSharedResource(
        font_dict, [](SDF::Obj* dict) -> SDF::SharedResource* { return FontImpl::Create(dict); });
    auto* impl = dynamic_cast<FontImpl*>(res);
    if (!impl) {
        res->Release();  // the dictionary was opened as something else
        LUM_CHECK_OBJECT(impl, "Bad font");
    }
    mp_impl = impl;
}

Font::Font(FontImpl* impl) noexcept : mp_impl(impl) {
    if (mp_impl) mp_impl->AddRef();
}

Font Font::Create(SDF::SDFDoc& doc, StandardType1Font index) {
    return Font(FontImpl::CreateStandardFontDict(doc, index));
}

Font::Font(const Font& other) noexcept : mp_impl(other.mp_impl) {
    if (mp_impl) mp_impl->AddRef();
}

Font::Font(Font&& other) noexcept : mp_impl(other.mp_impl) { other.mp_impl = nullptr; }

Font& Font::operator=(const Font& other) noexcept {
    if (other.mp_impl) other.mp_impl->AddRef();
    if (mp_impl) mp_impl->Release();
    mp_impl = other.mp_impl;
    return *this;
}

Font& Font::operator=(Font&& other) noexcept {
    if (this != &other) {
        if (mp_impl) mp_impl->Release();
        mp_impl = other.mp_impl;
        other.mp_impl = nullptr;
    }
    return *this;
}

Font::~Font() {
    if (mp_impl) mp_impl->Release();
}

SDF::Obj* Font::GetSDFObj() const { LUM_FONT_IMPL(); return impl.GetSDFObj(); }
Font::Type Font::GetType() const { LUM_FONT_IMPL(); return impl.GetType(); }
bool Font::IsSimple() const { LUM_FONT_IMPL(); return impl.IsSimple(); }
SDF::Obj* Font::GetDescriptor() const { LUM_FONT_IMPL(); return impl.GetDescriptor(); }
const char* Font::GetName() const { LUM_FONT_IMPL(); return impl.GetName(); }
std::string Font::GetFamilyName() const { LUM_FONT_IMPL(); return impl.GetFamilyName(); }
int Font::GetUnitsPerEm() const { LUM_FONT_IMPL(); return impl.GetUnitsPerEm(); }
bool Font::IsFixedWidth() const { LUM_FONT_IMPL(); return impl.IsFixedWidth(); }
bool Font::IsSerif() const { LUM_FONT_IMPL(); return impl.IsSerif(); }
bool Font::IsSymbolic() const { LUM_FONT_IMPL(); return impl.IsSymbolic(); }
bool Font::IsItalic() const { LUM_FONT_IMPL(); return impl.IsItalic(); }
bool Font::IsAllCap() const { LUM_FONT_IMPL(); return impl.IsAllCap(); }
bool Font::IsForceBold() const { LUM_FONT_IMPL(); return impl.IsForceBold(); }
bool Font::IsHorizontalMode() const { LUM_FONT_IMPL(); return impl.IsHorizontalMode(); }
bool Font::HasSubsetTag() const { LUM_FONT_IMPL(); return impl.HasSubsetTag(); }
double Font::GetWidth(UInt32 code) const { LUM_FONT_IMPL(); return impl.GetWidth(code); }
double Font::GetMaxWidth() const { LUM_FONT_IMPL(); return impl.GetMaxWidth(); }
double Font::GetMissingWidth() const { LUM_FONT_IMPL(); return impl.GetMissingWidth(); }

double Font::GetVerticalAdvance(UInt32 cid, double& vx, double& vy) const {
    LUM_FONT_IMPL();
    return impl.GetVerticalAdvance(cid, vx, vy);
}

bool Font::MapToUnicode(UInt32 code, Unicode* units, int capacity, UInt32& count,
                        bool use_tounicode) const {
    LUM_FONT_IMPL();
    return impl.MapToUnicode(code, units, capacity, count, use_tounicode);
}

bool Font::MapUnicodeToCode(Unicode unit, UInt32& code) const {
    LUM_FONT_IMPL();
    return impl.MapUnicodeToCode(unit, code);
}

const char* const* Font::GetEncoding() const { LUM_FONT_IMPL(); return impl.GetEncoding(); }
bool Font::IsEmbedded() const { LUM_FONT_IMPL(); return impl.IsEmbedded(); }
std::string Font::GetDescriptorFontName() const { LUM_FONT_IMPL(); return impl.GetDescriptorFontName(); }
SDF::Obj* Font::GetEmbeddedFont() const { LUM_FONT_IMPL(); return impl.GetEmbeddedFont(); }
int Font::GetEmbeddedFontBufSize() const { LUM_FONT_IMPL(); return impl.GetEmbeddedFontBufSize(); }
double Font::GetAscent() const { LUM_FONT_IMPL(); return impl.GetAscent(); }
double Font::GetDescent() const { LUM_FONT_IMPL(); return impl.GetDescent(); }
Rect Font::GetBBox() const { LUM_FONT_IMPL(); return impl.GetBBox(); }
Font::StandardType1Font Font::GetBase14Type() const { LUM_FONT_IMPL(); return impl.GetBase14Type(); }
bool Font::IsCFF() const { LUM_FONT_IMPL(); return impl.IsCFF(); }
Common::Matrix2D Font::GetType3FontMatrix() const { LUM_FONT_IMPL(); return impl.GetType3FontMatrix(); }

SDF::Obj* Font::GetType3GlyphStream(UInt32 code) const {
    LUM_FONT_IMPL();
    return impl.GetType3GlyphStream(code);
}

Font Font::GetDescendant() const { LUM_FONT_IMPL(); return impl.GetDescendant(); }

int Font::MapToCID(const UInt8* bytes, UInt32 length, UInt32& code, UInt32& cid) const {
    LUM_FONT_IMPL();
    return impl.MapToCID(bytes, length, code, cid);
}

UInt32 Font::MapToCID(UInt32 code) const { LUM_FONT_IMPL(); return impl.MapToCID(code); }

bool Font::GetGlyphIndex(UInt32 code, UInt32& index) const {
    LUM_FONT_IMPL();
    return impl.GetGlyphIndex(code, index);
}

bool Font::GetGlyphPath(UInt32 code, std::vector<UInt8>& operators, std::vector<double>& points,
                        bool conics_to_cubics, const Common::Matrix2D* matrix, bool code_is_glyph,
                        UInt32* glyph) const {
    LUM_FONT_IMPL();
    return impl.GetGlyphPath(code, operators, points, conics_to_cubics, matrix, code_is_glyph, glyph);
}
bool Font::GetGlyphBox(UInt32 code, Rect& box) const { LUM_FONT_IMPL(); return impl.GetGlyphBox(code, box); }
bool Font::HasGlyph(UInt32 code) const { LUM_FONT_IMPL(); return impl.HasGlyph(code); }
double Font::GetBuiltInWidth(UInt32 code) const { LUM_FONT_IMPL(); return impl.GetBuiltInWidth(code); }
double Font::GetGlyphWidthByName(const char* name) const { LUM_FONT_IMPL(); return impl.GetGlyphWidthByName(name); }
double Font::GetGIDHorzAdvance(UInt32 gid) const { LUM_FONT_IMPL(); return impl.GetGIDHorzAdvance(gid); }
double Font::GetGIDVertAdvance(UInt32 gid) const { LUM_FONT_IMPL(); return impl.GetGIDVertAdvance(gid); }
double Font::GetGIDDescender(UInt32 gid) const { LUM_FONT_IMPL(); return impl.GetGIDDescender(gid); }
double Font::GetSubstGlyphWidth(UInt32 value) const { LUM_FONT_IMPL(); return impl.GetSubstGlyphWidth(value); }

void Font::SetGIDMap(bool enabled, UInt32 value) { LUM_FONT_IMPL(); impl.SetGIDMap(enabled, value); }

std::recursive_mutex& Font::GetFontMutex() const { LUM_FONT_IMPL(); return impl.GetFontMutex(); }

#undef LUM_FONT_IMPL

}  // namespace lum::PDF
