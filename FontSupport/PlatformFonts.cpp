#include "FontSupport/PlatformFonts.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <cstdlib>
#include <cctype>
#include <map>
#include <mutex>
#include <vector>

#include "Common/Exception.h"
#include "FontSupport/FreeTypeLibrary.h"

namespace lum::FontSupport {

namespace {

constexpr size_t kMaxFaceName = 31;

// Families that documents name, and the installed family that stands in for each: the
// metric-compatible Liberation fonts for the three core families, DejaVu for the other Latin
// families and for the wide-coverage Unicode font, Droid Sans Fallback for the CJK families.
struct Alias {
    const char* name;    // as the enumeration compares it (letters and digits)
    const char* family;  // fontconfig's family
    int charset;         // -1: any
};
constexpr Alias kFamilyAliases[] = {
    {"Arial", "Liberation Sans", -1},
    {"ArialNarrow", "Liberation Sans Narrow", -1},
    {"TimesNewRoman", "Liberation Serif", -1},
    {"CourierNew", "Liberation Mono", -1},
    {"ArialUnicodeMS", "DejaVu Sans", -1},
    {"Verdana", "DejaVu Sans", -1},
    {"Tahoma", "DejaVu Sans", -1},
    {"TrebuchetMS", "DejaVu Sans", -1},
    {"Georgia", "DejaVu Serif", -1},
    {"LucidaConsole", "DejaVu Sans Mono", -1},
    {"KozukaGothic", "Droid Sans Fallback", e_shiftjis_charset},
    {"KozukaMincho", "Droid Sans Fallback", e_shiftjis_charset},
    {"MSGothic", "Droid Sans Fallback", e_shiftjis_charset},
    {"MSMincho", "Droid Sans Fallback", e_shiftjis_charset},
    {"AdobeMyungjoStdM", "Droid Sans Fallback", e_hangul_charset},
    {"Batang", "Droid Sans Fallback", e_hangul_charset},
    {"AdobeMingStdL", "Droid Sans Fallback", e_chinesebig5_charset},
    {"MingLiU", "Droid Sans Fallback", e_chinesebig5_charset},
    {"AdobeSongStdL", "Droid Sans Fallback", e_gb2312_charset},
    {"SimSun", "Droid Sans Fallback", e_gb2312_charset},
};

const char* LangOf(int charset) {
    switch (charset) {
        case e_shiftjis_charset: return "ja";
        case e_hangul_charset: return "ko";
        case e_gb2312_charset: return "zh-cn";
        case e_chinesebig5_charset: return "zh-tw";
        default: return nullptr;
    }
}

struct Candidate {
    std::string name;     // as compared: reduced
    std::string styled;   // name and style, reduced
    std::string family;   // fontconfig's family, for the request
    int charset;
};

std::mutex& FcLock() {
    static std::mutex lock;
    return lock;
}

std::map<int, std::vector<Candidate>>& CandidateCache() {
    static std::map<int, std::vector<Candidate>> cache;
    return cache;
}

// Fontconfig is started at the first need and stopped with the library (StopPlatformFonts),
// under FcLock.
bool gl_fc_started = false;
bool gl_fc_ready = false;

bool FcReady() {
    if (!gl_fc_started) {
        gl_fc_started = true;
        gl_fc_ready = FcInit() == FcTrue;
        // A process that ends without stopping the library still hands fontconfig's memory
        // back, so that leak checkers see only our own. The cache is made first, so that it
        // is destroyed after the handler ran.
        CandidateCache();
        static const bool at_exit = std::atexit([] { StopPlatformFonts(); }) == 0;
        (void)at_exit;
    }
    return gl_fc_ready;
}

// Installed scalable families for a charset, with the aliases whose family is among them;
// sorted by name so that the first fit doesn't depend on the order of the font folders.

const std::vector<Candidate>& CandidatesFor(int charset) {
    auto& cache = CandidateCache();
    auto found = cache.find(charset);
    if (found != cache.end()) return found->second;
    std::vector<Candidate>& out = cache[charset];
    if (!FcReady()) return out;
    FcPattern* pat = FcPatternCreate();
    FcPatternAddBool(pat, FC_SCALABLE, FcTrue);
    if (const char* lang = LangOf(charset)) FcPatternAddString(pat, FC_LANG, (const FcChar8*)lang);
    FcObjectSet* os = FcObjectSetBuild(FC_FAMILY, FC_STYLE, nullptr);
    FcFontSet* fs = FcFontList(nullptr, pat, os);
    std::vector<std::string> installed;
    for (int i = 0; fs && i < fs->nfont; ++i) {
        FcChar8* style = nullptr;
        FcPatternGetString(fs->fonts[i], FC_STYLE, 0, &style);
        FcChar8* family = nullptr;
        for (int k = 0; FcPatternGetString(fs->fonts[i], FC_FAMILY, k, &family) == FcResultMatch; ++k) {
            const std::string fam = reinterpret_cast<const char*>(family);
            installed.push_back(fam);
            out.push_back({ReduceFaceName(fam), ReduceFaceName(fam + (style ? (const char*)style : "")),
                           fam, charset});
        }
    }
    if (fs) FcFontSetDestroy(fs);
    FcObjectSetDestroy(os);
    FcPatternDestroy(pat);
    for (const Alias& a : kFamilyAliases) {
        if (a.charset >= 0 && charset >= 0 && a.charset != charset && charset > e_symbol_charset) continue;
        if (std::find(installed.begin(), installed.end(), a.family) == installed.end()) continue;
        for (const char* style : {"", "Bold", "Italic", "BoldItalic"})
            out.push_back({a.name, std::string(a.name) + style, a.family,
                           a.charset >= 0 ? a.charset : charset});
    }
    std::stable_sort(out.begin(), out.end(),
                     [](const Candidate& x, const Candidate& y) { return x.name < y.name; });
    return out;
}

bool StartsWithNoCase(const std::string& s, const std::string& prefix) {
    if (prefix.size() > s.size()) return false;
    for (size_t i = 0; i < prefix.size(); ++i)
        if (std::tolower((unsigned char)s[i]) != std::tolower((unsigned char)prefix[i])) return false;
    return true;
}

bool EqualsNoCase(const std::string& a, const std::string& b) {
    return a.size() == b.size() && StartsWithNoCase(a, b);
}

// The installed family a face name stands for: an alias's family, or the name itself.
std::string FamilyFor(const std::string& face_name) {
    const std::string reduced = ReduceFaceName(face_name);
    for (const Alias& a : kFamilyAliases)
        if (EqualsNoCase(reduced, a.name)) return a.family;
    return face_name;
}

struct Matched {
    std::string file;
    int index = 0;
    std::string family;
};

bool Match(const FontRequest& r, int charset, Matched& out) {
    if (!FcReady()) return false;
    FcPattern* pat = FcPatternCreate();
    if (!r.face_name.empty()) {
        FcPatternAddString(pat, FC_FAMILY, (const FcChar8*)FamilyFor(r.face_name).c_str());
    } else {
        const char* generic = (r.pitch_and_family & e_fixed_pitch) ? "monospace"
                              : (r.pitch_and_family & e_roman)    ? "serif"
                                                                  : "sans-serif";
        FcPatternAddString(pat, FC_FAMILY, (const FcChar8*)generic);
    }
    FcPatternAddInteger(pat, FC_WEIGHT, FcWeightFromOpenType(std::clamp(r.weight, 1, 1000)));
    FcPatternAddInteger(pat, FC_SLANT, r.italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddBool(pat, FC_SCALABLE, FcTrue);
    if (const char* lang = LangOf(charset)) FcPatternAddString(pat, FC_LANG, (const FcChar8*)lang);
    FcConfigSubstitute(nullptr, pat, FcMatchPattern);
    FcDefaultSubstitute(pat);
    FcResult result = FcResultNoMatch;
    FcPattern* match = FcFontMatch(nullptr, pat, &result);
    FcPatternDestroy(pat);
    if (!match) return false;
    FcChar8* file = nullptr;
    FcChar8* family = nullptr;
    int index = 0;
    const bool ok = FcPatternGetString(match, FC_FILE, 0, &file) == FcResultMatch;
    if (ok) {
        out.file = reinterpret_cast<const char*>(file);
        if (FcPatternGetString(match, FC_FAMILY, 0, &family) == FcResultMatch)
            out.family = reinterpret_cast<const char*>(family);
        FcPatternGetInteger(match, FC_INDEX, 0, &index);
        out.index = index;
    }
    FcPatternDestroy(match);
    return ok;
}

}  // namespace

void StopPlatformFonts() {
    std::lock_guard<std::mutex> lock(FcLock());
    CandidateCache().clear();
    if (gl_fc_started && gl_fc_ready) FcFini();
    gl_fc_started = gl_fc_ready = false;
}

std::string ReduceFaceName(const std::string& name) {
    std::string out;
    for (char c : name) {
        if (out.size() == kMaxFaceName) break;
        if (std::isalnum(static_cast<unsigned char>(c))) out.push_back(c);
    }
    return out;
}

bool FindFontFamily(const std::string& wanted, const std::string& style, int charset,
                    FamilyMatch& out) {
    if (wanted.empty()) return false;
    std::lock_guard<std::mutex> lock(FcLock());
    const std::string wanted_styled = ReduceFaceName(wanted + style);
    const Candidate* first = nullptr;
    for (const Candidate& c : CandidatesFor(charset)) {
        if (!StartsWithNoCase(c.name, wanted)) continue;
        if (!first) {
            first = &c;
            if (c.name.size() == wanted.size()) break;
            continue;
        }
        if (!style.empty() && EqualsNoCase(c.styled, wanted_styled)) {
            first = &c;
            break;
        }
    }
    if (!first) return false;
    out.face_name = first->name;
    out.charset = first->charset;
    return true;
}

std::unique_ptr<PlatformFont> PlatformFont::Create(const FontRequest& request) {
    Matched m;
    {
        std::lock_guard<std::mutex> lock(FcLock());
        if (!Match(request, request.charset, m)) return nullptr;
        // A face the system gave in place of the one asked for: ask again with the charset that
        // was wanted at the start.
        const std::string asked = ReduceFaceName(FamilyFor(request.face_name));
        if (!request.face_name.empty() && !StartsWithNoCase(ReduceFaceName(m.family), asked) &&
            request.wanted_charset != request.charset) {
            Matched again;
            if (Match(request, request.wanted_charset, again)) m = again;
        }
    }
    std::unique_ptr<PlatformFont> font(new PlatformFont());
    try {
        font->mp_face = Face::OpenFile(m.file, m.index);
    } catch (const Common::Exception&) {
        return nullptr;
    }
    font->m_face_name = m.family;
    return font;
}

UInt32 PlatformFont::GlyphOf(UInt32 unicode) {
    std::lock_guard<std::mutex> lock(FreeTypeLibrary::GetLock());
    FT_Face face = mp_face->Get();
    UInt32 gid = FT_Get_Char_Index(face, unicode);
    // Symbol fonts put their glyphs in the private-use page.
    if (gid == 0 && unicode < 0x100) gid = FT_Get_Char_Index(face, 0xF000 + unicode);
    return gid;
}

bool PlatformFont::GetGlyphOutline(UInt32 value, bool by_glyph, GlyphOutline& out) {
    out.Clear();
    // A character the font lacks draws the font's default glyph, as the system would.
    const UInt32 gid = by_glyph ? value : GlyphOf(value);
    if (gid >= mp_face->GetNumGlyphs()) return false;
    if (mp_face->LoadOutline(gid, Face::kLoadNoScale, false, out) != 0) return false;
    const double scale = 1000.0 / mp_face->GetUnitsPerEm();
    for (double& v : out.points) v *= scale;
    return true;
}

double PlatformFont::GetAdvance(UInt32 unicode) {
    const UInt32 gid = GlyphOf(unicode);
    return mp_face->GetGlyphMetric(gid, Face::e_horz_advance);
}

}  // namespace lum::FontSupport
