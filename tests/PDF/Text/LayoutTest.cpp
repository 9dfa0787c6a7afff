// Lines, paragraphs and reading order, from runs of our own placed on a page.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "PDF/Text/TextFeeder.h"
#include "PDF/Text/TextFlags.h"
#include "PDF/TextExtractor.h"

namespace PDF = lum::PDF;
using lum::Common::Matrix2D;
using lum::test::FeedElement;
using lum::test::TextFeeder;

namespace {

// "flow/para:text" for each line with words, in store order.
std::vector<std::string> Structure(const PDF::TextExtractorImpl& store) {
    std::vector<std::string> out;
    for (auto l = PDF::FirstLine(store); l.IsValid(); l = l.GetNextLine()) {
        if (l.GetNumWords() == 0) continue;
        std::string words;
        for (auto w = l.GetFirstWord(); w.IsValid(); w = w.GetNextWord()) {
            if (!words.empty()) words += ' ';
            for (int i = 0; i < w.GetStringLen(); ++i) words += char(w.GetString()[i]);
        }
        out.push_back(std::to_string(l.GetFlowID()) + "/" + std::to_string(l.GetParagraphID()) +
                      ":" + words);
    }
    return out;
}

using Lines = std::vector<std::string>;

FeedElement Sized(double size, double adjustment = 0) {
    FeedElement e;
    e.size = size;
    e.adjustment = adjustment;
    return e;
}

}  // namespace

// Runs of one baseline: joined while they arrive when the gap is within the limit of the TJ
// number before them; otherwise JoinScore decides, and beyond 1.5 widths they stay apart.
TEST(LineAssembly, GapsOnOneBaseline) {
    const struct {
        double gap;  // in character widths (5)
        double adjustment;
        Lines lines;
    } cases[] = {
        {1.0, 0, {"1/0:ab cd"}},
        {2.9, 0, {"1/0:ab cd"}},
        // Beyond 3 widths without a TJ number: two blocks side by side, read as two columns.
        {3.5, 0, {"1/0:ab", "2/0:cd"}},
        {3.5, -100, {"1/0:ab cd"}},
        {4.9, -100, {"1/0:ab cd"}},
        {5.1, -100, {"1/0:ab", "2/0:cd"}},
        {1.4, 100, {"1/0:ab cd"}},
        {1.6, 100, {"1/0:ab", "2/0:cd"}},
    };
    for (const auto& c : cases) {
        TextFeeder f;
        f.Show("ab", 100, 700).Show("cd", 110 + 5 * c.gap, 700, Sized(10, c.adjustment));
        EXPECT_EQ(Structure(f.Finish()), c.lines) << c.gap << " " << c.adjustment;
    }
}

TEST(LineAssembly, RunsOffTheBaseline) {
    struct Case {
        const char* name;
        void (*feed)(TextFeeder&);
        Lines lines;
    };
    const Case cases[] = {
        {"superscript overlapping by a fifth",
         [](TextFeeder& f) { f.Show("ab", 100, 700).Show("2", 110.5, 704, Sized(7)); },
         {"1/0:ab2"}},
        {"footnote mark in a much smaller size",
         [](TextFeeder& f) { f.Show("ab", 100, 700).Show("2", 110.5, 705, Sized(3)); },
         {"1/0:ab", "2/0:2"}},
        // Runs of a line keep the order in which they were added.
        {"accent of one glyph on top of a word",
         [](TextFeeder& f) { f.Show("abc", 100, 700).Show("x", 104, 700); },
         {"1/0:abcx"}},
        {"two longer runs on top of each other",
         [](TextFeeder& f) { f.Show("abcd", 100, 700).Show("wxyz", 101, 700); },
         {"1/0:abcd", "2/0:wxyz"}},
        {"a line drawn right to left, word by word",
         [](TextFeeder& f) {
             f.Show("three", 200, 700).Show("two", 170, 700).Show("one", 145, 700);
         },
         {"1/0:one two three"}},
        // Joined by the page-wide pass: kerning up to 0.3 of the font height.
        {"a run overlapping by a quarter, drawn after another line",
         [](TextFeeder& f) { f.Show("ab", 100, 700).Show("other", 100, 600).Show("cd", 107.5, 700); },
         {"1/0:abcd", "2/0:other"}},
        {"a run overlapping by a third, drawn after another line",
         [](TextFeeder& f) { f.Show("ab", 100, 700).Show("other", 100, 600).Show("cd", 106.5, 700); },
         {"1/0:ab", "2/0:cd", "3/0:other"}},
        {"the second half of a line drawn first",
         [](TextFeeder& f) {
             f.Show("world", 140, 700).Show("other", 100, 600).Show("hello", 110, 700);
         },
         {"1/0:hello world", "2/0:other"}},
    };
    for (const Case& c : cases) {
        TextFeeder f;
        c.feed(f);
        EXPECT_EQ(Structure(f.Finish()), c.lines) << c.name;
    }
}

TEST(Paragraphs, LineSpacing) {
    const struct {
        double step;  // in font heights (10)
        Lines lines;
    } cases[] = {
        // Half a font height is the least step: the second line is passed over.
        {0.45, {"1/1:first", "1/1:third", "2/0:second"}},
        {0.55, {"1/1:first", "1/1:second", "1/1:third"}},
        {1.2, {"1/1:first", "1/1:second", "1/1:third"}},
        {3.9, {"1/1:first", "1/1:second", "1/1:third"}},
        // Blocks of their own, but a flow reaches 4 font heights below its last block.
        {4.5, {"1/0:first", "1/0:second", "1/0:third"}},
        {6.0, {"1/0:first", "2/0:second", "3/0:third"}},
    };
    for (const auto& c : cases) {
        TextFeeder f;
        f.Show("first", 100, 700).Show("second", 100, 700 - 10 * c.step);
        f.Show("third", 100, 700 - 20 * c.step);
        EXPECT_EQ(Structure(f.Finish()), c.lines) << c.step;
    }
}

TEST(Paragraphs, StepTooSmallStartsANewBlockWithTheLastLine) {
    TextFeeder f;
    // Steps of 12, then one of 6 (below 0.7 of the mean): the last line leaves the block above.
    f.Show("aaaa", 100, 700).Show("bbbb", 100, 688).Show("cccc", 100, 676);
    f.Show("dddd", 100, 670);
    EXPECT_EQ(Structure(f.Finish()),
              (Lines{"1/1:aaaa", "1/1:bbbb", "1/2:cccc", "1/2:dddd"}));
}

TEST(ReadingOrder, Columns) {
    struct Case {
        const char* name;
        void (*feed)(TextFeeder&);
        Lines lines;
    };
    const Case cases[] = {
        {"two columns drawn row by row",
         [](TextFeeder& f) {
             for (int i = 0; i < 3; ++i) {
                 const double y = 700 - 12 * i;
                 f.Show(std::string("left") + char('1' + i), 100, y);
                 f.Show(std::string("right") + char('1' + i), 150, y);
             }
         },
         {"1/1:left1", "1/1:left2", "1/1:left3", "2/2:right1", "2/2:right2", "2/2:right3"}},
        {"three columns drawn column by column",
         [](TextFeeder& f) {
             for (int c = 0; c < 3; ++c)
                 for (int i = 0; i < 2; ++i)
                     f.Show(std::string(1, char('a' + c)) + char('1' + i), 100 + 50 * c,
                            700 - 12 * i);
         },
         {"1/1:a1", "1/1:a2", "2/2:b1", "2/2:b2", "3/3:c1", "3/3:c2"}},
        {"a centred title above two columns is one flow",
         [](TextFeeder& f) {
             f.Show("title", 130, 730);
             for (int i = 0; i < 2; ++i) {
                 f.Show(std::string("left") + char('1' + i), 100, 700 - 12 * i);
                 f.Show(std::string("right") + char('1' + i), 170, 700 - 12 * i);
             }
         },
         {"1/0:title", "1/1:left1", "1/1:left2", "1/2:right1", "1/2:right2"}},
    };
    for (const Case& c : cases) {
        TextFeeder f;
        c.feed(f);
        EXPECT_EQ(Structure(f.Finish()), c.lines) << c.name;
    }
}

TEST(ReadingOrder, DirectionsInOrderOfFirstAppearance) {
    TextFeeder f;
    FeedElement up;
    up.page = Matrix2D(0, 1, -1, 0, 300, 100);  // a quarter turn: text runs up the page
    f.Show("vertical", 0, 0, up).Show("across", 100, 700);
    f.Show("more", 0, 0, [] {
        FeedElement e;
        e.page = Matrix2D(0, -1, 1, 0, 320, 600);  // a quarter turn the other way: same layout
        return e;
    }());
    const Lines got = Structure(f.Finish());
    ASSERT_EQ(got.size(), 3u);
    EXPECT_EQ(got[2], "3/0:across");
    auto first = PDF::FirstLine(f.store);
    EXPECT_TRUE(first.IsRotated());
    EXPECT_EQ(first.GetNumWords(), 1);
}

// A page built to defeat every shortcut: one-character runs at random places, and a line of
// 20,000 touching runs. Both must be laid out in well under a second.
TEST(LayoutScale, ScatteredRunsAndLongLine) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> x(0, 600), y(0, 800), size(4, 30);
    TextFeeder scattered;
    for (int i = 0; i < 10000; ++i) {
        const char ch[2] = {char('a' + i % 26), 0};
        scattered.Show(ch, x(rng), y(rng), Sized(size(rng)));
    }
    scattered.Finish();
    EXPECT_GT(scattered.store.GetWordCount(), 1000u);

    TextFeeder line;
    for (int i = 0; i < 20000; ++i) line.Show("x", 5.0 * i - 0.01 * i, 400);
    line.Finish();
    EXPECT_EQ(line.store.GetWordCount(), 1u);
}
