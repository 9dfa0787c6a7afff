// scrivex -f textruns from end to end: one line per string shown inside a text object, in
// content order, forms included, with the box, the font's name and the mapped text.
#include <gtest/gtest.h>

#include "PDF/Content/ContentTestSupport.h"
#include "support/TestSupport.h"

namespace lum::test {
namespace {

// Font /H is Helvetica without widths of its own; /T maps two codes through its ToUnicode
// (object 7): A to B, and B to the two units "fi".
PageRecipe TextRunsPage(const std::string& content) {
    PageRecipe recipe;
    recipe.resources =
        "/Font << /H 6 0 R /T 8 0 R /Bad 9 0 R >> /XObject << /Fm 10 0 R >>";
    recipe.extra = {
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
        StreamObj("/CIDInit /ProcSet findresource begin 12 dict begin begincmap 1 begincodespacerange "
                  "<00> <FF> endcodespacerange 2 beginbfchar <41> <0042> <42> <00660069> endbfchar "
                  "endcmap end end"),
        "<< /Type /Font /Subtype /Type1 /BaseFont /Courier /ToUnicode 7 0 R >>",
        "<< /Type /Font /Subtype /Type1 /BaseFont /NotAStandardFont >>",
        StreamObj("BT /H 10 Tf (in form) Tj ET", "/Subtype /Form /BBox [0 0 100 100]"),
    };
    recipe.contents = {content};
    return recipe;
}

struct RunsCase {
    const char* name;
    std::string content;
    std::string expected;  // the screen output, ASCII form
};

class TextRuns : public ::testing::TestWithParam<RunsCase> {};

TEST_P(TextRuns, Lines) {
    const RunsCase& c = GetParam();
    TempDir dir;
    WriteFile(dir / "t.pdf", BuildPagePdf(TextRunsPage(c.content)));
    const RunResult r = RunScrivex({"-f", "textruns", "--verb", "0", "t.pdf"}, dir.path());
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, c.expected);
}

const RunsCase kRuns[] = {
    // Helvetica: H e l l o blank quote w o r l d quote = 5655 units; 12 points; descent -207.
    {"box_name_length_text", "BT /H 12 Tf 1 0 0 1 72 700 Tm (Hello \"world\") Tj ET",
     "72, 697.516, 67.86, 11.1, \"Helvetica\", , 13, \"Hello \"world\"\"\n"},
    {"each_string_of_tj", "BT /H 10 Tf [(a) -500 (b)] TJ ET",
     "0, -2.07, 5.56, 9.25, \"Helvetica\", , 1, \"a\"\n"
     "10.56, -2.07, 5.56, 9.25, \"Helvetica\", , 1, \"b\"\n"},
    {"mapped_units_counted", "BT /T 10 Tf (AB) Tj ET",
     "0, -1.57, 12, 7.86, \"Courier\", , 3, \"Bfi\"\n"},
    // Code 0351 of StandardEncoding is Oslash, 778 units wide.
    {"non_ascii_on_screen", "BT /H 10 Tf (\\351) Tj ET",
     "0, -2.07, 7.78, 9.25, \"Helvetica\", , 1, \"\\U00D8\"\n"},
    {"forms_outside_text_objects", "/Fm Do BT /H 10 Tf /Fm Do ET",
     "0, -2.07, 30.56, 9.25, \"Helvetica\", , 7, \"in form\"\n"},
    {"no_line_outside_text_objects_or_for_empty_strings", "/H 10 Tf (x) Tj BT () Tj ET", ""},
    {"bad_font_ends_the_page", "BT /H 10 Tf (a) Tj /Bad 10 Tf (b) Tj ET",
     "0, -2.07, 5.56, 9.25, \"Helvetica\", , 1, \"a\"\n"
     "Error: A PDF error occurred during processing\n"},
};

INSTANTIATE_TEST_SUITE_P(Bindery, TextRuns, ::testing::ValuesIn(kRuns),
                         [](const auto& p) { return std::string(p.param.name); });

// The agreement of text runs with pdftotext on the corpus files of simple fonts.
TEST(TextRunsCorpus, CharacterF1AgainstPdftotext) {
    if (!CorpusDir()) GTEST_SKIP() << "the corpus is not there";
    if (lum::test::Run("/usr/bin/which", {"pdftotext"}).status != 0) GTEST_SKIP() << "pdftotext is not installed";
    const RunResult r = lum::test::Run(std::string(LUM_TOOLS_DIR) + "/textruns-f1",
                            {"--bin", LUM_SCRIVEX_BIN, "--worst", "5", "--min-mean", "0.86"}, {}, {},
                            900);
    EXPECT_EQ(r.status, 0) << r.out << r.err;
}

}  // namespace
}  // namespace lum::test
