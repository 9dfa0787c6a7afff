#pragma once
// A reader-writer lock that a thread may take again while it holds it, in either form.
//
// The underlying shared mutex is taken only when a thread goes from holding nothing to holding
// something, and released only when the thread's read and write counts both drop to zero. A
// thread that already holds the lock shared and then asks for it exclusively does not wait for
// the other readers: it only raises its count. Callers that need true exclusion must therefore
// take the write lock first; nested code may then take either form freely.
#include <shared_mutex>

#include "Common/Types.h"

namespace lum::Common {

class RecursiveSharedMutex {
public:
    RecursiveSharedMutex() = default;
    RecursiveSharedMutex(const RecursiveSharedMutex&) = delete;
    RecursiveSharedMutex& operator=(const RecursiveSharedMutex&) = delete;
    ~RecursiveSharedMutex();

    void lock();
    bool try_lock();
    void unlock();

    void lock_shared();
    bool try_lock_shared();
    void unlock_shared();

    // What the calling thread holds of this lock (for diagnosis and tests).
    UInt32 GetReadCount() const;
    UInt32 GetWriteCount() const;

private:
    struct Counts {
        UInt32 m_read_count = 0;
        UInt32 m_write_count = 0;
        bool m_exclusive = false;  // the form in which this thread took the underlying mutex
    };

    // The calling thread's counts for one lock object. get() answers null while the thread
    // holds nothing, so an unlock without a matching lock is detected, not miscounted.
    class PerThreadCounts {
    public:
        Counts* get() const;
        Counts* operator->() const { return get(); }
        Counts& GetOrCreate();
        void Release();  // drops the entry once both counts are zero
    };

    // Raises the calling thread's count, taking the underlying mutex first when the thread
    // holds nothing yet; answers false when a non-blocking attempt could not get it.
    bool Acquire(bool exclusive, bool blocking);
    // Releases the underlying mutex once the thread's counts are both zero.
    void ReleaseIfIdle(Counts& counts);

    std::shared_mutex m_mutex;
    PerThreadCounts m_lock_count;
};

}  // namespace lum::Common
