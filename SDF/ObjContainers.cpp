// Dictionaries, arrays and the dictionary half of streams. Containers own their direct values;
// references belong to the document's table and are never destroyed here.
#include <cstring>

#include "Common/Exception.h"
#include "SDF/Obj.h"

// The checks before a container takes a value in. A macro, so that a failure names the
// operation that was called.
#define LUM_CHECK_NEW_VALUE(obj, null_message, doc_message)                 \
    do {                                                                    \
        LUM_CHECK(obj, null_message);                                       \
        if ((obj)->IsIndirect()) {                                          \
            if (SDFDoc* this_doc = GetDoc())                                \
                LUM_CHECK(this_doc == obj->GetDoc(), doc_message);          \
        } else if (Indirect* owner = GetOwner()) {                          \
            AssocIndirectVst(owner).Walk(*(obj));                           \
        }                                                                   \
    } while (0)

namespace lum::SDF {

// --- Dict ---

Dict::~Dict() {
    for (auto& [key, value] : m_map) {
        delete key;
        DeleteDirect(value);
    }
}

void Dict::Accept(ObjVisitor& visitor) { visitor.VisitDict(*this); }

Obj* Dict::Clone() const {
    auto* copy = new Dict();
    for (const auto& [key, value] : m_map)
        copy->m_map.emplace_hint(copy->m_map.end(), new Name(key->GetName()),
                                 value ? value->Clone() : nullptr);
    return copy;
}

Obj::DictIterator Dict::Find(const Name& key) {
    auto it = m_map.find(key.GetName());
    if (it == m_map.end()) return it;
    Obj* value = it->second;
    if (!value) return m_map.end();
    // A free entry is absent without being loaded: loading it would fail. Entry 0 is the
    // trailer, which a reference to a missing number stands for.
    if (value->IsIndirect() && value->IsFree() && value->GetObjNum() != 0) return m_map.end();
    if (value->IsNull()) return m_map.end();
    return it;
}

Obj* Dict::FindObj(const Name& key) {
    auto it = Find(key);
    return it == m_map.end() ? nullptr : it->second;
}

Obj::DictIterator Dict::Get(const Name& key) {
    auto it = m_map.find(key.GetName());
    if (it == m_map.end()) LUM_FAIL("The dictionary does not contain required key: %s", key.GetName());
    return it;
}

void Dict::EraseEntry(DictIterator pos) noexcept {
    delete pos->first;
    DeleteDirect(pos->second);
    m_map.erase(pos);
}

Obj::DictIterator Dict::Put(const Name& key, Obj* obj) {
    LUM_CHECK_NEW_VALUE(obj, "The value can't be NULL (0)",
                        "Objects cannot belong to different documents");
    auto it = m_map.find(key.GetName());
    if (it != m_map.end()) {
        if (it->second == obj) return it;
        EraseEntry(it);
    }
    it = m_map.emplace(new Name(key.GetName()), obj).first;
    SetModified(true, obj);
    return it;
}

void Dict::Erase(DictIterator pos) {
    if (pos == m_map.end()) return;
    EraseEntry(pos);
    SetModified();
}

void Dict::Erase(const Name& key) { Erase(m_map.find(key.GetName())); }

void Dict::Replace(DictIterator pos, Obj* obj) {
    LUM_CHECK_NEW_VALUE(obj, "The value can't be NULL (0)",
                        "Objects can't belong to different documents");
    if (pos->second == obj) return;
    DeleteDirect(pos->second);
    pos->second = obj;
    SetModified(true, obj);
}

Obj::DictIterator Dict::Rename(DictIterator pos, const Name& new_key) {
    if (pos == m_map.end()) return pos;
    Obj* value = pos->second;
    delete pos->first;
    m_map.erase(pos);
    auto it = m_map.find(new_key.GetName());
    if (it != m_map.end()) EraseEntry(it);
    it = m_map.emplace(new Name(new_key.GetName()), value).first;
    SetModified(true, value);
    return it;
}

Obj::DictIterator Dict::Rename(const Name& old_key, const Name& new_key) {
    return Rename(m_map.find(old_key.GetName()), new_key);
}

bool Dict::InsertParsed(Name* key, Obj* value) { return m_map.try_emplace(key, value).second; }

// --- Array ---

Array::~Array() {
    for (Obj* item : m_items) DeleteDirect(item);
}

void Array::Accept(ObjVisitor& visitor) { visitor.VisitArray(*this); }

Obj* Array::Clone() const {
    auto* copy = new Array();
    copy->m_items.reserve(m_items.size());
    for (Obj* item : m_items) copy->m_items.push_back(item->Clone());
    return copy;
}

Obj* Array::GetAt(UInt32 index) {
    LUM_CHECK(index<size(), "Array::GetAt - Index is out of range");
    return m_items[index];
}

void Array::Insert(UInt32 pos, Obj* obj) {
    LUM_CHECK_NEW_VALUE(obj, "Obj can't be NULL (0)", "Objects cannot belong to different documents");
    if (pos >= size())
        m_items.push_back(obj);
    else
        m_items.insert(m_items.begin() + pos, obj);
    SetModified(true, obj);
}

void Array::PushBack(Obj* value) { Insert(4294967295u, value); }
void Array::PushFront(Obj* value) { Insert(0, value); }

void Array::EraseAt(UInt32 index) {
    if (index >= size()) return;
    DeleteDirect(m_items[index]);
    m_items.erase(m_items.begin() + index);
    SetModified();
}

void Array::Replace(UInt32 pos, Obj* obj) {
    LUM_CHECK(pos < size(), "Array::Replace: Index is out of range");
    LUM_CHECK_NEW_VALUE(obj, "Obj can't be NULL (0)", "Objects cannot belong to different documents");
    if (m_items[pos] == obj) return;
    DeleteDirect(m_items[pos]);
    m_items[pos] = obj;
    SetModified(true, obj);
}

void Array::AdoptParsed(Obj* const* values, size_t count) { m_items.assign(values, values + count); }

// --- Stream: the dictionary operations ---

Stream::Stream(Dict* dict) : mp_dict(dict ? dict : new Dict()) {}
Stream::~Stream() { delete mp_dict; }

void Stream::Accept(ObjVisitor& visitor) { visitor.VisitStream(*this); }
UInt64 Stream::Size() const { return mp_dict->Size(); }
Obj::DictIterator Stream::DictBegin() { return mp_dict->DictBegin(); }
Obj::DictConstIterator Stream::DictBegin() const {
    return static_cast<const Dict*>(mp_dict)->DictBegin();
}
Obj::DictIterator Stream::DictEnd() { return mp_dict->DictEnd(); }
Obj::DictConstIterator Stream::DictEnd() const {
    return static_cast<const Dict*>(mp_dict)->DictEnd();
}
Obj::DictIterator Stream::Find(const Name& key) { return mp_dict->Find(key); }
Obj* Stream::FindObj(const Name& key) { return mp_dict->FindObj(key); }
Obj::DictIterator Stream::Get(const Name& key) { return mp_dict->Get(key); }
Obj::DictIterator Stream::Put(const Name& key, Obj* value) { return mp_dict->Put(key, value); }
void Stream::Erase(DictIterator pos) { mp_dict->Erase(pos); }
void Stream::Erase(const Name& key) { mp_dict->Erase(key); }
void Stream::Replace(DictIterator pos, Obj* value) { mp_dict->Replace(pos, value); }
Obj::DictIterator Stream::Rename(DictIterator pos, const Name& new_key) {
    return mp_dict->Rename(pos, new_key);
}
Obj::DictIterator Stream::Rename(const Name& old_key, const Name& new_key) {
    return mp_dict->Rename(old_key, new_key);
}

}  // namespace lum::SDF
