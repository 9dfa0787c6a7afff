#pragma once
// Objects made once per dictionary and shared by everything in a document that names that
// dictionary: fonts and colour spaces. The document keeps a small table of them, keyed by the
// dictionary (the target, never the reference), and handles count their uses on the resource.
//
// The table lives as long as the document. A resource stays in it after its last handle has
// gone, for a later hit; beyond kMaxIdleEntries entries, idle ones are evicted by age. One
// process-wide recursive lock guards every table and is held for a lookup or an insertion
// only: resources are made outside it, so two threads may both build one and the first
// insertion wins.
#include <atomic>
#include <map>
#include <mutex>

#include "Common/Types.h"
#include "SDF/DocImpl.h"
#include "SDF/Obj.h"

namespace lum::SDF {


class SharedResource {
public:
    SharedResource() = default;
    SharedResource(const SharedResource&) = delete;
    SharedResource& operator=(const SharedResource&) = delete;
    virtual ~SharedResource();

    void AddRef() noexcept { m_refs.fetch_add(1, std::memory_order_relaxed); }
    // Destroys the resource with its last reference.
    void Release() noexcept;
    UInt32 RefCount() const noexcept { return m_refs.load(std::memory_order_acquire); }

private:
    std::atomic<UInt32> m_refs{0};
};

class SharedResourceTable final : public DocAttachment {
public:
    // Entries beyond this many make room by evicting the oldest entry that has no handles.
    static constexpr size_t kMaxIdleEntries = 20;

    ~SharedResourceTable() override;

    // The process-wide shared resource lock.
    static std::recursive_mutex& GetLock();

    // The table of the document that `obj` belongs to, made on first use; null for an object
    // of no document.
    static SharedResourceTable* Of(Obj* obj);

    // The resource made for `key` (a direct object), with a reference added for the caller,
    // or null. A hit makes the entry young again.
    SharedResource* Find(Obj* key);
    // Enters `made` (which has no references yet) under `key` and answers the resource the
    // caller now holds one reference on: `made`, or the one that another thread entered first
    // (then `made` is destroyed).
    SharedResource* Insert(Obj* key, SharedResource* made);

    size_t Size() const;

private:
    struct Entry {
        SharedResource* mp_res = nullptr;  // the table holds one reference
        long m_age = 1;
    };
    // Evicts the oldest idle entry once the table is over its size; called under the lock.
    void Age();

    std::map<Obj*, Entry> m_entries;
};

// Opens the shared resource of `obj` (any value; a reference is followed): a hit of the
// document's table, or a new one from `make(obj)` entered in the table. The caller receives
// one reference. An object of no document gets a resource of its own, outside any table.
template <class Make>
SharedResource* OpenSharedResource(Obj* obj, Make&& make) {
    Obj* key = obj->GetDirect();
    SharedResourceTable* table = SharedResourceTable::Of(obj);
    if (table) {
        if (SharedResource* hit = table->Find(key)) return hit;
    }
    SharedResource* made = make(obj);
    if (!table) {
        made->AddRef();
        return made;
    }
    return table->Insert(key, made);
}

}  // namespace lum::SDF
