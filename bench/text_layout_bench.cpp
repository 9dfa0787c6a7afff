// The layout engine from captured characters to the flat store: a page of 10,000 one-glyph
// runs scattered at random, a book-like page of lines of words drawn word by word, and two
// columns drawn row by row. Reports runs (items) per second.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "PDF/Text/TextEngine.h"
#include "PDF/Text/TextExtractorImpl.h"

namespace {

using namespace lum;
using namespace lum::PDF;

// One element of `n` glyphs from (x, y) of size `size`, as the page walk hands it over.
void Element(TextEngine& engine, const Rect& clip, Int64 order, const Unicode* units, int n,
             double x, double y, double size) {
    CaptureElement el;
    SetElementFrames(Common::Matrix2D(), size, el);
    el.glyph = Common::Matrix2D(size / 1000, 0, 0, -size / 1000, 0, 0);
    el.order = order;
    el.clip = &clip;
    TextCapture& cap = engine.Capture();
    cap.BeginElement(el);
    for (int i = 0; i < n; ++i) {
        CaptureChar c;
        c.x = x + i * 0.5 * size;
        c.y = y;
        c.has_outline = units[i] != ' ';
        c.glyph_box = c.has_outline ? Rect(0, -700, 500, 200) : Rect();
        c.advance_box = Rect(c.x, y - 0.2 * size, c.x + 0.5 * size, y + 0.7 * size);
        c.units = units + i;
        c.unit_count = 1;
        c.last = i + 1 == n;
        cap.AddChar(c);
    }
    cap.EndElement();
}

struct Page {
    struct Run {
        std::u16string text;
        double x, y, size;
    };
    std::vector<Run> runs;
};

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

void Run(benchmark::State& state, const Page& page) {
    TextEngine engine;
    TextExtractorImpl store;
    const Rect clip(-1e6, -1e6, 1e6, 1e6);
    for (auto _ : state) {
        engine.Reset(0, false, 0);
        store.Reset(0);
        Int64 order = 0;
        for (const Page::Run& r : page.runs)
            Element(engine, clip, ++order, reinterpret_cast<const Unicode*>(r.text.data()),
                    int(r.text.size()), r.x, r.y, r.size);
        engine.Finish(store, nullptr);
        benchmark::DoNotOptimize(store.GetWordCount());
    }
    state.SetItemsProcessed(state.iterations() * Int64(page.runs.size()));
}

void BM_Scattered10k(benchmark::State& s) { Run(s, Scattered(10000)); }
void BM_BookPage(benchmark::State& s) { Run(s, Book(60, 1)); }
void BM_TwoColumns(benchmark::State& s) { Run(s, Book(60, 2)); }

}  // namespace

BENCHMARK(BM_Scattered10k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BookPage)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TwoColumns)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
