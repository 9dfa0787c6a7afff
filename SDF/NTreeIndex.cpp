#include "SDF/NTreeIndex.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Common/Exception.h"
#include "SDF/DocImpl.h"
#include "SDF/NTree.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

namespace lum::SDF {

namespace {

// Elements. Below this a leaf is scanned: the scan costs less than building an index.
constexpr UInt64 kIndexedLeafSize = 64;

struct LeafIndex {
    UInt64 size = 0;
    // The first even position whose key isn't a number (or doesn't load); size when none.
    UInt64 first_bad = 0;
    // (key, first position) of the keys before first_bad, sorted by key.
    std::vector<std::pair<double, UInt64>> keys;
};

std::shared_ptr<const LeafIndex> BuildIndex(Obj* leaf, UInt64 size) {
    auto index = std::make_shared<LeafIndex>();
    index->size = size;
    index->first_bad = size;
    for (UInt64 i = 0; i + 1 < size; i += 2) {
        Obj* key = leaf->GetAt(UInt32(i));
        bool number = false;
        try {
            number = key->IsNumber();
        } catch (const Common::Exception&) {
        }
        if (!number) {
            index->first_bad = i;
            break;
        }
        index->keys.emplace_back(key->GetNumber(), i);
    }
    // Stable: of equal keys the one nearest the front stays first, and the rest go.
    std::stable_sort(index->keys.begin(), index->keys.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    index->keys.erase(std::unique(index->keys.begin(), index->keys.end(),
                                  [](const auto& a, const auto& b) { return a.first == b.first; }),
                      index->keys.end());
    index->keys.shrink_to_fit();
    return index;
}

// The indexes of one document's leaves, by leaf. Objects don't change while a document is
// read; a leaf whose size changed all the same is indexed again.
class LeafIndexTable final : public DocAttachment {
public:
    static LeafIndexTable* Of(Obj* leaf) {
        SDFDoc* doc = leaf->GetDoc();
        DocImpl* impl = doc ? doc->GetImpl() : nullptr;
        if (!impl) return nullptr;
        return static_cast<LeafIndexTable*>(impl->GetAttachment(
            DocImpl::e_number_tree_index, [] { return new LeafIndexTable(); }));
    }

    std::shared_ptr<const LeafIndex> Get(Obj* leaf, UInt64 size) {
        const Obj* id = leaf->GetDirect();
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            auto it = m_indexes.find(id);
            if (it != m_indexes.end() && it->second->size == size) return it->second;
        }
        // Built outside the lock: it loads objects, and two threads may build it alike.
        std::shared_ptr<const LeafIndex> made = BuildIndex(leaf, size);
        std::lock_guard<std::mutex> lock(m_mutex);
        m_indexes[id] = made;
        return made;
    }

private:
    std::mutex m_mutex;
    std::unordered_map<const Obj*, std::shared_ptr<const LeafIndex>> m_indexes;
};

}  // namespace

Int64 ScanLeaf(Obj* leaf, UInt64 size, Obj* key, UInt64 from) {
    for (UInt64 i = from; i + 1 < size; i += 2)
        if (NTreeNode::Compare(key, leaf->GetAt(UInt32(i))) == 0) return Int64(i);
    return -1;
}

Int64 FindKeyInLeaf(Obj* leaf, UInt64 size, Obj* key) {
    if (size < kIndexedLeafSize || !key->IsNumber() || !leaf->IsArray())
        return ScanLeaf(leaf, size, key, 0);
    LeafIndexTable* table = LeafIndexTable::Of(leaf);
    if (!table) return ScanLeaf(leaf, size, key, 0);
    const std::shared_ptr<const LeafIndex> index = table->Get(leaf, size);
    const double k = key->GetNumber();
    auto it = std::lower_bound(index->keys.begin(), index->keys.end(), k,
                               [](const auto& entry, double v) { return entry.first < v; });
    if (it != index->keys.end() && it->first == k) return Int64(it->second);
    // No key before the first that isn't a number equals this one: the scan goes on from
    // there, and fails on that key as it would have from the front.
    return ScanLeaf(leaf, size, key, index->first_bad);
}

}  // namespace lum::SDF
