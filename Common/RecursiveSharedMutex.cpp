#include "Common/RecursiveSharedMutex.h"

#include <unordered_map>

#include "Common/Exception.h"

namespace lum::Common {

namespace {
// One map per thread, keyed by the lock object. An entry exists only while the thread holds
// the lock, so a destroyed lock leaves nothing behind (destroying a held lock is a bug anyway).
template <class Counts>
std::unordered_map<const void*, Counts>& ThreadCountMap() {
    thread_local std::unordered_map<const void*, Counts> map;
    return map;
}
}  // namespace

RecursiveSharedMutex::Counts* RecursiveSharedMutex::PerThreadCounts::get() const {
    auto& map = ThreadCountMap<Counts>();
    auto it = map.find(this);
    return it == map.end() ? nullptr : &it->second;
}

RecursiveSharedMutex::Counts& RecursiveSharedMutex::PerThreadCounts::GetOrCreate() {
    return ThreadCountMap<Counts>()[this];
}

void RecursiveSharedMutex::PerThreadCounts::Release() { ThreadCountMap<Counts>().erase(this); }

RecursiveSharedMutex::~RecursiveSharedMutex() = default;

bool RecursiveSharedMutex::Acquire(bool exclusive, bool blocking) {
    if (Counts* held = m_lock_count.get()) {
        ++(exclusive ? held->m_write_count : held->m_read_count);
        return true;
    }
    if (exclusive) {
        if (!blocking) {
            if (!m_mutex.try_lock()) return false;
        } else {
            m_mutex.lock();
        }
    } else {
        if (!blocking) {
            if (!m_mutex.try_lock_shared()) return false;
        } else {
            m_mutex.lock_shared();
        }
    }
    Counts& counts = m_lock_count.GetOrCreate();
    counts.m_exclusive = exclusive;
    ++(exclusive ? counts.m_write_count : counts.m_read_count);
    return true;
}

void RecursiveSharedMutex::ReleaseIfIdle(Counts& counts) {
    if (counts.m_read_count != 0 || counts.m_write_count != 0) return;
    const bool exclusive = counts.m_exclusive;
    m_lock_count.Release();
    if (exclusive)
        m_mutex.unlock();
    else
        m_mutex.unlock_shared();
}

void RecursiveSharedMutex::lock() { Acquire(true, true); }
bool RecursiveSharedMutex::try_lock() { return Acquire(true, false); }
void RecursiveSharedMutex::lock_shared() { Acquire(false, true); }
bool RecursiveSharedMutex::try_lock_shared() { return Acquire(false, false); }

void RecursiveSharedMutex::unlock() {
    LUM_CHECK(m_lock_count.get() && m_lock_count->m_write_count, "Unlock without a write lock");
    --m_lock_count->m_write_count;
    ReleaseIfIdle(*m_lock_count.get());
}

void RecursiveSharedMutex::unlock_shared() {
    LUM_CHECK(m_lock_count.get() && m_lock_count->m_read_count, "Unlock without a read lock");
    --m_lock_count->m_read_count;
    ReleaseIfIdle(*m_lock_count.get());
}

UInt32 RecursiveSharedMutex::GetReadCount() const {
    const Counts* c = m_lock_count.get();
    return c ? c->m_read_count : 0;
}

UInt32 RecursiveSharedMutex::GetWriteCount() const {
    const Counts* c = m_lock_count.get();
    return c ? c->m_write_count : 0;
}

}  // namespace lum::Common
