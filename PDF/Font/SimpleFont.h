#pragma once
// Fonts whose codes are single bytes. Each code has a glyph name and a width in a table of
// 256; those two tables are all the text road needs, so the constructor fills them from what
// the dictionary and the font program give, in a fixed order of preference, and nothing later
// can leave a code without a width.
#include <deque>
#include <string>

#include "PDF/Font/Encodings.h"
#include "PDF/Font/FontImpl.h"
#include "PDF/Font/GlyphNames.h"

namespace lum::PDF::Fnt {

class SimpleFont : public FontImpl {
public:
    bool IsSimple() const override { return true; }
    bool IsHorizontalMode() override { return true; }
    double GetWidth(UInt32 code) override { return code < 256 ? m_widths[code] : 0; }
    double GetMaxWidth() override;
    bool MapToUnicode(UInt32 code, Unicode* units, int capacity, UInt32& count,
                      bool use_tounicode) override;
    bool MapUnicodeToCode(Unicode unit, UInt32& code) override;
    const char* const* GetEncoding() override { return m_encoding; }
    Font::StandardType1Font GetBase14Type() override { return m_base14_type; }

    EncodingKind GetEncodingKind() const { return m_encoding_kind; }

protected:
    explicit SimpleFont(SDF::Obj* font_dict);

    // Steps shared by the kinds' constructors.
    // Base14 type from the name; without a descriptor, a standard font's metrics or a failure.
    void ReadStandardFont();
    // Encoding as a name or a dictionary's BaseEncoding; true when a base encoding was set.
    bool ReadEncoding();
    // Differences over the table; true when the array exists. Empty slots then take
    // StandardEncoding.
    bool AddEncodingDifferences();
    void CopyEncoding(const char* const* table);
    // A copy of `name` that lives as long as the font.
    const char* OwnName(const char* name);
    void InitWidths();
    // The Unicode table and the ToUnicode load, once; cheap after the first call.
    void PrepareUnicode();
    // What the Unicode table is built from.
    UnicodeTableInput UnicodeInput();

    Font::StandardType1Font m_base14_type = Font::e_null;
    EncodingKind m_encoding_kind = e_custom;
    const char* m_encoding[256] = {};
    std::deque<std::string> m_owned_names;
    double m_widths[256] = {};
    Unicode m_unicode[256] = {};
    std::atomic<bool> m_unicode_ready{false};
};

class Type1Font : public SimpleFont {
public:
    explicit Type1Font(SDF::Obj* font_dict);
    Font::Type GetType() const override { return Font::e_Type1; }
    bool GetGlyphIndex(UInt32 code, UInt32& index) override;
    bool IsCFF() override;

private:
    // The encoding of the embedded program, from its charmap and glyph names.
    void ReadBuiltinEncoding();

    UInt32 m_gids[256] = {};
    bool m_gids_loaded = false;
};

class MMType1Font final : public Type1Font {
public:
    using Type1Font::Type1Font;
    Font::Type GetType() const override { return Font::e_MMType1; }
};

class TrueTypeFont final : public SimpleFont {
public:
    explicit TrueTypeFont(SDF::Obj* font_dict);
    Font::Type GetType() const override { return Font::e_TrueType; }
    // Opens the program, then chooses its charmap and gives each code a glyph (and a name
    // where the font has none). Runs once.
    bool LoadFontProgram() override;
    bool GetGlyphIndex(UInt32 code, UInt32& index) override;

private:
    enum Route { e_route_mac, e_route_unicode, e_route_other };
    // Chooses and sets the charmap; answers the route, and whether it is the symbol charmap.
    Route SetCharmap(bool& symbol_charmap, bool& names_open);
    void MapCodes(Route route, bool symbol_charmap, bool names_open);

    bool m_has_encoding = false;
    bool m_program_loaded = false;
    UInt32 m_gids[256] = {};
};

class Type3Font final : public SimpleFont {
public:
    explicit Type3Font(SDF::Obj* font_dict);
    Font::Type GetType() const override { return Font::e_Type3; }
    const char* GetName() override;
    bool IsEmbedded() override { return true; }
    std::string GetDescriptorFontName() override { return GetName(); }
    int GetUnitsPerEm() override;
    SDF::Obj* GetEmbeddedFont() override;
    int GetEmbeddedFontBufSize() override;
    Common::Matrix2D GetType3FontMatrix() override { return m_font_matrix; }
    SDF::Obj* GetType3GlyphStream(UInt32 code) override;
    Rect GetBBox() override { return m_bbox; }
    bool MapToUnicode(UInt32 code, Unicode* units, int capacity, UInt32& count,
                      bool use_tounicode) override;
    // Raises: a Type 3 glyph is a content stream, not an outline.
    bool GetGlyphPath(UInt32 code, std::vector<UInt8>& operators, std::vector<double>& points,
                      bool conics_to_cubics, const Common::Matrix2D* matrix, bool code_is_glyph,
                      UInt32* glyph) override;
    bool GetGlyphBox(UInt32 code, Rect& box) override;

private:
    SDF::Obj* mp_char_procs = nullptr;
    SDF::Obj* m_procs[256] = {};
    bool m_procs_built = false;
    Common::Matrix2D m_font_matrix{0.001, 0, 0, 0.001, 0, 0};
};

}  // namespace lum::PDF::Fnt
