#pragma once
// Finds pages in a page tree that is not trusted to be complete, consistent or well-typed.
#include <utility>
#include <vector>

#include "Common/Types.h"
#include "PDF/Page.h"

namespace lum::SDF { class Obj; }

namespace lum::PDF {

class PDFDoc;

// The path of the last walk in one tree, from which a lookup of a later page goes on instead of
// walking from the root again. Each frame holds the decision taken at its level: the kid
// entered (or the page found, or the end of the kids when the walk ran out).
struct PageWalkMemo {
    struct Frame {
        SDF::Obj* node;
        SDF::Obj* kids;
        UInt64 index;  // the kid entered, or the page found at the last level
        double seen;   // pages counted before that kid
        double count;  // the pages it holds by its Count (1 for the page)
    };
    SDF::Obj* root = nullptr;
    Int32 page = 0;  // the page of the last walk, found or not
    // The last walk entered a node without kids, which ends the walk of every page it claims.
    bool dead_end = false;
    std::vector<Frame> frames;
};

class PageIterator {
public:
    // The path from the root to the current page: (index of the kid in the parent's Kids,
    // the parent node), from the root down.
    using Stack = std::vector<std::pair<UInt32, SDF::Obj*>>;

    // The end iterator of no document.
    PageIterator();
    // Page `page_number` of the tree under `root`, or the end when there is no such page.
    // Raises "Page root is not valid." when `root` has no Kids and is no page itself. With a
    // memo, the lookup may start from the path of an earlier one and records its own.
    PageIterator(PDFDoc* doc, SDF::Obj* root, Int32 page_number, PageWalkMemo* memo = nullptr);

    Int32 GetPageNumber() const { return m_page_number; }
    Page& Current() { return m_page; }
    Page& operator*() { return m_page; }
    Page* operator->() { return &m_page; }

    // The next page without a fresh walk from the root; the end after the last one.
    PageIterator& operator++();

    bool operator==(const PageIterator& o) const {
        return m_page_number == o.m_page_number && m_page == o.m_page;
    }
    bool operator!=(const PageIterator& o) const { return !(*this == o); }

    // The leaf test: a dictionary typed Page, or an untyped one without Kids that has
    // Contents or Resources. Lookups that fail count as absent.
    static bool IsPageNode(SDF::Obj* dict);

    // The number under which a lookup from `root` finds `page`, told by climbing its Parent
    // chain and counting the pages before it at each level as the walk counts them; 0 when the
    // chain doesn't lead to `root` through Kids that hold it, or the number is out of range.
    static Int32 NumberByParents(SDF::Obj* page, SDF::Obj* root);

private:
    // Walks from `root` to page `p`, filling the stack; null when the tree has no page p.
    SDF::Obj* Find(SDF::Obj* root, Int32 p, PageWalkMemo* memo);
    // Kid `i` of `kids`, or the document's blank page for an element that is no dictionary or
    // can't be read (the latter is also written into the tree in its place).
    SDF::Obj* KidAt(SDF::Obj* kids, UInt32 i, SDF::Obj* parent);
    bool OnPath(SDF::Obj* node) const;
    void SetEnd();

    Stack m_stack;
    PDFDoc* mp_doc = nullptr;
    SDF::Obj* mp_root = nullptr;
    Int32 m_page_number = 0;
    Page m_page;
};

}  // namespace lum::PDF
