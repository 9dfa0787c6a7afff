// Font programs and glyph outlines: the opening of an embedded program, the outline of a
// code's glyph from it, and when there is none the substitute's: the standard font of the
// font's name, a system font, or a standard font chosen by the descriptor's flags. Widths
// always stay those of the PDF; a substitute's glyph is at most squeezed to fit.
#include <algorithm>
#include <cwctype>

#include <ft2build.h>
#include FT_FREETYPE_H

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Filters/FilterReader.h"
#include "FontSupport/Face.h"
#include "FontSupport/FreeTypeLibrary.h"
#include "PDF/Font/CIDFont.h"
#include "PDF/Font/Encodings.h"
#include "PDF/Font/StandardFonts.h"
#include "PDF/Font/FontImpl.h"
#include "PDF/Font/FontSubstitution.h"
#include "PDF/Font/GlyphControlBox.h"
#include "PDF/Font/GlyphList.h"
#include "PDF/Font/GlyphNames.h"
#include "PDF/Font/SimpleFont.h"
#include "PDF/Font/StandardFontFaces.h"
#include "PDF/Font/StandardGlyphBoxes.h"
#include "PDF/Font/Type0Font.h"
#include "PDF/FerroxResources.h"
#include "SDF/Obj.h"

namespace lum::PDF {

namespace {

using FontSupport::Face;
using FontSupport::GlyphOutline;

// FreeType's errors of the TrueType bytecode interpreter: a hinted load that meets one falls
// back to unscaled, unhinted outlines for the rest of the font's life.
bool IsInstructionError(int error) { return error >= 128 && error <= 141; }

void Transform(std::vector<double>& points, double scale, const Common::Matrix2D* matrix) {
    if (scale != 1.0)
        for (double& v : points) v *= scale;
    if (matrix)
        for (size_t i = 0; i + 1 < points.size(); i += 2) matrix->Mult(points[i], points[i + 1]);
}

// What the substitution decision needs to know of a font.
Fnt::SubstitutionInput ReadSubstitutionInput(FontImpl& font) {
    Fnt::SubstitutionInput in;
    in.name = font.GetName();
    in.force_bold = font.IsForceBold();
    in.italic = font.IsItalic();
    in.symbolic = font.IsSymbolic();
    in.fixed_width = font.IsFixedWidth();
    in.serif = font.IsSerif();
    in.simple = font.IsSimple();
    in.base14 = font.GetBase14Type();
    try {
        if (SDF::Obj* desc = font.GetDescriptor()) {
            SDF::Obj* family = desc->FindObj("FontFamily");
            if (family && family->IsName()) in.font_family = family->GetName();
            if (family && family->IsString())
                in.font_family.assign(reinterpret_cast<const char*>(family->GetBuffer()),
                                      family->Size());
            SDF::Obj* weight = desc->FindObj("FontWeight");
            if (weight && weight->IsNumber()) in.font_weight = weight->GetNumber();
        }
        SDF::Obj* dict = font.GetSDFObj();
        SDF::Obj* enc = dict ? dict->FindObj("Encoding") : nullptr;
        in.has_encoding = enc != nullptr;
        if (enc && enc->IsName()) {
            const std::string n = enc->GetName();
            in.encoding_is_known_cmap =
                n == "Identity-H" || n == "Identity-V" || Resource::IsRecognizedCMap(n.c_str());
        }
        if (enc && enc->IsDict()) {
            SDF::Obj* diffs = enc->FindObj("Differences");
            for (UInt32 i = 0; diffs && diffs->IsArray() && i < diffs->Size(); ++i) {
                SDF::Obj* item = diffs->GetAt(i);
                if (item && item->IsName()) in.differences.push_back(item->GetName());
            }
        }
        SDF::Obj* charset = dict ? dict->FindObj("_CharSet") : nullptr;
        if (charset && charset->IsNumber()) in.charset_override = int(charset->GetNumber());
        SDF::Obj* info = dict ? dict->FindObj("CIDSystemInfo") : nullptr;
        SDF::Obj* ordering = info ? info->FindObj("Ordering") : nullptr;
        if (ordering && ordering->IsString())
            in.ordering.assign(reinterpret_cast<const char*>(ordering->GetBuffer()), ordering->Size());
        if (ordering && ordering->IsName()) in.ordering = ordering->GetName();
    } catch (const Common::Exception&) {
        // A damaged entry leaves what was read before it: the decision is made all the same.
    }
    return in;
}

}  // namespace

bool FontImpl::LoadFontProgram() {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    if (mp_face) return true;
    if (!m_embedded) return false;
    try {
        SDF::Obj* stm = GetEmbeddedFont();
        if (!stm) return false;
        double size = GetEmbeddedFontBufSize();
        if (size <= 0) size = 2 * stm->FindNumber("Length", 0);
        // The declared size is a hint: the program is read to its end whatever it says.
        std::vector<UInt8> program;
        program.reserve(size_t(std::clamp(size, 0.0, double(Limits::kMaxFontProgramBytes))) + 2000);
        auto chain = stm->GetDecodedStream();
        Filters::FilterReader reader(chain.get());
        UInt8 buf[65536];
        for (size_t n; program.size() < Limits::kMaxFontProgramBytes &&
                       (n = reader.Read(buf, sizeof buf)) > 0;)
            program.insert(program.end(), buf, buf + n);
        m_scaled_outlines = true;
        mp_face = Face::OpenMemory(std::move(program), true);
    } catch (const Common::Exception&) {
        // A program that can't be read makes the font one that isn't embedded.
        mp_face.reset();
        m_embedded = false;
        m_scaled_outlines = false;
    }
    return mp_face != nullptr;
}

bool FontImpl::GetGlyphPath(UInt32 code, std::vector<UInt8>& operators, std::vector<double>& points,
                            bool conics_to_cubics, const Common::Matrix2D* matrix,
                            bool code_is_glyph, UInt32* glyph) {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    operators.clear();
    points.clear();
    if (!LoadFontProgram()) {
        if (!GetSubstituteGlyphPath(code, operators, points, conics_to_cubics)) return false;
        Transform(points, 1.0, matrix);
        return true;
    }
    UInt32 gid = code;
    if (!code_is_glyph && !GetGlyphIndex(code, gid)) return false;
    if (gid >= mp_face->GetNumGlyphs()) return false;
    if (glyph) *glyph = gid;
    GlyphOutline out;
    int error = mp_face->LoadOutline(gid, m_scaled_outlines ? Face::kLoadScaled : Face::kLoadNoScale,
                                     conics_to_cubics, out);
    if (error && m_scaled_outlines && IsInstructionError(error)) {
        m_scaled_outlines = false;
        error = mp_face->LoadOutline(gid, Face::kLoadNoScale, conics_to_cubics, out);
    }
    if (error) return false;
    operators.swap(out.operators);
    points.swap(out.points);
    Transform(points, m_scaled_outlines ? 1.0 / 256 : 1.0, matrix);
    return true;
}

Fnt::FontSubstitution& FontImpl::Substitution() {
    if (!mp_subst) {
        mp_subst = std::make_unique<Fnt::FontSubstitution>(
            Fnt::DecideSubstitution(ReadSubstitutionInput(*this)));
    }
    return *mp_subst;
}

FontImpl::SubstituteGlyph FontImpl::ResolveSubstitute(UInt32 code) {
    SubstituteGlyph g;
    Fnt::FontSubstitution& subst = Substitution();
    if (subst.kind == 3) {
        const char* const* names = IsSimple() ? GetEncoding() : nullptr;
        g.road = SubstituteGlyph::e_standard;
        g.standard_index = subst.standard_index;
        g.name = names && code < 256 ? names[code] : nullptr;
        return g;
    }
    // The value to draw: the code's Unicode in a simple font, the code itself (already a
    // Unicode value, or a CID in the GID map) in a descendant of a composite font.
    UInt32 value = code;
    if (IsSimple()) {
        Unicode units[5] = {};
        UInt32 count = 0;
        const bool real = MapToUnicode(code, units, 5, count, false);
        if (count == 2 || count == 3) {
            if (const Unicode lig = Fnt::MatchLigature(units, count)) units[0] = lig;
        }
        if (real && count > 0) {
            value = units[0];
        } else if (code < 30 && !IsSymbolic()) {
            return g;
        }
    }
    if (!m_gid_map && IsAllCap()) value = std::towupper(static_cast<wint_t>(value));
    if (!m_gid_map && Fnt::IsSubstituteWhiteSpace(value)) {
        g.road = SubstituteGlyph::e_empty;
        return g;
    }
    if (subst.platform) {
        g.road = SubstituteGlyph::e_platform;
        g.by_glyph = m_gid_map;
        g.value = g.by_glyph ? m_gid_map_value : value;
        return g;
    }
    // No system font: the standard font of the flags draws the glyph of the value's name.
    g.name = Fnt::AdobeGlyphNameOf(static_cast<UInt16>(value));
    if (g.name) {
        g.road = SubstituteGlyph::e_standard;
        g.standard_index = subst.fallback_index;
    }
    return g;
}

bool FontImpl::GetSubstituteGlyphPath(UInt32 code, std::vector<UInt8>& operators,
                                      std::vector<double>& points, bool conics_to_cubics) {
    const SubstituteGlyph g = ResolveSubstitute(code);
    switch (g.road) {
        case SubstituteGlyph::e_none:
            return false;
        case SubstituteGlyph::e_empty:
            return true;
        case SubstituteGlyph::e_standard:
            return GetStandardFontGlyphPath(g.standard_index, g.name, GetWidth(code), operators,
                                            points, conics_to_cubics);
        case SubstituteGlyph::e_platform:
            break;
    }
    GlyphOutline out;
    if (!Substitution().platform->GetGlyphOutline(g.value, g.by_glyph, out)) return false;
    if (conics_to_cubics) {
        // The system's outlines keep their conics; the caller asked for cubics.
        GlyphOutline cubic;
        size_t p = 0;
        double cx = 0, cy = 0;
        for (UInt8 op : out.operators) {
            cubic.operators.push_back(op == FontSupport::e_conicto ? UInt8(FontSupport::e_cubicto) : op);
            if (op == FontSupport::e_conicto) {
                const double qx = out.points[p], qy = out.points[p + 1];
                const double ex = out.points[p + 2], ey = out.points[p + 3];
                for (double v : {(2 * qx + cx) / 3, (2 * qy + cy) / 3, (2 * qx + ex) / 3,
                                 (2 * qy + ey) / 3, ex, ey})
                    cubic.points.push_back(v);
                cx = ex;
                cy = ey;
                p += 4;
            } else if (op != FontSupport::e_closepath) {
                const int n = op == FontSupport::e_cubicto ? 3 : 1;
                for (int k = 0; k < 2 * n; ++k) cubic.points.push_back(out.points[p + k]);
                cx = out.points[p + 2 * n - 2];
                cy = out.points[p + 2 * n - 1];
                p += 2 * n;
            }
        }
        out = std::move(cubic);
    }
    operators.swap(out.operators);
    points.swap(out.points);
    return true;
}

// A substitute's glyph is narrowed to the PDF's width, never widened: the factor for x.
static double NarrowingOf(double pdf_width, double advance) {
    return advance > 0 ? std::min(1.0, pdf_width / advance) : 1.0;
}

bool FontImpl::GetStandardFontGlyphPath(int index, const char* name, double pdf_width,
                                        std::vector<UInt8>& operators, std::vector<double>& points,
                                        bool conics_to_cubics) {
    if (!name || std::string_view(name) == "space") return true;  // an empty path
    GlyphOutline out;
    double advance = 0;
    if (!Fnt::GetStandardGlyphPath(index, name, conics_to_cubics, out, advance)) return false;
    const double f = NarrowingOf(pdf_width, advance);
    if (f < 1)
        for (size_t i = 0; i < out.points.size(); i += 2) out.points[i] *= f;
    operators.swap(out.operators);
    points.swap(out.points);
    return true;
}

bool FontImpl::GetStandardGlyphBox(const SubstituteGlyph& g, double pdf_width, Rect& box,
                                   bool& known) {
    known = true;
    if (!g.name || std::string_view(g.name) == "space") return false;  // an empty path
    const Fnt::StandardGlyphBox* b = Fnt::FindStandardGlyphBox(g.standard_index, g.name, known);
    if (!known || !b || !b->outline) return false;
    const double f = NarrowingOf(pdf_width, b->advance);
    box = Rect(b->x1, b->y1, b->x2, b->y2);
    if (f < 1) {
        box.x1 *= f;
        box.x2 *= f;
    }
    return true;
}

bool FontImpl::GetGlyphBox(UInt32 code, Rect& box) {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    // A standard font standing in needn't unpack its program for a box.
    if (!LoadFontProgram()) {
        const SubstituteGlyph g = ResolveSubstitute(code);
        if (g.road == SubstituteGlyph::e_standard) {
            bool known = false;
            const bool found = GetStandardGlyphBox(g, GetWidth(code), box, known);
            if (known) return found;
        }
    }
    std::vector<UInt8> ops;
    std::vector<double> points;
    if (!GetGlyphPath(code, ops, points, true, nullptr, false, nullptr) || ops.empty()) return false;
    return Fnt::ControlBox(points, box);
}

bool FontImpl::HasGlyph(UInt32 code) {
    std::vector<UInt8> ops;
    std::vector<double> points;
    GetGlyphPath(code, ops, points, true, nullptr, false, nullptr);
    return ops.size() > 2;
}

double FontImpl::GetGIDHorzAdvance(UInt32 gid) {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    return LoadFontProgram() ? mp_face->GetGlyphMetric(gid, Face::e_horz_advance) : -1.0;
}

double FontImpl::GetGIDVertAdvance(UInt32 gid) {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    return LoadFontProgram() ? mp_face->GetGlyphMetric(gid, Face::e_vert_advance) : -1.0;
}

double FontImpl::GetGIDDescender(UInt32 gid) {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    return LoadFontProgram() ? mp_face->GetGlyphMetric(gid, Face::e_descender) : -1.0;
}

double FontImpl::GetBuiltInWidth(UInt32 code) {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    UInt32 gid = 0;
    if (!LoadFontProgram() || !GetGlyphIndex(code, gid)) return -1.0;
    return mp_face->GetGlyphMetric(gid, Face::e_horz_advance);
}

double FontImpl::GetGlyphWidthByName(const char* name) {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    if (!name || !LoadFontProgram()) return -1.0;
    UInt32 gid = 0;
    {
        std::lock_guard<std::mutex> ft(FontSupport::FreeTypeLibrary::GetLock());
        gid = FT_Get_Name_Index(mp_face->Get(), const_cast<char*>(name));
    }
    return mp_face->GetGlyphMetric(gid, Face::e_horz_advance);
}

double FontImpl::GetSubstGlyphWidth(UInt32 value) {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    Fnt::FontSubstitution& subst = Substitution();
    if (subst.platform) {
        const double w = subst.platform->GetAdvance(value);
        return w >= 0 ? w : 1000;
    }
    const int index = subst.kind == 3 ? subst.standard_index : subst.fallback_index;
    const Fnt::StdWidthTable* widths = Fnt::GetStandardFontWidths(index);
    LUM_CHECK(widths != 0, "Ferrox is not initialized");
    const char* name = Fnt::AdobeGlyphNameOf(static_cast<UInt16>(value));
    double w = 1000;
    if (name && widths->Find(name, w)) return w;
    return 1000;
}

namespace Fnt {

bool CIDType0Font::GetGlyphIndex(UInt32 cid, UInt32& index) {
    index = 0;
    if (!LoadFontProgram()) return false;
    index = cid;
    return true;
}

bool CIDType2Font::GetGlyphIndex(UInt32 cid, UInt32& index) {
    index = 0;
    if (!LoadFontProgram()) return false;
    if (!m_embedded || m_cid_to_gid.empty()) {
        index = cid;
        return true;
    }
    if (cid >= m_cid_to_gid.size()) return false;
    index = m_cid_to_gid[cid];
    return true;
}

bool Type3Font::GetGlyphPath(UInt32, std::vector<UInt8>&, std::vector<double>&, bool,
                             const Common::Matrix2D*, bool, UInt32*) {
    NotApplicable("GetGlyphPath()", "Type3");
}

bool Type3Font::GetGlyphBox(UInt32, Rect&) { NotApplicable("GetGlyphBox()", "Type3"); }

UInt32 Type0Font::DescendantCode(UInt32 code) {
    const UInt32 cid = MapToCID(code);
    if (m_descendant.IsEmbedded()) return cid;
    Unicode unit = 0;
    UInt32 count = 0;
    if (MapToUnicode(code, &unit, 1, count, true) && count == 1) {
        m_descendant.SetGIDMap(false, cid);
        return unit;
    }
    m_descendant.SetGIDMap(true, cid);
    return cid;
}

bool Type0Font::GetGlyphPath(UInt32 code, std::vector<UInt8>& operators, std::vector<double>& points,
                             bool conics_to_cubics, const Common::Matrix2D* matrix,
                             bool code_is_glyph, UInt32* glyph) {
    operators.clear();
    points.clear();
    if (!m_descendant) return false;
    std::lock_guard<std::recursive_mutex> lock(m_descendant.GetFontMutex());
    return m_descendant.GetGlyphPath(code_is_glyph ? code : DescendantCode(code), operators, points,
                                     conics_to_cubics, matrix, code_is_glyph, glyph);
}

bool Type0Font::GetGlyphBox(UInt32 code, Rect& box) {
    if (!m_descendant) return false;
    std::lock_guard<std::recursive_mutex> lock(m_descendant.GetFontMutex());
    return m_descendant.GetGlyphBox(DescendantCode(code), box);
}

}  // namespace Fnt

}  // namespace lum::PDF
