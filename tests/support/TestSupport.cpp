#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lum::test {

fs::path DataPath(const std::string& name) { return fs::path(LUM_TEST_DATA_DIR) / name; }

std::optional<fs::path> CorpusDir() {
    fs::path p(LUM_CORPUS_DIR);
    std::error_code ec;
    if (fs::is_directory(p, ec)) return p;
    return std::nullopt;
}

bool CorpusRow::Has(const std::string& feature) const {
    return std::find(features.begin(), features.end(), feature) != features.end();
}

std::optional<std::string> CorpusRow::After(const std::string& prefix) const {
    for (const std::string& f : features)
        if (f.rfind(prefix, 0) == 0) return f.substr(prefix.size());
    return std::nullopt;
}

std::vector<CorpusRow> CorpusManifest(const fs::path& corpus) {
    std::ifstream in(corpus / "MANIFEST.tsv");
    std::vector<CorpusRow> rows;
    std::string line;
    std::getline(in, line);  // header
    while (std::getline(in, line)) {
        std::vector<std::string> cols;
        std::istringstream ss(line);
        for (std::string col; std::getline(ss, col, '\t');) cols.push_back(col);
        if (cols.size() < 5) continue;
        CorpusRow r{cols[0], size_t(std::stoull(cols[3])), {}};
        std::istringstream feats(cols[4]);
        for (std::string f; std::getline(feats, f, ',');) r.features.push_back(f);
        rows.push_back(std::move(r));
    }
    return rows;
}

std::string Hex(const std::string& bytes) {
    static const char kDigits[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : bytes) {
        out += kDigits[c >> 4];
        out += kDigits[c & 15];
    }
    return out;
}

std::string ReadFile(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + p.string());
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

void WriteFile(const fs::path& p, const std::string& bytes) {
    if (p.has_parent_path()) fs::create_directories(p.parent_path());
    std::ofstream out(p, std::ios::binary | std::ios::trunc);
    if (!out) throw std::runtime_error("cannot write " + p.string());
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

TempDir::TempDir() {
    std::random_device rd;
    for (int i = 0; i < 100; ++i) {
        fs::path p = fs::temp_directory_path() / ("scrivex-test-" + std::to_string(rd()));
        std::error_code ec;
        if (fs::create_directory(p, ec)) {
            m_path = fs::canonical(p);
            return;
        }
    }
    throw std::runtime_error("cannot create a temporary folder");
}

TempDir::~TempDir() {
    std::error_code ec;
    // Tests may remove rights from folders inside; give them back so the removal succeeds.
    for (auto it = fs::recursive_directory_iterator(m_path, fs::directory_options::skip_permission_denied, ec);
         !ec && it != fs::recursive_directory_iterator(); it.increment(ec)) {
        fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
    }
    fs::remove_all(m_path, ec);
}

namespace {
void DrainInto(int fd, std::string& sink) {
    char buf[65536];
    ssize_t n = ::read(fd, buf, sizeof buf);
    if (n > 0) sink.append(buf, static_cast<size_t>(n));
}
}  // namespace

RunResult Run(const std::string& program, const std::vector<std::string>& args, const fs::path& cwd,
              const std::string& input, int timeout_seconds) {
    int in_pipe[2], out_pipe[2], err_pipe[2];
    if (pipe(in_pipe) || pipe(out_pipe) || pipe(err_pipe)) throw std::runtime_error("pipe failed");
    pid_t pid = fork();
    if (pid < 0) throw std::runtime_error("fork failed");
    if (pid == 0) {
        dup2(in_pipe[0], 0);
        dup2(out_pipe[1], 1);
        dup2(err_pipe[1], 2);
        for (int fd : {in_pipe[0], in_pipe[1], out_pipe[0], out_pipe[1], err_pipe[0], err_pipe[1]}) close(fd);
        if (!cwd.empty() && chdir(cwd.c_str()) != 0) _exit(126);
        std::vector<char*> argv;
        argv.push_back(const_cast<char*>(program.c_str()));
        for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        execv(program.c_str(), argv.data());
        _exit(127);
    }
    close(in_pipe[0]);
    close(out_pipe[1]);
    close(err_pipe[1]);
    // Feed standard input in full first; test inputs are small enough for the pipe buffer.
    signal(SIGPIPE, SIG_IGN);
    if (!input.empty()) {
        ssize_t w = ::write(in_pipe[1], input.data(), input.size());
        (void)w;
    }
    close(in_pipe[1]);

    RunResult r;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeout_seconds);
    bool out_open = true, err_open = true;
    while (out_open || err_open) {
        pollfd fds[2] = {{out_pipe[0], POLLIN, 0}, {err_pipe[0], POLLIN, 0}};
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            kill(pid, SIGKILL);
            r.timed_out = true;
            break;
        }
        int rc = poll(fds, 2, static_cast<int>(left.count()));
        if (rc < 0) break;
        for (int i = 0; i < 2; ++i) {
            if (!(fds[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
            std::string& sink = i == 0 ? r.out : r.err;
            size_t before = sink.size();
            DrainInto(fds[i].fd, sink);
            if (sink.size() == before) (i == 0 ? out_open : err_open) = false;
        }
    }
    close(out_pipe[0]);
    close(err_pipe[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFEXITED(status)) r.status = WEXITSTATUS(status);
    else if (WIFSIGNALED(status)) r.status = 128 + WTERMSIG(status);
    return r;
}

RunResult RunScrivex(const std::vector<std::string>& args, const fs::path& cwd, const std::string& input,
                     int timeout_seconds) {
    return Run(LUM_SCRIVEX_BIN, args, cwd, input, timeout_seconds);
}

std::string QuietOutput(const std::string& data_file, const std::vector<std::string>& options) {
    std::vector<std::string> args = {"--verb", "0"};
    args.insert(args.end(), options.begin(), options.end());
    args.push_back(DataPath(data_file).string());
    TempDir dir;
    const RunResult r = RunScrivex(args, dir.path());
    EXPECT_EQ(r.status, 0) << r.out;
    return r.out;
}

#if defined(__SANITIZE_ADDRESS__)
#define LUM_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LUM_TEST_ASAN 1
#endif
#endif

RunResult RunLimited(const std::string& program, std::vector<std::string> args, int seconds) {
#ifdef LUM_TEST_ASAN
    args.insert(args.begin(), {"--", program});
    seconds *= 4;
#else
    args.insert(args.begin(), {"--as=2147483648", "--", program});
#endif
    return Run("/usr/bin/prlimit", args, {}, {}, seconds);
}

}  // namespace lum::test
