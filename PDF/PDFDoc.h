#pragma once
// The document as the tool sees it: an opened (and if need be repaired) file, its security
// state, its catalog, a page count and a way to find page n through damaged page trees.
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "Common/Types.h"
#include "PDF/PageIterator.h"
#include "SDF/SDFDoc.h"

namespace lum::Filters { class Filter; }

namespace lum::PDF {

class PDFDoc : public SDF::SDFLinarDoc {
public:
    // Maps the file at `path` (UTF-8). Raises what the file layer and the store raise.
    explicit PDFDoc(const std::string& path);
    // Opens a document on `input`, owned from now on.
    explicit PDFDoc(std::unique_ptr<Filters::Filter> input);
    ~PDFDoc() override;

    // When the catalog asks for form-field appearances to be brought up to date, clears that
    // request: appearances are not regenerated, the existing ones stay. Never raises.
    void RefreshFormAppearances();

    // The root's Count, on trust (1 when it has none), kept within the page count limit.
    // Raises when the catalog has no Pages.
    Int32 GetPageCount();
    // An iterator on page `page_number`, or the end.
    PageIterator GetPageIterator(Int32 page_number = 1);
    PageIterator GetPageIteratorEnd();

    // The Pages node of the catalog; raises when there is none.
    SDF::Obj* GetPagesRoot();

    // A page of US Letter size with no content, one per document, that stands in for kids of
    // the page tree that can't be read. Not reachable from the file.
    SDF::Obj* GetBlankPage();

    // The number under which `page` was last found by a lookup or an iterator step, or 0.
    // A page shared by several places of the tree (the blank page among them) answers the
    // place found last, which is the one a caller that finds a page and then reads it means.
    Int32 GetFoundPageNumber(const SDF::Obj* page);
    void NoteFoundPage(const SDF::Obj* page, Int32 number);

private:
    // Gives a trailer that lost its Root a catalog found by scanning the objects.
    void EnsureRoot();

    std::mutex m_walk_lock;  // guards m_walk_memo and m_found_numbers
    PageWalkMemo m_walk_memo;
    std::unordered_map<const SDF::Obj*, Int32> m_found_numbers;
};

}  // namespace lum::PDF
