// Tokeniser and value reader throughput on two synthetic inputs: page content (numbers,
// operators, strings, arrays) and dictionary-heavy object bodies (names and nested
// dictionaries). Reports bytes per second of input.
#include <benchmark/benchmark.h>

#include <string>

#include "Filters/ExtBufInputFilter.h"
#include "SDF/Parser.h"

namespace {

using namespace lum;

std::string ContentLike(size_t target) {
    std::string s;
    s.reserve(target + 256);
    for (int i = 0; s.size() < target; ++i) {
        s += "BT /F1 9.96 Tf 1 0 0 1 72.024 " + std::to_string(700 - i % 600) + ".48 Tm\n";
        s += "[(Lorem ip)-12.5(sum dolor sit a)8(met, consectetur)] TJ\n";
        s += "0.5 0.25 0.125 rg 12 -14.4 Td (adipiscing \\(elit\\) sed do) Tj ET\n";
        s += "q 0.75 0 0 0.75 10.5 20.25 cm 0 0 m 100 0 l 100 50 l h S Q\n";
        s += "<0012003400560078> Tj\n";
    }
    return s;
}

std::string DictLike(size_t target) {
    std::string s;
    s.reserve(target + 512);
    for (int i = 0; s.size() < target; ++i) {
        s += "<</Type /Page /Parent 3 0 R /MediaBox [0 0 612 792] /CropBox [0 0 612 792]\n";
        s += "/Resources <</Font <</F1 10 0 R /F2 11 0 R>> /ProcSet [/PDF /Text /ImageC]\n";
        s += "/ExtGState <</GS0 12 0 R>> /XObject <</Im0 13 0 R>>>> /Rotate 0\n";
        s += "/Contents " + std::to_string(i) + " 0 R /Annots [14 0 R 15 0 R] /StructParents 4\n";
        s += "/Group <</S /Transparency /CS /DeviceRGB /I true>> /Tabs /S /UserDefinedKey (v)>>\n";
    }
    return s;
}

// "R" inside containers becomes one entry, as the object parser makes it a table entry.
class RefParser : public SDF::Parser {
public:
    explicit RefParser(Filters::Filter* f) : Parser(nullptr, f), m_ref(nullptr, 1, 0, 0, 1) {}
    ~RefParser() override { ClearStack(); }

protected:
    bool ContainerOperator(const char* word) override {
        if (word[0] != 'R' || word[1] != 0 || GetOperandStack().size() < 2) return false;
        PopObj();
        PopObj();
        Push(&m_ref);
        return true;
    }

private:
    SDF::Indirect m_ref;
};

void Run(benchmark::State& state, const std::string& input) {
    for (auto _ : state) {
        Filters::ExtBufInputFilter f(reinterpret_cast<const UInt8*>(input.data()), input.size());
        RefParser p(&f);
        size_t values = 0;
        for (;;) {
            p.ClearStack();
            p.ResetNesting();
            if (p.GetObj()) {
                ++values;
                continue;
            }
            if (p.GetTokenSize() == 0) break;
        }
        benchmark::DoNotOptimize(values);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(input.size()));
}

void BM_ParseContent(benchmark::State& state) {
    static const std::string input = ContentLike(8 << 20);
    Run(state, input);
}

void BM_ParseDictionaries(benchmark::State& state) {
    static const std::string input = DictLike(8 << 20);
    Run(state, input);
}

BENCHMARK(BM_ParseContent)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ParseDictionaries)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
