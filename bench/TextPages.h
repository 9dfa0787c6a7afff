#pragma once
// Pages of synthetic glyphs for the layout benchmarks: runs handed to the text engine as the
// page walk hands them over, without any PDF.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "PDF/Text/TextEngine.h"
#include "PDF/Text/TextExtractorImpl.h"

namespace lum::bench {

using PDF::Rect;

// One element of `n` glyphs from (x, y) of size `size`.
inline void Element(PDF::TextEngine& engine, const Rect& clip, Int64 order, const Unicode* units,
                    int n, double x, double y, double size) {
    PDF::CaptureElement el;
    PDF::SetElementFrames(Common::Matrix2D(), size, el);
    el.glyph = Common::Matrix2D(size / 1000, 0, 0, -size / 1000, 0, 0);
    el.order = order;
    el.clip = &clip;
    PDF::TextCapture& cap = engine.Capture();
    cap.BeginElement(el);
    for (int i = 0; i < n; ++i) {
        PDF::CaptureChar c;
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
    // Images drawn after all the runs (hidden text), each with its box on the page.
    std::vector<Rect> images;
};

// Times the layout of `page` with the extraction `flags`; reports runs per second.
inline void Run(benchmark::State& state, const Page& page, UInt32 flags = 0) {
    PDF::TextEngine engine;
    PDF::TextExtractorImpl store;
    const Rect clip(-1e6, -1e6, 1e6, 1e6);
    for (auto _ : state) {
        engine.Reset(flags, false, 0);
        store.Reset(0);
        Int64 order = 0;
        for (const Page::Run& r : page.runs)
            Element(engine, clip, ++order, reinterpret_cast<const Unicode*>(r.text.data()),
                    int(r.text.size()), r.x, r.y, r.size);
        for (const Rect& box : page.images) engine.Occluders().Add({++order, box, false});
        engine.Finish(store, nullptr);
        benchmark::DoNotOptimize(store.GetWordCount());
    }
    state.SetItemsProcessed(state.iterations() * Int64(page.runs.size()));
}

}  // namespace lum::bench
