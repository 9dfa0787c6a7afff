#include "SDF/SDFDoc.h"

#include "Common/Exception.h"
#include "Filters/Filter.h"
#include "SDF/DocImpl.h"
#include "SDF/Obj.h"

namespace lum::SDF {

SDFDoc::SDFDoc(std::unique_ptr<Filters::Filter> input, bool check_root)
    : mp_impl(new DocImpl(this, std::move(input), check_root)), m_owns_impl(true) {}

SDFDoc::~SDFDoc() {
    if (m_owns_impl) delete mp_impl;
}

Indirect* SDFDoc::GetObj(UInt32 num) { return mp_impl->GetObj(num); }

Obj* SDFDoc::GetTrailer() { return mp_impl->GetObj(0); }

Obj* SDFDoc::GetRoot() { return mp_impl->GetRoot(); }

size_t SDFDoc::XRefSize() const { return mp_impl->GetXRefSize(); }

bool SDFDoc::IsRebuilt() const { return mp_impl->IsRebuilt(); }

bool SDFDoc::InitSecurityHandler(void* custom_data) {
    return mp_impl->InitSecurityHandler(custom_data, false);
}

bool SDFDoc::InitStdSecurityHandler(const UString& password) {
    return mp_impl->InitStdSecurityHandler(password);
}

SDFLinarDoc::~SDFLinarDoc() = default;

}  // namespace lum::SDF
