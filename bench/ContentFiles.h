#pragma once
// The corpus files the content and capture benchmarks read: bench/content_files.txt names them
// below ../shared/corpus; those missing on this machine are left out.
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace lum::bench {

inline std::vector<std::string> ContentFiles() {
    namespace fs = std::filesystem;
    const fs::path repo = LUM_SOURCE_DIR;
    std::vector<std::string> out;
    std::ifstream list(repo / "bench" / "content_files.txt");
    const fs::path corpus = repo.parent_path() / "shared" / "corpus";
    for (std::string line; std::getline(list, line);) {
        if (line.empty() || line[0] == '#') continue;
        if (fs::exists(corpus / line)) out.push_back((corpus / line).string());
    }
    return out;
}

}  // namespace lum::bench
