#include "PDF/ElementReader.h"

#include "PDF/ElementReaderImpl.h"
#include "PDF/ShadowElement.h"

namespace lum::PDF {

ElementReader::ElementReader()
    : mp_impl(std::make_unique<ElementReaderImpl>()), mp_shadow(std::make_unique<ShadowElement>()) {}

ElementReader::~ElementReader() = default;

Element* ElementReader::Shadowed(Element* real) {
    if (!m_shadow || !real) return real;
    mp_shadow->Attach(real);
    return mp_shadow.get();
}

Element* ElementReader::Next() { return Shadowed(mp_impl->Next()); }
Element* ElementReader::Current() { return Shadowed(mp_impl->Current()); }
void ElementReader::FormBegin() { mp_impl->FormBegin(); }
void ElementReader::SoftMaskBegin() { mp_impl->SoftMaskBegin(); }
void ElementReader::PatternBegin(bool fill_pattern, bool reset_ctm) {
    mp_impl->PatternBegin(fill_pattern, reset_ctm);
}
void ElementReader::Type3FontBegin(const CharData& char_data) { mp_impl->Type3FontBegin(char_data); }
void ElementReader::GroupBegin() { mp_impl->GroupBegin(); }
bool ElementReader::End() { return mp_impl->End(); }
bool ElementReader::IsFormEmpty() { return mp_impl->IsFormEmpty(); }
SDF::Obj* ElementReader::GetCachedImage() { return mp_impl->GetCachedImage(); }
SDF::Obj* ElementReader::GetCachedChildMask() { return mp_impl->GetCachedChildMask(); }
Common::Matrix2D ElementReader::GetPatternMatrix() { return mp_impl->GetPatternMatrix(); }
void ElementReader::Begin(SDF::Obj* content_stream, SDF::Obj* resource_dict, void* oc_context,
                          bool no_matrix) {
    mp_impl->Begin(content_stream, resource_dict, oc_context, no_matrix);
}
void ElementReader::Begin(const Page& page, void* oc_context) { mp_impl->Begin(page, oc_context); }
GStateChangeIterator ElementReader::ChangesBegin() { return mp_impl->ChangesBegin(); }
GStateChangeIterator ElementReader::ChangesEnd() { return mp_impl->ChangesEnd(); }
bool ElementReader::IsChanged(GState::GStateAttribute attr) { return mp_impl->IsChanged(attr); }
void ElementReader::ClearChangeList() { mp_impl->ClearChangeList(); }
UInt64 ElementReader::GetTextOperatorCount() const { return mp_impl->GetTextOperatorCount(); }
int ElementReader::GetLevelCount() const { return mp_impl->GetLevelCount(); }

}  // namespace lum::PDF
