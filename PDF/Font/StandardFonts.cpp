#include "PDF/Font/StandardFonts.h"

#include <algorithm>
#include <atomic>
#include <string>

namespace lum::PDF::Fnt {

namespace {

std::atomic<bool> gl_widths_ready{false};

UInt32 WidthHash(std::string_view name) {
    UInt32 h = 0;
    for (unsigned char c : name) h = h * 17 + c;
    return h;
}

bool IsAlnum(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
char Lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

// Case alike, and after the first character everything but letters and digits is skipped in
// both names. Answers <0, 0, >0.
int CompareFontNames(std::string_view a, std::string_view b) {
    size_t i = 0, j = 0;
    bool first = true;
    for (;;) {
        if (!first) {
            while (i < a.size() && !IsAlnum(a[i])) ++i;
            while (j < b.size() && !IsAlnum(b[j])) ++j;
        }
        first = false;
        if (i == a.size() || j == b.size()) return (i == a.size() ? 0 : 1) - (j == b.size() ? 0 : 1);
        const char ca = Lower(a[i]), cb = Lower(b[j]);
        if (ca != cb) return static_cast<unsigned char>(ca) < static_cast<unsigned char>(cb) ? -1 : 1;
        ++i;
        ++j;
    }
}

struct NameIndex {
    std::string_view name;
    int index;
};

// Ascending in the order of CompareFontNames.
constexpr NameIndex kBase14Names[] = {
    {"Arial", 4},
    {"ArialBold", 5},
    {"ArialBoldItalic", 7},
    {"ArialItalic", 6},
    {"ArialMT", 4},
    {"ArialMTBold", 5},
    {"ArialMTBoldItalic", 7},
    {"ArialMTItalic", 6},
    {"Courier", 8},
    {"CourierBold", 9},
    {"CourierBoldItalic", 11},
    {"CourierBoldOblique", 11},
    {"CourierItalic", 10},
    {"CourierNew", 8},
    {"CourierNewBold", 9},
    {"CourierNewBoldItalic", 11},
    {"CourierNewItalic", 10},
    {"CourierNewPSMT", 8},
    {"CourierNewPSMTBold", 9},
    {"CourierNewPSMTBoldItalic", 11},
    {"CourierNewPSMTItalic", 10},
    {"CourierOblique", 10},
    {"Helvetica", 4},
    {"HelveticaBold", 5},
    {"HelveticaBoldItalic", 7},
    {"HelveticaBoldOblique", 7},
    {"HelveticaItalic", 6},
    {"HelveticaOblique", 6},
    {"Symbol", 12},
    {"SymbolBold", 12},
    {"SymbolBoldItalic", 12},
    {"SymbolItalic", 12},
    {"TimesBold", 1},
    {"TimesBoldItalic", 3},
    {"TimesItalic", 2},
    {"TimesNewRoman", 0},
    {"TimesNewRomanBold", 1},
    {"TimesNewRomanBoldItalic", 3},
    {"TimesNewRomanItalic", 2},
    {"TimesNewRomanPS", 0},
    {"TimesNewRomanPSBold", 1},
    {"TimesNewRomanPSBoldItalic", 3},
    {"TimesNewRomanPSItalic", 2},
    {"TimesNewRomanPSMT", 0},
    {"TimesNewRomanPSMTBold", 1},
    {"TimesNewRomanPSMTBoldItalic", 3},
    {"TimesNewRomanPSMTItalic", 2},
    {"TimesRoman", 0},
    {"ZapfDingbats", 13},
};

bool EraseFirst(std::string& s, std::string_view word) {
    const size_t at = s.find(word);
    if (at == std::string::npos) return false;
    s.erase(at, word.size());
    return true;
}

}  // namespace

bool StdWidthTable::Find(std::string_view name, double& width) const {
    if (count == 0) return false;
    for (Int16 k = buckets[WidthHash(name) % count]; k >= 0; k = entries[k].next) {
        if (name == entries[k].name) {
            width = entries[k].width;
            return true;
        }
    }
    return false;
}

const StdWidthTable* GetStandardFontWidths(int index) {
    if (index < 0 || index >= kStandardFontCount) return nullptr;
    if (!gl_widths_ready.load(std::memory_order_acquire)) return nullptr;
    return &gl_standard_fonts[index].width_data;
}

void InitStandardFontWidths() { gl_widths_ready.store(true, std::memory_order_release); }
void ReleaseStandardFontWidths() { gl_widths_ready.store(false, std::memory_order_release); }

int FindBase14Type(const char* name) {
    if (!name) return kStandardFontCount;
    std::string s(name);
    for (char& c : s) c = Lower(c);
    bool bold = EraseFirst(s, "bold");
    bool italic = EraseFirst(s, "italic");
    italic = EraseFirst(s, "oblique") || italic;
    if (bold && italic) s += "BoldItalic";
    else if (bold) s += "Bold";
    else if (italic) s += "Italic";
    const NameIndex* end = std::end(kBase14Names);
    const NameIndex* it = std::lower_bound(std::begin(kBase14Names), end, s,
                                           [](const NameIndex& e, const std::string& n) {
                                               return CompareFontNames(e.name, n) < 0;
                                           });
    if (it == end || CompareFontNames(it->name, s) != 0) return kStandardFontCount;
    return it->index;
}

}  // namespace lum::PDF::Fnt
