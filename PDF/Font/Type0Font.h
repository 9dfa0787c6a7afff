#pragma once
// A composite font: the Encoding CMap that cuts a string into codes and turns codes into
// CIDs, and a descendant font (a font object of its own) with the metrics by CID. Nearly
// everything goes to the descendant.
#include <memory>
#include <string>

#include "PDF/Font/CMap.h"
#include "PDF/Font/FontImpl.h"

namespace lum::PDF::Fnt {

class Type0Font final : public FontImpl {
public:
    explicit Type0Font(SDF::Obj* font_dict);
    ~Type0Font() override;

    Font::Type GetType() const override { return Font::e_Type0; }
    bool IsSimple() const override { return false; }
    SDF::Obj* GetDescriptor() override { return m_descendant.GetDescriptor(); }
    std::string GetFamilyName() override { return m_descendant.GetFamilyName(); }
    int GetUnitsPerEm() override { return m_descendant.GetUnitsPerEm(); }
    bool IsFixedWidth() override { return m_descendant.IsFixedWidth(); }
    bool IsSerif() override { return m_descendant.IsSerif(); }
    bool IsSymbolic() override { return m_descendant.IsSymbolic(); }
    bool IsItalic() override { return m_descendant.IsItalic(); }
    bool IsAllCap() override { return m_descendant.IsAllCap(); }
    bool IsForceBold() override { return m_descendant.IsForceBold(); }
    bool IsHorizontalMode() override { return m_horizontal; }
    double GetWidth(UInt32 code) override { return m_descendant.GetWidth(MapToCID(code)); }
    double GetMaxWidth() override { return m_descendant.GetMaxWidth(); }
    double GetMissingWidth() override { return m_descendant.GetMissingWidth(); }
    double GetVerticalAdvance(UInt32 code, double& vx, double& vy) override {
        return m_descendant.GetVerticalAdvance(MapToCID(code), vx, vy);
    }
    bool MapToUnicode(UInt32 code, Unicode* units, int capacity, UInt32& count,
                      bool use_tounicode) override;
    const char* const* GetEncoding() override { NotApplicable("GetEncoding()", "Type0"); }
    bool IsEmbedded() override { return m_descendant.IsEmbedded(); }
    double GetAscent() override { return m_descendant.GetAscent(); }
    double GetDescent() override { return m_descendant.GetDescent(); }
    Rect GetBBox() override { return m_descendant.GetBBox(); }
    bool IsCFF() override { return m_descendant.IsCFF(); }
    Font GetDescendant() override { return m_descendant; }
    int MapToCID(const UInt8* bytes, UInt32 length, UInt32& code, UInt32& cid) override;
    UInt32 MapToCID(UInt32 code) override;
    bool GetGlyphIndex(UInt32 code, UInt32& index) override {
        return m_descendant.GetGlyphIndex(code, index);
    }
    void ReadFontDescriptor() override {}
    // Embedded: the CID's glyph in the descendant. Not embedded: the code's Unicode value, or
    // the CID by glyph index, in the descendant's substitute (FontGlyphPath.cpp).
    bool GetGlyphPath(UInt32 code, std::vector<UInt8>& operators, std::vector<double>& points,
                      bool conics_to_cubics, const Common::Matrix2D* matrix, bool code_is_glyph,
                      UInt32* glyph) override;
    bool GetGlyphBox(UInt32 code, Rect& box) override;

    // Registry-Ordering of the descendant ("Adobe-Japan1"), empty when it gives none.
    const std::string& GetCollection() const { return m_collection; }

private:
    // What the descendant is asked for, with its GID map set: the CID when it is embedded; else
    // the code's Unicode value, or the CID as a glyph index of the system font.
    UInt32 DescendantCode(UInt32 code);
    // The CMap that turns a collection's CIDs into Unicode, for a font without ToUnicode.
    const CMap* CIDToUnicode();

    std::unique_ptr<CMap> mp_encoding;        // Encoding; none when it can't be found
    std::unique_ptr<CMap> mp_cid_to_unicode;  // the collection's -UCS2 CMap
    bool m_cid_to_unicode_loaded = false;
    Font m_descendant;
    std::string m_collection;
    bool m_horizontal = true;
};

}  // namespace lum::PDF::Fnt
