#include "Apps/Bindery/BatchWalk.h"

#include <sys/stat.h>

#include <algorithm>
#include <utility>
#include <vector>

#include <boost/filesystem/operations.hpp>

#include "Apps/Bindery/PathText.h"
#include "Apps/Bindery/ProcessDocument.h"
#include "Common/Exception.h"
#include "Common/Limits.h"

namespace lum::Bindery {

namespace fs = boost::filesystem;

namespace {

// The folders on the way down from the one named on the command line, by device and inode,
// so that a link back to an ancestor is walked once and not until the path gets too long
// (with two such links, that would be exponential).
using FolderId = std::pair<dev_t, ino_t>;
using FolderChain = std::vector<FolderId>;

bool IsSeparator(char c) { return c == '/' || c == '\\'; }

void WalkFolder(const fs::path& folder, PathString sub_path, Options& opt, FolderChain& chain) {
    if (opt.m_verbosity >= 2)
        SendMessage(opt, e_msg_text, "Processing directory: " + NameForDisplay(folder.string()) + "...\n");

    const PathString component = folder.filename().native();
    if (!component.empty()) {
        if (!IsSeparator(component.front()) && (sub_path.empty() || !IsSeparator(sub_path.back())))
            sub_path += opt.m_path_separator;
        sub_path += component;
    }

    // These refusals reach the parent's entry handler, which prints the folder's name first.
    LUM_CHECK(chain.size() < Limits::kMaxFolderDepth, ": more than %zu nested folders; skipped",
              Limits::kMaxFolderDepth);
    struct stat st;
    if (::stat(folder.c_str(), &st) == 0) {
        const FolderId id{st.st_dev, st.st_ino};
        LUM_CHECK(std::find(chain.begin(), chain.end(), id) == chain.end(),
                  "%s", ": a link back to a folder that is being walked; skipped");
        chain.push_back(id);
    } else {
        chain.push_back(FolderId{0, 0});  // the iterator below reports why
    }

    fs::directory_iterator it(folder), end;
    for (; it != end; ++it) {
        const fs::path entry = it->path();
        try {
            if (fs::is_directory(it->status())) {
                if (opt.m_subfolders) WalkFolder(entry, sub_path, opt, chain);
            } else {
                ProcessFile(entry, sub_path, opt);
            }
        } catch (const std::exception& e) {
            SendMessage(opt, e_msg_error, NameAsAscii(entry.filename().string()) + e.what());
        }
    }
    chain.pop_back();
}

std::string LowerAscii(std::string s) {
    for (char& c : s)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return s;
}

}  // namespace

void ProcessFolder(fs::path folder, PathString sub_path, Options& opt) {
    FolderChain chain;
    WalkFolder(folder, std::move(sub_path), opt, chain);
}

void ProcessFile(fs::path file, PathString sub_path, Options& opt) {
    if (LowerAscii(file.extension().string()) != opt.m_extension) return;
    if (opt.m_verbosity >= 1) SendMessage(opt, e_msg_text, NameForDisplay(file.string()) + "\n");

    // Opening a pipe or a device would wait for a writer or read without end; such a file is
    // as unreadable as a damaged one.
    boost::system::error_code ec;
    const fs::file_type type = fs::status(file, ec).type();
    if (type == fs::fifo_file || type == fs::socket_file || type == fs::block_file ||
        type == fs::character_file) {
        SendMessage(opt, e_msg_error,
                    "Failed to read: " + NameAsAscii(file.string()) + "\nThe file is not a valid PDF document.");
        opt.m_last_error = 4;
        return;
    }

    fs::path out_folder = opt.m_output_path;
    if (!sub_path.empty()) {
        out_folder = fs::path(opt.m_output_path + sub_path);
        try {
            out_folder = FullPath(out_folder);
            if (!PathExists(out_folder)) fs::create_directories(out_folder);
        } catch (...) {
            SendMessage(opt, e_msg_error,
                        "Failed to create the output sub-directory: " + NameAsAscii(out_folder.string()) + "\n");
            opt.m_last_error = 1;
            return;
        }
    }
    ProcessDocument(file, out_folder, opt);
}

}  // namespace lum::Bindery
