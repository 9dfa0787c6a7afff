#pragma once
// A font that isn't embedded gets a substitute by a fixed order: the standard font of its
// name, a system font found through the platform's font service, or as a last resort a
// standard font chosen by its descriptor's flags. The decision is made once per font; this
// file holds it as functions of what the font tells, so that it can be read and tested apart
// from the font classes.
#include <memory>
#include <string>
#include <vector>

#include "FontSupport/PlatformFonts.h"

namespace lum::PDF::Fnt {

// What a font tells for its substitution.
struct SubstitutionInput {
    std::string name;         // BaseFont
    std::string font_family;  // the descriptor's FontFamily, empty when absent
    double font_weight = 0;   // the descriptor's FontWeight, 0 when absent
    bool force_bold = false;
    bool italic = false;
    bool symbolic = false;
    bool fixed_width = false;
    bool serif = false;
    bool simple = true;
    bool has_encoding = false;         // the dictionary has Encoding
    bool encoding_is_known_cmap = false;  // composite: Identity-H/V or a predefined CMap
    std::string ordering;              // composite: Ordering of CIDSystemInfo
    int charset_override = -1;         // the key _CharSet, when a number
    int base14 = 14;                   // the standard font the name stands for, 14 for none
    std::vector<std::string> differences;  // glyph names of the encoding's Differences
};

// The decision.
struct FontSubstitution {
    // 0 not decided; 1 a face of a registered substitute (this program registers none);
    // 2 a system font, or the fallback standard font; 3 the standard font of the font's name.
    int kind = 0;
    std::unique_ptr<FontSupport::PlatformFont> platform;  // kind 2, when the system gave one
    int fallback_index = 14;  // kind 2 without a platform font: the standard font used
    int standard_index = 14;  // kind 3: the standard font of the name
};

// The request for the platform's font service and what the enumeration is asked, from the
// font's name and descriptor: family, weight and italic, the cleaned name, the charset.
struct PlatformWish {
    std::string clean_name;  // what the enumeration looks for
    std::string style;       // the style words behind a comma or a minus, when they counted
    int weight = 400;
    bool italic = false;
    int charset = FontSupport::e_ansi_charset;
};
PlatformWish MakePlatformWish(const SubstitutionInput& in);

// The face names tried, in order, after the family itself: the CJK fallbacks of the
// collection; then (not in the list) the wide-coverage Unicode font in any charset.
std::vector<std::string> CJKFallbackNames(const SubstitutionInput& in);

// Finds a platform font for the font (null when the system has none).
std::unique_ptr<FontSupport::PlatformFont> FindPlatformFont(const SubstitutionInput& in);

// The standard font that stands in when there is no platform font: by fixed pitch, serif and
// italic flags.
int FallbackStandardFont(const SubstitutionInput& in);

// The whole decision.
FontSubstitution DecideSubstitution(const SubstitutionInput& in);

}  // namespace lum::PDF::Fnt
