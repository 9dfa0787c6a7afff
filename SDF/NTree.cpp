#include "SDF/NTree.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <unordered_map>

#include "Common/Exception.h"
#include "SDF/NTreeIndex.h"
#include "SDF/Obj.h"

namespace lum::SDF {

namespace {

// Positions are 32-bit; an array can't be larger than the parser's operand stack, far below.
Int32 ToPos(UInt64 index) {
    return index > UInt64(std::numeric_limits<Int32>::max()) ? std::numeric_limits<Int32>::max()
                                                             : Int32(index);
}

}  // namespace

NTreeNode::NTreeNode() : m_key_word("Names"), m_leaf_key(e_Names) {}

NTreeNode::NTreeNode(Obj* root, Int32 key) : m_key_word("Nums"), m_leaf_key(e_Nums) {
    Number number(key);
    VisitedSet visited;
    if (!FindImpl(visited, root, &number)) Truncate(0);
}

int NTreeNode::Compare(Obj* a, Obj* b) {
    if (a->IsNumber()) {
        const double x = a->GetNumber();
        const double y = b->GetNumber();
        return x < y ? -1 : (y < x ? 1 : 0);
    }
    // An empty string has no buffer.
    const UInt8* pa = a->GetBuffer();
    const UInt8* pb = b->GetBuffer();
    const UInt64 na = pa ? a->Size() : 0;
    const UInt64 nb = pb ? b->Size() : 0;
    if (const UInt64 common = std::min(na, nb)) {
        const int c = std::memcmp(pa, pb, size_t(common));
        if (c != 0) return c < 0 ? -1 : 1;
    }
    return na < nb ? -1 : (nb < na ? 1 : 0);
}

void NTreeNode::Truncate(size_t levels) {
    m_pos.resize(std::min(levels, m_pos.size()));
    m_arr.resize(m_pos.size());
    m_names.resize(m_pos.size());
}

void NTreeNode::Push(Int32 pos, Obj* arr, bool leaf) {
    m_pos.push_back(pos);
    m_arr.push_back(arr);
    m_names.push_back(leaf);
}

NTreeNode::Step NTreeNode::Enter(VisitedSet& visited, Obj* node, Obj* key, Obj*& value,
                                 Obj*& kids) {
    if (!node || !visited.insert(node->GetDirect()).second) return Step::e_not_found;
    if (key) {
        const Obj::DictIterator limits = node->Find(Name(e_Limits));
        if (limits != node->DictEnd() &&
            (Compare(key, limits->second->GetAt(0)) < 0 ||
             Compare(limits->second->GetAt(1), key) < 0))
            return Step::e_not_found;
    }
    const Obj::DictIterator kids_entry = node->Find(Name(e_Kids));
    if (kids_entry != node->DictEnd()) {
        kids = kids_entry->second;
        return Step::e_descend;
    }
    Obj* leaf = node->FindObj(Name(m_leaf_key));
    if (!leaf) return Step::e_not_found;
    const UInt64 size = leaf->Size();
    if (size % 2 != 0) return Step::e_odd_leaf;
    Int64 pos = 0;
    if (key) {
        pos = FindKeyInLeaf(leaf, size, key);
        if (pos < 0) return Step::e_not_found;
    } else if (size < 2) {
        return Step::e_not_found;
    }
    Push(ToPos(UInt64(pos)), leaf, true);
    value = leaf->GetAt(UInt32(pos + 1));
    if (!value || value->IsNull()) {
        value = nullptr;
        return Step::e_not_found;
    }
    return Step::e_found;
}

Obj* NTreeNode::FindImpl(VisitedSet& visited, Obj* node, Obj* key) {
    // The walk keeps its own stack rather than recursing, so a chain of nodes thousands deep
    // costs heap, not call stack. Each frame is one Kids array being walked; the path holds
    // the kid being searched, and loses it again when that kid answers nothing.
    struct Frame {
        Obj* kids;
        UInt64 size;
        UInt64 next;
        size_t path_levels;
    };
    // The kids below this index of an array have all been entered already by this search, so
    // entering them again answers nothing at once. A Kids array shared by many nodes is thus
    // walked once in all, not once per node, and the order of the search stays the same.
    std::unordered_map<const Obj*, UInt64> entered;

    Obj* value = nullptr;
    Obj* kids = nullptr;
    // The failure names FindImpl, as the recursive form of this walk would.
    auto enter = [&](Obj* n) -> Step {
        const Step step = Enter(visited, n, key, value, kids);
        if (step == Step::e_odd_leaf)
            throw Common::Exception(
                "(sz%2)== 0", __LINE__, __FILE__, "lum::SDF::NTreeNode::FindImpl",
                "The size of Names array in the NameTree is not an even number");
        return step;
    };

    std::vector<Frame> frames;
    auto descend = [&] {
        frames.push_back(Frame{kids, kids->Size(), 0, m_pos.size()});
    };

    Step step = enter(node);
    if (step == Step::e_found) return value;
    if (step == Step::e_not_found) return nullptr;
    descend();
    while (!frames.empty()) {
        Frame& frame = frames.back();
        Truncate(frame.path_levels);
        UInt64& done = entered[frame.kids->GetDirect()];
        frame.next = std::max(frame.next, done);
        if (frame.next >= frame.size) {
            frames.pop_back();
            continue;
        }
        const UInt64 index = frame.next++;
        done = std::max(done, frame.next);
        Push(ToPos(index), frame.kids, false);
        step = enter(frame.kids->GetAt(UInt32(index)));
        if (step == Step::e_found) return value;
        if (step == Step::e_descend) descend();
    }
    return nullptr;
}

Obj* NTreeNode::Value() const {
    if (!(!m_pos.empty() && !m_names.empty() && !m_arr.empty() && m_pos.size() == m_names.size() &&
          m_pos.size() == m_arr.size()))
        throw Common::Exception(
            "!m_pos.empty() && !m_names.empty() && !m_arr.empty() && m_pos.size() == "
            "m_names.size() && m_pos.size() == m_arr.size()",
            __LINE__, __FILE__, LUM_FUNCTION, "Dereferencing NULL NameTreeIterator");
    if (!m_names.back())
        throw Common::Exception("m_names.back()", __LINE__, __FILE__, LUM_FUNCTION,
                                "NameTreeIterator is corrupt");
    Obj* names_arr = m_arr.back();
    if (!(Int64(m_pos.back()) + 1 < Int64(names_arr->Size())))
        throw Common::Exception("m_pos.back()+1<int(names_arr->Size())", __LINE__, __FILE__,
                                LUM_FUNCTION, "NameTreeIterator is corrupt");
    return names_arr->GetAt(UInt32(m_pos.back() + 1));
}

bool NTreeNode::operator==(const NTreeNode& other) const {
    if (m_arr.empty() && other.m_arr.empty()) return true;
    return m_pos == other.m_pos && m_arr == other.m_arr;
}

}  // namespace lum::SDF
