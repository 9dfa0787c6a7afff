#pragma once
// The document's table of objects: one Indirect per object number, owned by the table.
//
// Readers on any thread look up slots of the main vector without a lock. The main vector is
// built single-threaded while the document opens (parse or rebuild); after that only the
// pending part grows (objects the program makes, such as the default font), under the table's
// mutex. Every structural change first moves the pending slots to the end of main, so a number
// always lives in exactly one of the two.
#include <mutex>
#include <vector>

#include "Common/Types.h"

namespace lum::SDF {

class Indirect;

class XRefTable {
public:
    XRefTable() = default;
    XRefTable(const XRefTable&) = delete;
    XRefTable& operator=(const XRefTable&) = delete;
    ~XRefTable();

    // The number of slots of the main vector: object numbers are compared with this.
    size_t size() const { return m_main.size(); }
    bool empty() const { return m_main.empty(); }

    // Slot i: main without a lock, pending under the mutex; null for an empty slot or a number
    // beyond both parts.
    Indirect* operator[](size_t i) const {
        if (i < m_main.size()) return m_main[i];
        return GetPending(i);
    }

    // Stores `entry` (owned from now on) in slot i, which must be below size(). A previous
    // entry in the slot is destroyed with its target.
    void Set(size_t i, Indirect* entry);

    // Grows main to n slots, filling with empty ones; never shrinks.
    void Grow(size_t n);
    void Reserve(size_t n);
    // Appends one slot to main.
    void PushBack(Indirect* entry);

    // Destroys every target first and then every entry (targets may hold pointers to other
    // entries), leaving an empty table.
    void Clear();

    // Appends `entry` (owned from now on) behind main and pending, under the mutex, and gives
    // it the number of its slot, which it answers.
    UInt32 AppendPending(Indirect* entry);

    // Guards the pending part.
    std::mutex& GetMutex() const { return m_mutex; }

private:
    Indirect* GetPending(size_t i) const;
    // Moves pending slots to the end of main; called before every structural change.
    void MergePending();

    std::vector<Indirect*> m_main;
    std::vector<Indirect*> m_pending;
    mutable std::mutex m_mutex;
};

}  // namespace lum::SDF
