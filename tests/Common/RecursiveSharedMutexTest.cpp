#include "Common/RecursiveSharedMutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <utility>

#include "Common/Exception.h"

using lum::Common::Exception;
using lum::Common::RecursiveSharedMutex;

namespace {

// Runs `f` on another thread and answers its result.
template <class F>
auto OnOtherThread(F f) {
    decltype(f()) result{};
    std::thread t([&] { result = f(); });
    t.join();
    return result;
}

// Whether another thread could take the lock exclusively / shared right now (it lets go at once).
bool OtherThreadCanLock(RecursiveSharedMutex& m) {
    return OnOtherThread([&] {
        const bool ok = m.try_lock();
        if (ok) m.unlock();
        return ok;
    });
}
bool OtherThreadCanLockShared(RecursiveSharedMutex& m) {
    return OnOtherThread([&] {
        const bool ok = m.try_lock_shared();
        if (ok) m.unlock_shared();
        return ok;
    });
}

TEST(RecursiveSharedMutex, NestedHoldsOfBothFormsKeepTheLockUntilTheLastRelease) {
    RecursiveSharedMutex m;
    m.lock();
    m.lock_shared();  // a reader inside a writer only counts
    m.lock();
    EXPECT_EQ(m.GetWriteCount(), 2u);
    EXPECT_EQ(m.GetReadCount(), 1u);
    EXPECT_FALSE(OtherThreadCanLockShared(m));

    m.unlock();
    m.unlock_shared();
    EXPECT_FALSE(OtherThreadCanLock(m));
    m.unlock();
    EXPECT_EQ(m.GetWriteCount(), 0u);
    EXPECT_TRUE(OtherThreadCanLock(m));
}

TEST(RecursiveSharedMutex, ReadersShareAndBlockWriters) {
    RecursiveSharedMutex m;
    m.lock_shared();
    m.lock_shared();
    EXPECT_TRUE(OtherThreadCanLockShared(m));
    EXPECT_FALSE(OtherThreadCanLock(m));
    // A write request by a thread that already reads only raises its count.
    EXPECT_TRUE(m.try_lock());
    m.unlock();
    m.unlock_shared();
    m.unlock_shared();
    EXPECT_TRUE(OtherThreadCanLock(m));
}

TEST(RecursiveSharedMutex, UnlockWithoutMatchingHoldFailsAndChangesNothing) {
    using Op = void (*)(RecursiveSharedMutex&);
    const Op none = [](RecursiveSharedMutex&) {}, lock = [](RecursiveSharedMutex& m) { m.lock(); },
             lock_shared = [](RecursiveSharedMutex& m) { m.lock_shared(); },
             unlock = [](RecursiveSharedMutex& m) { m.unlock(); },
             unlock_shared = [](RecursiveSharedMutex& m) { m.unlock_shared(); };
    const std::pair<Op, Op> cases[] = {{none, unlock}, {lock_shared, unlock}, {none, unlock_shared}, {lock, unlock_shared}};
    for (const auto& [prepare, release] : cases) {
        RecursiveSharedMutex m;
        prepare(m);
        const unsigned held = m.GetReadCount() + m.GetWriteCount();
        EXPECT_THROW(release(m), Exception);
        EXPECT_EQ(m.GetReadCount() + m.GetWriteCount(), held);
        if (m.GetReadCount()) m.unlock_shared();
        if (m.GetWriteCount()) m.unlock();
    }
    // Counts are per thread: another thread that holds nothing can't release ours.
    RecursiveSharedMutex m;
    m.lock_shared();
    EXPECT_TRUE(OnOtherThread([&] {
        try {
            m.unlock_shared();
            return false;
        } catch (const Exception&) {
            return true;
        }
    }));
    EXPECT_EQ(m.GetReadCount(), 1u);
    m.unlock_shared();
}

TEST(RecursiveSharedMutex, WritersExcludeEachOtherUnderContention) {
    RecursiveSharedMutex m;
    std::atomic<int> inside{0};
    std::atomic<bool> overlap{false};
    long total = 0;
    auto worker = [&] {
        for (int i = 0; i < 2000; ++i) {
            m.lock();
            m.lock_shared();
            if (inside.fetch_add(1) != 0) overlap = true;
            ++total;
            inside.fetch_sub(1);
            m.unlock_shared();
            m.unlock();
        }
    };
    std::thread a(worker), b(worker);
    a.join();
    b.join();
    EXPECT_FALSE(overlap.load());
    EXPECT_EQ(total, 4000);
}

}  // namespace
