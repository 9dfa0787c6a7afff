// What simple fonts read from their embedded programs: the built-in encoding of a Type 1
// program, the charmap and glyph of each code of a TrueType program, and glyph indexes.
// Every FreeType call runs under the FreeType lock, taken below the font's own mutex.
#include <ft2build.h>
#include FT_FREETYPE_H

#include <cstring>
#include <mutex>

#include "Common/Exception.h"
#include "FontSupport/Face.h"
#include "FontSupport/FreeTypeLibrary.h"
#include "PDF/Font/Encodings.h"
#include "PDF/Font/GlyphNames.h"
#include "PDF/Font/SimpleFont.h"
#include "SDF/Obj.h"

namespace lum::PDF::Fnt {

namespace {

// FreeType's glyph-dict service reads names into a buffer of this size.
constexpr size_t kGlyphNameBuffer = 2048;

// The name of glyph `gid`, or false.
bool GlyphName(FT_Face face, FT_UInt gid, char (&buf)[kGlyphNameBuffer]) {
    buf[0] = 0;
    return FT_Get_Glyph_Name(face, gid, buf, FT_UInt(sizeof buf)) == 0 && buf[0] != 0;
}

// The code's glyph, trying the code as it stands and in the private-use pages where symbol
// fonts put their glyphs; the ellipsis of a math font's midline at 0x22EF as the plain one.
FT_UInt LookupWithVariants(FT_Face face, FT_ULong c) {
    for (FT_ULong base : {0UL, 0xF000UL, 0xF100UL, 0xF200UL})
        if (FT_UInt gid = FT_Get_Char_Index(face, base + c)) return gid;
    return c == 0x22EF ? FT_Get_Char_Index(face, 0x2026) : 0;
}

}  // namespace

// --- Type 1 ---

void Type1Font::ReadBuiltinEncoding() {
    CopyEncoding(nullptr);
    m_encoding_kind = e_custom;
    if (!LoadFontProgram()) return;  // no face: the table stays empty
    try {
        std::lock_guard<std::recursive_mutex> font_lock(m_font_mutex);
        std::lock_guard<std::mutex> ft_lock(FontSupport::FreeTypeLibrary::GetLock());
        FT_Face face = mp_face->Get();
        int chosen = -1;
        for (int i = 0; i < face->num_charmaps; ++i) {
            const FT_Encoding enc = face->charmaps[i]->encoding;
            if (enc == FT_ENCODING_ADOBE_CUSTOM || enc == FT_ENCODING_ADOBE_STANDARD ||
                enc == FT_ENCODING_ADOBE_EXPERT || enc == FT_ENCODING_ADOBE_LATIN_1) {
                chosen = i;
                break;
            }
            if (chosen < 0 && enc != FT_ENCODING_NONE) chosen = i;
        }
        if (chosen >= 0) {
            if (face->charmaps[chosen]->encoding == FT_ENCODING_UNICODE)
                FT_Select_Charmap(face, FT_ENCODING_UNICODE);
            else
                FT_Set_Charmap(face, face->charmaps[chosen]);
        }
        char name[kGlyphNameBuffer];
        FT_UInt gid = 0;
        for (FT_ULong code = FT_Get_First_Char(face, &gid); gid != 0;
             code = FT_Get_Next_Char(face, code, &gid)) {
            if (code < 256 && GlyphName(face, gid, name)) m_encoding[code] = OwnName(name);
        }
    } catch (const Common::Exception&) {
        mp_face.reset();
        m_embedded = false;
        CopyEncoding(gl_standard_encoding);
        m_encoding_kind = e_standard;
    }
}

bool Type1Font::GetGlyphIndex(UInt32 code, UInt32& index) {
    LUM_CHECK(code < 256, "char_code<256");
    std::lock_guard<std::recursive_mutex> font_lock(m_font_mutex);
    index = 0;
    if (!LoadFontProgram()) return false;
    if (!m_gids_loaded) {
        std::lock_guard<std::mutex> ft_lock(FontSupport::FreeTypeLibrary::GetLock());
        for (int c = 0; c < 256; ++c)
            m_gids[c] = m_encoding[c] ? FT_Get_Name_Index(mp_face->Get(), m_encoding[c]) : 0;
        m_gids_loaded = true;
    }
    index = m_gids[code];
    return true;
}

bool Type1Font::IsCFF() {
    if (!mp_font_descriptor) return false;
    try {
        SDF::Obj* ff3 = mp_font_descriptor->FindObj(SDF::e_FontFile3);
        SDF::Obj* sub = ff3 ? ff3->FindObj(SDF::e_Subtype) : nullptr;
        return sub && sub->IsName() &&
               (std::strcmp(sub->GetName(), "Type1C") == 0 ||
                std::strcmp(sub->GetName(), "CIDFontType0C") == 0);
    } catch (const Common::Exception&) {
        return false;
    }
}

// --- TrueType ---

bool TrueTypeFont::LoadFontProgram() {
    std::lock_guard<std::recursive_mutex> font_lock(m_font_mutex);
    if (m_program_loaded) return mp_face != nullptr;
    m_program_loaded = true;
    if (!FontImpl::LoadFontProgram()) return false;
    bool symbol_charmap = false, names_open = false;
    const Route route = SetCharmap(symbol_charmap, names_open);
    MapCodes(route, symbol_charmap, names_open);
    return true;
}

TrueTypeFont::Route TrueTypeFont::SetCharmap(bool& symbol_charmap, bool& names_open) {
    std::lock_guard<std::mutex> ft_lock(FontSupport::FreeTypeLibrary::GetLock());
    FT_Face face = mp_face->Get();
    FT_CharMap unicode = nullptr, mac = nullptr, symbol = nullptr;
    for (int i = 0; i < face->num_charmaps; ++i) {
        FT_CharMap cm = face->charmaps[i];
        if ((cm->platform_id == 3 && cm->encoding_id == 1) || cm->platform_id == 0) unicode = cm;
        else if (cm->platform_id == 1 && cm->encoding_id == 0) mac = cm;
        else if (cm->platform_id == 3 && cm->encoding_id == 0) symbol = cm;
    }
    const bool symbolic = (m_flags & e_symbolic) != 0;
    FT_CharMap choice = nullptr;
    if (!(m_has_encoding && !symbolic)) {
        choice = symbol ? symbol : unicode ? unicode : mac ? mac
                 : face->num_charmaps > 0 ? face->charmaps[0] : nullptr;
    } else if (m_encoding_kind == e_mac_roman) {
        choice = mac ? mac : unicode;
    } else {
        choice = unicode ? unicode : mac;
    }
    if (!choice || FT_Set_Charmap(face, choice) != 0) {
        names_open = FT_HAS_GLYPH_NAMES(face) != 0;
        return e_route_other;
    }
    symbol_charmap = choice == symbol;
    if (choice == mac) return e_route_mac;
    if (choice == unicode) return e_route_unicode;
    return e_route_other;
}

void TrueTypeFont::MapCodes(Route route, bool symbol_charmap, bool names_open) {
    // The Unicode route looks names up by their values. This table serves the route only: the
    // font's own is built at the first mapping, from the names the routes leave.
    Unicode values[256] = {};
    if (route == e_route_unicode) BuildUnicodeTable(UnicodeInput(), values);
    std::lock_guard<std::mutex> ft_lock(FontSupport::FreeTypeLibrary::GetLock());
    FT_Face face = mp_face->Get();
    char name[kGlyphNameBuffer];
    auto name_from_face = [&](int c, FT_UInt gid) {
        if (names_open && !m_encoding[c] && GlyphName(face, gid, name)) m_encoding[c] = OwnName(name);
    };
    for (int c = 0; c < 256; ++c) {
        FT_UInt gid = 0;
        switch (route) {
            case e_route_mac: {
                if (m_encoding[c]) {
                    const int mac_code = MacRomanCodeOf(m_encoding[c]);
                    if (mac_code >= 0) gid = LookupWithVariants(face, FT_ULong(mac_code));
                }
                if (gid == 0) {
                    gid = LookupWithVariants(face, FT_ULong(c));
                    if (gid) name_from_face(c, gid);
                }
                if (!m_encoding[c]) m_encoding[c] = gl_mac_roman_encoding[c] ? gl_mac_roman_encoding[c]
                                                                             : gl_standard_encoding[c];
                break;
            }
            case e_route_unicode: {
                if (m_encoding[c]) {
                    const Unicode value = values[c];
                    if (value != 0 && value != kCompoundName)
                        gid = LookupWithVariants(face, value);
                    else
                        gid = FT_Get_Name_Index(face, m_encoding[c]);
                }
                if (gid == 0) {
                    gid = LookupWithVariants(face, FT_ULong(c));
                    if (gid) name_from_face(c, gid);
                }
                if (!m_encoding[c]) m_encoding[c] = gl_win_ansi_encoding[c] ? gl_win_ansi_encoding[c]
                                                                            : gl_standard_encoding[c];
                break;
            }
            case e_route_other: {
                if (!m_encoding[c])
                    m_encoding[c] = gl_win_ansi_encoding[c] ? gl_win_ansi_encoding[c] : gl_standard_encoding[c];
                if (!names_open) {
                    gid = FT_Get_Char_Index(face, FT_ULong(c));
                    if (gid == 0 && symbol_charmap)
                        for (FT_ULong base : {0xF000UL, 0xF100UL, 0xF200UL})
                            if ((gid = FT_Get_Char_Index(face, base + FT_ULong(c))) != 0) break;
                }
                break;
            }
        }
        m_gids[c] = gid;
    }
    if (route == e_route_other && names_open) {
        // Each glyph's name goes to every code of that name that has no glyph yet.
        for (FT_Long g = 0; g < face->num_glyphs; ++g) {
            if (!GlyphName(face, FT_UInt(g), name)) continue;
            for (int c = 0; c < 256; ++c)
                if (m_gids[c] == 0 && m_encoding[c] && std::strcmp(m_encoding[c], name) == 0)
                    m_gids[c] = FT_UInt(g);
        }
    }
    if (FT_HAS_GLYPH_NAMES(face)) {
        for (int c = 0; c < 256; ++c)
            if (m_gids[c] == 0 && m_encoding[c]) m_gids[c] = FT_Get_Name_Index(face, m_encoding[c]);
    }
}

bool TrueTypeFont::GetGlyphIndex(UInt32 code, UInt32& index) {
    index = 0;
    if (code >= 256 || !LoadFontProgram()) return false;
    index = m_gids[code];
    return true;
}

}  // namespace lum::PDF::Fnt
