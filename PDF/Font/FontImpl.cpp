#include "PDF/Font/FontImpl.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include <ft2build.h>
#include FT_FREETYPE_H

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Common/UString.h"
#include "FontSupport/Face.h"
#include "FontSupport/FreeTypeLibrary.h"
#include "PDF/Font/CIDFont.h"
#include "PDF/Font/CMap.h"
#include "PDF/Font/FontSubstitution.h"
#include "PDF/Font/SimpleFont.h"
#include "PDF/Font/Type0Font.h"
#include "SDF/DocImpl.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

namespace lum::PDF {

namespace {

// The reading of one descriptor entry; a damaged entry is passed over.
template <class Read>
void Swallow(Read&& read) {
    try {
        read();
    } catch (const Common::Exception&) {
    }
}

// The number under `key`, when the entry is present and a number.
bool FindNumber(SDF::Obj* dict, SDF::StaticName key, double& out) {
    SDF::Obj* v = dict->FindObj(key);
    if (!v || !v->IsNumber()) return false;
    out = v->GetNumber();
    return true;
}

// The names that stand for a standard font, in the order of the comparison below.
struct StandardName {
    const char* name;
    Font::StandardType1Font index;
};
constexpr StandardName kStandardNames[] = {
    {"Arial", Font::e_helvetica},
    {"ArialBold", Font::e_helvetica_bold},
    {"ArialBoldItalic", Font::e_helvetica_bold_oblique},
    {"ArialItalic", Font::e_helvetica_oblique},
    {"ArialMT", Font::e_helvetica},
    {"ArialMTBold", Font::e_helvetica_bold},
    {"ArialMTBoldItalic", Font::e_helvetica_bold_oblique},
    {"ArialMTItalic", Font::e_helvetica_oblique},
    {"Courier", Font::e_courier},
    {"CourierBold", Font::e_courier_bold},
    {"CourierBoldItalic", Font::e_courier_bold_oblique},
    {"CourierBoldOblique", Font::e_courier_bold_oblique},
    {"CourierItalic", Font::e_courier_oblique},
    {"CourierNew", Font::e_courier},
    {"CourierNewBold", Font::e_courier_bold},
    {"CourierNewBoldItalic", Font::e_courier_bold_oblique},
    {"CourierNewItalic", Font::e_courier_oblique},
    {"CourierNewPSMT", Font::e_courier},
    {"CourierNewPSMTBold", Font::e_courier_bold},
    {"CourierNewPSMTBoldItalic", Font::e_courier_bold_oblique},
    {"CourierNewPSMTItalic", Font::e_courier_oblique},
    {"CourierOblique", Font::e_courier_oblique},
    {"Helvetica", Font::e_helvetica},
    {"HelveticaBold", Font::e_helvetica_bold},
    {"HelveticaBoldItalic", Font::e_helvetica_bold_oblique},
    {"HelveticaBoldOblique", Font::e_helvetica_bold_oblique},
    {"HelveticaItalic", Font::e_helvetica_oblique},
    {"HelveticaOblique", Font::e_helvetica_oblique},
    {"Symbol", Font::e_symbol},
    {"SymbolBold", Font::e_symbol},
    {"SymbolBoldItalic", Font::e_symbol},
    {"SymbolItalic", Font::e_symbol},
    {"TimesBold", Font::e_times_bold},
    {"TimesBoldItalic", Font::e_times_bold_italic},
    {"TimesItalic", Font::e_times_italic},
    {"TimesNewRoman", Font::e_times_roman},
    {"TimesNewRomanBold", Font::e_times_bold},
    {"TimesNewRomanBoldItalic", Font::e_times_bold_italic},
    {"TimesNewRomanItalic", Font::e_times_italic},
    {"TimesNewRomanPS", Font::e_times_roman},
    {"TimesNewRomanPSBold", Font::e_times_bold},
    {"TimesNewRomanPSBoldItalic", Font::e_times_bold_italic},
    {"TimesNewRomanPSItalic", Font::e_times_italic},
    {"TimesNewRomanPSMT", Font::e_times_roman},
    {"TimesNewRomanPSMTBold", Font::e_times_bold},
    {"TimesNewRomanPSMTBoldItalic", Font::e_times_bold_italic},
    {"TimesNewRomanPSMTItalic", Font::e_times_italic},
    {"TimesRoman", Font::e_times_roman},
    {"ZapfDingbats", Font::e_zapf_dingbats},
};
static_assert(std::size(kStandardNames) == 49);

constexpr const char* kPostScriptNames[] = {
    "Times-Roman",  "Times-Bold",     "Times-Italic",          "Times-BoldItalic",
    "Helvetica",    "Helvetica-Bold", "Helvetica-Oblique",     "Helvetica-BoldOblique",
    "Courier",      "Courier-Bold",   "Courier-Oblique",       "Courier-BoldOblique",
    "Symbol",       "ZapfDingbats",
};

bool IsAlnum(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; }
int Lower(char c) { return std::tolower(static_cast<unsigned char>(c)); }

// Case-blind, and blind to everything that isn't a letter or digit after the first byte.
int CompareStandardName(const char* a, const char* b) {
    if (*a && *b) {
        const int d = Lower(*a) - Lower(*b);
        if (d != 0 || !*a) return d;
        ++a;
        ++b;
    }
    for (;;) {
        while (*a && !IsAlnum(*a)) ++a;
        while (*b && !IsAlnum(*b)) ++b;
        if (!*a || !*b) return (*a ? 1 : 0) - (*b ? 1 : 0);
        const int d = Lower(*a) - Lower(*b);
        if (d != 0) return d;
        ++a;
        ++b;
    }
}

bool EraseFirst(std::string& s, const char* word) {
    const size_t at = s.find(word);
    if (at == std::string::npos) return false;
    s.erase(at, std::strlen(word));
    return true;
}

}  // namespace

// --- Standard fonts ---

Font::StandardType1Font FontImpl::GetStandardFontType(const char* name) {
    if (!name) return Font::e_null;
    std::string s(name);
    for (char& c : s)
        if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
    const bool bold = EraseFirst(s, "bold");
    bool italic = EraseFirst(s, "italic");
    italic = EraseFirst(s, "oblique") || italic;
    if (bold && italic)
        s += "BoldItalic";
    else if (bold)
        s += "Bold";
    else if (italic)
        s += "Italic";
    size_t lo = 0, hi = std::size(kStandardNames);
    while (lo < hi) {
        const size_t mid = (lo + hi) / 2;
        const int c = CompareStandardName(kStandardNames[mid].name, s.c_str());
        if (c == 0) return kStandardNames[mid].index;
        if (c < 0)
            lo = mid + 1;
        else
            hi = mid;
    }
    return Font::e_null;
}

const char* FontImpl::GetStandardFontName(Font::StandardType1Font index) {
    return index >= 0 && index < Font::e_null ? kPostScriptNames[index] : "";
}

// --- Factory ---

FontImpl* FontImpl::Create(SDF::Obj* font_dict) {
    // A composite font makes its descendant while it is being made: a descendant that is a
    // composite font again would recurse for ever.
    thread_local int depth = 0;
    LUM_CHECK(depth < Limits::kMaxFontNesting, "Fonts nested too deep");
    struct Nesting {
        Nesting() { ++depth; }
        ~Nesting() { --depth; }
    } nesting;
    // A font without Subtype fails as the dictionary read does: there is no default kind.
    SDF::Obj* subtype = font_dict->Get(SDF::e_Subtype)->second;
    const char* kind = subtype->GetName();
    if (std::strcmp(kind, "TrueType") == 0 || std::strcmp(kind, "OpenType") == 0)
        return new Fnt::TrueTypeFont(font_dict);
    if (std::strcmp(kind, "MMType1") == 0) return new Fnt::MMType1Font(font_dict);
    if (std::strcmp(kind, "Type3") == 0) return new Fnt::Type3Font(font_dict);
    if (std::strcmp(kind, "Type0") == 0) return new Fnt::Type0Font(font_dict);
    if (std::strcmp(kind, "CIDFontType0") == 0) return new Fnt::CIDType0Font(font_dict);
    if (std::strcmp(kind, "CIDFontType2") == 0) return new Fnt::CIDType2Font(font_dict);
    return new Fnt::Type1Font(font_dict);
}

SDF::Obj* FontImpl::CreateStandardFontDict(SDF::SDFDoc& doc, Font::StandardType1Font index) {
    LUM_CHECK(index >= 0 && index < Font::e_null, "Unknown standard font");
    auto* dict = new SDF::Dict();
    dict->PutName(SDF::e_Type, "Font");
    dict->PutName(SDF::e_Subtype, "Type1");
    dict->PutName(SDF::e_BaseFont, kPostScriptNames[index]);
    dict->PutName(SDF::e_Encoding, "WinAnsiEncoding");
    return doc.GetImpl()->CreateIndirect(dict);
}

FontImpl* FontImpl::Create(SDF::SDFDoc& doc, Font::StandardType1Font index) {
    return Create(CreateStandardFontDict(doc, index));
}

// --- Common part ---

FontImpl::FontImpl(SDF::Obj* font_dict) : mp_font_dict(font_dict) {}

FontImpl::~FontImpl() = default;

void FontImpl::LoadToUnicode() {
    if (m_tounicode_loaded) return;
    m_tounicode_loaded = true;
    try {
        SDF::Obj* stm = mp_font_dict->FindObj(SDF::e_ToUnicode);
        if (stm && stm->IsStream()) mp_tounicode = Fnt::CMap::Create(stm);
    } catch (const Common::Exception&) {
        mp_tounicode.reset();  // a damaged ToUnicode is no ToUnicode
    }
}

void FontImpl::NotApplicable(const char* operation, const char* kind) {
    throw Common::Exception(Common::Exception::Formatted{}, "false", __LINE__, __FILE__,
                            LUM_FUNCTION, "%s can't be applied to %s font.", operation, kind);
}

void FontImpl::OnlyType0() { LUM_FAIL("This method can be used only on Type0 font"); }

void FontImpl::ReadFontDescriptor() {
    Swallow([&] { mp_font_descriptor = mp_font_dict->FindObj(SDF::e_FontDescriptor); });
    if (mp_font_descriptor) {
        // A descriptor that is no dictionary can tell nothing.
        bool usable = false;
        Swallow([&] { usable = mp_font_descriptor->IsDict(); });
        if (!usable) mp_font_descriptor = nullptr;
    }
    if (!mp_font_descriptor) return;
    SDF::Obj* fd = mp_font_descriptor;
    Swallow([&] {
        m_embedded = fd->FindObj(SDF::e_FontFile) || fd->FindObj(SDF::e_FontFile2) ||
                     fd->FindObj(SDF::e_FontFile3);
    });
    Swallow([&] {
        double v;
        if (FindNumber(fd, SDF::e_Flags, v)) m_flags = UInt32(Int64(std::clamp(v, -4.0e9, 4.0e9)));
    });
    Swallow([&] { FindNumber(fd, SDF::e_MissingWidth, m_missing_width); });
    Swallow([&] {
        double v;
        if (FindNumber(fd, SDF::e_Ascent, v) && v != 0) m_ascent = v;
    });
    Swallow([&] {
        double v;
        if (FindNumber(fd, SDF::e_Descent, v) && v != 0) m_descent = v > 0 ? -v : v;
    });
    Swallow([&] {
        SDF::Obj* box = fd->FindObj(SDF::e_FontBBox);
        if (!box || !box->IsArray() || box->Size() < 4) return;
        double v[4];
        for (UInt32 i = 0; i < 4; ++i) {
            SDF::Obj* n = box->GetAt(i);
            if (!n->IsNumber()) return;
            v[i] = n->GetNumber();
        }
        m_bbox = Rect(std::min(v[0], v[2]), std::min(v[1], v[3]), std::max(v[0], v[2]),
                      std::max(v[1], v[3]));
    });
}

const char* FontImpl::GetName() {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    if (m_name_cached) return m_name_cache.c_str();
    try {
        SDF::Obj* base = mp_font_dict->FindObj(SDF::e_BaseFont);
        if (base && base->IsName()) return base->GetName();
        if (base && base->IsString()) {
            UString text;
            base->GetAsPDFText(text);
            m_name_cache = text.ConvertToUtf8();
        }
    } catch (const Common::Exception&) {
        m_name_cache.clear();
    }
    m_name_cached = true;
    return m_name_cache.c_str();
}

std::string FontImpl::GetFamilyName() {
    {
        std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
        if (LoadFontProgram() && mp_face && mp_face->Get()->family_name)
            return mp_face->Get()->family_name;
    }
    if (!mp_font_descriptor) return "unknown";
    std::string out;
    Swallow([&] {
        SDF::Obj* family = mp_font_descriptor->FindObj(SDF::e_FontFamily);
        if (family && family->IsName()) {
            out = family->GetName();
        } else if (family && family->IsString()) {
            UString text;
            family->GetAsPDFText(text);
            out = text.ConvertToUtf8();
        }
    });
    return out;
}

int FontImpl::GetCMapKinds(int& kinds) {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    kinds = 0;
    if (!LoadFontProgram() || !mp_face) return 0;
    FT_Face face = mp_face->Get();
    for (int i = 0; i < face->num_charmaps; ++i) {
        const FT_CharMap cm = face->charmaps[i];
        if (cm->platform_id == 3 && cm->encoding_id == 1) kinds |= 1;
        if (cm->platform_id == 3 && cm->encoding_id == 0) kinds |= 2;
        if (cm->platform_id == 1 && cm->encoding_id == 0) kinds |= 4;
    }
    return face->num_charmaps;
}

const std::vector<UInt32>& FontImpl::CharCodes() {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    if (!m_char_codes_read) {
        m_char_codes_read = true;
        if (LoadFontProgram() && mp_face) {
            std::lock_guard<std::mutex> ft_lock(FontSupport::FreeTypeLibrary::GetLock());
            FT_UInt gid = 0;
            for (FT_ULong code = FT_Get_First_Char(mp_face->Get(), &gid); gid != 0;
                 code = FT_Get_Next_Char(mp_face->Get(), code, &gid))
                m_char_codes.push_back(UInt32(code));
        }
    }
    return m_char_codes;
}

int FontImpl::GetUnitsPerEm() {
    // The face's; a font drawn by a substitute or a standard font is in 1000 per em as well.
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    return LoadFontProgram() && mp_face ? mp_face->GetUnitsPerEm() : 1000;
}

bool FontImpl::HasSubsetTag() {
    const char* name = GetName();
    return std::strlen(name) >= 8 && name[6] == '+';
}

double FontImpl::GetVerticalAdvance(UInt32, double&, double&) { OnlyType0(); }

bool FontImpl::MapUnicodeToCode(Unicode, UInt32&) { return false; }

std::string FontImpl::GetDescriptorFontName() {
    std::string out;
    if (!mp_font_descriptor) return out;
    Swallow([&] {
        SDF::Obj* name = mp_font_descriptor->FindObj(SDF::e_FontName);
        if (name && name->IsName()) out = name->GetName();
    });
    return out;
}

SDF::Obj* FontImpl::GetEmbeddedFont() {
    if (!m_embedded || !mp_font_descriptor) return nullptr;
    SDF::Obj* stm = mp_font_descriptor->FindObj(SDF::e_FontFile);
    if (!stm) stm = mp_font_descriptor->FindObj(SDF::e_FontFile2);
    if (!stm) stm = mp_font_descriptor->FindObj(SDF::e_FontFile3);
    LUM_CHECK(stm, "Embedded font not found");
    return stm;
}

int FontImpl::GetEmbeddedFontBufSize() {
    SDF::Obj* stm = GetEmbeddedFont();
    if (!stm) return 0;
    double size = stm->FindNumber(SDF::e_Length1, 0);
    const Font::Type type = GetType();
    if (type == Font::e_Type1 || type == Font::e_MMType1)
        size += stm->FindNumber(SDF::e_Length2, 0) + stm->FindNumber(SDF::e_Length3, 0);
    return int(std::clamp(size, 0.0, 2147483647.0));
}

// The face's vertical metric in thousandths of the em; a face that gives no units per em is
// read as if it had 1000.
static double FaceMetric(const FontSupport::Face& face, FT_Short value) {
    const int upem = face.Get()->units_per_EM;
    return value * 1000.0 / (upem == 0 ? 1000 : upem);
}

double FontImpl::GetAscent() {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    return mp_face ? FaceMetric(*mp_face, mp_face->Get()->ascender) : m_ascent;
}

double FontImpl::GetDescent() {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    return mp_face ? FaceMetric(*mp_face, mp_face->Get()->descender) : m_descent;
}

Rect FontImpl::GetBBox() {
    LoadFontProgram();
    return m_bbox;
}

Font FontImpl::GetDescendant() { OnlyType0(); }

int FontImpl::MapToCID(const UInt8*, UInt32, UInt32&, UInt32&) { OnlyType0(); }

UInt32 FontImpl::MapToCID(UInt32) { OnlyType0(); }

bool FontImpl::GetGlyphIndex(UInt32, UInt32& index) {
    index = 0;
    return false;
}

// LoadFontProgram and the glyph roads live in FontGlyphPath.cpp.

}  // namespace lum::PDF
