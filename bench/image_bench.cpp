// Decode rates of the image stages on large images: a Group 4 page (2480 x 3508) through the
// CCITT and JBIG2 (MMR) stages, a 3000 x 2000 photo through the JPEG and JPEG 2000 stages. The
// coded images come from tools/gen-image-bench.py (libtiff, cjpeg, opj_compress), which runs
// once into $LUM_IMAGE_BENCH_DIR (default /tmp/scrivex-imgbench) when the files are missing.
// Each run decodes from memory through the stage as a document read would, window by window.
//
//   build/bench/image_bench --benchmark_repetitions=5
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "Filters/CCITTFaxDecode.h"
#include "Filters/DCTDecode.h"
#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "Filters/JBIG2Decode.h"
#include "Filters/JPXDecode.h"

using namespace lum::Filters;
namespace fs = std::filesystem;

namespace {

constexpr int kPageW = 2480, kPageH = 3508, kPicW = 3000, kPicH = 2000;

fs::path DataDir() {
    const char* env = std::getenv("LUM_IMAGE_BENCH_DIR");
    fs::path dir = env ? env : "/tmp/scrivex-imgbench";
    if (!fs::exists(dir / "jpx-0.bin")) {
        const fs::path tool = fs::path(__FILE__).parent_path().parent_path() / "tools" / "gen-image-bench.py";
        const std::string cmd = tool.string() + " " + dir.string();
        if (std::system(cmd.c_str()) != 0) std::fprintf(stderr, "image_bench: %s failed\n", cmd.c_str());
    }
    return dir;
}

const std::string& Coded(const char* kind) {
    static std::map<std::string, std::string> cache;
    std::string& data = cache[kind];
    if (data.empty()) {
        std::ifstream in(DataDir() / (std::string(kind) + "-0.bin"), std::ios::binary);
        data.assign(std::istreambuf_iterator<char>(in), {});
    }
    return data;
}

size_t Drain(Filter& f) {
    FilterReader r(&f);
    static std::vector<lum::UInt8> buf(1 << 16);
    size_t total = 0, n;
    while ((n = r.Read(buf.data(), buf.size())) > 0) total += n;
    return total;
}

std::unique_ptr<Filter> Input(const std::string& data) {
    return std::make_unique<ExtBufInputFilter>(reinterpret_cast<const lum::UInt8*>(data.data()), data.size());
}

template <typename Make>
void Run(benchmark::State& state, const char* kind, long pixels, Make&& make) {
    const std::string& data = Coded(kind);
    if (data.empty()) {
        state.SkipWithError("no coded image: run tools/gen-image-bench.py");
        return;
    }
    size_t out = 0;
    for (auto _ : state) {
        std::unique_ptr<Filter> f = make(Input(data));
        out = Drain(*f);
        benchmark::DoNotOptimize(out);
    }
    state.counters["Mpixels"] = benchmark::Counter(double(pixels) * double(state.iterations()) / 1e6,
                                                    benchmark::Counter::kIsRate);
    state.SetBytesProcessed(int64_t(out) * state.iterations());
}

void BM_CCITTFaxDecode(benchmark::State& state) {
    CCITTFaxParams p;
    p.k = -1;
    p.columns = kPageW;
    p.rows = kPageH;
    p.black_is_1 = true;
    Run(state, "ccitt", long(kPageW) * kPageH,
        [&](std::unique_ptr<Filter> in) { return std::make_unique<CCITTFaxDecode>(std::move(in), p); });
}

void BM_JBIG2Decode(benchmark::State& state) {
    Run(state, "jbig2", long(kPageW) * kPageH, [](std::unique_ptr<Filter> in) {
        return std::make_unique<JBIG2Decode>(std::move(in), nullptr, kPageW, kPageH);
    });
}

void BM_DCTDecode(benchmark::State& state) {
    Run(state, "dct", long(kPicW) * kPicH,
        [](std::unique_ptr<Filter> in) { return std::make_unique<DCTDecode>(std::move(in), -1); });
}

void BM_JPXDecode(benchmark::State& state) {
    JPXParams p;
    p.components = 3;
    Run(state, "jpx", long(kPicW) * kPicH,
        [&](std::unique_ptr<Filter> in) { return std::make_unique<JPXDecode>(std::move(in), p); });
}

BENCHMARK(BM_CCITTFaxDecode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_JBIG2Decode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DCTDecode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_JPXDecode)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
