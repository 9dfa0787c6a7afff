#include "PDF/PDFDoc.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Common/NumberConversions.h"
#include "Filters/MappedFile.h"
#include "SDF/DocImpl.h"
#include "SDF/Obj.h"

namespace lum::PDF {

using SDF::Obj;

namespace {

bool IsNameEqual(Obj* obj, const char* text) {
    return obj && obj->IsName() && std::strcmp(obj->GetName(), text) == 0;
}

}  // namespace

PDFDoc::PDFDoc(const std::string& path)
    : SDF::SDFLinarDoc(std::make_unique<Filters::MappedFile>(path)) {
    EnsureRoot();
}

PDFDoc::PDFDoc(std::unique_ptr<Filters::Filter> input) : SDF::SDFLinarDoc(std::move(input)) {
    EnsureRoot();
}

PDFDoc::~PDFDoc() = default;

void PDFDoc::EnsureRoot() {
    Obj* trailer = GetTrailer();
    if (!trailer || !trailer->IsDict()) return;
    for (auto it = trailer->DictBegin(); it != trailer->DictEnd(); ++it) {
        if (std::strcmp(it->first->GetName(), "Root") == 0) return;
    }
    const size_t size = XRefSize();
    for (size_t num = 1; num < size; ++num) {
        try {
            SDF::Indirect* obj = GetObj(static_cast<UInt32>(num));
            if (!obj || obj->IsFree() || obj->IsNull() || !obj->IsDict()) continue;
            if (!IsNameEqual(obj->FindObj(SDF::e_Type), "Catalog")) continue;
            Obj* pages = obj->FindObj(SDF::e_Pages);
            if (!pages || !pages->IsDict()) continue;
            trailer->Put(SDF::e_Root, obj);
            return;
        } catch (const Common::Exception&) {
            // An object that can't be read is no candidate; the next one may be.
        }
    }
}

void PDFDoc::RefreshFormAppearances() {
    try {
        Obj* form = GetRoot()->FindObj(SDF::e_AcroForm);
        if (!form || !form->IsDict()) return;
        Obj* need = form->FindObj(SDF::e_NeedAppearances);
        if (!need || !need->IsBool() || !need->GetBool()) return;
        // Text comes from the page content, not from widget appearances, so the existing
        // appearances stay as they are and only the request is cleared.
        need->SetBool(false);
    } catch (const Common::Exception&) {
        // A damaged form has no bearing on the pages.
    }
}

Obj* PDFDoc::GetPagesRoot() { return GetRoot()->Get(SDF::e_Pages)->second; }

Int32 PDFDoc::GetPageCount() {
    Obj* pages = GetPagesRoot();
    Obj* count = pages->FindObj(SDF::e_Count);
    if (!count) return 1;  // a Count of another kind raises here
    const Int64 n = Common::TruncateSaturated(count->GetNumber());
    return static_cast<Int32>(std::clamp<Int64>(n, 0, Limits::kMaxPageCount));
}

PageIterator PDFDoc::GetPageIterator(Int32 page_number) {
    Obj* root = GetPagesRoot();
    std::lock_guard<std::mutex> lock(m_walk_lock);
    PageIterator it(this, root, page_number, &m_walk_memo);
    if (it.GetPageNumber() > 0) m_found_numbers[it->mp_leaf_node] = it.GetPageNumber();
    return it;
}

Int32 PDFDoc::GetFoundPageNumber(const Obj* page) {
    std::lock_guard<std::mutex> lock(m_walk_lock);
    const auto found = m_found_numbers.find(page);
    return found == m_found_numbers.end() ? 0 : found->second;
}

void PDFDoc::NoteFoundPage(const Obj* page, Int32 number) {
    std::lock_guard<std::mutex> lock(m_walk_lock);
    m_found_numbers[page] = number;
}

PageIterator PDFDoc::GetPageIteratorEnd() { return PageIterator(this, GetPagesRoot(), 0); }

Obj* PDFDoc::GetBlankPage() { return GetImpl()->GetBlankPage(); }

}  // namespace lum::PDF
