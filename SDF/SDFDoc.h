#pragma once
// The low-level document as the layers above hold it: a table of numbered objects on one
// input filter. The work is done by DocImpl; this is the handle that owns it.
#include <memory>

#include "Common/Types.h"

namespace lum {
class UString;
}
namespace lum::Filters {
class Filter;
}

namespace lum::SDF {

class DocImpl;
class Obj;
class Indirect;

class SDFDoc {
public:
    // Opens a document on `input`, owned from now on. The filter is shared by independent
    // readers (one per stream being read), so it is wrapped for that unless it already is.
    // Fails when the filter is unusable or the file can't be read even by a rebuild.
    explicit SDFDoc(std::unique_ptr<Filters::Filter> input, bool check_root = true);
    virtual ~SDFDoc();
    SDFDoc(const SDFDoc&) = delete;
    SDFDoc& operator=(const SDFDoc&) = delete;

    DocImpl* GetImpl() const { return mp_impl; }

    // Entry `num` of the table; a number without an entry answers the trailer's entry.
    Indirect* GetObj(UInt32 num);
    // The trailer dictionary (entry 0).
    Obj* GetTrailer();
    // The catalog; fails with "Doc root not found".
    Obj* GetRoot();
    // Slots in the table.
    size_t XRefSize() const;
    // The table was rebuilt from the file's bytes at opening.
    bool IsRebuilt() const;

    bool InitSecurityHandler(void* custom_data = nullptr);
    bool InitStdSecurityHandler(const UString& password);

protected:
    DocImpl* mp_impl = nullptr;
    bool m_owns_impl = true;
};

// The document object that the higher layers hold. It adds only saving, which this program
// never does.
class SDFLinarDoc : public SDFDoc {
public:
    using SDFDoc::SDFDoc;
    ~SDFLinarDoc() override;
};

}  // namespace lum::SDF
