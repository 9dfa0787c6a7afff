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
#include <exception>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Apps/Bindery/misc/ParsePages.h"
#include "Common/Exception.h"
#include "Common/UString.h"
#include "PDF/Color/ColorSpaceCache.h"
#include "PDF/Color/DeviceColor.h"
#include "PDF/ElementReader.h"
#include "PDF/Ferrox.h"
#include "PDF/PDFDoc.h"
#include "PDF/Page.h"

using namespace lum;

namespace {

struct Settings {
    std::string pages = "-";
    const char* password = nullptr;
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

bool ProcessFile(const char* path, const Settings& s) {
    try {
        PDF::PDFDoc doc(path);
        if (s.password) doc.InitStdSecurityHandler(UString(s.password, -1, enc_ascii));
        std::set<Int32> pages;
        Bindery::ParsePages(s.pages, pages, doc.GetPageCount());
        const PDF::PageIterator end = doc.GetPageIteratorEnd();
        for (Int32 n : pages) {
            PDF::PageIterator it = doc.GetPageIterator(n);
            if (it == end || !it->IsValid()) continue;
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
            if (!s.summary) continue;
            std::printf("%s\t%d\t%s\tstrings=%lu\tnot_black=%lu", path, n, status.c_str(),
                        tally.strings, tally.not_black);
            for (const auto& [family, count] : tally.families) std::printf("\t%s=%lu", family.c_str(), count);
            std::printf("\n");
        }
        return true;
    } catch (const Common::Exception& e) {
        std::printf("%s: cannot open: %s\n", path, e.GetMessage().c_str());
    } catch (const std::exception& e) {
        std::printf("%s: cannot open (%s)\n", path, e.what());
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    Settings s;
    std::vector<const char*> files;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--summary") == 0)
            s.summary = true;
        else if (std::strcmp(argv[i], "--pages") == 0 && i + 1 < argc)
            s.pages = argv[++i];
        else if (std::strcmp(argv[i], "--password") == 0 && i + 1 < argc)
            s.password = argv[++i];
        else
            files.push_back(argv[i]);
    }
    if (files.empty()) {
        std::fprintf(stderr, "usage: colors [--pages LIST] [--password PW] [--summary] FILE...\n");
        return 2;
    }
    PDF::Ferrox::Initialize();
    int status = 0;
    for (const char* file : files)
        if (!ProcessFile(file, s)) status = 1;
    PDF::Ferrox::Terminate();
    return status;
}
