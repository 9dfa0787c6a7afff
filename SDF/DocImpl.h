#pragma once
// The document store: the table of numbered objects on one input filter.
// (Seam for the object layer: Obj, ObjParser and FileStream use only what is declared here.)
#include <memory>
#include <mutex>

#include "Common/Types.h"

namespace lum::Filters { class Filter; }

namespace lum::SDF {

class SDFDoc;
class Indirect;
class ObjParser;

class DocImpl {
public:
    // The SDFDoc that owns this implementation.
    SDFDoc* GetSDFDoc() const { return mp_sdfdoc; }

    // Entry `num` of the table; entry 0 (the trailer) for a number without an entry.
    Indirect* GetObj(UInt32 num);
    // The number of slots of the main table; object numbers are compared with this.
    size_t GetXRefSize() const;

    // Loads the target of `ind`; called by Indirect under the object lock.
    void LoadObj(Indirect& ind);

    // The recursive object lock taken around every load of an Indirect.
    std::recursive_mutex& GetObjLock() { return m_obj_lock; }

    // The parser on the document's input, or null when the document has no file.
    ObjParser* GetObjParser() const;

    // A new reader on the document's input with its own position (for stream data).
    std::unique_ptr<Filters::Filter> CreateInputIterator() const;

private:
    SDFDoc* mp_sdfdoc = nullptr;
    std::recursive_mutex m_obj_lock;
};

}  // namespace lum::SDF
