// The command line run in-process, with a message channel that records what the user would
// see, so the parsed Options can be inspected afterwards.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Apps/Bindery/CommandLine.h"
#include "Apps/Bindery/Options.h"
#include "support/TestSupport.h"

namespace fs = std::filesystem;
using lum::Bindery::Options;
using namespace lum::test;

namespace {

using Message = std::pair<int, std::string>;
std::vector<Message> gl_messages;

const char* Record(lum::Int32 kind, const char* text, void*) {
    gl_messages.emplace_back(kind, text ? text : "");
    return nullptr;
}

// Runs the command line `args` (program name added) on `opt` and records the messages.
int RunArgs(const std::vector<std::string>& args, Options& opt) {
    std::vector<const char*> argv{"scrivex"};
    for (const auto& a : args) argv.push_back(a.c_str());
    gl_messages.clear();
    opt.m_message = &Record;
    return lum::Bindery::Run(static_cast<int>(argv.size()), argv.data(), opt);
}

int RunArgs(const std::vector<std::string>& args) {
    Options opt;
    return RunArgs(args, opt);
}

const Message kBannerMsg{2, "\nZantrix Scrivex V6.6042202.\n"};

// The options in the order of the help listing.
const char* const kRows[] = {
    "--file... arg", "-o [ --output ] arg", "-a [ --pages ] arg (=-)", "-e [ --encoding ] arg (=UTF8)",
    "-f [ --format ] arg (=plain)", "--noligatures", "--nodehyphen", "--no_dup_remove", "--punct_break",
    "--remove_hidden_text", "--no_invisible_text", "--output_bbox", "--xml_words_as_elements",
    "--xml_output_styles", "--wordcount", "--charcount", "--pageinfo", "--prefix arg", "--digits arg",
    "--subfolders", "-c [ --clip ] arg", "--noprompt", "-p [ --pass ] arg", "--extension arg (=.pdf)",
    "--verb arg (=1)", "-v [ --version ]", "-h [ --help ]",
};

}  // namespace

TEST(OptionsHelp, TextLayoutAndRowOrder) {
    const std::string help = lum::Bindery::HelpText();
    EXPECT_EQ(help.rfind("Usage: scrivex [<options>] file...\n\nOPTIONS:\n", 0), 0u) << help;
    const std::string examples =
        "\nExamples:\n  scrivex my.pdf\n  scrivex -o test_out/ex1 test/my.pdf\n"
        "  scrivex --wordcount my.pdf\n  scrivex -o test_out -a 1 -f xml --output_bbox my.pdf\n\n";
    ASSERT_GE(help.size(), examples.size());
    EXPECT_EQ(help.substr(help.size() - examples.size()), examples);

    size_t at = 0;
    for (const char* name : kRows) {
        at = help.find("  " + std::string(name) + " ", at);
        ASSERT_NE(at, std::string::npos) << name << " missing or out of order";
    }
    // Wrapped descriptions keep every word.
    std::string squeezed;
    for (char c : help)
        if (!((c == ' ' || c == '\n') && !squeezed.empty() && squeezed.back() == ' ')) squeezed += (c == '\n' ? ' ' : c);
    for (const char* tail : {"oe, OE.", "This option has no effect on Tagged PDF files.", "will precede the word."})
        EXPECT_NE(squeezed.find(tail), std::string::npos) << tail;
    size_t start = 0;
    while (start < help.size()) {
        const size_t end = help.find('\n', start);
        EXPECT_LE((end == std::string::npos ? help.size() : end) - start, 80u);
        if (end == std::string::npos) break;
        start = end + 1;
    }
}

TEST(OptionsHelp, WhenHelpAndVersionAreShown) {
    const std::vector<Message> help{kBannerMsg, {2, lum::Bindery::HelpText()}};
    const std::vector<Message> version{kBannerMsg};
    struct Case {
        std::vector<std::string> args;
        std::vector<Message> want;
    } cases[] = {
        {{}, help},
        {{"--help"}, help},
        {{"-h", "no-such.pdf"}, help},
        {{"--help", "--version"}, help},
        {{"--version", "--help"}, help},
        {{"--verb", "0", "--help"}, help},
        {{"--version"}, version},
        {{"-v", "no-such.pdf"}, version},  // the file is not looked at
        {{"--verb", "0"}, {}},
        {{"-f", "xml"}, {{2, "No input files specified.\n"}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.args));
        EXPECT_EQ(RunArgs(c.args), 0);
        EXPECT_EQ(gl_messages, c.want);
    }
}

TEST(OptionsErrors, ParserFailuresEndTheRunBeforeAnyFile) {
    TempDir dir;
    WriteFile(dir / "a.pdf", ReadFile(DataPath("hello.pdf")));
    const std::string file = (dir / "a.pdf").string();
    const std::vector<std::string> cases[] = {
        {"--bogus", file},
        {file, "--bogus"},
        {"--no", file},                 // ambiguous beginning of several names
        {"--digits", "x", file},
        {"--verb", "high", file},
        {file, "-o"},                   // missing argument
        {"--subfolders=yes", file},     // a switch takes no value
        {"-x", file},
    };
    for (const auto& args : cases) {
        SCOPED_TRACE(testing::PrintToString(args));
        EXPECT_EQ(RunArgs(args), 1);
        ASSERT_EQ(gl_messages.size(), 1u);
        EXPECT_EQ(gl_messages[0].first, 1);
        EXPECT_FALSE(gl_messages[0].second.empty());
    }
}

TEST(OptionsFields, ParsedValuesReachOptions) {
    TempDir dir;
    const std::string empty_folder = dir.path().string();
    const fs::path cwd = fs::current_path();
    struct Case {
        std::vector<std::string> args;
        std::function<void(const Options&)> check;
    } cases[] = {
        {{},
         [&](const Options& o) {
             EXPECT_EQ(o.m_pages, "-");
             EXPECT_EQ(o.m_format, "plain");
             EXPECT_EQ(o.m_encoding, "utf8");
             EXPECT_EQ(o.m_extension, ".pdf");
             EXPECT_EQ(o.m_digits, -1);
             EXPECT_EQ(o.m_verbosity, 1);
             EXPECT_TRUE(o.m_to_screen);
             EXPECT_EQ(o.m_output_path, cwd.string());
             EXPECT_EQ(o.m_path_separator, "/");
             EXPECT_TRUE(o.m_password.empty() && o.m_prefix.empty() && o.m_clip.empty());
         }},
        {{"-f", "XML", "-e", "UTF16"},
         [](const Options& o) {
             EXPECT_EQ(o.m_format, "xml");
             EXPECT_EQ(o.m_encoding, "utf16");
         }},
        {{"--format=TextRuns", "--encoding=Utf-16"},
         [](const Options& o) {
             EXPECT_EQ(o.m_format, "textruns");
             EXPECT_EQ(o.m_encoding, "utf-16");
         }},
        {{"-a2-5", "-c", "0 0 100 100", "--prefix", "My", "--digits", "4", "-p", "Pw", "--extension", ".PDF"},
         [](const Options& o) {
             EXPECT_EQ(o.m_pages, "2-5");
             EXPECT_EQ(o.m_clip, "0 0 100 100");
             EXPECT_EQ(o.m_prefix, "My");  // not lower-cased
             EXPECT_EQ(o.m_digits, 4);
             EXPECT_EQ(o.m_password, "Pw");
             EXPECT_EQ(o.m_extension, ".PDF");
         }},
        {{"--sub", "--verb=3", "--pages=7"},
         [](const Options& o) {
             EXPECT_TRUE(o.m_subfolders);
             EXPECT_EQ(o.m_verbosity, 3);
             EXPECT_EQ(o.m_pages, "7");
         }},
        {{"-o", ""},
         [&](const Options& o) {
             EXPECT_FALSE(o.m_to_screen);
             EXPECT_EQ(o.m_output_path, cwd.string());
         }},
        {{"--noprompt", "--wordcount", "--charcount", "--pageinfo", "--noligatures", "--nodehyphen",
          "--no_dup_remove", "--punct_break", "--remove_hidden_text", "--no_invisible_text",
          "--xml_words_as_elements", "--output_bbox", "--xml_output_styles"},
         [](const Options& o) {
             for (bool b : {o.m_noprompt, o.m_wordcount, o.m_charcount, o.m_pageinfo, o.m_noligatures,
                            o.m_nodehyphen, o.m_no_dup_remove, o.m_punct_break, o.m_remove_hidden_text,
                            o.m_no_invisible_text, o.m_xml_words_as_elements, o.m_output_bbox,
                            o.m_xml_output_styles})
                 EXPECT_TRUE(b);
             EXPECT_FALSE(o.m_subfolders);
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.args));
        Options opt;
        auto args = c.args;
        args.push_back(empty_folder);
        EXPECT_EQ(RunArgs(args, opt), 0);
        c.check(opt);
    }
}

TEST(OptionsOutput, FolderIsMadeAbsoluteAndCreated) {
    TempDir dir;
    Options opt;
    const fs::path out = dir / "x" / "y";
    EXPECT_EQ(RunArgs({"-o", (dir / "x" / ".." / "x" / "y" / "").string(), dir.path().string()}, opt), 0);
    EXPECT_EQ(opt.m_output_path, out.string());
    EXPECT_TRUE(fs::is_directory(out));
    EXPECT_FALSE(opt.m_to_screen);

    // A path below a regular file can't be created: status 3, and no input is looked at.
    WriteFile(dir / "file", "x");
    const fs::path bad = dir / "file" / "sub";
    EXPECT_EQ(RunArgs({"-o", bad.string(), "no-such-input"}), 3);
    EXPECT_EQ(gl_messages, (std::vector<Message>{{1, "Failed to create the output directory: " + bad.string()}}));
}

TEST(OptionsEcho, ParameterLinesAtVerbosityTwo) {
    TempDir dir, out_dir;
    const fs::path out = out_dir / "\xC3\xA9t\xC3\xA9";
    const std::string folder = dir.path().string();
    EXPECT_EQ(RunArgs({"--verb", "2", "-o", out.string(), "--subfolders", "-p", "se cret", "--xml_output_styles",
                       "--noprompt", "-f", "xml", "-a", "1", "--digits", "2", folder}),
              0);
    const std::string out_ascii = out_dir.path().string() + "/\\U00E9t\\U00E9";
    const std::vector<Message> want{
        {2, "'output' parameter: " + out_ascii + "\n"},
        {2, "'subfolders' parameter: true\n"},
        {2, "'pass' parameter: se cret\n"},
        {2, "'noprompt' parameter: true\n"},
        {2, "'xml_output_styles' parameter: true\n"},
        {2, "Processing... \n"},
        {2, "Processing directory: " + folder + "...\n"},
    };
    EXPECT_EQ(gl_messages, want);

    // Below verbosity 2 none of it appears.
    EXPECT_EQ(RunArgs({"-p", "x", "--noprompt", folder}), 0);
    EXPECT_TRUE(gl_messages.empty());
}
