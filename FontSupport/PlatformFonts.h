#pragma once
// The platform's font service: the system fonts that stand in for a font a document names but
// doesn't embed. Fontconfig lists and matches the installed fonts, FreeType reads them. The
// interface keeps the shape of the service the font code was written against: a family is
// looked for by name and charset, a font is made from a request (height, weight, italic,
// charset, pitch and family, face name), and the font gives outlines and advances in units of
// 1000 per em.
//
// Windows families that documents name are found under the installed families that are
// metric-compatible with them or cover the same scripts (kFamilyAliases in the .cpp; the
// README lists them).
#include <memory>
#include <string>

#include "Common/Types.h"
#include "FontSupport/Face.h"

namespace lum::FontSupport {

// Charsets, in the numbering the font code decides by.
enum Charset {
    e_ansi_charset = 0,
    e_default_charset = 1,
    e_symbol_charset = 2,
    e_shiftjis_charset = 128,
    e_hangul_charset = 129,
    e_gb2312_charset = 134,
    e_chinesebig5_charset = 136,
};

// Pitch and family bits of a request.
enum PitchAndFamily { e_fixed_pitch = 1, e_roman = 16, e_swiss = 32 };

struct FontRequest {
    int height = -1000;  // negative: the em height
    int weight = 400;
    bool italic = false;
    int charset = e_ansi_charset;
    int wanted_charset = e_ansi_charset;  // before a family match chose its own
    int pitch_and_family = 0;
    std::string face_name;  // up to 31 characters
};

struct FamilyMatch {
    std::string face_name;
    int charset = e_ansi_charset;
};

// Looks for a family for `charset` whose name, reduced to letters and digits and cut at 31
// characters, begins with `wanted` in either case. The first that fits is kept; one of the
// same length ends the search, and so does a later one whose name with its style equals
// `wanted` + `style`. `charset` -1 accepts every charset.
bool FindFontFamily(const std::string& wanted, const std::string& style, int charset,
                    FamilyMatch& out);

class PlatformFont {
public:
    // A font for the request, or null when the system has no fonts at all.
    static std::unique_ptr<PlatformFont> Create(const FontRequest& request);

    // The family the system actually gave.
    const std::string& GetFaceName() const { return m_face_name; }

    // The outline of a character (`by_glyph` false: a Unicode value) or a glyph index, in
    // units of 1000 per em, y downwards, as quadratic or cubic pieces with a closepath per
    // contour. False when the font has no such glyph.
    bool GetGlyphOutline(UInt32 value, bool by_glyph, GlyphOutline& out);
    // The advance of a character in 1000 per em; -1 when it has no glyph.
    double GetAdvance(UInt32 unicode);

private:
    PlatformFont() = default;
    UInt32 GlyphOf(UInt32 unicode);

    std::unique_ptr<Face> mp_face;
    std::string m_face_name;
};

// Library stop: fontconfig's configuration and the lists of families go. Fonts made before
// keep working (they read their files through FreeType).
void StopPlatformFonts();

// The name as the enumeration compares it: letters and digits only, at most 31 characters.
std::string ReduceFaceName(const std::string& name);

}  // namespace lum::FontSupport
