// The page report against another reader over the shared corpus: for every page that pdfinfo
// (poppler) reads, media box, crop box and rotation must agree to pdfinfo's two decimals,
// except where our page rules deliberately differ (listed with the reason in
// tests/data/pageinfo-differences.tsv). Every file runs under a time and memory limit; a crash
// or a hang on any of them fails the test.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/TestSupport.h"

namespace fs = std::filesystem;
using namespace lum::test;

namespace {

struct Geometry {
    double media[4];
    double crop[4];
    int rotation;
};

using PageMap = std::map<int, Geometry>;

const char kPrlimit[] = "/usr/bin/prlimit";

void Order(double* box) {
    if (box[0] > box[2]) std::swap(box[0], box[2]);
    if (box[1] > box[3]) std::swap(box[1], box[3]);
}

// pdfinfo's pages that have boxes; pages it could not print have none and are left out.
PageMap ReadPdfinfo(const std::string& out) {
    PageMap pages;
    std::map<int, int> have;
    std::istringstream in(out);
    for (std::string line; std::getline(in, line);) {
        int n = 0;
        char what[16] = {};
        double v[4];
        const int got = std::sscanf(line.c_str(), "Page %d %15[A-Za-z]: %lf %lf %lf %lf", &n, what,
                                    &v[0], &v[1], &v[2], &v[3]);
        if (got < 3) continue;
        const std::string kind = what;
        Geometry& g = pages[n];
        if (kind == "rot") {
            g.rotation = static_cast<int>(v[0]);
        } else if ((kind == "MediaBox" || kind == "CropBox") && got == 6) {
            std::copy(v, v + 4, kind == "MediaBox" ? g.media : g.crop);
            have[n] |= kind == "MediaBox" ? 1 : 2;
        }
    }
    for (auto it = pages.begin(); it != pages.end();)
        it = have[it->first] == 3 ? std::next(it) : pages.erase(it);
    return pages;
}

// Our report line: ten numbers and a rotation in degrees, ", " between them.
bool ParseReport(const std::string& line, Geometry& g) {
    double v[11];
    int used = 0;
    const int got = std::sscanf(line.c_str(), "%lf, %lf, %lf, %lf, %lf, %lf, %lf, %lf, %lf, %lf, %lf%n", &v[0], &v[1],
                                &v[2], &v[3], &v[4], &v[5], &v[6], &v[7], &v[8], &v[9], &v[10], &used);
    if (got != 11 || used != int(line.size())) return false;
    std::copy(v + 2, v + 6, g.media);
    std::copy(v + 6, v + 10, g.crop);
    g.rotation = static_cast<int>(v[10]);
    return true;
}

struct OurDocument {
    PageMap pages;
    bool unopened = false;  // failed as a whole (unreadable, password)
    std::string refusal;    // the failure's message when the file was refused as no valid PDF
};

// Our report of one batch, by file: "Processing page: n..." and the report line behind it.
void ReadOurs(const std::string& out, const std::set<std::string>& paths,
              std::map<std::string, OurDocument>& docs) {
    std::istringstream in(out);
    std::string current;
    int page = 0;
    for (std::string line; std::getline(in, line);) {
        if (paths.count(line)) {
            current = line;
            page = 0;
            docs[current];
            continue;
        }
        if (current.empty()) continue;
        if (line.rfind("Processing page: ", 0) == 0) {
            page = std::atoi(line.c_str() + 17);
            continue;
        }
        if (line.rfind("\t Message: ", 0) == 0 && docs[current].unopened &&
            docs[current].refusal.empty()) {
            docs[current].refusal = line.substr(11);
            continue;
        }
        if (line.rfind("Error: Failed to read: ", 0) == 0 ||
            line.rfind("Error: A valid password is required", 0) == 0 ||
            line.rfind("Error: An unknown error occurred while reading", 0) == 0) {
            docs[current].unopened = true;
            continue;
        }
        Geometry g;
        if (page > 0 && ParseReport(line, g)) {
            docs[current].pages[page] = g;
            page = 0;
        }
    }
}

// pdfinfo prints two decimals; we print six significant digits.
bool Agree(const double* ours, const double* theirs) {
    for (int i = 0; i < 4; ++i)
        if (std::fabs(ours[i] - theirs[i]) > 0.0051 + 5e-6 * std::fabs(theirs[i])) return false;
    return true;
}

// The first two tab-separated fields of each line of a data file; blank lines and comments
// are left out.
std::vector<std::pair<std::string, std::string>> DataRows(const std::string& name) {
    std::vector<std::pair<std::string, std::string>> rows;
    std::ifstream in(DataPath(name));
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream fields(line);
        std::string first, second;
        std::getline(fields, first, '\t');
        std::getline(fields, second, '\t');
        rows.emplace_back(first, second);
    }
    return rows;
}

// Files refused by a rule although pdfinfo reads them, with the failure's message.
std::map<std::string, std::string> KnownRefusals() {
    std::map<std::string, std::string> known;
    for (const auto& [file, message] : DataRows("refused-files.tsv")) known[file] = message;
    return known;
}

// Pages (0: every page of the file) whose boxes differ on purpose.
std::set<std::pair<std::string, int>> KnownDifferences() {
    std::set<std::pair<std::string, int>> known;
    for (const auto& [file, page] : DataRows("pageinfo-differences.tsv"))
        known.insert({file, page == "*" ? 0 : std::stoi(page)});
    return known;
}

TEST(PageInfoCorpus, AgreesWithAnotherReader) {
    const auto corpus = CorpusDir();
    if (!corpus) GTEST_SKIP() << "no shared corpus at " << LUM_CORPUS_DIR;
    if (!fs::exists("/usr/bin/pdfinfo")) GTEST_SKIP() << "pdfinfo is not installed";
    if (!fs::exists(kPrlimit)) GTEST_SKIP() << "prlimit is not installed";

    std::vector<std::string> files;
    for (const auto& row : CorpusManifest(*corpus)) files.push_back(row.file);
    const auto known = KnownDifferences();
    auto refusals = KnownRefusals();
    std::map<std::string, OurDocument> ours;
    std::vector<std::string> crashes;

    // Ours in batches; a batch that crashes or hangs is run again file by file to name the file.
    const size_t kBatch = 40;
    for (size_t start = 0; start < files.size(); start += kBatch) {
        std::vector<std::string> args = {"--pageinfo", "--verb", "2", "--noprompt"};
        std::set<std::string> paths;
        for (size_t i = start; i < std::min(files.size(), start + kBatch); ++i) {
            paths.insert((*corpus / files[i]).string());
            args.push_back((*corpus / files[i]).string());
        }
        RunResult r = RunLimited(LUM_SCRIVEX_BIN, args, 10 * static_cast<int>(paths.size()));
        if (r.status == 0 && !r.timed_out) {
            ReadOurs(r.out, paths, ours);
            continue;
        }
        for (const auto& path : paths) {
            RunResult one =
                RunLimited(LUM_SCRIVEX_BIN, {"--pageinfo", "--verb", "2", "--noprompt", path}, 10);
            if (one.timed_out || one.status >= 128)
                crashes.push_back(path + (one.timed_out ? " (hang)" : " (crash)"));
            ReadOurs(one.out, {path}, ours);
        }
    }

    int compared = 0, agreed = 0, listed = 0, unopened = 0;
    std::vector<std::string> mismatches;
    for (const auto& file : files) {
        const std::string path = (*corpus / file).string();
        RunResult info =
            RunLimited("/usr/bin/pdfinfo", {"-box", "-f", "1", "-l", "99999", path}, 20);
        if (info.status != 0 || info.timed_out) continue;  // pdfinfo doesn't read it
        const OurDocument& doc = ours[path];
        if (!doc.refusal.empty()) {
            // Refused as no valid PDF: only by a listed rule, and for the listed reason.
            auto listed_refusal = refusals.find(file);
            if (listed_refusal == refusals.end())
                mismatches.push_back(file + ": refused (" + doc.refusal + ") and not listed");
            else if (listed_refusal->second != doc.refusal)
                mismatches.push_back(file + ": refused with " + doc.refusal + ", listed " + listed_refusal->second);
            else
                refusals.erase(listed_refusal);
        }
        for (auto& [n, theirs] : ReadPdfinfo(info.out)) {
            ++compared;
            auto it = doc.pages.find(n);
            bool same = false;
            if (it != doc.pages.end()) {
                Geometry mine = it->second;
                Order(mine.media);  // the report keeps the media box as stored
                Order(mine.crop);
                Order(theirs.media);
                Order(theirs.crop);
                same = Agree(mine.media, theirs.media) && Agree(mine.crop, theirs.crop) &&
                       mine.rotation == theirs.rotation;
            }
            if (same) {
                ++agreed;
            } else if (known.count({file, n}) || known.count({file, 0})) {
                ++listed;
            } else if (it == doc.pages.end() && doc.unopened) {
                ++unopened;  // the document failed as a whole: a matter of the layers below
            } else {
                mismatches.push_back(file + " page " + std::to_string(n) +
                                     (it == doc.pages.end() ? ": not reported" : ": differs"));
            }
        }
    }
    std::cout << "[ corpus   ] pages compared " << compared << ", agreeing " << agreed
              << ", listed differences " << listed << ", in documents that did not open "
              << unopened << "\n";
    EXPECT_TRUE(crashes.empty()) << ::testing::PrintToString(crashes);
    for (const auto& [file, message] : refusals) mismatches.push_back(file + ": listed as refused, but opens");
    EXPECT_TRUE(mismatches.empty()) << mismatches.size() << " pages differ:\n"
                                    << ::testing::PrintToString(mismatches);
}

}  // namespace
