#include "SDF/SharedResource.h"

#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

namespace lum::SDF {

namespace {
// Ageing starts the search for the oldest entry from this count, so the first of equals wins.
constexpr long kAgeSearchStart = 10000000;
}  // namespace

SharedResource::~SharedResource() = default;

void SharedResource::Release() noexcept {
    if (m_refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

std::recursive_mutex& SharedResourceTable::GetLock() {
    static std::recursive_mutex lock;
    return lock;
}

SharedResourceTable::~SharedResourceTable() {
    std::lock_guard<std::recursive_mutex> lock(GetLock());
    for (auto& [key, entry] : m_entries) entry.mp_res->Release();
    m_entries.clear();
}

SharedResourceTable* SharedResourceTable::Of(Obj* obj) {
    SDFDoc* doc = obj ? obj->GetDoc() : nullptr;
    DocImpl* impl = doc ? doc->GetImpl() : nullptr;
    if (!impl) return nullptr;
    return static_cast<SharedResourceTable*>(impl->GetAttachment(
        DocImpl::e_shared_resources, [] { return new SharedResourceTable(); }));
}

SharedResource* SharedResourceTable::Find(Obj* key) {
    std::lock_guard<std::recursive_mutex> lock(GetLock());
    auto it = m_entries.find(key);
    if (it == m_entries.end()) return nullptr;
    it->second.m_age = 1;
    it->second.mp_res->AddRef();
    return it->second.mp_res;
}

SharedResource* SharedResourceTable::Insert(Obj* key, SharedResource* made) {
    std::unique_lock<std::recursive_mutex> lock(GetLock());
    auto it = m_entries.find(key);
    if (it != m_entries.end()) {
        SharedResource* first = it->second.mp_res;
        first->AddRef();
        lock.unlock();
        made->AddRef();
        made->Release();
        return first;
    }
    Age();
    made->AddRef();  // the table's reference
    made->AddRef();  // the caller's
    m_entries.emplace(key, Entry{made, 1});
    return made;
}

size_t SharedResourceTable::Size() const {
    std::lock_guard<std::recursive_mutex> lock(GetLock());
    return m_entries.size();
}

void SharedResourceTable::Age() {
    if (m_entries.size() <= kMaxIdleEntries) return;
    auto oldest = m_entries.end();
    long oldest_age = kAgeSearchStart;
    for (auto it = m_entries.begin(); it != m_entries.end(); ++it) {
        if (it->second.mp_res->RefCount() > 1) continue;  // a handle holds it
        --it->second.m_age;
        if (it->second.m_age < oldest_age) {
            oldest_age = it->second.m_age;
            oldest = it;
        }
    }
    if (oldest == m_entries.end()) return;
    oldest->second.mp_res->Release();
    m_entries.erase(oldest);
}

}  // namespace lum::SDF
