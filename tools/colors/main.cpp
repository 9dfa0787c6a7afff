// colors: the fill colour of every string that chosen pages show, as the text engine takes it:
// one line per text element with the page, the fill space's family (and the space it goes
// through), its components, the RGB bytes of the style (or "pattern"), the text rendering
// mode, and the string's text.
//
//   colors [--pages LIST] [--password PW] [--summary] FILE...
//
// Lines are tab-separated: page, family, components, colour, mode, text (UTF-8, tabs and newlines
// as blanks). With --summary one line per page counts the strings of each family and the
// strings that aren't black. Exit status: 0 when every file opened, 1 otherwise, 2 for a
// usage error.
#include <cstdio>
#include <cstring>
#include <map>
#include <string>

#include "Common/Exception.h"
#include "PDF/Color/ColorSpaceCache.h"
#include "PDF/Color/DeviceColor.h"
#include "PDF/ElementReader.h"
#include "PDF/Page.h"
#include "tools/PageWalkTool.h"

using namespace lum;

namespace {

struct Settings {
    bool summary = false;
};

const char* FamilyName(PDF::ColorSpace::Type type) {
    static const char* const names[] = {"DeviceGray", "DeviceRGB", "DeviceCMYK", "CalGray",
                                        "CalRGB",     "Lab",       "ICCBased",   "Indexed",
                                        "Pattern",    "Separation", "DeviceN",   "null"};
    return type >= 0 && type <= PDF::ColorSpace::e_null ? names[type] : "?";
}

// The family, with the space a colour goes through: ICCBased(DeviceCMYK), Indexed(CalRGB).
std::string Family(const PDF::ColorSpace& cs) {
    std::string out = FamilyName(cs.GetType());
    PDF::ColorSpace inner = PDF::ColorSpace::Empty();
    switch (cs.GetType()) {
        case PDF::ColorSpace::e_icc:
        case PDF::ColorSpace::e_device_n: inner = cs.GetAlternateColorSpace(); break;
        case PDF::ColorSpace::e_separation:
            if (cs.IsAll()) return out + "(All)";
            inner = cs.GetAlternateColorSpace();
            break;
        case PDF::ColorSpace::e_indexed:
        case PDF::ColorSpace::e_pattern: inner = cs.GetBaseColorSpace(); break;
        default: break;
    }
    if (inner) out += std::string("(") + Family(inner) + ")";
    return out;
}

struct PageTally {
    std::map<std::string, unsigned long> families;
    unsigned long strings = 0, not_black = 0;
};

void PrintString(PDF::Element& e, Int32 page, PDF::Color::ColorSpaceCache& cache, const Settings& s,
                 PageTally& tally) {
    const PDF::GState& gs = e.GetGState();
    const PDF::ColorSpace& cs = gs.GetFillColorSpace();
    const PDF::ColorPt& c = gs.GetFillColor();
    const std::string family = Family(cs);
    double rgb[3];
    char colour[16] = "pattern";
    if (cache.ToRGB(cs, c, rgb))
        std::snprintf(colour, sizeof colour, "#%02X%02X%02X", PDF::Color::ColorByte(rgb[0]),
                      PDF::Color::ColorByte(rgb[1]), PDF::Color::ColorByte(rgb[2]));
    ++tally.strings;
    ++tally.families[family];
    if (std::strcmp(colour, "#000000") != 0) ++tally.not_black;
    if (s.summary) return;
    std::string components;
    for (int i = 0; i < c.GetColorantNum(); ++i) {
        char buf[32];
        std::snprintf(buf, sizeof buf, "%s%g", i ? " " : "", c.Get(i));
        components += buf;
    }
    std::string text = e.GetTextString().ConvertToUtf8();
    for (char& ch : text)
        if (ch == '\t' || ch == '\n' || ch == '\r') ch = ' ';
    std::printf("%d\t%s\t%s\t%s\tTr%d\t%s\n", page, family.c_str(), components.c_str(), colour,
                int(gs.GetTextRenderMode()), text.c_str());
}

void Walk(PDF::ElementReader& reader, Int32 page, PDF::Color::ColorSpaceCache& cache,
          const Settings& s, PageTally& tally) {
    while (PDF::Element* e = reader.Next()) {
        if (e->GetType() == PDF::Element::e_text) {
            PrintString(*e, page, cache, s, tally);
        } else if (e->GetType() == PDF::Element::e_form) {
            reader.FormBegin();
            Walk(reader, page, cache, s, tally);
            reader.End();
        }
    }
}

void ProcessPage(const char* path, Int32 n, PDF::PageIterator it, PDF::PDFDoc& doc,
                 const Settings& s) {
    if (it == doc.GetPageIteratorEnd() || !it->IsValid()) return;
    PDF::ElementReader reader;
    PDF::Color::ColorSpaceCache cache;
    PageTally tally;
    std::string status = "ok";
    try {
        reader.Begin(*it);
        Walk(reader, n, cache, s, tally);
    } catch (const Common::Exception& e) {
        status = std::string("ended: ") + e.GetMessage();
    }
    if (!s.summary) return;
    std::printf("%s\t%d\t%s\tstrings=%lu\tnot_black=%lu", path, n, status.c_str(), tally.strings,
                tally.not_black);
    for (const auto& [family, count] : tally.families) std::printf("\t%s=%lu", family.c_str(), count);
    std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
    Settings s;
    DevTool::PageWalkOptions options;
    const bool named = DevTool::ParsePageWalkOptions(argc, argv, options, [&](int i) {
        if (std::strcmp(argv[i], "--summary") != 0) return 0;
        s.summary = true;
        return 1;
    });
    if (!named) {
        std::fprintf(stderr, "usage: colors [--pages LIST] [--password PW] [--summary] FILE...\n");
        return 2;
    }
    return DevTool::WalkChosenPages(options, [&](const char* path, Int32 n, PDF::PageIterator it,
                                                 PDF::PDFDoc& doc) { ProcessPage(path, n, it, doc, s); });
}
