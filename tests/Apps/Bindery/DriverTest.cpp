// The document driver end to end through the built program: output names and files, the page
// list, the password step and every failure row, each with its text and the run's status.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/TestSupport.h"

namespace fs = std::filesystem;
using namespace lum::test;

namespace {

// A copy of a test file under a name of the test's choosing.
fs::path Put(const TempDir& dir, const std::string& data_file, const std::string& name) {
    const fs::path p = dir / name;
    WriteFile(p, ReadFile(DataPath(data_file)));
    return p;
}

std::vector<std::string> FilesIn(const fs::path& folder) {
    std::vector<std::string> names;
    if (!fs::is_directory(folder)) return names;
    for (const auto& e : fs::directory_iterator(folder))
        names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

bool Contains(const std::string& hay, const std::string& needle) {
    return hay.find(needle) != std::string::npos;
}

const std::string kBom = "\xEF\xBB\xBF";
const std::string kLetterLine = "612, 792, 0, 0, 612, 792, 0, 0, 612, 792, 0\n";

struct NamingCase {
    const char* name;
    std::vector<std::string> args;   // besides -o out --pageinfo my.pdf
    std::vector<std::string> files;  // in out/
};

class OutputNaming : public ::testing::TestWithParam<NamingCase> {};

TEST_P(OutputNaming, OneFilePerPage) {
    const NamingCase& c = GetParam();
    TempDir dir;
    Put(dir, "pages-boxes.pdf", "my.pdf");  // six pages
    std::vector<std::string> args = {"-o", "out", "--pageinfo", "my.pdf"};
    args.insert(args.end(), c.args.begin(), c.args.end());
    const RunResult r = RunScrivex(args, dir.path());
    EXPECT_EQ(0, r.status) << r.out;
    EXPECT_EQ(c.files, FilesIn(dir / "out")) << r.out;
    // Output file names are announced to the message channel only: nothing on the console.
    EXPECT_FALSE(Contains(r.out, "my_1")) << r.out;
}

INSTANTIATE_TEST_SUITE_P(
    Names, OutputNaming,
    ::testing::Values(
        NamingCase{"SeveralPagesCount",
                   {},
                   {"my_1.txt", "my_2.txt", "my_3.txt", "my_4.txt", "my_5.txt", "my_6.txt"}},
        NamingCase{"OnePageHasNoCounter", {"--pages", "3"}, {"my.txt"}},
        NamingCase{"RepeatedPageIsOnePage", {"--pages", "1,1,1"}, {"my.txt"}},
        NamingCase{"Digits", {"--digits", "4", "--pages", "1-2"}, {"my0001.txt", "my0002.txt"}},
        NamingCase{"DigitsOnOnePage", {"--digits", "1", "-f", "xml", "--pages", "1"}, {"my1.xml"}},
        NamingCase{"DigitsNine", {"--digits", "9", "--pages", "6"}, {"my000000006.txt"}},
        NamingCase{
            "DigitsZeroIsIgnored", {"--digits", "0", "--pages", "5-6"}, {"my_5.txt", "my_6.txt"}},
        NamingCase{"DigitsTwelveIsIgnored", {"--digits", "12", "--pages", "2"}, {"my.txt"}},
        NamingCase{"XmlOnlyExactly", {"-f", "XML", "--pages", "1"}, {"my.xml"}},
        NamingCase{"OtherFormatIsTxt", {"-f", "wordlist", "--pages", "1"}, {"my.txt"}},
        NamingCase{"Prefix", {"--prefix", "pre", "--pages", "1,2"}, {"pre_1.txt", "pre_2.txt"}},
        NamingCase{"NotFoundPagesMakeNoFile", {"--pages", "7-"}, {"my_6.txt"}}),
    [](const auto& p) { return std::string(p.param.name); });

TEST(DriverCli, OutputFileHoldsMarkAndReport) {
    TempDir dir;
    Put(dir, "pages-one.pdf", "one.pdf");
    // A trailing separator on the output folder is dropped once.
    RunResult r = RunScrivex({"-o", "out/", "--pageinfo", "one.pdf"}, dir.path());
    EXPECT_EQ(0, r.status);
    EXPECT_EQ(kBom + kLetterLine, ReadFile(dir / "out" / "one.txt"));

    r = RunScrivex({"-o", "out16", "--pageinfo", "--encoding", "UTF16", "one.pdf"}, dir.path());
    std::string want = "\xFF\xFE";
    for (char c : kLetterLine) want += std::string{c, '\0'};
    EXPECT_EQ(want, ReadFile(dir / "out16" / "one.txt"));

    // Any other encoding is UTF-8 without a word; an existing file is replaced.
    WriteFile(dir / "out" / "one.txt", std::string(100000, 'x'));
    r = RunScrivex({"-o", "out", "--pageinfo", "-e", "latin1", "one.pdf"}, dir.path());
    EXPECT_EQ(kBom + kLetterLine, ReadFile(dir / "out" / "one.txt"));
    EXPECT_FALSE(Contains(r.out, "Error")) << r.out;

    // Without pageinfo the page's file is made, and holds the mark alone until the text
    // engine writes into it.
    r = RunScrivex({"-o", "text", "one.pdf"}, dir.path());
    EXPECT_EQ(kBom, ReadFile(dir / "text" / "one.txt"));
}

TEST(DriverCli, ScreenOutputAndVerbosity) {
    TempDir dir;
    Put(dir, "pages-one.pdf", "one.pdf");
    RunResult r = RunScrivex({"--pageinfo", "one.pdf"}, dir.path());
    EXPECT_EQ((dir / "one.pdf").string() + "\n" + kLetterLine, r.out);
    r = RunScrivex({"--pageinfo", "--verb", "0", "one.pdf"}, dir.path());
    EXPECT_EQ(kLetterLine, r.out);
    r = RunScrivex({"--pageinfo", "--verb", "3", "one.pdf"}, dir.path());
    EXPECT_TRUE(Contains(r.out,
                         "Processing page: 1...\nwidth, height, media box, crop box, page "
                         "rotation:\n" +
                             kLetterLine))
        << r.out;
    // Without pageinfo nothing is written for a page yet.
    r = RunScrivex({"--verb", "0", "one.pdf"}, dir.path());
    EXPECT_EQ("", r.out);
}

struct PageListCase {
    const char* pages;
    std::string out;  // after the echo of the file, with --verb 1
};

class PageListCli : public ::testing::TestWithParam<PageListCase> {};

std::string Report(int page) {
    // pages-boxes.pdf: one line per page, see its template.
    static const char* lines[] = {
        "841.89, 595.28, 0, 0, 595.28, 841.89, 0, 0, 595.28, 841.89, 90\n",
        "792, 612, 612, 792, 0, 0, 612, 792, 0, 0, 270\n",
        "10, 10, 100, 100, 200, 200, 10, 10, 20, 20, 0\n",
        "100, 92, 0, 0, 612, 792, 0, 700, 100, 792, 180\n",
        "0, 792, 0, 0, 0, 792, 0, 0, 0, 792, 0\n",
        "3.5001, 1.23457e+06, 0.123457, -3.5, 1.23457e+06, 0.0001, 0.123457, -3.5, "
        "1.23457e+06, 0.0001, 90\n"};
    return lines[page - 1];
}

TEST_P(PageListCli, SelectsAndReports) {
    const PageListCase& c = GetParam();
    TempDir dir;
    const fs::path pdf = Put(dir, "pages-boxes.pdf", "b.pdf");
    const RunResult r = RunScrivex({"--pageinfo", "--pages", c.pages, "b.pdf"}, dir.path());
    EXPECT_EQ(0, r.status);
    EXPECT_EQ(pdf.string() + "\n" + c.out, r.out);
}

INSTANTIATE_TEST_SUITE_P(
    Lists, PageListCli,
    ::testing::Values(
        PageListCase{"-", Report(1) + Report(2) + Report(3) + Report(4) + Report(5) + Report(6)},
        PageListCase{"even", Report(2) + Report(4) + Report(6)},
        // Past the end: each number not found, with a blank line; m_last_error is not touched.
        PageListCase{"8", "Error: Page number 8 not found.\n\n"},
        PageListCase{"7-", Report(6) + "Error: Page number 7 not found.\n\n"},
        PageListCase{"9-20", ""},
        // A bad token: reported once, and the pages before it are still converted.
        PageListCase{
            "2,x,3",
            "Error: An illegal value was specified for 'pages' option: 2,x,3\n\n" + Report(2)},
        PageListCase{"0", "Error: An illegal value was specified for 'pages' option: 0\n\n"},
        // Page 6, the first numbers above it one by one, and the rest in one line.
        PageListCase{"2147483647-", [] {
                         std::string out = Report(6);
                         for (int n = 7; n <= 6 + 10000; ++n)
                             out += "Error: Page number " + std::to_string(n) + " not found.\n\n";
                         return out + "Error: Page numbers 10007 to 2147483647 not found (too many to "
                                      "report one by one).\n\n";
                     }()}));

TEST(DriverCli, FailuresEndWhatTheyShould) {
    TempDir dir;
    WriteFile(dir / "empty.pdf", "");
    WriteFile(dir / "text.pdf", "This is no PDF at all.\n");
    Put(dir, "pages-badroot.pdf", "badroot.pdf");
    Put(dir, "pages-one.pdf", "z.pdf");
    const RunResult r =
        RunScrivex({"--pageinfo", "empty.pdf", "text.pdf", "badroot.pdf", "z.pdf"}, dir.path());
    EXPECT_EQ(0, r.status);  // failures of documents don't reach the exit status
    for (const char* name : {"empty.pdf", "text.pdf", "badroot.pdf"}) {
        const std::string path = (dir / name).string();
        EXPECT_TRUE(Contains(r.out, path + "\nError: Failed to read: " + path +
                                        "\nThe file is not a valid PDF document.\n"))
            << r.out;
    }
    // The next file is still processed.
    EXPECT_TRUE(Contains(r.out, (dir / "z.pdf").string() + "\n" + kLetterLine)) << r.out;
    EXPECT_TRUE(r.err.empty()) << r.err;

    // At verbosity 2 the failure says where the output would have gone and why.
    const RunResult v = RunScrivex({"--pageinfo", "--verb", "2", "badroot.pdf"}, dir.path());
    EXPECT_TRUE(Contains(v.out, "The file is not a valid PDF document.\nTrying to save to: " +
                                    (dir / "badroot").string() +
                                    "\nException: \n\t Message: Page root is not valid.\n"))
        << v.out;
}

TEST(DriverCli, PageErrorEndsThatPageOnly) {
    TempDir dir;
    Put(dir, "pages-badpage.pdf", "bad.pdf");
    RunResult r = RunScrivex({"--pageinfo", "bad.pdf"}, dir.path());
    EXPECT_EQ(0, r.status);
    EXPECT_EQ((dir / "bad.pdf").string() + "\n" + kLetterLine +
                  "Error: A PDF error occurred during processing\n" +
                  "792, 612, 0, 0, 612, 792, 0, 0, 612, 792, 270\n",
              r.out);
    r = RunScrivex({"--pageinfo", "--verb", "2", "bad.pdf"}, dir.path());
    EXPECT_TRUE(Contains(r.out,
                         "Error: A PDF error occurred during processing\nException: \n\t "
                         "Message: GetNumber() can't be invoked on Obj of this type."))
        << r.out;

    // In file mode the earlier and later pages' files are complete.
    r = RunScrivex({"-o", "out", "--pageinfo", "bad.pdf"}, dir.path());
    EXPECT_EQ(kBom + kLetterLine, ReadFile(dir / "out" / "bad_1.txt"));
    EXPECT_EQ(kBom + "792, 612, 0, 0, 612, 792, 0, 0, 612, 792, 270\n", ReadFile(dir / "out" / "bad_3.txt"));
}

TEST(DriverCli, OutputFileThatCannotBeCreatedEndsTheDocument) {
    TempDir dir;
    Put(dir, "pages-boxes.pdf", "a.pdf");
    Put(dir, "pages-one.pdf", "b.pdf");
    // A folder where the second page's file should go.
    fs::create_directories(dir / "out" / "a_2.txt");
    const RunResult r = RunScrivex({"-o", "out", "--pageinfo", "a.pdf", "b.pdf"}, dir.path());
    EXPECT_EQ(0, r.status);
    EXPECT_TRUE(Contains(
        r.out, "Error: Failed to create the output file: " + (dir / "out" / "a_2.txt").string() +
                   "\n\n" + (dir / "b.pdf").string() + "\n"))
        << r.out;
    // The pages after it are not converted; the next document is.
    EXPECT_EQ((std::vector<std::string>{"a_1.txt", "a_2.txt", "b.txt"}), FilesIn(dir / "out"));
    EXPECT_EQ(kBom + kLetterLine, ReadFile(dir / "out" / "b.txt"));
}

TEST(DriverCli, UnreadableFileAndFolder) {
    if (geteuid() == 0) GTEST_SKIP() << "running as root: file rights don't keep anything out";
    TempDir dir;
    Put(dir, "pages-one.pdf", "locked.pdf");
    fs::permissions(dir / "locked.pdf", fs::perms::none);
    Put(dir, "pages-one.pdf", "z.pdf");
    const RunResult r = RunScrivex({"--pageinfo", "locked.pdf", "z.pdf"}, dir.path());
    EXPECT_EQ(0, r.status);
    EXPECT_TRUE(Contains(r.out, "Error: Failed to read: " + (dir / "locked.pdf").string() +
                                    "\nThe file is not a valid PDF document.\n"))
        << r.out;
    EXPECT_TRUE(Contains(r.out, (dir / "z.pdf").string() + "\n" + kLetterLine)) << r.out;
}

// The password step: the option is the first attempt, then up to three prompts (the first says
// "Wrong password." although none was given; an empty answer is the empty password); a password
// typed at the prompt serves the later documents; a failure abandons the document only.
TEST(DriverCli, PasswordStep) {
    TempDir dir;
    for (const char* name : {"a.pdf", "b.pdf"}) Put(dir, "enc-r2-rc4-40.pdf", name);
    Put(dir, "pages-one.pdf", "z.pdf");
    const std::string a = (dir / "a.pdf").string(), b = (dir / "b.pdf").string();
    const std::string z = (dir / "z.pdf").string() + "\n" + kLetterLine;
    const std::string prompt = "Wrong password.\nPlease enter the correct password: ";
    const std::string report = "595.28, 841.89, 0, 0, 595.28, 841.89, 0, 0, 595.28, 841.89, 0\n";
    struct Case {
        std::vector<std::string> args;
        std::string input, out;
    } cases[] = {
        {{"--noprompt", "a.pdf", "z.pdf"}, "",
         a + "\nError: A valid password is required to open: " + a + "\n" + z},
        {{"a.pdf", "z.pdf"}, "a\nb\nc\n",
         a + "\n" + prompt + prompt + prompt + "Error: Wrong password. Failed to open: " + a + "\n" + z},
        {{"a.pdf", "b.pdf"}, "x\n\nuser\n", a + "\n" + prompt + prompt + prompt + report + b + "\n" + report},
        {{"--pass", "user", "a.pdf"}, "", a + "\n" + report},
        {{"--pass", "owner", "a.pdf"}, "", a + "\n" + report},
        {{"--pass", "nope", "--noprompt", "a.pdf"}, "",
         a + "\nError: A valid password is required to open: " + a + "\n"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> args{"--pageinfo"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const RunResult r = RunScrivex(args, dir.path(), c.input);
        EXPECT_EQ(0, r.status);
        EXPECT_EQ(c.out, r.out) << testing::PrintToString(c.args);
    }
}

}  // namespace
