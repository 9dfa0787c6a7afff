#include "SDF/DocImpl.h"

#include "Common/Exception.h"

// Placeholder bodies until the store is written; every load fails cleanly.
namespace lum::SDF {

Indirect* DocImpl::GetObj(UInt32) { LUM_FAIL("Corrupt PDF"); }
size_t DocImpl::GetXRefSize() const { return 0; }
void DocImpl::LoadObj(Indirect&) { LUM_FAIL("Document is not attached to a file"); }
ObjParser* DocImpl::GetObjParser() const { return nullptr; }
std::unique_ptr<Filters::Filter> DocImpl::CreateInputIterator() const {
    LUM_FAIL("Document is not attached to a file");
}

}  // namespace lum::SDF
