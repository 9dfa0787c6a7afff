// CMaps: parsing the largest predefined CMap from its unpacked text and by name through the
// resource file (LZMA unpacking included), lookups of codes in a parsed CMap, and a page of
// 200 composite fonts on one predefined CMap read through the content reader (each font
// parses its own copy of the CMap).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tests/PDF/PdfBuilder.h"
#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "PDF/ElementReader.h"
#include "PDF/PDFDoc.h"
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

// The two CMaps a font on UniJIS-UCS2-H parses: its Encoding, and the collection's CID to
// Unicode map when it has no ToUnicode.
void BM_CreateByName(benchmark::State& state, const char* cmap) {
    PDF::Ferrox::Initialize();
    SDF::Name name(cmap);
    for (auto _ : state) benchmark::DoNotOptimize(PDF::Fnt::CMap::Create(&name));
}
BENCHMARK_CAPTURE(BM_CreateByName, UniJIS_UCS2_H, "UniJIS-UCS2-H")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_CreateByName, Adobe_Japan1_UCS2, "Adobe-Japan1-UCS2")->Unit(benchmark::kMillisecond);

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

using test::BuildPdf;

std::string TwoHundredFontsPdf(const char* cmap) {
    constexpr int kFonts = 200;
    std::string resources, content = "BT";
    std::vector<std::string> objects = {
        "<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>", "", "",
        "<< /Type /FontDescriptor /FontName /J /Flags 4 /Ascent 880 /Descent -120 >>"};
    for (int i = 0; i < kFonts; ++i) {
        const std::string n = std::to_string(objects.size() + 1);
        objects.push_back("<< /Type /Font /Subtype /Type0 /BaseFont /J /Encoding /" + std::string(cmap) +
                          " /DescendantFonts [" + std::to_string(objects.size() + 2) + " 0 R] >>");
        objects.push_back("<< /Type /Font /Subtype /CIDFontType0 /BaseFont /J /CIDSystemInfo << "
                          "/Registry (Adobe) /Ordering (Japan1) /Supplement 6 >> /FontDescriptor 5 0 R >>");
        resources += " /F" + std::to_string(i) + " " + n + " 0 R";
        content += " /F" + std::to_string(i) + " 10 Tf 0 -12 Td <30424E00FF21> Tj";
    }
    content += " ET";
    objects[2] = "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Resources << /Font <<" + resources +
                 " >> >> /Contents 4 0 R >>";
    objects[3] = "<< /Length " + std::to_string(content.size()) + " >>\nstream\n" + content + "\nendstream";
    return BuildPdf(objects);
}

// Opening the document and reading the page, Unicode of every string included.
void BM_PageOf200Type0Fonts(benchmark::State& state) {
    PDF::Ferrox::Initialize();
    const std::string pdf = TwoHundredFontsPdf("UniJIS-UCS2-H");
    size_t units = 0;
    for (auto _ : state) {
        PDF::PDFDoc doc(std::make_unique<Filters::ExtBufInputFilter>(
            reinterpret_cast<const UInt8*>(pdf.data()), pdf.size()));
        PDF::ElementReader reader;
        reader.Begin(*doc.GetPageIterator(1));
        while (PDF::Element* e = reader.Next())
            if (e->GetType() == PDF::Element::e_text) units += size_t(e->GetTextString().GetLength());
        reader.End();
    }
    benchmark::DoNotOptimize(units);
    state.SetLabel("UniJIS-UCS2-H, 200 fonts, 600 characters");
}
BENCHMARK(BM_PageOf200Type0Fonts)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
