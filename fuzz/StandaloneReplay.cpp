// A plain main() for fuzz targets, so ordinary test builds (gcc, with or without sanitizers)
// replay the seeds and the regression inputs without a fuzzing engine.
//
//   <name>_replay [--timeout=S] [--rss-limit-mb=N] PATH...
//
// Each PATH is a file or a folder (walked recursively, in name order); a missing PATH is
// skipped, so a target without seeds still passes. The empty input runs first, as libFuzzer
// does. Any input that crashes, throws out of the target, runs longer than the timeout or
// pushes the peak RSS over the limit ends the run with a non-zero status and its name.
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

namespace fs = std::filesystem;

namespace {

// libFuzzer's own exit code for a timeout, so scripts can tell a hang from a crash.
constexpr int kTimeoutExit = 70;
constexpr int kFailureExit = 1;

// The signal handler may only touch what is async-signal-safe: a fixed buffer and write().
char gl_current[4096] = "<empty input>";
unsigned gl_timeout_seconds = 25;

void WriteRaw(const char* s) {
    ssize_t ignored = ::write(2, s, std::strlen(s));
    (void)ignored;
}

void OnAlarm(int) {
    WriteRaw("replay: timeout: input ran longer than the limit: ");
    WriteRaw(gl_current);
    WriteRaw("\n");
    _exit(kTimeoutExit);
}

void SetCurrent(const std::string& name) {
    size_t n = std::min(name.size(), sizeof gl_current - 1);
    std::memcpy(gl_current, name.data(), n);
    gl_current[n] = '\0';
}

bool ReadWhole(const fs::path& p, std::vector<char>& out) {
    std::ifstream in(p, std::ios::binary);
    if (!in) return false;
    out.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

void Collect(const fs::path& p, std::vector<fs::path>& inputs) {
    std::error_code ec;
    if (fs::is_regular_file(p, ec)) {
        inputs.push_back(p);
        return;
    }
    if (!fs::is_directory(p, ec)) return;
    std::vector<fs::path> found;
    for (auto it = fs::recursive_directory_iterator(p, ec); !ec && it != fs::recursive_directory_iterator();
         it.increment(ec)) {
        if (it->is_regular_file(ec)) found.push_back(it->path());
    }
    std::sort(found.begin(), found.end());
    inputs.insert(inputs.end(), found.begin(), found.end());
}

long PeakRssMb() {
    rusage ru{};
    getrusage(RUSAGE_SELF, &ru);
    return ru.ru_maxrss / 1024;  // Linux reports kilobytes
}

// Runs one input the way libFuzzer would: a heap copy of exactly `size` bytes, so a read one
// past the end is caught by the sanitizer instead of landing in a larger buffer.
int RunOne(const std::string& name, const std::vector<char>& bytes, long rss_limit_mb) {
    SetCurrent(name);
    std::unique_ptr<uint8_t[]> copy(new uint8_t[bytes.size() ? bytes.size() : 1]);
    if (!bytes.empty()) std::memcpy(copy.get(), bytes.data(), bytes.size());
    alarm(gl_timeout_seconds);
    try {
        LLVMFuzzerTestOneInput(copy.get(), bytes.size());
    } catch (const std::exception& e) {
        alarm(0);
        std::fprintf(stderr, "replay: exception escaped the target on %s: %s\n", name.c_str(), e.what());
        return kFailureExit;
    } catch (...) {
        alarm(0);
        std::fprintf(stderr, "replay: unknown exception escaped the target on %s\n", name.c_str());
        return kFailureExit;
    }
    alarm(0);
    long rss = PeakRssMb();
    if (rss_limit_mb > 0 && rss > rss_limit_mb) {
        std::fprintf(stderr, "replay: peak RSS %ld MB over the limit of %ld MB after %s\n", rss, rss_limit_mb,
                     name.c_str());
        return kFailureExit;
    }
    return 0;
}

bool ParseNumber(const char* text, long& out) {
    char* end = nullptr;
    long v = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || v < 0) return false;
    out = v;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (LLVMFuzzerInitialize) LLVMFuzzerInitialize(&argc, &argv);

    long rss_limit_mb = 2560;
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        const char* a = argv[i];
        long v = 0;
        if (std::strncmp(a, "--timeout=", 10) == 0 && ParseNumber(a + 10, v)) {
            gl_timeout_seconds = static_cast<unsigned>(v);
        } else if (std::strncmp(a, "--rss-limit-mb=", 15) == 0 && ParseNumber(a + 15, v)) {
            rss_limit_mb = v;
        } else if (a[0] == '-' && a[1] == '-') {
            std::fprintf(stderr, "usage: %s [--timeout=S] [--rss-limit-mb=N] PATH...\n", argv[0]);
            return 2;
        } else {
            Collect(a, inputs);
        }
    }

    struct sigaction sa{};
    sa.sa_handler = OnAlarm;
    sigaction(SIGALRM, &sa, nullptr);

    std::string slowest;
    double slowest_ms = 0;
    size_t count = 0;
    std::vector<char> bytes;
    auto runTimed = [&](const std::string& name) {
        // Named before it runs: a sanitizer report or a signal ends the process without a word
        // from us, and this line is then the last thing in the log before the report.
        std::fprintf(stderr, "replay: %s (%zu bytes)\n", name.c_str(), bytes.size());
        auto start = std::chrono::steady_clock::now();
        int rc = RunOne(name, bytes, rss_limit_mb);
        double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
        if (ms >= slowest_ms) {
            slowest_ms = ms;
            slowest = name;
        }
        ++count;
        return rc;
    };

    bytes.clear();
    if (int rc = runTimed("<empty input>")) return rc;
    for (const auto& p : inputs) {
        if (!ReadWhole(p, bytes)) {
            std::fprintf(stderr, "replay: cannot read %s\n", p.c_str());
            return kFailureExit;
        }
        if (int rc = runTimed(p.string())) return rc;
    }
    std::fprintf(stderr, "replay: %zu inputs passed; slowest %.1f ms (%s); peak RSS %ld MB\n", count, slowest_ms,
                 slowest.c_str(), PeakRssMb());
    return 0;
}
