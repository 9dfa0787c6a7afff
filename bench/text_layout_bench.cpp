// The layout engine from captured characters to the flat store: a page of 10,000 one-glyph
// runs scattered at random, a book-like page of lines of words drawn word by word, and two
// columns drawn row by row, 20,000 words on one baseline, and words stacked on one spot.
// Reports runs (items) per second.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "TextPages.h"

namespace {

using namespace lum;
using namespace lum::PDF;
using namespace lum::bench;

Page Scattered(int n) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> x(0, 600), y(0, 800), size(4, 30);
    Page p;
    for (int i = 0; i < n; ++i) p.runs.push_back({std::u16string(1, char16_t('a' + i % 26)), x(rng), y(rng), size(rng)});
    return p;
}

// Lines of words of 4 to 9 letters, each word its own element.
Page Book(int lines, int columns) {
    std::mt19937 rng(5);
    std::uniform_int_distribution<int> len(4, 9);
    Page p;
    for (int l = 0; l < lines; ++l) {
        for (int c = 0; c < columns; ++c) {
            double x = 72 + c * (480.0 / columns);
            const double end = x + 480.0 / columns - 20;
            while (x < end) {
                const int n = len(rng);
                p.runs.push_back({std::u16string(size_t(n), u'e'), x, 760.0 - 12 * l, 10});
                x += 5 * n + 3;
            }
        }
    }
    return p;
}

// 20,000 words on one baseline: 100 stacks of 200 different words (nothing joins), or words
// of two letters spaced just beyond the gaps of a line.
Page OneBaseline(bool stacks) {
    Page p;
    for (int i = 0; i < 20000; ++i) {
        if (stacks)
            p.runs.push_back({u"w" + std::u16string(size_t(1 + i % 7), char16_t('a' + i % 26)) +
                                  char16_t('a' + i / 26 % 26),
                              140.0 * (i / 200), 700, 1});
        else
            p.runs.push_back({u"ab", 2.6 * i, 700, 1});
    }
    return p;
}

// Different words drawn on one spot, `depth` deep: every block meets every other in the purge
// of copies and in the joins of lines and paragraphs.
Page OneSpot(int depth) {
    Page p;
    for (int i = 0; i < depth; ++i)
        p.runs.push_back({u"w" + std::u16string(size_t(1 + i % 7), char16_t('a' + i % 26)) +
                              char16_t('a' + i / 26 % 26) + char16_t('a' + i / 676 % 26),
                          100, 700, 1});
    return p;
}

void BM_Scattered10k(benchmark::State& s) { Run(s, Scattered(10000)); }
void BM_OneSpot(benchmark::State& s) { Run(s, OneSpot(int(s.range(0)))); }
void BM_OneBaselineStacks(benchmark::State& s) { Run(s, OneBaseline(true)); }
void BM_OneBaselineSpaced(benchmark::State& s) { Run(s, OneBaseline(false)); }
void BM_BookPage(benchmark::State& s) { Run(s, Book(60, 1)); }
void BM_TwoColumns(benchmark::State& s) { Run(s, Book(60, 2)); }

}  // namespace

BENCHMARK(BM_Scattered10k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OneBaselineStacks)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OneSpot)->Arg(1000)->Arg(2000)->Arg(4000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OneBaselineSpaced)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BookPage)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TwoColumns)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
