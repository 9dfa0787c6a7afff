// The reference object: every question goes to the target, which is loaded at the first one
// under the document's object lock. A failed load leaves the target empty, so the next
// question tries again and fails the same way.
#include <mutex>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "Filters/Filter.h"
#include "SDF/DocImpl.h"
#include "SDF/Obj.h"

namespace lum::SDF {

Indirect::Indirect(DocImpl* doc, UInt32 obj_num, UInt16 gen, UInt64 offset, UInt8 field1)
    : mp_doc(doc), m_offset(offset), m_obj_num(obj_num), m_gen(gen), m_field1(field1) {}

Indirect::~Indirect() { DeleteDirect(mp_target); }

Obj* Indirect::Target() const {
    Obj* target;
    if (mp_doc) {
        std::lock_guard<std::recursive_mutex> lock(mp_doc->GetObjLock());
        if (!mp_target) mp_doc->LoadObj(const_cast<Indirect&>(*this));
        target = mp_target;
    } else {
        target = mp_target;
    }
    LUM_CHECK(target, "Document is not attached to a file");
    return target;
}

void Indirect::SetTarget(Obj* value) {
    std::unique_lock<std::recursive_mutex> lock;
    if (mp_doc) lock = std::unique_lock<std::recursive_mutex>(mp_doc->GetObjLock());
    if (value == mp_target) return;
    DeleteDirect(mp_target);
    mp_target = value;
    if (value) AssocIndirectVst(this).Walk(*value);
}

Obj* Indirect::ReleaseTarget() {
    std::unique_lock<std::recursive_mutex> lock;
    if (mp_doc) lock = std::unique_lock<std::recursive_mutex>(mp_doc->GetObjLock());
    Obj* target = mp_target;
    mp_target = nullptr;
    return target;
}

const Obj* Indirect::GetDirect(bool load) const {
    return const_cast<Indirect*>(this)->GetDirect(load);
}

Obj* Indirect::GetDirect(bool load) {
    if (!mp_doc) return mp_target;
    std::lock_guard<std::recursive_mutex> lock(mp_doc->GetObjLock());
    if (load && !mp_target) mp_doc->LoadObj(*this);
    return mp_target;
}

SDFDoc* Indirect::GetDoc() const { return mp_doc ? mp_doc->GetSDFDoc() : nullptr; }

void Indirect::Accept(ObjVisitor& visitor) { visitor.VisitIndirect(*this); }

void Indirect::SetModified(bool modified, Obj* cause) {
    m_modified = modified;
    if (modified && mp_doc) mp_doc->NotifyModified(cause ? cause : this);
}

// --- Forwarding ---

Obj::Type Indirect::GetType() const { return Target()->GetType(); }
bool Indirect::IsBool() const { return Target()->IsBool(); }
bool Indirect::GetBool() const { return Target()->GetBool(); }
void Indirect::SetBool(bool value) { Target()->SetBool(value); }
bool Indirect::IsNumber() const { return Target()->IsNumber(); }
double Indirect::GetNumber() const { return Target()->GetNumber(); }
void Indirect::SetNumber(double value) { Target()->SetNumber(value); }
bool Indirect::IsNull() const { return Target()->IsNull(); }
bool Indirect::IsString() const { return Target()->IsString(); }
const UInt8* Indirect::GetBuffer() const { return Target()->GetBuffer(); }
void Indirect::GetAsPDFText(UString& out) const { Target()->GetAsPDFText(out); }
void Indirect::SetString(const UString& value) { Target()->SetString(value); }
void Indirect::SetString(const UInt8* bytes, size_t size) { Target()->SetString(bytes, size); }
bool Indirect::IsName() const { return Target()->IsName(); }
const char* Indirect::GetName() const { return Target()->GetName(); }
void Indirect::SetName(const char* name) { Target()->SetName(name); }
bool Indirect::IsContainer() const { return Target()->IsContainer(); }
UInt64 Indirect::Size() const { return Target()->Size(); }
Obj::DictIterator Indirect::DictBegin() { return Target()->DictBegin(); }
Obj::DictConstIterator Indirect::DictBegin() const {
    return static_cast<const Obj*>(Target())->DictBegin();
}
Obj::DictIterator Indirect::DictEnd() { return Target()->DictEnd(); }
Obj::DictConstIterator Indirect::DictEnd() const {
    return static_cast<const Obj*>(Target())->DictEnd();
}
bool Indirect::IsDict() const { return Target()->IsDict(); }
Obj::DictIterator Indirect::Find(const Name& key) { return Target()->Find(key); }
Obj* Indirect::FindObj(const Name& key) { return Target()->FindObj(key); }
Obj::DictIterator Indirect::Get(const Name& key) { return Target()->Get(key); }
Obj::DictIterator Indirect::Put(const Name& key, Obj* value) { return Target()->Put(key, value); }
void Indirect::Erase(DictIterator pos) { Target()->Erase(pos); }
void Indirect::Erase(const Name& key) { Target()->Erase(key); }
void Indirect::Replace(UInt32 index, Obj* value) { Target()->Replace(index, value); }
void Indirect::Replace(DictIterator pos, Obj* value) { Target()->Replace(pos, value); }
Obj::DictIterator Indirect::Rename(DictIterator pos, const Name& new_key) {
    return Target()->Rename(pos, new_key);
}
Obj::DictIterator Indirect::Rename(const Name& old_key, const Name& new_key) {
    return Target()->Rename(old_key, new_key);
}
bool Indirect::IsArray() const { return Target()->IsArray(); }
Obj* Indirect::GetAt(UInt32 index) { return Target()->GetAt(index); }
void Indirect::Insert(UInt32 pos, Obj* value) { Target()->Insert(pos, value); }
void Indirect::PushBack(Obj* value) { Target()->PushBack(value); }
void Indirect::EraseAt(UInt32 index) { Target()->EraseAt(index); }
bool Indirect::IsStream() const { return Target()->IsStream(); }
bool Indirect::IsNewStream() const { return Target()->IsNewStream(); }
UInt64 Indirect::GetRawStreamLength() { return Target()->GetRawStreamLength(); }
std::unique_ptr<Filters::Filter> Indirect::GetRawStream(bool decrypt) {
    return Target()->GetRawStream(decrypt);
}
std::unique_ptr<Filters::Filter> Indirect::GetDecodedStream(bool leave_last) {
    return Target()->GetDecodedStream(leave_last);
}
std::unique_ptr<Filters::Filter> Indirect::GetDecodedStream() {
    return Target()->GetDecodedStream();
}
void Indirect::SetStreamData(const UInt8* bytes, size_t size,
                             std::unique_ptr<Filters::Filter> filter_chain) {
    Target()->SetStreamData(bytes, size, std::move(filter_chain));
}

}  // namespace lum::SDF
