// The text engine over real pages: Begin on every page of the files listed in
// bench/content_files.txt, with the document's glyph boxes warm (each document is read once
// before the timing starts). Reports characters captured per second, and separately the whole
// of Begin with the layout and the store. tools/bench-text times the program beside its peers.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "PDF/Ferrox.h"
#include "PDF/PDFDoc.h"
#include "bench/ContentFiles.h"
#include "PDF/TextExtractor.h"
#include "PDF/Text/TextCapture.h"

namespace {

using namespace lum;

using lum::bench::ContentFiles;

// Counts the characters that reach the layout.
class Counter final : public PDF::CaptureTrace {
public:
    void Char(const Unicode*, int, double, double, const PDF::Rect&, bool) override { ++chars; }
    void Run(const PDF::TRun&, int) override {}
    Int64 chars = 0;
};

struct Loaded {
    std::unique_ptr<PDF::PDFDoc> doc;
    std::vector<PDF::Page> pages;
};

std::vector<Loaded>& Documents() {
    static std::vector<Loaded> docs = [] {
        PDF::Ferrox::Initialize();
        std::vector<Loaded> out;
        for (const std::string& f : ContentFiles()) {
            try {
                Loaded l;
                l.doc = std::make_unique<PDF::PDFDoc>(f);
                if (!l.doc->InitSecurityHandler(nullptr)) continue;
                for (int n = 1; n <= l.doc->GetPageCount(); ++n) {
                    PDF::PageIterator it = l.doc->GetPageIterator(n);
                    if (it != l.doc->GetPageIteratorEnd()) l.pages.push_back(*it);
                }
                out.push_back(std::move(l));
            } catch (const Common::Exception&) {
            }
        }
        return out;
    }();
    return docs;
}

Int64 ExtractAll(PDF::TextExtractor& extractor) {
    Int64 words = 0;
    for (Loaded& l : Documents()) {
        for (const PDF::Page& p : l.pages) {
            try {
                extractor.Begin(p, nullptr, 0);
                words += extractor.GetWordCount();
            } catch (const Common::Exception&) {
            }
        }
    }
    return words;
}

void BM_CorpusPages(benchmark::State& state) {
    if (Documents().empty()) {
        state.SkipWithError("the corpus is not there");
        return;
    }
    PDF::TextExtractor extractor;
    Counter counter;
    extractor.SetCaptureTrace(&counter);
    ExtractAll(extractor);  // glyph boxes and fonts warm
    counter.chars = 0;
    for (auto _ : state) benchmark::DoNotOptimize(ExtractAll(extractor));
    state.SetItemsProcessed(counter.chars);
    state.counters["chars"] = double(counter.chars) / double(state.iterations());
}

}  // namespace

BENCHMARK(BM_CorpusPages)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
