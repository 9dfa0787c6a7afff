// Bytes in, colours out: the input is opened as a document, and every object of its table is
// tried as a colour space (converted at a few colour points) and as a function (evaluated at a
// few inputs). Families that reach other objects (Indexed lookups, alternates, tint
// transforms, sampled tables, calculator programs) are reached through the references.
// fuzz-run: pdf-seeds
#include <cstddef>
#include <cstdint>
#include <memory>

#include "Common/Exception.h"
#include "Filters/ExtBufInputFilter.h"
#include "PDF/ColorSpace.h"
#include "PDF/Color/Function.h"
#include "SDF/DocImpl.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

namespace {

using namespace lum;

// Objects of one input that are tried: a bomb of tiny objects stays cheap.
constexpr size_t kObjects = 256;

void Try(SDF::Obj* obj) {
    static const double kPoints[][4] = {{0, 0, 0, 0}, {1, 1, 1, 1}, {0.5, 0.25, 2, -1}, {255, 7.5, 0, 1}};
    try {
        // Through the document's table, as the content reader opens spaces.
        const PDF::ColorSpace cs(obj);
        if (cs) {
            PDF::ColorPt color, out;
            for (const auto& p : kPoints) {
                color = PDF::ColorPt(p[0], p[1], p[2], p[3], 4);
                color.SetColorantNum(cs.GetComponentNum());
                cs.Convert2RGB(color, out);
                cs.Convert2Gray(color, out);
                cs.Convert2CMYK(color, out);
            }
            cs.InitColor(color);
            const UInt8 samples[2 * PDF::ColorPt::kMax] = {0, 255, 7, 128, 3};
            UInt8 rgb[6];
            cs.Convert2RGB(samples, rgb, 2);
        }
    } catch (const Common::Exception&) {
    }
    try {
        const PDF::Color::FunctionRef f = PDF::Color::Function::Open(obj);
        double out[PDF::Color::Function::kMaxValues];
        for (const auto& p : kPoints) f->Eval(p, 4, out);
    } catch (const Common::Exception&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    try {
        SDF::SDFDoc doc(std::make_unique<Filters::ExtBufInputFilter>(data, size));
        SDF::DocImpl& impl = *doc.GetImpl();
        for (size_t n = 1; n < impl.GetXRefSize() && n < kObjects; ++n) {
            try {
                SDF::Indirect* entry = impl.GetEntry(n);
                if (!entry || entry->IsFree()) continue;
                Try(entry->GetDirect(true));
            } catch (const Common::Exception&) {
            }
        }
    } catch (const Common::Exception&) {
    }
    return 0;
}
