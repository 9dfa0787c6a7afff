#pragma once
// The font object behind a `Font` handle: one class per font kind, made once per dictionary
// by the factory and kept in the document's table of shared resources. Nearly every reading
// step has a default and swallows damage, so that a broken font still cuts, measures and maps
// its codes; only what the text can't do without (a descriptor or widths for a font that
// isn't a standard one, a sane code range) makes the factory raise.
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Common/Matrix2D.h"
#include "Common/Types.h"
#include "PDF/Font/Font.h"
#include "PDF/Rect.h"
#include "SDF/SharedResource.h"

namespace lum::SDF {
class Obj;
}
namespace lum::FontSupport {
class Face;
}
namespace lum::PDF::Fnt {
class CMap;
struct FontSubstitution;
}

namespace lum::PDF {

class FontImpl : public SDF::SharedResource {
public:
    // Descriptor flag bits.
    enum Flags : UInt32 {
        e_fixed_pitch = 1,
        e_serif = 2,
        e_symbolic = 4,
        e_script = 8,
        e_nonsymbolic = 32,
        e_italic = 64,
        e_all_cap = 65536,
        e_small_cap = 131072,
        e_force_bold = 262144,
    };

    // The factory: reads Subtype and makes the class of that kind. Raises when the dictionary
    // has no Subtype or the kind's constructor refuses it.
    static FontImpl* Create(SDF::Obj* font_dict);
    // A new dictionary of a standard font (Type1, WinAnsiEncoding) in `doc`, made into a font.
    static FontImpl* Create(SDF::SDFDoc& doc, Font::StandardType1Font index);
    // That dictionary alone, as a new object of `doc`.
    static SDF::Obj* CreateStandardFontDict(SDF::SDFDoc& doc, Font::StandardType1Font index);
    // The standard font that a BaseFont name stands for (the common spellings of the three
    // families, with their styles), or e_null; a null name is e_null.
    static Font::StandardType1Font GetStandardFontType(const char* name);
    // The PostScript name of a standard font ("Times-Roman", ...).
    static const char* GetStandardFontName(Font::StandardType1Font index);

    ~FontImpl() override;

    virtual SDF::Obj* GetSDFObj() const { return mp_font_dict; }
    virtual Font::Type GetType() const = 0;
    virtual bool IsSimple() const = 0;
    virtual SDF::Obj* GetDescriptor() { return mp_font_descriptor; }
    virtual const char* GetName();
    virtual std::string GetFamilyName();
    virtual int GetUnitsPerEm();
    virtual bool IsFixedWidth() { return (m_flags & e_fixed_pitch) != 0; }
    virtual bool IsSerif() { return (m_flags & e_serif) != 0; }
    virtual bool IsSymbolic() { return (m_flags & e_symbolic) && !(m_flags & e_nonsymbolic); }
    virtual bool IsItalic() { return (m_flags & e_italic) != 0; }
    virtual bool IsAllCap() { return (m_flags & e_all_cap) != 0; }
    virtual bool IsForceBold() { return (m_flags & e_force_bold) != 0; }
    virtual bool IsHorizontalMode() = 0;
    virtual void SetHMode(bool) {}
    virtual bool HasSubsetTag();
    virtual double GetWidth(UInt32 code) = 0;
    virtual double GetMaxWidth() = 0;
    virtual double GetMissingWidth() { return m_missing_width; }
    virtual double GetVerticalAdvance(UInt32 code, double& vx, double& vy);
    virtual bool MapToUnicode(UInt32 code, Unicode* units, int capacity, UInt32& count,
                              bool use_tounicode) = 0;
    virtual bool MapUnicodeToCode(Unicode unit, UInt32& code);
    virtual const char* const* GetEncoding() = 0;
    virtual bool IsEmbedded() { return m_embedded; }
    virtual std::string GetDescriptorFontName();
    virtual SDF::Obj* GetEmbeddedFont();
    virtual int GetEmbeddedFontBufSize();
    virtual double GetAscent();
    virtual double GetDescent();
    virtual Rect GetBBox();
    virtual Font::StandardType1Font GetBase14Type() { return Font::e_null; }
    virtual bool IsCFF() { return false; }
    virtual Common::Matrix2D GetType3FontMatrix() { return {}; }
    virtual SDF::Obj* GetType3GlyphStream(UInt32) { return nullptr; }
    virtual Font GetDescendant();
    virtual int MapToCID(const UInt8* bytes, UInt32 length, UInt32& code, UInt32& cid);
    virtual UInt32 MapToCID(UInt32 code);
    virtual bool GetGlyphIndex(UInt32 code, UInt32& index);
    virtual void ReadFontDescriptor();
    // Opens the embedded font program; true when a face exists afterwards.
    virtual bool LoadFontProgram();
    // The face's charmaps: their number, and in `kinds` 1 for (3,1), 2 for (3,0), 4 for (1,0).
    virtual int GetCMapKinds(int& kinds);
    // The codes with a glyph in the face, in the order of its current charmap; empty without
    // a face. Read once.
    const std::vector<UInt32>& CharCodes();
    std::vector<UInt32>::const_iterator CharCodeBegin() { return CharCodes().begin(); }
    std::vector<UInt32>::const_iterator CharCodeEnd() { return CharCodes().end(); }

    // Glyph outlines and the face's metrics (FontGlyphPath.cpp). Outline points are pairs of
    // doubles with y growing downwards; operators are FontSupport::PathOperator.
    virtual bool GetGlyphPath(UInt32 code, std::vector<UInt8>& operators,
                              std::vector<double>& points, bool conics_to_cubics,
                              const Common::Matrix2D* matrix, bool code_is_glyph, UInt32* glyph);
    virtual bool GetGlyphBox(UInt32 code, Rect& box);
    virtual bool HasGlyph(UInt32 code);
    virtual double GetBuiltInWidth(UInt32 code);
    virtual double GetGlyphWidthByName(const char* name);
    virtual double GetGIDHorzAdvance(UInt32 gid);
    virtual double GetGIDVertAdvance(UInt32 gid);
    virtual double GetGIDDescender(UInt32 gid);
    // The advance of a Unicode value in the font's substitute, 1/1000 of the em.
    virtual double GetSubstGlyphWidth(UInt32 value);
    // The open face, or null; for callers that hold the font mutex.
    FontSupport::Face* GetFace() const { return mp_face.get(); }
    // How a font without a face is drawn, once decided (null before the first need).
    const Fnt::FontSubstitution* GetSubstitution() const { return mp_subst.get(); }

    std::recursive_mutex& GetFontMutex() { return m_font_mutex; }
    void SetGIDMap(bool enabled, UInt32 value) {
        m_gid_map = enabled;
        m_gid_map_value = value;
    }

protected:
    explicit FontImpl(SDF::Obj* font_dict);

    // Raises "<operation> can't be applied to <kind> font." under the condition "false".
    [[noreturn]] static void NotApplicable(const char* operation, const char* kind);
    // Raises "This method can be used only on Type0 font".
    [[noreturn]] static void OnlyType0();

    // Tries once to read the ToUnicode stream; every failure leaves the font without one.
    // Called under the font mutex.
    void LoadToUnicode();

    std::recursive_mutex m_font_mutex;
    SDF::Obj* mp_font_dict;
    SDF::Obj* mp_font_descriptor = nullptr;
    std::string m_name_cache;
    bool m_name_cached = false;
    UInt32 m_flags = 0;
    bool m_embedded = false;
    double m_missing_width = 0;
    double m_ascent = 950;
    double m_descent = -350;
    Rect m_bbox;
    bool m_gid_map = false;
    UInt32 m_gid_map_value = 0;
    // The open font program, and whether it was opened sized (one font unit is 256 outline
    // units; cleared for good by a failure of TrueType instructions).
    std::unique_ptr<FontSupport::Face> mp_face;
    bool m_scaled_outlines = false;
    // How a font without a face is drawn: decided once, at the first need.
    std::unique_ptr<Fnt::FontSubstitution> mp_subst;
    std::unique_ptr<Fnt::CMap> mp_tounicode;
    bool m_tounicode_loaded = false;
    std::vector<UInt32> m_char_codes;
    bool m_char_codes_read = false;

private:
    // The glyph roads of a font without a face (FontGlyphPath.cpp).
    Fnt::FontSubstitution& Substitution();
    // Which glyph of which substitute draws a code.
    struct SubstituteGlyph {
        enum Road { e_none, e_empty, e_standard, e_platform } road = e_none;
        int standard_index = 0;      // e_standard: the standard font
        const char* name = nullptr;  // e_standard: its glyph's name
        UInt32 value = 0;            // e_platform: the Unicode value or glyph index
        bool by_glyph = false;       // e_platform: `value` is a glyph index
    };
    SubstituteGlyph ResolveSubstitute(UInt32 code);
    bool GetSubstituteGlyphPath(UInt32 code, std::vector<UInt8>& operators,
                                std::vector<double>& points, bool conics_to_cubics);
    // The box of a standard substitute's glyph from the table; `known` false without one.
    bool GetStandardGlyphBox(const SubstituteGlyph& g, double pdf_width, Rect& box, bool& known);
    bool GetStandardFontGlyphPath(int index, const char* name, double pdf_width,
                                  std::vector<UInt8>& operators, std::vector<double>& points,
                                  bool conics_to_cubics);
};

}  // namespace lum::PDF
