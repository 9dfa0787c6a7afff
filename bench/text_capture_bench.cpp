// The text engine over real pages of the files listed in bench/content_files.txt, with the
// document's glyph boxes warm (each document is read once before the timing starts), in
// characters per second:
// - BM_CorpusPages: the whole of Begin (content inflated and parsed, capture, layout, store);
// - BM_CaptureOnly: the page walk and the glyph capture into runs, up to the layout's Finish,
//   over content already inflated: the page and form streams of a second copy of each document
//   are replaced by their decoded bytes, which the reader then reads as unfiltered streams.
//   The runs still go through LayoutBuilder::AddRun, which joins them into lines as they come.
// tools/bench-text times the program beside its peers.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Filters/FilterReader.h"
#include "PDF/Color/ColorSpaceCache.h"
#include "PDF/ElementReader.h"
#include "PDF/Ferrox.h"
#include "PDF/GlyphBoxCache.h"
#include "PDF/PDFDoc.h"
#include "bench/ContentFiles.h"
#include "PDF/TextExtractor.h"
#include "PDF/Text/GlyphMemo.h"
#include "PDF/Text/PageCollector.h"
#include "PDF/Text/TextCapture.h"
#include "PDF/Text/TextEngine.h"
#include "SDF/Obj.h"

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

std::vector<Loaded> Load() {
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
}

std::vector<Loaded>& Documents() {
    static std::vector<Loaded> docs = Load();
    return docs;
}

// The streams a page's walk reads: its contents and the forms it paints, at any depth.
void CollectForms(PDF::ElementReader& reader, std::vector<SDF::Obj*>& streams) {
    while (PDF::Element* e = reader.Next()) {
        if (e->GetType() != PDF::Element::e_form) continue;
        if (SDF::Obj* form = e->GetXObject()) streams.push_back(form->GetDirect());
        reader.FormBegin();
        CollectForms(reader, streams);
        reader.End();
    }
}

void Inflate(SDF::Obj* stream) {
    try {
        if (!stream || !stream->IsStream()) return;
        auto chain = stream->GetDecodedStream();
        Filters::FilterReader reader(chain.get());
        std::vector<UInt8> bytes;
        UInt8 buf[65536];
        for (size_t n; (n = reader.Read(buf, sizeof buf)) > 0;) bytes.insert(bytes.end(), buf, buf + n);
        chain.reset();
        stream->SetStreamData(bytes.data(), bytes.size(), nullptr);
    } catch (const Common::Exception&) {
    }
}

std::vector<Loaded>& InflatedDocuments() {
    static std::vector<Loaded> docs = [] {
        std::vector<Loaded> out = Load();
        for (Loaded& l : out) {
            std::vector<SDF::Obj*> streams;
            for (const PDF::Page& p : l.pages) {
                SDF::Obj* contents = p.GetContents();
                if (contents && contents->IsArray()) {
                    for (UInt32 i = 0; i < contents->Size(); ++i) streams.push_back(contents->GetAt(i)->GetDirect());
                } else if (contents) {
                    streams.push_back(contents->GetDirect());
                }
                try {
                    PDF::ElementReader reader;
                    reader.Begin(p);
                    CollectForms(reader, streams);
                } catch (const Common::Exception&) {
                }
            }
            std::sort(streams.begin(), streams.end());
            streams.erase(std::unique(streams.begin(), streams.end()), streams.end());
            for (SDF::Obj* s : streams) Inflate(s);
        }
        return out;
    }();
    return docs;
}

// The capture of every page, as Begin runs it, with the engine's tables and the document's
// caches kept from page to page.
void CaptureAll(PDF::TextEngine& engine) {
    for (Loaded& l : InflatedDocuments()) {
        PDF::GlyphMemo memo;
        PDF::Color::ColorSpaceCache colors;
        for (const PDF::Page& p : l.pages) {
            try {
                PDF::PageCollector collector(engine, PDF::GlyphBoxCache::Of(p.GetSDFObj()), memo,
                                             colors);
                collector.Scan(p, nullptr, 0, false);
            } catch (const Common::Exception&) {
            }
        }
    }
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

void BM_CaptureOnly(benchmark::State& state) {
    if (InflatedDocuments().empty()) {
        state.SkipWithError("the corpus is not there");
        return;
    }
    PDF::TextEngine engine;
    Counter counter;
    engine.Capture().SetTrace(&counter);
    CaptureAll(engine);
    counter.chars = 0;
    for (auto _ : state) CaptureAll(engine);
    state.SetItemsProcessed(counter.chars);
    state.counters["chars"] = double(counter.chars) / double(state.iterations());
}

}  // namespace

BENCHMARK(BM_CorpusPages)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CaptureOnly)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
