// Throughput of the filter chain against a bare zlib loop over the same bytes.
//
// A 64 MiB stream of page-content-like text is compressed with deflate and with LZW into two
// temporary files. The chains read them as the document reader does: MappedFile, decoder,
// FilterReader. The bare loop inflates the same compressed bytes from memory into a 64 KiB
// buffer. After the runs the ratio of chain to bare throughput is printed.
//
//   build/bench/filters_bench --benchmark_repetitions=8 --benchmark_enable_random_interleaving
#include <benchmark/benchmark.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "Filters/FilterReader.h"
#include "Filters/FlateDecode.h"
#include "Filters/LZWDecode.h"
#include "Filters/MappedFile.h"

using namespace lum::Filters;

namespace {

constexpr size_t kDataSize = size_t(64) << 20;

// Content-stream-like text: operators, names and numbers, compressing about 4:1 like the
// content of real pages.
std::string MakeData() {
    static const char* kOps[] = {" Tf\n", " Td\n", " Tj\n", " TJ\n", " cm\n", " re f\n",
                                 " l\n", " m\n", " rg\n", " w\n"};
    std::mt19937 rng(42);
    std::string s;
    s.reserve(kDataSize + 64);
    char num[32];
    while (s.size() < kDataSize) {
        int n = 1 + static_cast<int>(rng() % 4);
        for (int i = 0; i < n; ++i) {
            std::snprintf(num, sizeof num, "%u.%02u ", static_cast<unsigned>(rng() % 800),
                          static_cast<unsigned>(rng() % 100));
            s += num;
        }
        if (rng() % 3 == 0) {
            s += "(";
            for (int i = 0, len = 3 + static_cast<int>(rng() % 20); i < len; ++i)
                s += static_cast<char>('a' + rng() % 26);
            s += ")";
        }
        s += kOps[rng() % (sizeof kOps / sizeof *kOps)];
    }
    s.resize(kDataSize);
    return s;
}

std::string Deflate(const std::string& data) {
    uLongf len = compressBound(data.size());
    std::string out(len, '\0');
    compress2(reinterpret_cast<Bytef*>(out.data()), &len,
              reinterpret_cast<const Bytef*>(data.data()), data.size(), 6);
    out.resize(len);
    return out;
}

// LZW with early change 1, a clear code whenever the table fills.
std::string LzwEncode(const std::string& data) {
    // child[code * 256 + byte] is valid only when stamped with the current table generation,
    // so a table reset costs nothing.
    std::vector<int> child(4096 * 256, -1);
    std::vector<unsigned> stamp(4096 * 256, 0);
    unsigned generation = 1;
    std::string out;
    unsigned long long bits = 0;
    int count = 0, width = 9, next = 258;
    auto put = [&](int code) {
        bits = (bits << width) | static_cast<unsigned>(code);
        count += width;
        while (count >= 8) {
            count -= 8;
            out += static_cast<char>((bits >> count) & 0xFF);
        }
    };
    auto reset = [&] {
        ++generation;
        next = 258;
        width = 9;
    };
    put(256);
    int w = -1;
    for (unsigned char c : data) {
        if (w < 0) {
            w = c;
            continue;
        }
        size_t key = static_cast<size_t>(w) * 256 + c;
        if (stamp[key] == generation) {
            w = child[key];
            continue;
        }
        put(w);
        stamp[key] = generation;
        child[key] = next++;
        if (next + 1 == 513) width = 10;
        else if (next + 1 == 1025) width = 11;
        else if (next + 1 == 2049) width = 12;
        if (next >= 4094) {
            put(256);
            reset();
        }
        w = c;
    }
    if (w >= 0) put(w);
    put(257);
    if (count > 0) out += static_cast<char>((bits << (8 - count)) & 0xFF);
    return out;
}

struct Fixture {
    std::string flate;
    std::string flate_path;
    std::string lzw_path;
    Fixture() {
        std::string data = MakeData();
        flate = Deflate(data);
        std::string dir = std::filesystem::temp_directory_path().string();
        flate_path = dir + "/filters_bench_" + std::to_string(getpid()) + ".flate";
        lzw_path = dir + "/filters_bench_" + std::to_string(getpid()) + ".lzw";
        Write(flate_path, flate);
        Write(lzw_path, LzwEncode(data));
    }
    ~Fixture() {
        std::remove(flate_path.c_str());
        std::remove(lzw_path.c_str());
    }
    static void Write(const std::string& path, const std::string& bytes) {
        std::FILE* f = std::fopen(path.c_str(), "wb");
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::fclose(f);
    }
};

Fixture& Data() {
    static Fixture f;
    return f;
}

void BM_BareInflate(benchmark::State& state) {
    const std::string& in = Data().flate;
    std::vector<unsigned char> out(64 << 10);
    for (auto _ : state) {
        z_stream zs{};
        inflateInit(&zs);
        zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in.data()));
        zs.avail_in = static_cast<uInt>(in.size());
        size_t total = 0;
        int rc;
        do {
            zs.next_out = out.data();
            zs.avail_out = static_cast<uInt>(out.size());
            rc = inflate(&zs, Z_NO_FLUSH);
            total += out.size() - zs.avail_out;
        } while (rc == Z_OK);
        inflateEnd(&zs);
        if (total != kDataSize) state.SkipWithError("bare inflate lost bytes");
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kDataSize));
}

template <typename MakeDecoder>
void ReadChain(benchmark::State& state, const std::string& path, MakeDecoder make) {
    std::vector<lum::UInt8> buf(64 << 10);
    for (auto _ : state) {
        std::unique_ptr<Filter> chain = make(std::make_unique<MappedFile>(path));
        FilterReader reader(chain.get());
        size_t total = 0, n;
        while ((n = reader.Read(buf.data(), buf.size())) > 0) total += n;
        if (total != kDataSize) state.SkipWithError("chain lost bytes");
        benchmark::DoNotOptimize(buf.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kDataSize));
}

void BM_FlateChain(benchmark::State& state) {
    ReadChain(state, Data().flate_path,
              [](std::unique_ptr<Filter> f) { return std::make_unique<FlateDecode>(std::move(f)); });
}

void BM_LZWChain(benchmark::State& state) {
    ReadChain(state, Data().lzw_path,
              [](std::unique_ptr<Filter> f) { return std::make_unique<LZWDecode>(std::move(f)); });
}

BENCHMARK(BM_BareInflate)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FlateChain)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LZWChain)->Unit(benchmark::kMillisecond);

// Keeps the throughput of each run so the ratio can be printed at the end. On a shared machine
// single runs are noisy: run with repetitions and interleaving, and the best and the median
// of each benchmark are compared.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    std::map<std::string, std::vector<double>> rates;
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& r : runs) {
            if (r.run_type != Run::RT_Iteration) continue;
            auto it = r.counters.find("bytes_per_second");
            if (it == r.counters.end()) continue;
            std::string name = r.run_name.function_name;
            rates[name].push_back(it->second);
        }
        ConsoleReporter::ReportRuns(runs);
    }
    static double Best(std::vector<double> v) { return *std::max_element(v.begin(), v.end()); }
    static double Median(std::vector<double> v) {
        std::sort(v.begin(), v.end());
        return v[v.size() / 2];
    }
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    Data();
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    auto bare = reporter.rates.find("BM_BareInflate");
    auto chain = reporter.rates.find("BM_FlateChain");
    if (bare != reporter.rates.end() && chain != reporter.rates.end()) {
        const double mib = 1 << 20;
        double bb = RatioReporter::Best(bare->second), cb = RatioReporter::Best(chain->second);
        double bm = RatioReporter::Median(bare->second), cm = RatioReporter::Median(chain->second);
        std::printf("Flate chain / bare inflate, best of %zu: %.1f%% (%.0f vs %.0f MiB/s)\n",
                    chain->second.size(), 100.0 * cb / bb, cb / mib, bb / mib);
        std::printf("Flate chain / bare inflate, median: %.1f%% (%.0f vs %.0f MiB/s)\n",
                    100.0 * cm / bm, cm / mib, bm / mib);
    }
    benchmark::Shutdown();
    return 0;
}
