#include "SDF/XRefTable.h"

#include <algorithm>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "SDF/Obj.h"

namespace lum::SDF {

XRefTable::~XRefTable() { DestroyAll(); }

void XRefTable::CheckOpen() const {
    LUM_CHECK(!m_sealed, "The object table can't change after the document has opened");
}

Indirect* XRefTable::GetPending(size_t i) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    // Re-read the main size under the lock: it is the base of the pending numbers.
    const size_t base = m_main.size();
    if (i < base) return m_main[i];
    i -= base;
    return i < m_pending.size() ? m_pending[i] : nullptr;
}

UInt32 XRefTable::AppendPending(Indirect* entry) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto num = static_cast<UInt32>(m_main.size() + m_pending.size());
    entry->SetObjNum(num);
    m_pending.push_back(entry);
    return num;
}

void XRefTable::MergePending() {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_pending.empty()) return;
    m_main.insert(m_main.end(), m_pending.begin(), m_pending.end());
    m_pending.clear();
}

void XRefTable::Set(size_t i, Indirect* entry) {
    CheckOpen();
    Indirect*& slot = m_main.at(i);
    if (slot == entry) return;
    delete slot;
    slot = entry;
}

void XRefTable::Grow(size_t n) {
    CheckOpen();
    MergePending();
    if (n > m_main.size()) m_main.resize(n, nullptr);
}

void XRefTable::Reserve(size_t n) {
    CheckOpen();
    MergePending();
    // Geometric, so that callers reserving "number + a little" for each new number they meet
    // do not copy the table every time.
    if (n > m_main.capacity()) m_main.reserve(std::max(n, 2 * m_main.capacity()));
}

void XRefTable::PushBack(Indirect* entry) {
    CheckOpen();
    MergePending();
    m_main.push_back(entry);
}

void XRefTable::GrowToHold(UInt64 obj_num, const char* caller) {
    if (obj_num < m_main.size()) return;
    if (!(obj_num < Limits::kMaxRebuiltObjNum))
        throw Common::Exception("obj_num<1048576", __LINE__, __FILE__, caller, "Bad obj num");
    Reserve(size_t(obj_num) + 1024);
    Grow(size_t(obj_num) + 1);
}

void XRefTable::Clear() {
    CheckOpen();
    DestroyAll();
}

void XRefTable::DestroyAll() {
    MergePending();
    // Targets first: destroying a container asks each of its values whether it is a
    // reference, so every entry must still be alive while any target dies.
    for (Indirect* entry : m_main)
        if (entry) DeleteDirect(entry->ReleaseTarget());
    for (Indirect* entry : m_main) delete entry;
    m_main.clear();
    m_main.shrink_to_fit();
}

}  // namespace lum::SDF
