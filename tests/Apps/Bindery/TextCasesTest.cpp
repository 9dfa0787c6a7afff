// Duplicate, hidden and invisible text, and the colours of text, through the built program on
// the files of tools/gen-textcases: each case with and without each switch.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/TestSupport.h"

using lum::test::QuietOutput;

TEST(TextCases, SwitchesOfDuplicateHiddenAndInvisibleText) {
    const std::string none = "", dup = "--no_dup_remove", hidden = "--remove_hidden_text",
                      invisible = "--no_invisible_text";
    const struct {
        const char* file;
        std::string option;
        const char* text;
    } cases[] = {
        // The first of three copies survives; kept, the copies overlap too much to join.
        {"textcase-fakebold.pdf", none, "Bold words\nplain line\n"},
        {"textcase-fakebold.pdf", dup, "Bold words\nBold words\nplain line\nBold words\n"},
        {"textcase-fakebold.pdf", hidden, "Bold words\nplain line\n"},
        // A grey shadow is a duplicate whatever its colour.
        {"textcase-shadow.pdf", none, "Shadowed title\nbody text\n"},
        {"textcase-shadow.pdf", dup, "Shadowed title\nbody text\nShadowed title\n"},
        // An opaque image drawn after the text hides it, with the switch only.
        {"textcase-underimage.pdf", none, "hidden under\nvisible line\n"},
        {"textcase-underimage.pdf", hidden, "visible line\n"},
        {"textcase-underimage.pdf", invisible, "hidden under\nvisible line\n"},
        // An image with a soft mask, a filled rectangle, and an image drawn before hide nothing.
        {"textcase-undersmask.pdf", hidden, "still visible\n"},
        {"textcase-underrect.pdf", hidden, "under a rectangle\n"},
        {"textcase-imagebefore.pdf", hidden, "over the image\n"},
        // Invisible text over a scan is kept, but for no_invisible_text.
        {"textcase-ocr.pdf", none, "recognised text\nprinted footer\n"},
        {"textcase-ocr.pdf", hidden, "recognised text\nprinted footer\n"},
        {"textcase-ocr.pdf", invisible, "printed footer\n"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> options;
        if (!c.option.empty()) options.push_back(c.option);
        EXPECT_EQ(QuietOutput(c.file, options), c.text) << c.file << " " << c.option;
    }
}

// The fill colour of each line in the XML style, by the conversions of each family.
TEST(TextCases, ColoursOfEachFamily) {
    const std::string xml = QuietOutput("textcase-colors.pdf", {"-f", "xml", "--xml_output_styles"});
    const struct {
        const char* word;
        const char* color;
    } lines[] = {
        {"gray", "7F7F7F"},      {"rgb", "FF0000"},     {"cmyk", "231F20"},
        {"calgray", "B4B4B4"},   {"calrgb", "FFFFFF"},  {"lab", "FFFFFF"},
        {"icc", "FFFFFF"},       {"indexed", "00FF00"}, {"separation", "0000FF"},
        {"devicen", "7F7F7F"},
    };
    size_t at = 0;
    for (const auto& l : lines) {
        const size_t color = xml.find(std::string("color: #") + l.color, at);
        ASSERT_NE(color, std::string::npos) << l.word;
        const size_t word = xml.find(std::string(">\n") + l.word + "</Line>", color);
        EXPECT_NE(word, std::string::npos) << l.word;
        at = word;
    }
}
