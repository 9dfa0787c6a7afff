// glyphs: what the text engine captured on each page, run by run: the run's text direction
// and box (layout frame), then each character that passed the clip test: its Unicode units,
// its origin and glyph box in the page frame, and whether it counts as blank. Characters
// are listed under the run that follows them, so blanks stand before the next run's glyphs.
//
//   glyphs [--pages A-B] [--password PW] FILE
//
// One line per run:    run DIR x1 y1 x2 y2
// one per character:   U+XXXX[ U+XXXX...] x y x1 y1 x2 y2 blank|glyph
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "PDF/Ferrox.h"
#include "PDF/PDFDoc.h"
#include "PDF/Text/TextBlocks.h"
#include "PDF/Text/TextCapture.h"
#include "PDF/TextExtractor.h"

namespace {

using namespace lum;

class Printer final : public PDF::CaptureTrace {
public:
    void Char(const Unicode* units, int count, double x, double y, const PDF::Rect& box,
              bool blank) override {
        std::string line;
        char buf[160];
        for (int i = 0; i < count; ++i) {
            std::snprintf(buf, sizeof buf, "%sU+%04X", i ? " " : "", units[i]);
            line += buf;
        }
        std::snprintf(buf, sizeof buf, " %.3f %.3f %.3f %.3f %.3f %.3f %s\n", x, y, box.x1,
                      box.y1, box.x2, box.y2, blank ? "blank" : "glyph");
        m_chars.push_back(line + buf);
    }
    void Run(const PDF::TRun& run, int direction) override {
        std::printf("run %d %.3f %.3f %.3f %.3f\n", direction, run.m_box.x1, run.m_box.y1,
                    run.m_box.x2, run.m_box.y2);
        for (const std::string& c : m_chars) std::fputs(("  " + c).c_str(), stdout);
        m_chars.clear();
    }
    // Characters after the page's last run (trailing blanks).
    void Flush() {
        for (const std::string& c : m_chars) std::fputs(("  " + c).c_str(), stdout);
        m_chars.clear();
    }

private:
    std::vector<std::string> m_chars;
};

int Usage() {
    std::fprintf(stderr, "usage: glyphs [--pages A-B] [--password PW] FILE\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    int first = 1, last = 1 << 30;
    std::string password, file;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--pages") && i + 1 < argc) {
            const char* v = argv[++i];
            first = std::atoi(v);
            const char* dash = std::strchr(v, '-');
            last = dash ? (dash[1] ? std::atoi(dash + 1) : 1 << 30) : first;
        } else if (!std::strcmp(argv[i], "--password") && i + 1 < argc) {
            password = argv[++i];
        } else if (file.empty()) {
            file = argv[i];
        } else {
            return Usage();
        }
    }
    if (file.empty()) return Usage();
    PDF::Ferrox::Initialize();
    int status = 0;
    try {
        PDF::PDFDoc doc(file);
        const bool open = password.empty()
                              ? doc.InitSecurityHandler(nullptr)
                              : doc.InitStdSecurityHandler(
                                    UString(password.data(), int(password.size()), enc_ascii));
        if (!open) throw std::runtime_error("password required");
        PDF::TextExtractor extractor;
        Printer printer;
        extractor.SetCaptureTrace(&printer);
        const int count = doc.GetPageCount();
        for (int n = first; n <= count && n <= last; ++n) {
            PDF::PageIterator it = doc.GetPageIterator(n);
            if (it == doc.GetPageIteratorEnd()) continue;
            std::printf("page %d\n", n);
            try {
                extractor.Begin(*it, nullptr, 0);
            } catch (const Common::Exception& e) {
                std::printf("error %s\n", e.GetMessage().c_str());
            }
            printer.Flush();
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "glyphs: %s: %s\n", file.c_str(), e.what());
        status = 1;
    }
    PDF::Ferrox::Terminate();
    return status;
}
