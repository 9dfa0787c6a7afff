// Word breaks: white space inside an element, gaps between the runs of a line, punctuation,
// and ligature expansion.
#include <gtest/gtest.h>

#include "PDF/Text/TextFeeder.h"
#include "PDF/Text/TextFlags.h"
#include "PDF/TextExtractor.h"

using lum::PDF::TextExtractor;
using lum::test::FeedElement;
using lum::test::TextFeeder;
namespace PDF = lum::PDF;

namespace {

// Size 10, advance 0.5: glyphs 5 wide, so the mean character width of a run is 5 and a gap
// breaks a word beyond 1.5; gaps up to 0.3 (0.03 of the font height) are no gaps.
struct GapCase {
    double gap;
    const char* text;
};

}  // namespace

TEST(WordBreak, GapBetweenRunsOfOneLine) {
    const GapCase cases[] = {
        {-0.5, "abcd\n"}, {0.0, "abcd\n"}, {0.3, "abcd\n"}, {1.49, "abcd\n"},
        {1.51, "ab cd\n"}, {4.0, "ab cd\n"},
    };
    for (const GapCase& c : cases) {
        TextFeeder f;
        f.Show("ab", 100, 700).Show("cd", 110 + c.gap, 700);
        f.Finish();
        EXPECT_EQ(f.Text(), c.text) << "gap " << c.gap;
    }
}

TEST(WordBreak, WhiteSpaceInsideAndAcrossElements) {
    struct Case {
        const char* name;
        void (*feed)(TextFeeder&);
        const char* text;
        unsigned words;
    };
    const Case cases[] = {
        {"one blank", [](TextFeeder& f) { f.Show("ab cd", 100, 700); }, "ab cd\n", 2},
        // The second blank of a row ends the run; the text keeps one separator.
        {"two blanks", [](TextFeeder& f) { f.Show("ab  cd", 100, 700); }, "ab cd\n", 2},
        {"leading and trailing blanks", [](TextFeeder& f) { f.Show(" ab ", 100, 700); }, "ab\n", 1},
        // A blank closing one element breaks the word even when the next one touches it.
        {"blank at the end of an element",
         [](TextFeeder& f) { f.Show("ab ", 100, 700).Show("cd", 110, 700); }, "ab cd\n", 2},
        {"blank at the start of an element",
         [](TextFeeder& f) { f.Show("ab", 100, 700).Show(" cd", 110, 700); }, "ab cd\n", 2},
        {"kerned pieces of one word",
         [](TextFeeder& f) { f.Show("wo", 100, 700).Show("rd", 109.8, 700); }, "word\n", 1},
    };
    for (const Case& c : cases) {
        TextFeeder f;
        c.feed(f);
        f.Finish();
        EXPECT_EQ(f.Text(), c.text) << c.name;
        EXPECT_EQ(f.store.GetWordCount(), c.words) << c.name;
    }
}

TEST(WordBreak, PunctuationIsAWordOfItsOwnWithPunctBreak) {
    const struct {
        const char* in;
        const char* plain;
        const char* broken;
    } cases[] = {
        {"a,b", "a,b\n", "a , b\n"},
        {",ab", ",ab\n", ", ab\n"},
        // At the line's end the blank behind the mark becomes the line's newline.
        {"ab,", "ab,\n", "ab ,\n"},
        {"x-y", "x-y\n", "x - y\n"},
        {"a\u2192b", "a?b\n", "a ? b\n"},
    };
    for (const auto& c : cases) {
        for (const bool punct : {false, true}) {
            TextFeeder f(punct ? lum::UInt32(PDF::e_punct_break) : 0);
            f.Show(c.in, 100, 700);
            f.Finish();
            EXPECT_EQ(f.Text(), punct ? c.broken : c.plain) << c.in;
        }
    }
}

TEST(WordBreak, LigaturesExpandUnlessTurnedOff) {
    const struct {
        char16_t unit;
        std::u16string expanded;
    } cases[] = {
        {0xFB00, u"ff"}, {0xFB01, u"fi"}, {0xFB02, u"fl"}, {0xFB03, u"ffi"}, {0xFB04, u"ffl"},
        {0xFB05, u"\u017Ft"}, {0xFB06, u"st"}, {0xFB13, u"\u0574\u0576"},
        {0xFB17, u"\u0574\u056D"},
        // Units of the block without a decomposition here stay.
        {0xFB07, u"\uFB07"}, {0xFB1D, u"\uFB1D"}, {0x0153, u"\u0153"},
    };
    for (const auto& c : cases) {
        for (const bool off : {false, true}) {
            TextFeeder f(off ? lum::UInt32(PDF::e_no_ligatures) : 0);
            f.ShowUnits({u"a", std::u16string(1, c.unit), u"b"}, 100, 700);
            f.Finish();
            const std::u16string want = u"a" + (off ? std::u16string(1, c.unit) : c.expanded) + u"b";
            TextExtractor::Word w = PDF::FirstLine(f.store).GetFirstWord();
            ASSERT_TRUE(w.IsValid());
            EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(w.GetString()),
                                     size_t(w.GetStringLen())),
                      want);
            EXPECT_EQ(w.GetNumGlyphs(), 3) << "one glyph stays one glyph";
        }
    }
}

TEST(WordBreak, CharacterOfSeveralUnits) {
    // Left-to-right units keep their order; right-to-left ones are reversed.
    const struct {
        std::u16string units;
        std::u16string text;
    } cases[] = {
        {u"abc", u"abc"},
        {u"\u05D0\u05D1", u"\u05D1\u05D0"},
        {u"\u0644\u0627", u"\u0627\u0644"},
    };
    for (const auto& c : cases) {
        TextFeeder f;
        f.ShowUnits({c.units}, 100, 700);
        f.Finish();
        TextExtractor::Word w = PDF::FirstLine(f.store).GetFirstWord();
        ASSERT_TRUE(w.IsValid());
        EXPECT_EQ(w.GetNumGlyphs(), int(c.units.size())) << "a record for each unit";
        EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(w.GetString()),
                                 size_t(w.GetStringLen())),
                  c.text);
    }
}

TEST(WordBreak, ClipBoxKeepsGlyphsUpToOnePointOutside) {
    // Glyph boxes of "ab" at x 100: a from 100 to 105, b from 105 to 110.
    const struct {
        double clip_x1;
        const char* text;
    } cases[] = {{110.9, "b\n"}, {111.1, ""}, {105.9, "ab\n"}, {106.1, "b\n"}};
    for (const auto& c : cases) {
        TextFeeder f;
        f.Clip(PDF::Rect(c.clip_x1, 0, 600, 800)).Show("ab", 100, 700);
        f.Finish();
        EXPECT_EQ(f.Text(), c.text) << c.clip_x1;
    }
}
