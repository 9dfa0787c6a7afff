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
#include "PDF/Color/ColorSpaceImpl.h"
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
        if (auto cs = PDF::Color::ColorSpaceImpl::Create(obj)) {
            double rgb[3];
            for (const auto& p : kPoints) cs->Convert2RGB(p, cs->GetComponentNum() > 4 ? 4 : cs->GetComponentNum(), rgb);
        }
    } catch (const Common::Exception&) {
    }
    try {
        auto f = PDF::Color::Function::Create(obj);
        double out[32];
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
