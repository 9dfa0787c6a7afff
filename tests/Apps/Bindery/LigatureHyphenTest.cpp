// Ligatures and line-end hyphens of a real file through the built program. The file's Type 3
// fonts draw every glyph as a box, so each glyph has an outline and its Unicode comes from its
// name alone: `fi` and `ffl` (U+FB01, U+FB04), a ligature mapped by ToUnicode to private use
// (U+E001, never expanded), and a word split at a line's end by each hyphen kind (hyphen,
// U+00AD, U+2010, U+2011).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/TestSupport.h"

namespace {

const std::string kJoined = "example\none\nexample\ntwo\nexample\nthree\nexample\nfour\n";
const std::string kSplit =
    "exam-\nple one\nexam\\U00AD\nple two\nexam\\U2010\nple three\nexam\\U2011\nple four\n";

}  // namespace

TEST(LigatureHyphen, ScreenOutput) {
    const struct {
        const char* name;
        std::vector<std::string> options;
        std::string out;
    } cases[] = {
        {"expanded and joined", {}, "find offline\n\\UE001nd\n" + kJoined},
        {"ligatures kept", {"--noligatures"}, "\\UFB01nd o\\UFB04ine\n\\UE001nd\n" + kJoined},
        {"hyphens kept", {"--nodehyphen"}, "find offline\n\\UE001nd\n" + kSplit},
        // The word list is never dehyphenated: each half stays a word, hyphen included.
        {"word list", {"-f", "wordlist"},
         "find\noffline\n\\UE001nd\nexam-\nple\none\nexam\\U00AD\nple\ntwo\nexam\\U2010\nple\n"
         "three\nexam\\U2011\nple\nfour\n"},
    };
    for (const auto& c : cases) EXPECT_EQ(lum::test::QuietOutput("ligatures-hyphens.pdf", c.options), c.out) << c.name;
}
