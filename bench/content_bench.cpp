// Content interpretation over real pages: every element of every page of the files listed in
// bench/content_files.txt, forms entered, each character of each string visited, as a client
// of the reader does. Opening the document and decoding the streams are part of the time.
// Reports bytes per second of decoded content (page streams and form streams, a form counted
// each time it is painted). tools/bench-content puts this beside the peer reader's time.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Filters/FilterReader.h"
#include "PDF/ElementReader.h"
#include "PDF/Ferrox.h"
#include "PDF/PDFDoc.h"
#include "bench/ContentFiles.h"
#include "SDF/Obj.h"

namespace {

using namespace lum;

using lum::bench::ContentFiles;

UInt64 DecodedSize(SDF::Obj* stream) {
    try {
        auto f = stream->GetDecodedStream();
        Filters::FilterReader reader(f.get());
        UInt64 n = 0;
        while (reader.Refill()) n += reader.Skip(reader.WindowSize());
        return n;
    } catch (const Common::Exception&) {
        return 0;
    }
}

// Walks a level; adds the decoded size of each form entered when `bytes` is given.
void Walk(PDF::ElementReader& reader, UInt64* bytes, UInt64& chars) {
    while (PDF::Element* e = reader.Next()) {
        if (e->GetType() == PDF::Element::e_text) {
            PDF::CharData it, end;
            e->GetCharIterator(it);
            e->GetCharIteratorEnd(end);
            for (; it != end; ++it) chars += it.char_code != 0xFFFFFFFF;
        } else if (e->GetType() == PDF::Element::e_form) {
            if (bytes) *bytes += DecodedSize(e->GetXObject());
            reader.FormBegin();
            Walk(reader, bytes, chars);
            reader.End();
        }
    }
}

// Reads every page of `path`; answers the characters visited.
UInt64 ReadFile(const std::string& path, UInt64* bytes) {
    UInt64 chars = 0;
    PDF::PDFDoc doc(path);
    const Int32 pages = doc.GetPageCount();
    PDF::ElementReader reader;
    for (Int32 n = 1; n <= pages; ++n) {
        PDF::PageIterator it = doc.GetPageIterator(n);
        if (it == doc.GetPageIteratorEnd()) continue;
        if (bytes) {
            SDF::Obj* contents = it->GetContents();
            if (contents && contents->IsStream()) *bytes += DecodedSize(contents);
            if (contents && contents->IsArray())
                for (UInt32 i = 0; i < contents->Size(); ++i)
                    if (contents->GetAt(i)->IsStream()) *bytes += DecodedSize(contents->GetAt(i));
        }
        try {
            reader.Begin(*it);
            Walk(reader, bytes, chars);
        } catch (const Common::Exception&) {
            // What ends a page ends that page only.
        }
    }
    return chars;
}

void BM_ReadAllElements(benchmark::State& state) {
    PDF::Ferrox::Initialize();
    const std::vector<std::string> files = ContentFiles();
    if (files.empty()) {
        state.SkipWithError("the corpus is not there");
        return;
    }
    UInt64 bytes = 0;
    for (const std::string& f : files) ReadFile(f, &bytes);
    UInt64 chars = 0;
    for (auto _ : state)
        for (const std::string& f : files) chars += ReadFile(f, nullptr);
    state.SetBytesProcessed(Int64(bytes) * state.iterations());
    state.counters["files"] = double(files.size());
    state.counters["decoded_MB"] = double(bytes) / 1e6;
    state.counters["chars"] = double(chars) / double(state.iterations());
}

BENCHMARK(BM_ReadAllElements)->Unit(benchmark::kMillisecond)->MinTime(2.0);

}  // namespace

BENCHMARK_MAIN();
