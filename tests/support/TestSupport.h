#pragma once
// Helpers shared by every test binary: failures with their texts, paths to test data and the
// shared corpus, temporary folders, and running the built scrivex binary as a user would.
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Common/Exception.h"

namespace lum::test {

// The texts of the failure a call raised; `thrown` is false when it returned.
struct Failure {
    bool thrown = false;
    std::string message;
    std::string condition;
    std::string function;
};

template <class F>
Failure CatchFailure(F&& f) {
    Failure r;
    try {
        f();
    } catch (const Common::Exception& e) {
        r.thrown = true;
        r.message = e.GetMessage();
        r.condition = e.GetCondition();
        r.function = e.GetFunction();
    }
    return r;
}

// Expects `stmt` to fail with exactly this message, condition text and function.
#define EXPECT_LUM_FAILURE(stmt, msg, cond, func)                                  \
    do {                                                                           \
        const ::lum::test::Failure f_ = ::lum::test::CatchFailure([&] { stmt; });  \
        EXPECT_TRUE(f_.thrown) << #stmt;                                           \
        EXPECT_EQ(f_.message, msg) << #stmt;                                       \
        EXPECT_EQ(f_.condition, cond) << #stmt;                                    \
        EXPECT_EQ(f_.function, func) << #stmt;                                     \
    } while (0)

// Time bounds of tests are stated for Release; sanitized builds run several times slower.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr double kSecondsScale = 10;
#else
inline constexpr double kSecondsScale = 1;
#endif

inline double CpuSecondsSince(std::clock_t start) {
    return double(std::clock() - start) / CLOCKS_PER_SEC;
}

std::filesystem::path DataPath(const std::string& name);

// The shared corpus of real-world PDFs, or nothing (tests then skip with a message).
std::optional<std::filesystem::path> CorpusDir();

// One row of the corpus's MANIFEST.tsv: the file (relative to the corpus), its size and its
// comma-separated features.
struct CorpusRow {
    std::string file;
    size_t bytes = 0;
    std::vector<std::string> features;
    bool Has(const std::string& feature) const;
    // What follows `prefix` in the first feature that starts with it.
    std::optional<std::string> After(const std::string& prefix) const;
};
std::vector<CorpusRow> CorpusManifest(const std::filesystem::path& corpus);

std::string ReadFile(const std::filesystem::path& p);
// Two upper-case hex digits per byte, nothing between them.
std::string Hex(const std::string& bytes);
void WriteFile(const std::filesystem::path& p, const std::string& bytes);

// A fresh folder under the system temp folder, removed with everything in it on destruction.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path operator/(const std::string& name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

struct RunResult {
    int status = -1;       // exit status, or 128 + signal when killed by one
    std::string out;       // standard output
    std::string err;       // standard error
    bool timed_out = false;
};

// Runs a program with the given arguments in `cwd`, feeding `input` to its standard input.
RunResult Run(const std::string& program, const std::vector<std::string>& args,
              const std::filesystem::path& cwd = {}, const std::string& input = {}, int timeout_seconds = 60);

// Runs the built scrivex binary.
RunResult RunScrivex(const std::vector<std::string>& args, const std::filesystem::path& cwd = {},
                     const std::string& input = {}, int timeout_seconds = 60);

// What scrivex prints with "--verb 0", `options` and the file `data_file` of tests/data, run in
// a fresh folder; a test failure when it does not exit with 0.
std::string QuietOutput(const std::string& data_file, const std::vector<std::string>& options);

// Runs `program` under prlimit with 2 GiB of address space (none in a sanitized build, which
// reserves terabytes) and `seconds`, stretched for the slower sanitized build.
RunResult RunLimited(const std::string& program, std::vector<std::string> args, int seconds);

}  // namespace lum::test
