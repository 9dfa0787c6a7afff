// Colour: the RGB of one fill colour per family, as the capture asks for it once per text
// element (the conversion itself, and the memory of the last one), and the reading of a colour
// space whose tint transform is a large sampled table.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "Filters/ExtBufInputFilter.h"
#include "PDF/Color/ColorSpaceCache.h"
#include "PDF/Color/Function.h"
#include "PDF/ColorSpace.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

namespace {

using namespace lum;

std::string Stream(const std::string& dict, const std::string& data) {
    return "<< " + dict + " /Length " + std::to_string(data.size()) + " >>\nstream\n" + data +
           "\nendstream";
}

// A document of the objects given, numbered from 1, with a catalog behind them.
class Doc {
public:
    explicit Doc(const std::vector<std::string>& objects) {
        m_bytes = "%PDF-1.7\n";
        std::vector<size_t> offsets;
        for (size_t i = 0; i < objects.size(); ++i) {
            offsets.push_back(m_bytes.size());
            m_bytes += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
        }
        offsets.push_back(m_bytes.size());
        m_bytes += std::to_string(objects.size() + 1) + " 0 obj\n<< /Type /Catalog >>\nendobj\n";
        const size_t xref = m_bytes.size();
        m_bytes += "xref\n0 " + std::to_string(offsets.size() + 1) + "\n0000000000 65535 f\r\n";
        for (size_t o : offsets) {
            char row[32];
            std::snprintf(row, sizeof row, "%010zu 00000 n\r\n", o);
            m_bytes += row;
        }
        m_bytes += "trailer\n<< /Size " + std::to_string(offsets.size() + 1) + " /Root " +
                   std::to_string(offsets.size()) + " 0 R >>\nstartxref\n" + std::to_string(xref) +
                   "\n%%EOF\n";
        m_doc = std::make_unique<SDF::SDFDoc>(std::make_unique<Filters::ExtBufInputFilter>(
            reinterpret_cast<const UInt8*>(m_bytes.data()), m_bytes.size()));
    }
    SDF::Obj* Obj(UInt32 n) { return m_doc->GetObj(n)->GetDirect(); }

private:
    std::string m_bytes;
    std::unique_ptr<SDF::SDFDoc> m_doc;
};

std::string SampledTable(int inputs, int size, int outputs) {
    std::string domain, sizes, range;
    size_t samples = size_t(outputs);
    for (int i = 0; i < inputs; ++i) {
        domain += "0 1 ";
        sizes += std::to_string(size) + " ";
        samples *= size_t(size);
    }
    for (int j = 0; j < outputs; ++j) range += "0 1 ";
    std::string data(samples, '\0');
    for (size_t k = 0; k < samples; ++k) data[k] = char(k * 37);
    return Stream("/FunctionType 0 /Domain [" + domain + "] /Range [" + range + "] /Size [" + sizes +
                      "] /BitsPerSample 8",
                  data);
}

// The spaces converted: one per family or road through a family.
const std::vector<std::string> kSpaces = {
    "/DeviceRGB",
    "/DeviceCMYK",
    "[/Lab << /WhitePoint [0.9505 1 1.089] >>]",
    "[/Indexed /DeviceCMYK 1 <00000000 10203040>]",
    "[/Separation /Spot /DeviceCMYK << /FunctionType 2 /Domain [0 1] /C0 [0 0 0 0] /C1 [0.1 0.9 0.2 0] /N 1 >>]",
    "[/DeviceN [/A /B /C /D] /DeviceCMYK 9 0 R]",
    "[/DeviceN [/A /B] /DeviceRGB 10 0 R]",
};

void BM_ConvertToRGB(benchmark::State& state) {
    Doc doc({kSpaces[0], kSpaces[1], kSpaces[2], kSpaces[3], kSpaces[4], kSpaces[5], kSpaces[6],
             "<< >>", SampledTable(4, 16, 4),
             Stream("/FunctionType 4 /Domain [0 1 0 1] /Range [0 1 0 1 0 1]",
                    "{ 2 copy mul 3 1 roll exch sub abs }")});
    const PDF::ColorSpace cs(doc.Obj(UInt32(state.range(0)) + 1));
    PDF::ColorPt color(0.3, 0.6, 0.2, 0.1, 4), rgb;
    color.SetColorantNum(cs.GetComponentNum());
    for (auto _ : state) {
        color.Set(0, color.Get(0) + 1e-9);  // no memory between rounds
        cs.Convert2RGB(color, rgb);
        benchmark::DoNotOptimize(rgb);
    }
    state.SetLabel(kSpaces[size_t(state.range(0))].substr(0, 30));
}
BENCHMARK(BM_ConvertToRGB)->DenseRange(0, 6);

// What the capture pays per text element when the colour doesn't change.
void BM_CachedFillColor(benchmark::State& state) {
    Doc doc({kSpaces[5], "<< >>", "<< >>", "<< >>", "<< >>", "<< >>", "<< >>", "<< >>",
             SampledTable(4, 16, 4)});
    const PDF::ColorSpace cs(doc.Obj(1));
    PDF::ColorPt color(0.3, 0.6, 0.2, 0.1, 4);
    PDF::Color::ColorSpaceCache cache;
    double rgb[3];
    for (auto _ : state) {
        benchmark::DoNotOptimize(cache.ToRGB(cs, color, rgb));
    }
}
BENCHMARK(BM_CachedFillColor);

// Reading a tint transform of 4 inputs of 17 samples and 4 outputs (outside the document's
// table, which would keep it after the first reading).
void BM_ReadSampledTable(benchmark::State& state) {
    Doc doc({SampledTable(4, 17, 4)});
    for (auto _ : state) {
        PDF::Color::Function* f = PDF::Color::Function::Create(doc.Obj(1));
        f->AddRef();
        f->Release();
    }
}
BENCHMARK(BM_ReadSampledTable)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
