#pragma once
// The descendant of a composite font: metrics by CID. Codes never reach it; the Type 0 font
// turns them into CIDs first.
#include <map>

#include "PDF/Font/CIDMetrics.h"
#include "PDF/Font/FontImpl.h"

namespace lum::PDF::Fnt {

class CIDFont : public FontImpl {
public:
    bool IsSimple() const override { return false; }
    bool IsHorizontalMode() override { return m_horizontal; }
    void SetHMode(bool horizontal) override { m_horizontal = horizontal; }
    double GetWidth(UInt32 cid) override;
    double GetMaxWidth() override;
    double GetMissingWidth() override { return m_default_width; }
    double GetVerticalAdvance(UInt32 cid, double& vx, double& vy) override;
    bool MapToUnicode(UInt32, Unicode*, int, UInt32&, bool) override {
        NotApplicable("MapToUnicode()", "CIDFont");
    }
    const char* const* GetEncoding() override { NotApplicable("GetEncoding()", "CIDFont"); }
    bool IsCFF() override;

protected:
    explicit CIDFont(SDF::Obj* font_dict);

    Int32 m_default_width = 1000;
    Int32 m_default_w1y = -1000;
    Int32 m_default_vy = 880;
    CIDRunTable<Int32> m_widths;              // W
    CIDRunTable<VerticalMetrics> m_vertical;  // W2
    Int32 m_max_width = 0;
    bool m_horizontal = true;

private:
    void ReadWidths();
    void ReadVerticalMetrics();
    // A font of ours that names a _CharSet measures a CID that W lacks in its substitute, and
    // keeps the width, in the dictionary's W as well.
    double AddSubstituteWidth(UInt32 cid);

    bool m_has_charset = false;
    std::map<UInt32, Int32> m_added_widths;  // under the font mutex
};

class CIDType0Font final : public CIDFont {
public:
    explicit CIDType0Font(SDF::Obj* font_dict) : CIDFont(font_dict) {}
    Font::Type GetType() const override { return Font::e_CIDType0; }
    // With a face the CID itself (FreeType indexes CID-keyed programs by CID).
    bool GetGlyphIndex(UInt32 cid, UInt32& index) override;
};

class CIDType2Font final : public CIDFont {
public:
    explicit CIDType2Font(SDF::Obj* font_dict);
    Font::Type GetType() const override { return Font::e_CIDType2; }
    // With a face: through CIDToGIDMap when the font has one, else the CID itself.
    bool GetGlyphIndex(UInt32 cid, UInt32& index) override;

private:
    std::vector<UInt16> m_cid_to_gid;  // empty for Identity
};

}  // namespace lum::PDF::Fnt
