// Duplicate and hidden text in the layout: a book-like page drawn twice (the purge finds the
// copies), the same page in fake bold (each word again at once, found while runs arrive), and
// the page under images with the hidden-text switch: one scan over the page, and a thousand
// small images that each run must look through. Reports runs (items) per second.
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "PDF/Text/TextFlags.h"
#include "TextPages.h"

namespace {

using namespace lum;
using namespace lum::bench;

// Lines of words of 4 to 9 letters, each word its own element; `copies` times each word, the
// later copies `shift` to the right, either word by word or page after page.
Page Book(int copies, double shift, bool page_after_page) {
    std::mt19937 rng(5);
    std::uniform_int_distribution<int> len(4, 9);
    Page once;
    for (int l = 0; l < 60; ++l)
        for (double x = 72; x < 532;) {
            const int n = len(rng);
            once.runs.push_back({std::u16string(size_t(n), u'e'), x, 760.0 - 12 * l, 10});
            x += 5 * n + 3;
        }
    Page p;
    if (page_after_page) {
        for (int c = 0; c < copies; ++c)
            for (Page::Run r : once.runs) p.runs.push_back({r.text, r.x + c * shift, r.y, r.size});
    } else {
        for (const Page::Run& r : once.runs)
            for (int c = 0; c < copies; ++c) p.runs.push_back({r.text, r.x + c * shift, r.y, r.size});
    }
    return p;
}

void BM_PageDrawnTwice(benchmark::State& s) { Run(s, Book(2, 0, true)); }
void BM_FakeBold(benchmark::State& s) { Run(s, Book(2, 0.3, false)); }
void BM_BookPageOnce(benchmark::State& s) { Run(s, Book(1, 0, true)); }

void BM_HiddenUnderScan(benchmark::State& s) {
    Page p = Book(1, 0, true);
    p.images.push_back(Rect(0, 400, 612, 792));  // a scan over the upper half
    Run(s, p, PDF::e_remove_hidden_text);
}

void BM_HiddenAmongSmallImages(benchmark::State& s) {
    Page p = Book(1, 0, true);
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> x(0, 600), y(0, 780);
    for (int i = 0; i < 1000; ++i) {
        const double ax = x(rng), ay = y(rng);
        p.images.push_back(Rect(ax, ay, ax + 12, ay + 12));
    }
    Run(s, p, PDF::e_remove_hidden_text);
}

}  // namespace

BENCHMARK(BM_BookPageOnce)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PageDrawnTwice)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FakeBold)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_HiddenUnderScan)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_HiddenAmongSmallImages)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
