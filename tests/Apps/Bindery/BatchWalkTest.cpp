// The batch walk end to end through the built program, in scratch folders, plus the bounds of
// the folder walk run in-process.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "Apps/Bindery/BatchWalk.h"
#include "Apps/Bindery/Options.h"
#include "Common/Limits.h"
#include "support/TestSupport.h"

namespace fs = std::filesystem;
using namespace lum::test;

namespace {

void PutPdf(const fs::path& p) {
    static const std::string bytes = ReadFile(DataPath("hello.pdf"));
    WriteFile(p, bytes);
}

std::vector<std::string> Lines(const std::string& s) {
    std::vector<std::string> out;
    std::istringstream in(s);
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

// The lines that echo a file or folder below `root`, in the order printed.
std::vector<std::string> EchoedUnder(const RunResult& r, const fs::path& root) {
    std::vector<std::string> out;
    for (const auto& line : Lines(r.out))
        if (line.rfind(root.string() + "/", 0) == 0) out.push_back(line.substr(root.string().size() + 1));
    return out;
}

std::vector<std::string> Sorted(std::vector<std::string> v) {
    std::sort(v.begin(), v.end());
    return v;
}

bool Contains(const std::string& hay, const std::string& needle) { return hay.find(needle) != std::string::npos; }

void ExpectCleanRun(const RunResult& r) {
    EXPECT_FALSE(r.timed_out);
    EXPECT_TRUE(r.err.empty()) << r.err;  // standard error is never used
}

}  // namespace

TEST(BatchWalkCli, InputNamesAndTheExtensionRetry) {
    TempDir dir;
    PutPdf(dir / "a.pdf");
    PutPdf(dir / "c.pdf");
    WriteFile(dir / "notes.txt", "text");
    PutPdf(dir / "paper.txt");
    struct Case {
        std::vector<std::string> args;
        std::vector<std::string> echoed;
        std::string out_has;
    } cases[] = {
        {{"a"}, {"a.pdf"}, ""},
        {{"c.pdf", "./a.pdf"}, {"c.pdf", "a.pdf"}, ""},           // command-line order
        {{"sub/../a.pdf"}, {"a.pdf"}, ""},
        {{"a.txt"}, {}, "Error: Wrong input filename or path: a.txt\n"},  // has an extension: no retry
        {{"notes.txt"}, {}, ""},                                   // wrong extension: silent
        {{"x", "a"}, {"a.pdf"}, "Error: Wrong input filename or path: x\n"},
        {{"--verb", "0", "x", "a"}, {}, ""},
        {{"--extension", ".txt", "paper"}, {"paper.txt"}, ""},
        {{"--extension", ".PDF", "a.pdf"}, {}, ""},
        {{""}, {"a.pdf", "c.pdf"}, ""},  // the current folder
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.args));
        const RunResult r = RunScrivex(c.args, dir.path());
        ExpectCleanRun(r);
        EXPECT_EQ(r.status, 0);
        // A folder is walked in the platform's order.
        const bool folder = c.args[0].empty();
        const auto echoed = EchoedUnder(r, dir.path());
        EXPECT_EQ(folder ? Sorted(echoed) : echoed, c.echoed) << r.out;
        if (c.out_has.empty()) {
            EXPECT_FALSE(Contains(r.out, "Error")) << r.out;
        } else {
            EXPECT_TRUE(Contains(r.out, c.out_has)) << r.out;
        }
    }
    EXPECT_FALSE(Contains(RunScrivex({"--verb", "0", "x"}, dir.path()).out, "x"));
}

TEST(BatchWalkCli, FolderFiltersByLowerCasedExtension) {
    TempDir dir;
    PutPdf(dir / "f" / "B.PDF");
    PutPdf(dir / "f" / "c.pdf");
    WriteFile(dir / "f" / "d.txt", "x");
    PutPdf(dir / "f" / "sub" / "e.pdf");
    RunResult r = RunScrivex({"f"}, dir.path());
    ExpectCleanRun(r);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(Sorted(EchoedUnder(r, dir.path())), (std::vector<std::string>{"f/B.PDF", "f/c.pdf"})) << r.out;
    EXPECT_FALSE(Contains(r.out, "Error")) << r.out;

    r = RunScrivex({"--extension", ".PDF", "f"}, dir.path());
    EXPECT_TRUE(EchoedUnder(r, dir.path()).empty()) << r.out;

    r = RunScrivex({"--subfolders", "f/"}, dir.path());
    EXPECT_EQ(Sorted(EchoedUnder(r, dir.path())),
              (std::vector<std::string>{"f/B.PDF", "f/c.pdf", "f/sub/e.pdf"}))
        << r.out;
}

TEST(BatchWalkCli, SubfoldersMirrorIntoTheOutputFolder) {
    TempDir dir;
    PutPdf(dir / "tree" / "top.pdf");
    PutPdf(dir / "tree" / "a" / "b.pdf");
    PutPdf(dir / "tree" / "a" / "deeper" / "c.pdf");
    WriteFile(dir / "tree" / "only-text" / "t.txt", "x");

    RunResult r = RunScrivex({"-o", "out", "--subfolders", "tree"}, dir.path());
    ExpectCleanRun(r);
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(fs::is_directory(dir / "out" / "tree" / "a" / "deeper"));
    // A folder is made only for a file that goes on to the driver.
    EXPECT_FALSE(fs::exists(dir / "out" / "tree" / "only-text"));
    EXPECT_EQ(Sorted(EchoedUnder(r, dir.path())),
              (std::vector<std::string>{"tree/a/b.pdf", "tree/a/deeper/c.pdf", "tree/top.pdf"}));

    // Without --subfolders the sub-folders are passed over in silence.
    TempDir out2;
    r = RunScrivex({"-o", out2.path().string(), (dir / "tree").string()}, dir.path());
    EXPECT_EQ(EchoedUnder(r, dir.path()), (std::vector<std::string>{"tree/top.pdf"}));
    EXPECT_TRUE(fs::is_directory(out2 / "tree"));
    EXPECT_FALSE(fs::exists(out2 / "tree" / "a"));

    // With the screen as output the tree is made below the current folder.
    TempDir work;
    r = RunScrivex({"--subfolders", (dir / "tree").string()}, work.path());
    EXPECT_TRUE(fs::is_directory(work / "tree" / "a" / "deeper"));
}

TEST(BatchWalkCli, OutputFolderThatCannotBeMade) {
    TempDir dir;
    PutPdf(dir / "a.pdf");
    // A sub-folder that can't be made skips its files and the walk goes on.
    PutPdf(dir / "t" / "s" / "x.pdf");
    PutPdf(dir / "t" / "y.pdf");
    fs::create_directories(dir / "o");
    WriteFile(dir / "o" / "t", "in the way");
    RunResult r = RunScrivex({"-o", "o", "--subfolders", "t"}, dir.path());
    ExpectCleanRun(r);
    EXPECT_EQ(r.status, 0);
    // o/t exists (as a file), so only o/t/s is attempted; the file in the way is the driver's
    // to report when it opens the page's output.
    EXPECT_TRUE(Contains(r.out, "Error: Failed to create the output sub-directory: " +
                                    (dir / "o" / "t" / "s").string() + "\n\n"))
        << r.out;
    EXPECT_EQ(Sorted(EchoedUnder(r, dir.path())), (std::vector<std::string>{"t/s/x.pdf", "t/y.pdf"}));

    // --output "" means files, in the current folder, which is never created.
    r = RunScrivex({"-o", "", "a.pdf"}, dir.path());
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(EchoedUnder(r, dir.path()), (std::vector<std::string>{"a.pdf"}));
}

TEST(BatchWalkCli, NamesOutsideAscii) {
    TempDir dir;
    const std::string utf8_name = "\xC3\xA9t\xC3\xA9 \xE6\x97\xA5.pdf";  // "été 日.pdf"
    const std::string latin1_name = "caf\xE9.pdf";                        // not UTF-8
    PutPdf(dir / "in" / utf8_name);
    PutPdf(dir / "in" / latin1_name);
    PutPdf(dir / "in" / "\xD0\xBF\xD0\xB0\xD0\xBF\xD0\xBA\xD0\xB0" / "x.pdf");

    RunResult r = RunScrivex({"in/" + utf8_name}, dir.path());
    ExpectCleanRun(r);
    EXPECT_EQ(EchoedUnder(r, dir.path()), (std::vector<std::string>{"in/" + utf8_name}));

    // A name that isn't UTF-8 still reaches the file system; its echo is question marks.
    const std::string latin1_path = (dir / "in" / latin1_name).string();
    const std::string marks(latin1_path.size(), '?');
    r = RunScrivex({"-o", "out1", "in/" + latin1_name}, dir.path());
    ExpectCleanRun(r);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out.rfind(marks + "\n", 0), 0u) << r.out;

    r = RunScrivex({"-o", "out", "--subfolders", "in"}, dir.path());
    ExpectCleanRun(r);
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(Contains(r.out, (dir / "in" / utf8_name).string() + "\n"));
    EXPECT_TRUE(Contains(r.out, marks + "\n"));
    EXPECT_FALSE(Contains(r.out, "Error")) << r.out;
    EXPECT_TRUE(fs::is_directory(dir / "out" / "in" / "\xD0\xBF\xD0\xB0\xD0\xBF\xD0\xBA\xD0\xB0"));

    // An output folder that isn't UTF-8 is created, and echoed in ASCII form.
    r = RunScrivex({"--verb", "2", "-o", "\xFF" "dir", "in/" + utf8_name}, dir.path());
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(Contains(r.out, "'output' parameter: \\U00FFdir\n")) << r.out;
    EXPECT_TRUE(fs::is_directory(dir / "\xFF" "dir"));
}

TEST(BatchWalkCli, HostileFolderEntriesEndOnlyThemselves) {
    TempDir dir;
    PutPdf(dir / "t" / "a" / "good.pdf");
    fs::create_directory_symlink("..", dir / "t" / "a" / "up");
    fs::create_directory_symlink("../../t", dir / "t" / "a" / "again");
    ASSERT_EQ(::mkfifo((dir / "t" / "pipe.pdf").c_str(), 0600), 0);
    fs::create_symlink("missing.pdf", dir / "t" / "dangling.pdf");

    const RunResult r = RunScrivex({"--subfolders", "t"}, dir.path(), {}, 30);
    ExpectCleanRun(r);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(EchoedUnder(r, dir.path()).size(), 3u) << r.out;  // good.pdf, pipe.pdf, dangling.pdf
    EXPECT_TRUE(Contains(r.out, "Error: up: ")) << r.out;
    EXPECT_TRUE(Contains(r.out, "Error: again: ")) << r.out;
    EXPECT_TRUE(Contains(r.out, "Error: Failed to read: " + (dir / "t" / "pipe.pdf").string() + "\n")) << r.out;
}

TEST(BatchWalkCli, UnreadableFolders) {
    // Folder rights bind root only through another user id.
    const bool root = ::geteuid() == 0;
    if (root && !fs::exists("/usr/bin/setpriv"))
        GTEST_SKIP() << "running as root without setpriv: folder permissions are not enforced";
    auto run = [&](const std::vector<std::string>& args, const fs::path& cwd) {
        if (!root) return RunScrivex(args, cwd);
        std::vector<std::string> full{"--reuid=65534", "--regid=65534", "--clear-groups", LUM_SCRIVEX_BIN};
        full.insert(full.end(), args.begin(), args.end());
        return lum::test::Run("/usr/bin/setpriv", full, cwd);
    };
    TempDir dir;
    PutPdf(dir / "t" / "locked" / "x.pdf");
    PutPdf(dir / "t" / "z.pdf");
    PutPdf(dir / "later.pdf");
    fs::permissions(dir / "t" / "locked", fs::perms::none);

    // Below the named folder: reported against its name, and the walk goes on.
    RunResult r = run({"--subfolders", "t", "later.pdf"}, dir.path());
    EXPECT_TRUE(r.err.empty()) << r.err;
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(Contains(r.out, "Error: locked")) << r.out;
    EXPECT_EQ(Sorted(EchoedUnder(r, dir.path())), (std::vector<std::string>{"later.pdf", "t/z.pdf"}));

    // Named on the command line: the run stops there.
    r = run({"t/locked", "later.pdf"}, dir.path());
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out.rfind("Error: ", 0), 0u) << r.out;
    EXPECT_TRUE(EchoedUnder(r, dir.path()).empty()) << r.out;
    fs::permissions(dir / "t" / "locked", fs::perms::owner_all);
}

namespace {
std::vector<std::pair<int, std::string>> gl_walk_messages;
const char* RecordWalk(lum::Int32 kind, const char* text, void*) {
    gl_walk_messages.emplace_back(kind, text);
    return nullptr;
}
}  // namespace

TEST(BatchWalkLimits, FolderDepthAtTheBound) {
    // Folders at depths 0..N-1 below the named one are walked; the one at depth N is refused.
    TempDir dir;
    fs::path p = dir / "d";
    for (size_t i = 1; i < lum::Limits::kMaxFolderDepth; ++i) p /= "d";
    PutPdf(p / "deep.pdf");
    PutPdf(p / "d" / "deeper.pdf");
    lum::Bindery::Options opt;
    opt.m_message = &RecordWalk;
    opt.m_subfolders = true;
    opt.m_output_path = (dir / "out").string();
    gl_walk_messages.clear();
    lum::Bindery::ProcessFolder((dir / "d").string(), "", opt);
    // The file at the last walked depth is echoed, the folder below it refused (in either order).
    std::sort(gl_walk_messages.begin(), gl_walk_messages.end());
    ASSERT_EQ(gl_walk_messages.size(), 2u);
    EXPECT_EQ(gl_walk_messages[0].first, 1) << gl_walk_messages[0].second;
    EXPECT_EQ(gl_walk_messages[1], std::make_pair(2, (p / "deep.pdf").string() + "\n"));
    EXPECT_TRUE(fs::is_directory(opt.m_output_path + p.string().substr(dir.path().string().size())));
    EXPECT_FALSE(fs::exists(dir / "out" / fs::relative(p / "d", dir.path())));
}
