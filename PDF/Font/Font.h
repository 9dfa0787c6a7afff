#pragma once
// A value handle on the one font object that a document makes for a font dictionary. The
// text road uses a font to cut a shown string into character codes, to give each code an
// advance, and to give each code its Unicode values. Copying a handle is cheap (a counted
// reference); every operation on an empty handle raises "Bad font".
#include <mutex>
#include <string>
#include <vector>

#include "Common/Matrix2D.h"
#include "Common/Types.h"
#include "PDF/Rect.h"

namespace lum::SDF {
class Obj;
class SDFDoc;
}  // namespace lum::SDF

namespace lum::PDF {

class FontImpl;

class Font {
public:
    enum Type {
        e_Type1 = 0,
        e_TrueType = 1,
        e_MMType1 = 2,
        e_Type3 = 3,
        e_Type0 = 4,
        e_CIDType0 = 5,
        e_CIDType2 = 6,
    };

    // The 14 standard fonts, in the order of the program's tables; e_null is none of them.
    enum StandardType1Font {
        e_times_roman = 0,
        e_times_bold = 1,
        e_times_italic = 2,
        e_times_bold_italic = 3,
        e_helvetica = 4,
        e_helvetica_bold = 5,
        e_helvetica_oblique = 6,
        e_helvetica_bold_oblique = 7,
        e_courier = 8,
        e_courier_bold = 9,
        e_courier_oblique = 10,
        e_courier_bold_oblique = 11,
        e_symbol = 12,
        e_zapf_dingbats = 13,
        e_null = 14,
    };

    // An empty handle.
    Font() noexcept = default;
    // The font of `font_dict`, from the document's table of shared fonts or made now. A null
    // object gives an empty handle. Raises what the factory raises for a dictionary that can't
    // become a font.
    explicit Font(SDF::Obj* font_dict);
    // A new standard font in `doc`, as a dictionary of Subtype Type1 in WinAnsiEncoding.
    static Font Create(SDF::SDFDoc& doc, StandardType1Font index);
    // Adopts a resource that was made outside any table (takes one reference).
    explicit Font(FontImpl* impl) noexcept;

    Font(const Font& other) noexcept;
    Font(Font&& other) noexcept;
    Font& operator=(const Font& other) noexcept;
    Font& operator=(Font&& other) noexcept;
    ~Font();

    bool IsValid() const noexcept { return mp_impl != nullptr; }
    explicit operator bool() const noexcept { return mp_impl != nullptr; }
    FontImpl* GetImpl() const noexcept { return mp_impl; }
    bool operator==(const Font& o) const noexcept { return mp_impl == o.mp_impl; }

    SDF::Obj* GetSDFObj() const;
    Type GetType() const;
    bool IsSimple() const;
    SDF::Obj* GetDescriptor() const;
    // BaseFont (Name of a Type 3 font); "" when there is none.
    const char* GetName() const;
    std::string GetFamilyName() const;
    int GetUnitsPerEm() const;
    bool IsFixedWidth() const;
    bool IsSerif() const;
    bool IsSymbolic() const;
    bool IsItalic() const;
    bool IsAllCap() const;
    bool IsForceBold() const;
    bool IsHorizontalMode() const;
    bool HasSubsetTag() const;
    // Advance of a code (a CID for a descendant font): thousandths of text space, glyph
    // space for Type 3.
    double GetWidth(UInt32 code) const;
    double GetMaxWidth() const;
    double GetMissingWidth() const;
    // Of a composite font: the vertical advance w1 of a CID and its position vector.
    double GetVerticalAdvance(UInt32 cid, double& vx, double& vy) const;
    // The UTF-16 units of a code: at least one unit when capacity allows, a private-use
    // placeholder (result false) when the code has no meaning.
    bool MapToUnicode(UInt32 code, Unicode* units, int capacity, UInt32& count,
                      bool use_tounicode = true) const;
    bool MapUnicodeToCode(Unicode unit, UInt32& code) const;
    // The glyph names of codes 0 to 255 of a simple font (null for none).
    const char* const* GetEncoding() const;
    bool IsEmbedded() const;
    std::string GetDescriptorFontName() const;
    SDF::Obj* GetEmbeddedFont() const;
    int GetEmbeddedFontBufSize() const;
    double GetAscent() const;
    double GetDescent() const;
    Rect GetBBox() const;
    StandardType1Font GetBase14Type() const;
    bool IsCFF() const;
    Common::Matrix2D GetType3FontMatrix() const;
    SDF::Obj* GetType3GlyphStream(UInt32 code) const;
    Font GetDescendant() const;
    // Cuts the next character code from `bytes` (length bytes left): the code and its CID;
    // answers the bytes taken.
    int MapToCID(const UInt8* bytes, UInt32 length, UInt32& code, UInt32& cid) const;
    UInt32 MapToCID(UInt32 code) const;
    bool GetGlyphIndex(UInt32 code, UInt32& index) const;
    // The outline of a code's glyph (or of glyph index `code` when `code_is_glyph`): operators
    // (FontSupport::PathOperator) and points, y downwards; `matrix`, when given, goes last.
    // An empty glyph is true with empty vectors; false when no outline can be given.
    bool GetGlyphPath(UInt32 code, std::vector<UInt8>& operators, std::vector<double>& points,
                      bool conics_to_cubics = true, const Common::Matrix2D* matrix = nullptr,
                      bool code_is_glyph = false, UInt32* glyph = nullptr) const;
    // The box of the control points of a code's glyph, in the units and orientation of
    // GetGlyphPath (curves count by their control points); false when there is no outline or
    // it has no points. A standard font standing in answers from the build-time table.
    bool GetGlyphBox(UInt32 code, Rect& box) const;
    bool HasGlyph(UInt32 code) const;
    double GetBuiltInWidth(UInt32 code) const;
    double GetGlyphWidthByName(const char* name) const;
    double GetGIDHorzAdvance(UInt32 gid) const;
    double GetGIDVertAdvance(UInt32 gid) const;
    double GetGIDDescender(UInt32 gid) const;
    double GetSubstGlyphWidth(UInt32 value) const;

    void SetGIDMap(bool enabled, UInt32 value);
    std::recursive_mutex& GetFontMutex() const;

private:
    FontImpl* mp_impl = nullptr;
};

}  // namespace lum::PDF
