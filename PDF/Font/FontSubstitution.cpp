#include "PDF/Font/FontSubstitution.h"

#include <algorithm>
#include <cctype>

#include "PDF/Font/Encodings.h"

namespace lum::PDF::Fnt {

namespace {

using namespace FontSupport;

// Standard font indexes.
constexpr int kTimesRoman = 0, kTimesItalic = 2, kHelvetica = 4, kHelveticaOblique = 6,
              kCourier = 8, kCourierOblique = 10, kSymbol = 12, kZapfDingbats = 13, kNone = 14;

bool Contains(const std::string& s, const char* word) { return s.find(word) != std::string::npos; }

bool EndsWith(const std::string& s, const char* tail) {
    const size_t n = std::char_traits<char>::length(tail);
    return s.size() >= n && s.compare(s.size() - n, n, tail) == 0;
}

bool HasSubsetTag(const std::string& name) { return name.size() >= 8 && name[6] == '+'; }

}  // namespace

PlatformWish MakePlatformWish(const SubstitutionInput& in) {
    PlatformWish w;
    std::string name = !in.font_family.empty() ? in.font_family
                       : !in.name.empty()      ? in.name
                                               : std::string("Arial");
    bool weight_known = false;
    if (in.font_weight > 0) {
        w.weight = static_cast<int>(std::clamp(in.font_weight, 100.0, 900.0));
        weight_known = true;
    } else if (in.force_bold) {
        w.weight = 900;
        weight_known = true;
    }
    w.italic = in.italic;

    // The name, cleaned as the system's family names are written.
    if (HasSubsetTag(name)) name = name.substr(7);
    size_t cut = name.find(',');
    if (cut == std::string::npos) cut = name.find('-');
    bool bold = false;
    if (cut != std::string::npos) {
        const std::string style = name.substr(cut + 1);
        const bool b = Contains(style, "Bold") || Contains(style, "Black") || Contains(style, "Demi");
        const bool i = Contains(style, "Italic") || Contains(style, "Oblique");
        if (b || i) {
            bold = b;
            w.italic = w.italic || i;
            w.style = style;
            name.erase(cut);
        }
    }
    std::string clean;
    for (char c : name)
        if (c != '_' && !std::isspace(static_cast<unsigned char>(c))) clean.push_back(c);
    if (clean.size() > 31) clean.resize(31);
    if (EndsWith(clean, "MS")) clean.resize(clean.size() - 2);
    if (EndsWith(clean, "PSMT")) clean.resize(clean.size() - 4);
    if (Contains(clean, "Trebuchet")) clean = "TrebuchetMS";
    if (clean.compare(0, 5, "Times") == 0) clean = "TimesNewRoman";
    w.clean_name = clean;
    if (!weight_known) w.weight = bold ? 700 : 400;

    // Charset: symbolic fonts and the CJK collections.
    if (in.simple) {
        if (in.symbolic) w.charset = in.has_encoding ? e_default_charset : e_symbol_charset;
    } else {
        if (in.symbolic && !in.encoding_is_known_cmap) w.charset = e_symbol_charset;
        const std::string& o = in.ordering;
        if (o.compare(0, 5, "Japan") == 0) w.charset = e_shiftjis_charset;
        else if (o.compare(0, 5, "Korea") == 0) w.charset = e_hangul_charset;
        else if (o.compare(0, 4, "CNS1") == 0) w.charset = e_chinesebig5_charset;
        else if (o.compare(0, 3, "GB1") == 0) w.charset = e_gb2312_charset;
    }
    if (in.charset_override >= 0) w.charset = in.charset_override;
    return w;
}

std::vector<std::string> CJKFallbackNames(const SubstitutionInput& in) {
    if (in.simple) return {};
    const std::string& o = in.ordering;
    if (o.compare(0, 5, "Japan") == 0) {
        if (Contains(in.name, "Goth")) return {"KozukaGothic", "KozukaMincho"};
        return {"KozukaMincho", "KozukaGothic"};
    }
    if (o.compare(0, 5, "Korea") == 0) return {"AdobeMyungjoStdM"};
    if (o.compare(0, 4, "CNS1") == 0) return {"AdobeMingStdL"};
    if (o.compare(0, 3, "GB1") == 0) return {"AdobeSongStdL"};
    return {};
}

std::unique_ptr<PlatformFont> FindPlatformFont(const SubstitutionInput& in) {
    const PlatformWish w = MakePlatformWish(in);
    FamilyMatch match;
    bool found = FindFontFamily(w.clean_name, w.style, w.charset, match);
    for (const std::string& fallback : CJKFallbackNames(in)) {
        if (found) break;
        found = FindFontFamily(fallback, w.style, w.charset, match);
    }
    if (!found) found = FindFontFamily("ArialUnicodeMS", w.style, -1, match);
    FontRequest r;
    r.weight = w.weight;
    r.italic = w.italic;
    r.wanted_charset = w.charset;
    r.charset = found ? (match.charset >= 0 ? match.charset : w.charset) : w.charset;
    r.pitch_and_family = (in.fixed_width ? e_fixed_pitch : 0) | (in.serif ? e_roman : e_swiss);
    r.face_name = found ? match.face_name : w.clean_name;  // unchecked when nothing fitted
    return PlatformFont::Create(r);
}

int FallbackStandardFont(const SubstitutionInput& in) {
    if (in.fixed_width) return in.italic ? kCourierOblique : kCourier;
    if (in.serif) return in.italic ? kTimesItalic : kTimesRoman;
    return in.italic ? kHelveticaOblique : kHelvetica;
}

FontSubstitution DecideSubstitution(const SubstitutionInput& in) {
    FontSubstitution s;
    // Registered substitutes (by name, then by collection) come first; this program registers
    // none, so both pass.
    if (in.base14 != kNone) {
        s.kind = 3;
        s.standard_index = in.base14;
        if (in.base14 == kSymbol || in.base14 == kZapfDingbats) return s;
        // Glyphs that no standard encoding names are beyond the standard font.
        for (const std::string& name : in.differences) {
            if (!IsInStandardEncodings(name)) {
                s.kind = 2;
                break;
            }
        }
        if (s.kind == 3) return s;
    }
    s.kind = 2;
    s.platform = FindPlatformFont(in);
    if (!s.platform) s.fallback_index = FallbackStandardFont(in);
    return s;
}

}  // namespace lum::PDF::Fnt
