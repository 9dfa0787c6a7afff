// CMaps: parsing the largest predefined CMap from its unpacked text and by name through the
// resource file (LZMA unpacking included), and lookups of codes in a parsed CMap.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "Filters/FilterReader.h"
#include "PDF/Ferrox.h"
#include "PDF/FerroxResources.h"
#include "PDF/Font/CMap.h"
#include "PDF/Font/CMapStm.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

namespace {

using namespace lum;

// The predefined CMap with the most text, and its text.
struct Largest {
    std::string name;
    std::vector<UInt8> text;
};

const Largest& FindLargest() {
    static Largest largest = [] {
        PDF::Ferrox::Initialize();
        Largest best;
        SDF::Obj* c = PDF::Resource::GetResourceDoc()->GetTrailer()->Get("C")->second;
        for (auto it = c->DictBegin(); it != c->DictEnd(); ++it) {
            auto chain = it->second->GetDecodedStream();
            Filters::FilterReader r(chain.get());
            std::vector<UInt8> text;
            UInt8 buf[65536];
            for (size_t n; (n = r.Read(buf, sizeof buf)) > 0;) text.insert(text.end(), buf, buf + n);
            if (text.size() > best.text.size()) best = {it->first->GetName(), std::move(text)};
        }
        return best;
    }();
    return largest;
}

void BM_ParseLargestPredefined(benchmark::State& state) {
    const Largest& l = FindLargest();
    SDF::FileStream stm(new SDF::Dict(), std::vector<UInt8>(l.text));
    for (auto _ : state) {
        PDF::Fnt::CMapStm cmap(&stm, l.name);
        benchmark::DoNotOptimize(cmap.GetEntryCount());
    }
    state.SetLabel(l.name + ", " + std::to_string(l.text.size()) + " bytes");
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(l.text.size()));
}
BENCHMARK(BM_ParseLargestPredefined)->Unit(benchmark::kMillisecond);

void BM_CreateLargestByName(benchmark::State& state) {
    const Largest& l = FindLargest();
    SDF::Name name(l.name.c_str());
    for (auto _ : state) benchmark::DoNotOptimize(PDF::Fnt::CMap::Create(&name));
    state.SetLabel(l.name + ", unpacked at the first call only");
}
BENCHMARK(BM_CreateLargestByName)->Unit(benchmark::kMillisecond);

void BM_MapToCIDBytes(benchmark::State& state) {
    SDF::Name name("UniJIS-UCS2-H");
    auto cmap = PDF::Fnt::CMap::Create(&name);
    std::vector<UInt8> text;
    for (UInt32 u = 0x3000; u < 0x9FFF; u += 7) {
        text.push_back(UInt8(u >> 8));
        text.push_back(UInt8(u));
    }
    for (auto _ : state) {
        UInt32 sum = 0;
        for (size_t i = 0; i < text.size();) {
            UInt32 code = 0, cid = 0;
            i += cmap->MapToCID(text.data() + i, int(text.size() - i), code, cid);
            sum += cid;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(text.size() / 2));
}
BENCHMARK(BM_MapToCIDBytes);

}  // namespace

BENCHMARK_MAIN();
