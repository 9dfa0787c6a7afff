#include "PDF/PageIterator.h"

#include <cmath>
#include <cstring>
#include <unordered_set>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "PDF/PDFDoc.h"
#include "SDF/Obj.h"

namespace lum::PDF {

using SDF::Obj;

namespace {

// Trees this large and flat are indexed directly when their Count agrees with their size.
constexpr UInt64 kFlatTreeThreshold = 1000;

// A lookup whose value can't be loaded counts as absent: one damaged entry must not end the
// walk through the whole tree.
Obj* SafeFind(Obj* dict, SDF::StaticName key) {
    try {
        return dict->FindObj(key);
    } catch (const Common::Exception&) {
        return nullptr;
    }
}

// Kids of a node when it is an array, else null.
Obj* KidsArray(Obj* node) {
    Obj* kids = SafeFind(node, SDF::e_Kids);
    try {
        return kids && kids->IsArray() ? kids : nullptr;
    } catch (const Common::Exception&) {
        return nullptr;
    }
}

// The truncated Count of an inner node; false when there is no usable one.
bool NodeCount(Obj* node, double& count) {
    Obj* c = SafeFind(node, SDF::e_Count);
    try {
        if (!c || !c->IsNumber()) return false;
        count = std::trunc(c->GetNumber());
    } catch (const Common::Exception&) {
        return false;
    }
    return std::isfinite(count);
}

bool IsNamed(Obj* obj, const char* text) {
    try {
        return obj && obj->IsName() && std::strcmp(obj->GetName(), text) == 0;
    } catch (const Common::Exception&) {
        return false;
    }
}

}  // namespace

PageIterator::PageIterator() = default;

PageIterator::PageIterator(PDFDoc* doc, Obj* root, Int32 page_number, PageWalkMemo* memo)
    : mp_doc(doc), mp_root(root) {
    m_stack.reserve(4);
    Obj* page = Find(root, page_number, memo);
    if (!page) {
        SetEnd();
    } else {
        m_page_number = page_number;
        m_page = Page(page);
    }
}

void PageIterator::SetEnd() {
    m_page_number = 0;
    m_page = Page(mp_root);
}

bool PageIterator::IsPageNode(Obj* dict) {
    if (IsNamed(SafeFind(dict, SDF::e_Type), "Page")) return true;
    if (SafeFind(dict, SDF::e_Kids)) return false;
    return SafeFind(dict, SDF::e_Contents) || SafeFind(dict, SDF::e_Resources);
}

Obj* PageIterator::KidAt(Obj* kids, UInt32 i, Obj* parent) {
    try {
        Obj* kid = kids->GetAt(i);
        if (kid && !(kid->IsIndirect() && kid->IsFree()) && kid->IsDict()) return kid;
        return mp_doc->GetBlankPage();
    } catch (const Common::Exception&) {
    }
    // The kid can't be read: put the blank page in its place, so that the numbering behind it
    // stays intact and the next walk doesn't fail on it again.
    Obj* blank = mp_doc->GetBlankPage();
    try {
        // Only a node of the table can be referred to; a direct one would be taken over.
        if (parent->IsIndirect()) blank->Put(SDF::e_Parent, parent);
        kids->Replace(i, blank);
    } catch (const Common::Exception&) {
    }
    return blank;
}

bool PageIterator::OnPath(Obj* node) const {
    Obj* direct = node->GetDirect();
    for (const auto& entry : m_stack) {
        if (entry.second == node || entry.second->GetDirect() == direct) return true;
    }
    return false;
}

Obj* PageIterator::Find(Obj* root, Int32 p, PageWalkMemo* memo) {
    m_stack.clear();
    if (p == 0) return nullptr;
    Obj* kids = KidsArray(root);
    if (!kids) {
        // A document whose root node is really its one page; no page follows it.
        if (IsNamed(SafeFind(root, SDF::e_Type), "Page")) return p == 1 ? root : nullptr;
        LUM_FAIL("Page root is not valid.");
    }
    const UInt64 n = kids->Size();
    double root_count = 0;
    if (n > kFlatTreeThreshold && NodeCount(root, root_count) &&
        root_count == static_cast<double>(n)) {
        if (static_cast<UInt64>(p) > n || p < 0) return nullptr;
        Obj* kid = KidAt(kids, static_cast<UInt32>(p - 1), root);
        if (kid->IsDict() && IsPageNode(kid)) {
            m_stack.emplace_back(static_cast<UInt32>(p - 1), root);
            return kid;
        }
        // Not a leaf: the walk below decides, as for any tree.
    }

    // The walk's state: one frame per entered node, the last one being scanned.
    std::vector<PageWalkMemo::Frame> frames;
    double seen = 0;
    UInt64 i = 0;
    if (memo && memo->root == root && memo->page > 0 && p > memo->page) {
        // A walk for a later page than the last one makes the same decisions up to the first
        // level whose entered node ends before p, so it starts there. Pages asked for in
        // ascending order thus cost one pass over the tree in all, found or not, even where the
        // root's Count is wrong and a flat tree can't be indexed.
        const auto& last = memo->frames;
        const size_t last_level = last.size() - 1;
        size_t level = 0;
        while (level < last_level && p <= last[level].seen + last[level].count) ++level;
        // The entered node without kids that ended the last walk ends this one as well.
        if (memo->dead_end && level == last_level && p <= last[level].seen + last[level].count)
            return nullptr;
        frames.assign(last.begin(), last.begin() + static_cast<std::ptrdiff_t>(level) + 1);
        seen = last[level].seen + last[level].count;
        i = last[level].index + 1;
    } else {
        frames.push_back({root, kids, 0, 0, 0});
    }
    std::unordered_set<Obj*> on_path;
    for (const auto& f : frames) on_path.insert(f.node->GetDirect());

    // The walk only ever goes down: each step either moves to the next kid or enters a node
    // that is not on the path yet, and the path is capped, so it ends.
    Obj* found = nullptr;
    bool dead_end = false;
    for (;;) {
        PageWalkMemo::Frame& f = frames.back();
        if (i >= f.kids->Size()) {
            // The kids of the node ran out: a later page resumes here and runs out as well.
            f.index = i - 1;
            f.seen = seen;
            f.count = 0;
            break;
        }
        Obj* kid = KidAt(f.kids, static_cast<UInt32>(i), f.node);
        if (IsPageNode(kid)) {
            if (seen + 1 == p) {
                f.index = i;
                f.seen = seen;
                f.count = 1;
                found = kid;
                break;
            }
            seen += 1;
            ++i;
            continue;
        }
        double count = 0;
        Obj* sub_kids = KidsArray(kid);
        if (!sub_kids || !NodeCount(kid, count)) {  // counts for nothing
            ++i;
            continue;
        }
        // A node that is already on the path (a cycle in Kids), or one level too many, is
        // passed over as if the page lay beyond it: the pages it claims are not found.
        if (p > seen + count || on_path.count(kid->GetDirect()) ||
            frames.size() >= static_cast<size_t>(Limits::kMaxPageTreeDepth)) {
            seen += count;
            ++i;
            continue;
        }
        f.index = i;
        f.seen = seen;
        f.count = count;
        if (sub_kids->Size() == 0) {  // an entered node without kids ends the walk
            dead_end = true;
            break;
        }
        on_path.insert(kid->GetDirect());
        frames.push_back({kid, sub_kids, 0, 0, 0});
        i = 0;
    }
    if (found)
        for (const auto& f : frames) m_stack.emplace_back(static_cast<UInt32>(f.index), f.node);
    if (memo) {
        memo->root = root;
        memo->page = p;
        memo->dead_end = dead_end;
        memo->frames = std::move(frames);
    }
    return found;
}

PageIterator& PageIterator::operator++() {
    LUM_CHECK(m_page.mp_leaf_node != 0 && m_page_number>0, "Invalid increment operation");
    const Int32 page_count = mp_doc->GetPageCount();
    // Inner nodes entered during this step: a tree that repeats an empty subtree many times
    // over would otherwise cost a walk through every repetition.
    std::unordered_set<Obj*> entered;
    while (!m_stack.empty()) {
        auto& [index, node] = m_stack.back();
        Obj* kids = KidsArray(node);
        const UInt32 next = index + 1;  // the sentinel of a fresh level wraps to kid 0
        if (!kids || next >= kids->Size()) {
            m_stack.pop_back();  // this level is done: climb
            continue;
        }
        index = next;
        Obj* kid = KidAt(kids, index, node);
        if (IsPageNode(kid)) {
            if (m_page_number >= page_count) break;
            ++m_page_number;
            m_page = Page(kid);
            mp_doc->NoteFoundPage(kid, m_page_number);
            return *this;
        }
        Obj* sub_kids = KidsArray(kid);
        if (!sub_kids || sub_kids->Size() == 0 || OnPath(kid) ||
            m_stack.size() >= static_cast<size_t>(Limits::kMaxPageTreeDepth) ||
            !entered.insert(kid->GetDirect()).second) {
            continue;
        }
        // Descend: the pair's index is one before the first kid, which the next round takes.
        m_stack.emplace_back(static_cast<UInt32>(-1), kid);
    }
    m_stack.clear();
    SetEnd();
    return *this;
}

namespace {

// The pages a kid holds as the walk counts them: a page (or the blank page standing in for a
// kid that is no dictionary or can't be read) is one, an inner node its Count, anything else
// none.
double PagesOfKid(Obj* kid) {
    try {
        if (!kid || (kid->IsIndirect() && kid->IsFree()) || !kid->IsDict()) return 1;
        if (PageIterator::IsPageNode(kid)) return 1;
        double count = 0;
        return KidsArray(kid) && NodeCount(kid, count) ? count : 0;
    } catch (const Common::Exception&) {
        return 1;
    }
}

bool SameObj(Obj* a, Obj* b) { return a == b || a->GetDirect() == b->GetDirect(); }

}  // namespace

Int32 PageIterator::NumberByParents(Obj* page, Obj* root) {
    try {
        double before = 0;
        Obj* node = page;
        for (int depth = 0; depth < Limits::kMaxPageTreeDepth; ++depth) {
            if (SameObj(node, root)) {
                const double number = before + 1;
                return number <= static_cast<double>(Limits::kMaxPageCount) ? Int32(number) : 0;
            }
            Obj* parent = SafeFind(node, SDF::e_Parent);
            Obj* kids = parent && parent->IsDict() ? KidsArray(parent) : nullptr;
            if (!kids) return 0;
            const UInt64 n = kids->Size();
            UInt64 at = 0;
            double pages = 0;
            while (at < n && !SameObj(kids->GetAt(static_cast<UInt32>(at)), node))
                pages += PagesOfKid(kids->GetAt(static_cast<UInt32>(at++)));
            if (at == n) return 0;
            // A large flat root whose Count agrees with its size is indexed directly.
            double root_count = 0;
            if (SameObj(parent, root) && n > kFlatTreeThreshold && NodeCount(root, root_count) &&
                root_count == static_cast<double>(n) && IsPageNode(node))
                pages = static_cast<double>(at);
            before += pages;
            node = parent;
        }
    } catch (const Common::Exception&) {
    }
    return 0;
}

}  // namespace lum::PDF
