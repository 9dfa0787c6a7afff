#include "Apps/Bindery/ProcessDocument.h"

#include <cstdio>
#include <memory>
#include <set>
#include <string>

#include "Apps/Bindery/Options.h"
#include "Apps/Bindery/PageInfo.h"
#include "Apps/Bindery/PageText.h"
#include "Apps/Bindery/PathText.h"
#include "Apps/Bindery/WriteText.h"
#include "Apps/Bindery/misc/ParsePages.h"
#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Common/UString.h"
#include "Filters/StdFile.h"
#include "PDF/PDFDoc.h"
#include "PDF/TextExtractor.h"

namespace lum::Bindery {

namespace {

// Bytes of buffer for each page's output file.
constexpr size_t kOutputBufferSize = 0x10000;

// The password as the security handler takes it: each byte one character, not decoded.
UString WidenPassword(const std::string& password) {
    return UString(password.data(), static_cast<int>(password.size()), enc_ascii);
}

// The security step with the prompt loop. False when the document stays closed; the reason
// has been reported.
bool OpenWithPassword(PDF::PDFDoc& doc, const std::string& path_ascii, Options& opt) {
    const bool opened = opt.m_password.empty()
                            ? doc.InitSecurityHandler(nullptr)
                            : doc.InitStdSecurityHandler(WidenPassword(opt.m_password));
    if (opened) return true;
    if (opt.m_noprompt) {
        SendMessage(opt, e_msg_error, "A valid password is required to open: " + path_ascii);
        opt.m_last_error = 5;
        return false;
    }
    for (int attempt = 0; attempt < 3 && opt.m_message; ++attempt) {
        SendMessage(opt, e_msg_text, "Wrong password.\nPlease enter the correct password: ");
        // What is typed stays the password of the run: it is tried first on later documents.
        if (const char* line = SendMessage(opt, e_msg_read_line, "")) opt.m_password = line;
        if (doc.InitStdSecurityHandler(WidenPassword(opt.m_password))) return true;
    }
    SendMessage(opt, e_msg_error, "Wrong password. Failed to open: " + path_ascii);
    opt.m_last_error = 5;
    return false;
}

// The output folder and the name stem of the document's files, joined; without the counter
// and the extension.
std::string OutputStem(const boost::filesystem::path& file,
                       const boost::filesystem::path& out_folder, const Options& opt) {
    std::string folder = out_folder.string();
    if (!folder.empty() && (folder.back() == '/' || folder.back() == '\\')) folder.pop_back();
    const std::string stem = opt.m_prefix.empty() ? file.stem().string() : opt.m_prefix;
    return folder + opt.m_path_separator + stem;
}

// The page counter of output names: "%0Nd" for --digits 1 to 9, "_%d" for several pages,
// none for a single page. Empty when there is no counter.
std::string CounterPattern(const Options& opt, size_t selected_pages) {
    if (opt.m_digits >= 1 && opt.m_digits <= 9) return "%0" + std::to_string(opt.m_digits) + "d";
    if (selected_pages > 1) return "_%d";
    return {};
}

std::string OutputFileName(const std::string& stem, const std::string& pattern, Int32 page,
                           const Options& opt) {
    std::string name = stem;
    if (!pattern.empty()) {
        char counter[32];
        std::snprintf(counter, sizeof counter, pattern.c_str(), page);
        name += counter;
    }
    name += opt.m_format == "xml" ? ".xml" : ".txt";
    return name;
}

// Replaces the page's output file; the writer moves over to it. Raises when the file can't be
// created.
void OpenOutputFile(Options& opt, const std::string& name) {
    auto file = std::make_unique<Filters::StdFile>(name, Filters::StdFile::e_write_mode,
                                                   kOutputBufferSize);
    // Bytes still held for an earlier file go to it before it is closed.
    opt.m_out_writer.AttachFilter(file.get());
    opt.m_out_filter = std::move(file);
    if (IsUtf16Encoding(opt)) {
        opt.m_out_writer.WriteString("\xFF\xFE");
    } else {
        opt.m_out_writer.WriteString("\xEF\xBB\xBF");
    }
    SendMessage(opt, e_msg_output_file, name);
}

void CloseOutputFile(Options& opt) {
    opt.m_out_writer.FlushAll();
    opt.m_out_writer.AttachFilter(nullptr);
    opt.m_out_filter.reset();
}

// What a page produces. The page report takes precedence over every other form; the text
// forms come from the text engine.
void WritePageOutput(Options& opt, const PDF::Page& page, PDF::TextExtractor& extractor) {
    if (opt.m_pageinfo) {
        WritePageInfo(opt, page);
        return;
    }
    WritePageText(opt, page, extractor);
}

enum class PageResult { e_done, e_abandon_document };

// One page from its progress line to the end of its output. An exception ends the page alone.
PageResult ProcessPage(Options& opt, const PDF::Page& page, Int32 n, const std::string& stem,
                       const std::string& pattern, const boost::filesystem::path& file,
                       PDF::TextExtractor& extractor) {
    try {
        if (opt.m_verbosity >= 2)
            SendMessage(opt, e_msg_text, "Processing page: " + std::to_string(n) + "...\n");
        if (!opt.m_to_screen) {
            const std::string name = OutputFileName(stem, pattern, n, opt);
            try {
                OpenOutputFile(opt, name);
            } catch (...) {
                SendMessage(opt, e_msg_error, "Failed to create the output file: " + name + "\n");
                opt.m_last_error = 3;
                return PageResult::e_abandon_document;
            }
        }
        WritePageOutput(opt, page, extractor);
        if (!opt.m_to_screen) CloseOutputFile(opt);
    } catch (const Common::Exception& e) {
        // The page's file stays open, unflushed, until the next page's file replaces it.
        std::string text = "A PDF error occurred during processing";
        if (opt.m_verbosity >= 2) text += "\n" + e.GetFullText();
        SendMessage(opt, e_msg_error, text);
        opt.m_last_error = 6;
    } catch (...) {
        SendMessage(opt, e_msg_error,
                    "Failed to convert page: " + std::to_string(n) + " in " +
                        NameAsAscii(file.filename().string()) + ".\n");
        opt.m_last_error = 6;
    }
    return PageResult::e_done;
}

}  // namespace

bool ProcessDocument(const boost::filesystem::path& file,
                     const boost::filesystem::path& out_folder, Options& opt) {
    const std::string path_ascii = NameAsAscii(file.string());
    const std::string stem = OutputStem(file, out_folder, opt);
    try {
        auto doc = std::make_unique<PDF::PDFDoc>(file.string());
        if (!OpenWithPassword(*doc, path_ascii, opt)) return false;
        doc->RefreshFormAppearances();

        std::set<Int32> pages;
        const Int32 page_count = doc->GetPageCount();
        Int32 left_out = 0;
        try {
            ParsePages(opt.m_pages, pages, page_count, &left_out);
        } catch (...) {
            // The pages of the tokens before the bad one are still converted.
            SendMessage(opt, e_msg_error,
                        "An illegal value was specified for 'pages' option: " + opt.m_pages +
                            "\n");
        }
        const std::string pattern = CounterPattern(opt, pages.size());
        const PDF::PageIterator end = doc->GetPageIteratorEnd();
        PDF::TextExtractor extractor;  // one for the document, its buffers reused page by page

        for (const Int32 n : pages) {
            // A failing lookup (a damaged page tree) ends the document, not just the page.
            PDF::PageIterator it = doc->GetPageIterator(n);
            if (it == end) {
                SendMessage(opt, e_msg_error,
                            "Page number " + std::to_string(n) + " not found.\n");
                continue;
            }
            if (!it->IsValid()) {
                SendMessage(opt, e_msg_error, "Page number " + std::to_string(n) + " is null.\n");
                continue;
            }
            if (ProcessPage(opt, *it, n, stem, pattern, file, extractor) ==
                PageResult::e_abandon_document)
                return false;
        }
        if (left_out > 0) {
            const Int64 first = Int64(page_count) + Limits::kMaxMissingPageReports + 1;
            SendMessage(opt, e_msg_error,
                        "Page numbers " + std::to_string(first) + " to " + std::to_string(left_out) +
                            " not found (too many to report one by one).\n");
        }
        return true;
    } catch (const Common::Exception& e) {
        std::string text =
            "Failed to read: " + path_ascii + "\nThe file is not a valid PDF document.";
        if (opt.m_verbosity >= 2)
            text += "\nTrying to save to: " + NameAsAscii(stem) + "\n" + e.GetFullText();
        SendMessage(opt, e_msg_error, text);
        opt.m_last_error = 4;
    } catch (...) {
        SendMessage(opt, e_msg_error, "An unknown error occurred while reading the file.");
        opt.m_last_error = 4;
    }
    return false;
}

}  // namespace lum::Bindery
