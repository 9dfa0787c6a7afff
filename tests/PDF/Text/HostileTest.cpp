// Hostile pages through the capture and the layout: sizes and positions that are no numbers
// or out of range, pages of extreme size, text drawn twice everywhere. The page's text must
// still come out, within bounded time.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "PDF/Text/TextFeeder.h"
#include "PDF/Text/TextFlags.h"
#include "PDF/TextExtractor.h"
#include "support/TestSupport.h"

namespace PDF = lum::PDF;
using lum::Common::Matrix2D;
using lum::test::FeedElement;
using lum::test::TextFeeder;

using lum::test::CpuSecondsSince;
using lum::test::kSecondsScale;

namespace {

FeedElement WithMatrix(double a, double b, double c, double d, double h, double v) {
    FeedElement e;
    e.page = Matrix2D(a, b, c, d, h, v);
    return e;
}

}  // namespace

TEST(HostileText, MatricesAndPositionsOutOfRange) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    TextFeeder f;
    f.Show("huge", 0, 0, WithMatrix(1e308, 0, 0, 1e308, 0, 0));
    f.Show("nan", 0, 0, WithMatrix(nan, 0, 0, 1, 0, 0));
    f.Show("inf", 0, 0, WithMatrix(1, 0, 0, 1, inf, 0));
    f.Show("singular", 0, 0, WithMatrix(0, 0, 0, 0, 100, 100));
    f.Show("far", 1e300, 5, {});
    f.Show("nanpos", nan, 700, {});
    FeedElement flat;
    flat.size = 0;
    f.Show("zero", 100, 650, flat);
    FeedElement negative;
    negative.size = -10;
    f.Show("negative", 100, 600, negative);
    f.Show("kept", 100, 700);
    f.Finish();
    const std::string text = f.Text();
    EXPECT_NE(text.find("kept"), std::string::npos) << text;
    for (const char* gone : {"huge", "nan\n", "inf", "singular", "far"})
        EXPECT_EQ(text.find(gone), std::string::npos) << gone << " in " << text;
}

TEST(HostileText, LargePagesStayLinear) {
    // 200,000 characters in 2,000 lines of 100, each line drawn as ten elements.
    std::clock_t start = std::clock();
    TextFeeder big;
    const std::string piece = "abcd efgh ";
    for (int line = 0; line < 2000; ++line)
        for (int k = 0; k < 10; ++k) big.Show(piece, 50 + 50.0 * k, 7900 - 4.0 * line, [] {
            FeedElement e;
            e.size = 3;
            e.advance = 1.6;
            return e;
        }());
    big.Finish();
    EXPECT_EQ(big.store.GetWordCount(), 2000u * 20u);
    EXPECT_LT(CpuSecondsSince(start), 1.0 * kSecondsScale);

    // A million blanks in one element: nothing to keep, and no time to lose.
    start = std::clock();
    TextFeeder blanks;
    blanks.Show(std::string(1000000, ' '), 0, 700);
    blanks.Show("after", 0, 600);
    blanks.Finish();
    EXPECT_EQ(blanks.Text(), "after\n");
    EXPECT_LT(CpuSecondsSince(start), 1.0 * kSecondsScale);
}

TEST(HostileText, PageDrawnTwice) {
    // 10,000 runs painted twice: the whole page again after it (the purge finds the copies),
    // each run again at once (found while runs arrive), and one line 10,000 runs long again
    // (each copy tested against a block of 10,000 runs). One copy of each run survives, quickly.
    using Draw = void (*)(TextFeeder&, int copies);
    const struct {
        const char* name;
        Draw draw;
    } cases[] = {
        {"page after page",
         [](TextFeeder& f, int copies) {
             for (int c = 0; c < copies; ++c)
                 for (int i = 0; i < 10000; ++i)
                     f.Show("w" + std::to_string(i % 97), 30 + 60.0 * (i % 10), 7900 - 8.0 * (i / 10));
         }},
        {"each run at once",
         [](TextFeeder& f, int copies) {
             for (int i = 0; i < 10000; ++i)
                 for (int c = 0; c < copies; ++c)
                     f.Show("w" + std::to_string(i % 97), 30 + 60.0 * (i % 10) + 0.3 * c,
                            7900 - 8.0 * (i / 10));
         }},
        {"one long line",
         [](TextFeeder& f, int copies) {
             for (int c = 0; c < copies; ++c)
                 for (int i = 0; i < 10000; ++i) f.Show("w" + std::to_string(i % 97), 30 + 18.0 * i, 700);
         }},
    };
    for (const auto& t : cases) {
        SCOPED_TRACE(t.name);
        TextFeeder once, twice;
        t.draw(once, 1);
        once.Finish();
        const std::clock_t start = std::clock();
        t.draw(twice, 2);
        twice.Finish();
        const double seconds = CpuSecondsSince(start);
        EXPECT_EQ(twice.Text(), once.Text());
        EXPECT_EQ(twice.store.GetWordCount(), 10000u);
        EXPECT_LT(seconds, 1.0 * kSecondsScale);
        RecordProperty(t.name, std::to_string(seconds));
        std::printf("%s: %.3f s\n", t.name, seconds);
    }
}

TEST(HostileText, EveryDirectionAndOverlap) {
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> pos(0, 600);
    TextFeeder f;
    for (int i = 0; i < 2000; ++i) {
        const double angle = (i % 8) * M_PI / 4;
        f.Show("dir" + std::to_string(i % 8), 0, 0,
               WithMatrix(std::cos(angle), std::sin(angle), -std::sin(angle), std::cos(angle),
                          pos(rng), pos(rng)));
        // Lines on top of each other, of zero width columns.
        f.Show("x", 300, 300);
    }
    f.Finish();
    EXPECT_GT(f.store.GetWordCount(), 1900u);
}

TEST(HostileText, OneBaselineStaysLinear) {
    // Words on one baseline: the joining, the purge of copies and the cutting into columns
    // each look at every pair of a band unless they skip what can't be reached.
    FeedElement small;
    small.size = 1;
    const struct {
        const char* name;
        int words;
        double x_step;   // from word to word
        int stack;       // words drawn on top of each other at each place
        bool numbered;   // each word its own text, else all "ab"
    } cases[] = {
        // 100 stacks of 200 different words, 140 apart: nothing joins.
        {"stacks", 20000, 140, 200, true},
        // Words 1.6 apart (more than three character widths), drawn left to right.
        {"spaced", 20000, 2.6, 1, false},
        // 100,000 different words on one spot: copies are looked for among runs of the same
        // letters, and the joins skip in bulk what overlaps too far or stands too close.
        {"one spot", 100000, 0, 100000, true},
    };
    for (const auto& t : cases) {
        SCOPED_TRACE(t.name);
        const std::clock_t start = std::clock();
        TextFeeder f;
        for (int i = 0; i < t.words; ++i)
            f.Show(t.numbered ? "w" + std::to_string(i) : "ab", t.x_step * (i / t.stack), 700, small);
        f.Finish();
        const double seconds = CpuSecondsSince(start);
        const std::string text = f.Text();
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), t.words);
        EXPECT_EQ(f.store.GetWordCount(), size_t(t.words));
        // Half a second for 20,000 words.
        EXPECT_LT(seconds, 25e-6 * t.words * kSecondsScale);
        std::printf("%s: %.3f s\n", t.name, seconds);
    }
}
