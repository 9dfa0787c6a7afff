// Bytes in, a document out: opening (with the repair of whatever is damaged) and a load of
// every object of the table, with the first bytes of every stream read raw and decoded.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "Common/Exception.h"
#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "SDF/DocImpl.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

namespace {

using namespace lum;

// Enough of a stream to reach its decoders; a bomb is not read to its end.
constexpr size_t kStreamBytes = 64 * 1024;

void Drain(std::unique_ptr<Filters::Filter> filter) {
    Filters::FilterReader reader(filter.get());
    for (size_t n = 0; n < kStreamBytes && reader.Get() >= 0; ++n) {
    }
}

void TouchEntry(SDF::Indirect* entry) {
    if (!entry || entry->IsFree()) return;
    try {
        SDF::Obj* value = entry->GetDirect(true);
        if (!value || !value->IsStream()) return;
        Drain(value->GetRawStream(false));
        Drain(value->GetDecodedStream());
    } catch (const Common::Exception&) {
        // A bad object fails alone.
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    try {
        SDF::SDFDoc doc(std::make_unique<Filters::ExtBufInputFilter>(data, size));
        SDF::DocImpl& impl = *doc.GetImpl();
        for (size_t n = 0; n < impl.GetXRefSize(); ++n) TouchEntry(impl.GetEntry(n));
        try {
            doc.GetRoot()->Find(SDF::e_Pages);
        } catch (const Common::Exception&) {
        }
        impl.GetDefaultFont();
        impl.GetBlankPage();
    } catch (const Common::Exception&) {
        // The bytes are no PDF the rebuild could read.
    }
    return 0;
}
