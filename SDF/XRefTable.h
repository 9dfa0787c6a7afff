#pragma once
// The document's table of objects: one Indirect per object number, owned by the table.
//
// Readers on any thread look up slots of the main vector without a lock. The main vector is
// built single-threaded while the document opens (parse or rebuild); after that only the
// pending part grows (objects the program makes, such as the default font), under the table's
// mutex, and the main vector is sealed. Every structural change first moves the pending slots to the end of main, so a number
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

    // --- Filling, while the document opens (the parsers of the file and the repair) ---
    // After Seal every one of these fails: the table the document opened with, or the one its
    // repair made, is what every object number refers to from then on.

    // Stores `entry` (owned from now on) in slot i, which must be below size(). A previous
    // entry in the slot is destroyed with its target.
    void Set(size_t i, Indirect* entry);

    // Grows main to n slots, filling with empty ones; never shrinks.
    void Grow(size_t n);
    void Reserve(size_t n);
    // Appends one slot to main.
    void PushBack(Indirect* entry);
    // Makes room for object number `obj_num` met by the rebuild or an object stream it unpacks:
    // numbers from 2^20 on fail with "Bad obj num", reported as raised by `caller`.
    void GrowToHold(UInt64 obj_num, const char* caller);

    // Destroys every target first and then every entry (targets may hold pointers to other
    // entries), leaving an empty table.
    void Clear();

    // Ends the filling.
    void Seal() { m_sealed = true; }
    bool IsSealed() const { return m_sealed; }

    // Appends `entry` (owned from now on) behind main and pending, under the mutex, and gives
    // it the number of its slot, which it answers.
    UInt32 AppendPending(Indirect* entry);

    // Guards the pending part.
    std::mutex& GetMutex() const { return m_mutex; }

private:
    void CheckOpen() const;
    void DestroyAll();
    Indirect* GetPending(size_t i) const;
    // Moves pending slots to the end of main; called before every structural change.
    void MergePending();

    std::vector<Indirect*> m_main;
    std::vector<Indirect*> m_pending;
    mutable std::mutex m_mutex;
    bool m_sealed = false;
};

}  // namespace lum::SDF
