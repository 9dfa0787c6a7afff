// What the developer tools that walk chosen pages of several files have in common: the options
// --pages LIST and --password PW, the start and stop of the library, and opening each file with
// its password, so that a tool holds only what it prints.
#pragma once

#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "Apps/Bindery/misc/ParsePages.h"
#include "Common/Exception.h"
#include "Common/UString.h"
#include "PDF/Ferrox.h"
#include "PDF/PDFDoc.h"

namespace lum::DevTool {

struct PageWalkOptions {
    std::string pages = "-";  // the tool's page list syntax: "1-3,7", "odd", default all
    std::string password;
    std::vector<std::string> files;
};

// `own(i)` looks at argv[i] and returns how many arguments it took as the tool's own option
// (0 when argv[i] isn't one); it may read argv[i + 1] when i + 1 < argc. False when no file
// was named.
inline bool ParsePageWalkOptions(int argc, char** argv, PageWalkOptions& options,
                                 const std::function<int(int)>& own) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--pages") == 0 && i + 1 < argc) {
            options.pages = argv[++i];
        } else if (std::strcmp(argv[i], "--password") == 0 && i + 1 < argc) {
            options.password = argv[++i];
        } else if (const int taken = own(i); taken > 0) {
            i += taken - 1;
        } else {
            options.files.emplace_back(argv[i]);
        }
    }
    return !options.files.empty();
}

// Calls `page(path, n, it)` for each chosen page of each file, in ascending order; `it` is the
// document's end iterator when the page isn't there. A file that can't be opened (or needs a
// password it wasn't given) gets the line "PATH: cannot open: WHY". Gives the exit status: 0
// when every file opened, 1 otherwise.
inline int WalkChosenPages(
    const PageWalkOptions& options,
    const std::function<void(const char* path, Int32 n, PDF::PageIterator it, PDF::PDFDoc& doc)>&
        page) {
    PDF::Ferrox::Initialize();
    int status = 0;
    for (const std::string& file : options.files) {
        const char* path = file.c_str();
        try {
            PDF::PDFDoc doc(file);
            const bool open =
                options.password.empty()
                    ? doc.InitSecurityHandler(nullptr)
                    : doc.InitStdSecurityHandler(UString(options.password.data(),
                                                         int(options.password.size()), enc_ascii));
            if (!open) throw std::runtime_error("a valid password is required");
            std::set<Int32> pages;
            Bindery::ParsePages(options.pages, pages, doc.GetPageCount());
            for (Int32 n : pages) page(path, n, doc.GetPageIterator(n), doc);
        } catch (const Common::Exception& e) {
            std::printf("%s: cannot open: %s\n", path, e.GetMessage().c_str());
            status = 1;
        } catch (const std::exception& e) {
            std::printf("%s: cannot open: %s\n", path, e.what());
            status = 1;
        }
    }
    PDF::Ferrox::Terminate();
    return status;
}

}  // namespace lum::DevTool
