#pragma once
// A position in a name or number tree: Kids for inner nodes, Limits for a node's key range,
// and a flat array of key and value pairs at the leaves (Names or Nums). The lookup doesn't
// trust the tree: it survives cycles and nodes reached twice, tests Limits only where they are
// present, and searches every leaf from the front, so unsorted leaves are found as well.
#include <unordered_set>
#include <vector>

#include "Common/Types.h"
#include "SDF/NameTable.h"

namespace lum::SDF {

class Obj;

class NTreeNode {
public:
    // The nodes a search has entered (by their direct object), so that a cycle in Kids, or a
    // node that two parents share, is entered once.
    using VisitedSet = std::unordered_set<const Obj*>;

    // The end position of a name tree.
    NTreeNode();
    // The entry of `key` in the number tree whose root node is `root`; the end position when
    // the key isn't found. The failures of the walk (an odd leaf, a Limits or key of another
    // type, an object that can't be loaded) reach the caller.
    NTreeNode(Obj* root, Int32 key);

    // Searches the tree below `node` for `key` (or, with a null key, for its first entry) and
    // answers the value, or null when there is none or it is null. The path to the entry is
    // appended to this position.
    Obj* FindImpl(VisitedSet& visited, Obj* node, Obj* key);

    // The value at this position.
    Obj* Value() const;

    bool IsEnd() const { return m_arr.empty(); }
    bool operator==(const NTreeNode& other) const;

    // Key order: below 0, 0 or above 0. Numbers by value, without tolerance; other keys as
    // strings of unsigned bytes, a prefix before the longer string. Keys of different types
    // fail with the object's illegal-operation failure.
    static int Compare(Obj* a, Obj* b);

    // The path, one element per level (for tests and tools).
    const std::vector<Int32>& Positions() const { return m_pos; }
    const std::vector<Obj*>& Arrays() const { return m_arr; }
    const char* KeyWord() const { return m_key_word; }

private:
    enum class Step { e_found, e_not_found, e_descend, e_odd_leaf };

    // Enters one node: answers the value found in it (a leaf), that it has nothing, that it
    // is an inner node (its Kids in `kids`), or that its leaf array has an odd size.
    Step Enter(VisitedSet& visited, Obj* node, Obj* key, Obj*& value, Obj*& kids);
    void Truncate(size_t levels);
    void Push(Int32 pos, Obj* arr, bool leaf);

    std::vector<Int32> m_pos;
    std::vector<Obj*> m_arr;
    std::vector<bool> m_names;
    const char* m_key_word;
    StaticName m_leaf_key;  // the key word, as a name that costs no lookup
};

}  // namespace lum::SDF
