// The glyph box cache on the text road: every character of every page asks it. Measures the
// answer from the cache (the common case: a glyph is measured once per document) and the
// first measuring of a standard font's glyphs through their outlines.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "tests/PDF/PdfBuilder.h"
#include "Filters/ExtBufInputFilter.h"
#include "PDF/Ferrox.h"
#include "PDF/Font/Font.h"
#include "PDF/GlyphBoxCache.h"
#include "PDF/PDFDoc.h"
#include "SDF/Obj.h"

namespace {

using namespace lum;

std::string OneFontPdf() {
    return test::BuildPdf({
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] >>",
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>",
    });
}

struct Doc {
    std::string bytes = OneFontPdf();
    std::unique_ptr<PDF::PDFDoc> doc;
    Doc() {
        PDF::Ferrox::Initialize();
        doc = std::make_unique<PDF::PDFDoc>(std::make_unique<Filters::ExtBufInputFilter>(
            reinterpret_cast<const UInt8*>(bytes.data()), bytes.size()));
    }
};

void BM_CachedGlyphBox(benchmark::State& state) {
    Doc d;
    PDF::GlyphBoxCache& cache = PDF::GlyphBoxCache::Of(*d.doc->GetImpl());
    const PDF::Font font(static_cast<SDF::Obj*>(d.doc->GetObj(4)));
    PDF::FormSet forms;
    PDF::CharData c;
    PDF::Rect box;
    for (UInt32 code = 32; code < 127; ++code) {
        c.char_code = code;
        cache.GetGlyphBox(font, c, box, forms);
    }
    UInt32 code = 32;
    for (auto _ : state) {
        c.char_code = code;
        benchmark::DoNotOptimize(cache.GetGlyphBox(font, c, box, forms));
        code = code == 126 ? 32 : code + 1;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CachedGlyphBox);

void BM_FirstMeasuring(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        Doc d;
        PDF::GlyphBoxCache& cache = PDF::GlyphBoxCache::Of(*d.doc->GetImpl());
        const PDF::Font font(static_cast<SDF::Obj*>(d.doc->GetObj(4)));
        state.ResumeTiming();
        PDF::FormSet forms;
        PDF::CharData c;
        PDF::Rect box;
        for (UInt32 code = 32; code < 127; ++code) {
            c.char_code = code;
            cache.GetGlyphBox(font, c, box, forms);
        }
    }
    state.SetItemsProcessed(state.iterations() * 95);
}
BENCHMARK(BM_FirstMeasuring)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
