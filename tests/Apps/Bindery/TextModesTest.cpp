// The page output modes through the built program: which mode wins, the clip box message,
// counts, the word list, XML and plain text, on the screen and in files.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/TestSupport.h"

namespace fs = std::filesystem;
using namespace lum::test;

namespace {

// Two pages: three upright lines (a word split by a hyphen at the end of the first) and a
// turned one on page 1, five words on page 2.
const char* kFile = "text-modes.pdf";

fs::path Put(const TempDir& dir) {
    const fs::path p = dir / "my.pdf";
    WriteFile(p, ReadFile(DataPath(kFile)));
    return p;
}

std::string Screen(const std::vector<std::string>& options) { return QuietOutput(kFile, options); }

size_t Count(const std::string& s, const std::string& what) {
    size_t n = 0;
    for (size_t p = s.find(what); p != std::string::npos; p = s.find(what, p + 1)) ++n;
    return n;
}

const std::string kPage1 =
    "Hello world, a hyphenated example\nfollows here.\n<less> & \"more\"\nturned text\n";
const std::string kPage2 = "second page with six words\n";

}  // namespace

TEST(TextModes, ScreenOutputOfEachMode) {
    const struct {
        const char* name;
        std::vector<std::string> options;
        std::string out;
    } cases[] = {
        {"plain, dehyphenated", {}, kPage1 + kPage2},
        {"plain without dehyphenation", {"--nodehyphen"},
         "Hello world, a hyphenated exam-\nple follows here.\n<less> & \"more\"\nturned text\n" +
             kPage2},
        {"word count", {"--wordcount"}, "13\n5\n"},
        {"word count wins over character count", {"--wordcount", "--charcount"}, "13\n5\n"},
        {"character count is dehyphenated", {"--charcount"}, "76\n27\n"},
        {"character count ignores nodehyphen", {"--charcount", "--nodehyphen"}, "76\n27\n"},
        {"layout writes nothing", {"-f", "layout"}, ""},
        {"the page report wins, and no clip is parsed",
         {"--pageinfo", "--wordcount", "-f", "xml", "--clip", "bad"},
         "612, 792, 0, 0, 612, 792, 0, 0, 612, 792, 0\n"
         "612, 792, 0, 0, 612, 792, 0, 0, 612, 792, 0\n"},
        {"a clip box keeps what lies in it", {"-a", "1", "--clip", "0,590,300,650"},
         "<less> & \"more\"\n"},
    };
    for (const auto& c : cases) EXPECT_EQ(Screen(c.options), c.out) << c.name;
}

TEST(TextModes, WordList) {
    const std::string plain = Screen({"-f", "WordList", "-a", "2"});
    EXPECT_EQ(plain, "second\npage\nwith\nsix\nwords\n");
    const std::string boxes = Screen({"-f", "wordlist", "--output_bbox", "-a", "2"});
    ASSERT_EQ(Count(boxes, "\n"), 5u);
    // x from the word, y from the line, whose height is the font's common glyph height.
    EXPECT_EQ(boxes.substr(0, boxes.find('\n')), "72, 697.82, 33.36, 9.47, second");
    // The word count is the number of words of the list.
    EXPECT_EQ(Count(Screen({"-f", "wordlist"}), "\n"), 13u + 5u);
}

TEST(TextModes, BadValuesAreReportedPerPage) {
    const std::string clip = Screen({"--clip", "0,0,100"});
    EXPECT_EQ(Count(clip, "Error: An illegal value was specified for 'clip' option: 0,0,100\n"), 2u);
    EXPECT_NE(clip.find(kPage1), std::string::npos) << "the whole page is extracted";
    const std::string format = Screen({"-f", "foo"});
    EXPECT_EQ(Count(format, "Error: Unknown output format\n"), 2u);
    EXPECT_NE(format.find(kPage2), std::string::npos) << "and its plain text";
}

TEST(TextModes, Files) {
    TempDir dir;
    Put(dir);
    RunResult r = RunScrivex({"--verb", "0", "-o", "out", "--wordcount", "my.pdf"}, dir.path());
    ASSERT_EQ(r.status, 0) << r.out;
    EXPECT_EQ(ReadFile(dir / "out" / "my_1.txt"), "\xEF\xBB\xBF" "13\n");
    EXPECT_EQ(ReadFile(dir / "out" / "my_2.txt"), "\xEF\xBB\xBF" "5\n");

    r = RunScrivex({"--verb", "0", "-o", "lay", "-f", "layout", "my.pdf"}, dir.path());
    ASSERT_EQ(r.status, 0) << r.out;
    EXPECT_EQ(ReadFile(dir / "lay" / "my_2.txt"), "\xEF\xBB\xBF");

    r = RunScrivex({"--verb", "0", "-o", "x", "-e", "UTF16", "-f", "xml", "-a", "2", "my.pdf"}, dir.path());
    ASSERT_EQ(r.status, 0) << r.out;
    const std::string xml = ReadFile(dir / "x" / "my.xml");
    ASSERT_GE(xml.size(), 8u);
    EXPECT_EQ(xml.substr(0, 6), std::string("\xFF\xFE<\0?\0", 6));
    EXPECT_NE(xml.find(std::string("u\0t\0f\0-\0" "1\0" "6\0", 12)), std::string::npos);
}

// Every flag combination gives well-formed XML, read by an independent parser.
TEST(TextModes, XmlIsWellFormed) {
    TempDir dir;
    Put(dir);
    const std::vector<std::vector<std::string>> flags = {
        {}, {"--xml_words_as_elements"}, {"--output_bbox"}, {"--xml_output_styles"},
        {"--xml_words_as_elements", "--output_bbox", "--xml_output_styles"}};
    for (size_t i = 0; i < flags.size(); ++i) {
        const std::string out = "x" + std::to_string(i);
        std::vector<std::string> args = {"--verb", "0", "-o", out, "-f", "xml"};
        args.insert(args.end(), flags[i].begin(), flags[i].end());
        args.push_back("my.pdf");
        ASSERT_EQ(RunScrivex(args, dir.path()).status, 0);
        for (const char* page : {"my_1.xml", "my_2.xml"}) {
            const RunResult lint = lum::test::Run("/usr/bin/xmllint", {"--noout", (dir / out / page).string()});
            EXPECT_EQ(lint.status, 0) << page << " " << i << "\n" << lint.out << lint.err;
        }
    }
}
