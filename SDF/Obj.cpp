// The base of the value classes: every operation that a class lacks fails with the
// illegal-operation text naming it, and the questions about the object's number go through the
// Indirect that the value lives in.
#include "SDF/Obj.h"

#include <cstring>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "Filters/Filter.h"

namespace lum::SDF {

// --- Name order ---

namespace {
inline int CompareText(const char* a, const char* b) noexcept {
    // strcmp compares as unsigned char, which is the order the file's bytes must have.
    return std::strcmp(a, b);
}
}  // namespace

bool Obj::NameCompare::operator()(const Name* a, const Name* b) const noexcept {
    return CompareText(a->GetName(), b->GetName()) < 0;
}
bool Obj::NameCompare::operator()(const Name* a, const char* b) const noexcept {
    return CompareText(a->GetName(), b) < 0;
}
bool Obj::NameCompare::operator()(const char* a, const Name* b) const noexcept {
    return CompareText(a, b->GetName()) < 0;
}

// --- Defaults ---

Obj::~Obj() = default;

void Obj::IllegalFunctionException(const char* operation) {
    LUM_FAIL("%s() can't be invoked on Obj of this type.", operation);
}

SDFDoc* Obj::GetDoc() const { return mp_owner ? mp_owner->GetDoc() : nullptr; }

const Obj* Obj::GetDirect(bool) const { return this; }
Obj* Obj::GetDirect(bool) { return this; }

bool Obj::IsBool() const { return false; }
bool Obj::GetBool() const { IllegalFunctionException("GetBool"); }
void Obj::SetBool(bool) { IllegalFunctionException("SetBool"); }

bool Obj::IsNumber() const { return false; }
double Obj::GetNumber() const { IllegalFunctionException("GetNumber"); }
void Obj::SetNumber(double) { IllegalFunctionException("SetNumber"); }

bool Obj::IsNull() const { return false; }

bool Obj::IsString() const { return false; }
const UInt8* Obj::GetBuffer() const { IllegalFunctionException("GetBuffer"); }
void Obj::GetAsPDFText(UString&) const { IllegalFunctionException("GetAsPDFText"); }
void Obj::SetString(const UString&) { IllegalFunctionException("SetString"); }
void Obj::SetString(const UInt8*, size_t) { IllegalFunctionException("SetString"); }

bool Obj::IsName() const { return false; }
const char* Obj::GetName() const { IllegalFunctionException("GetName"); }
void Obj::SetName(const char*) { IllegalFunctionException("SetName"); }

bool Obj::IsIndirect() const { return false; }
UInt32 Obj::GetObjNum() const {
    if (!mp_owner) IllegalFunctionException("GetObjNum");
    return mp_owner->GetObjNum();
}
UInt16 Obj::GetGenNum() const {
    if (!mp_owner) IllegalFunctionException("GetGenNum");
    return mp_owner->GetGenNum();
}
UInt64 Obj::GetOffset() const {
    if (!mp_owner) IllegalFunctionException("GetOffset");
    return mp_owner->GetOffset();
}
bool Obj::IsFree() const {
    if (!mp_owner) IllegalFunctionException("IsFree");
    return mp_owner->IsFree();
}
void Obj::SetMark(bool mark) {
    if (mp_owner) mp_owner->SetMark(mark);
}
bool Obj::IsMarked() const { return mp_owner && mp_owner->IsMarked(); }
bool Obj::IsLoaded() const { return true; }

bool Obj::IsContainer() const { return false; }
UInt64 Obj::Size() const { return 1; }

Obj::DictIterator Obj::DictBegin() { IllegalFunctionException("DictBegin"); }
Obj::DictConstIterator Obj::DictBegin() const { IllegalFunctionException("DictBegin"); }
Obj::DictIterator Obj::DictEnd() { IllegalFunctionException("DictEnd"); }
Obj::DictConstIterator Obj::DictEnd() const { IllegalFunctionException("DictEnd"); }
bool Obj::IsDict() const { return false; }
Obj::DictIterator Obj::Find(const Name&) { IllegalFunctionException("Find"); }
Obj* Obj::FindObj(const Name&) { IllegalFunctionException("FindObj"); }
Obj::DictIterator Obj::Get(const Name&) { IllegalFunctionException("Get"); }
Obj::DictIterator Obj::Put(const Name&, Obj*) { IllegalFunctionException("Put"); }
void Obj::Erase(DictIterator) { IllegalFunctionException("Erase"); }
void Obj::Erase(const Name&) { IllegalFunctionException("Erase"); }
void Obj::Replace(UInt32, Obj*) { IllegalFunctionException("Replace"); }
void Obj::Replace(DictIterator, Obj*) { IllegalFunctionException("Replace"); }
Obj::DictIterator Obj::Rename(DictIterator, const Name&) { IllegalFunctionException("Rename"); }
Obj::DictIterator Obj::Rename(const Name&, const Name&) { IllegalFunctionException("Rename"); }

bool Obj::IsArray() const { return false; }
Obj* Obj::GetAt(UInt32) { IllegalFunctionException("GetAt"); }
void Obj::Insert(UInt32, Obj*) { IllegalFunctionException("Insert"); }
void Obj::PushBack(Obj*) { IllegalFunctionException("PushBack"); }
void Obj::EraseAt(UInt32) { IllegalFunctionException("EraseAt"); }

bool Obj::IsStream() const { return false; }
bool Obj::IsNewStream() const { IllegalFunctionException("IsNewStream"); }
UInt64 Obj::GetRawStreamLength() { IllegalFunctionException("GetRawStreamLength"); }
std::unique_ptr<Filters::Filter> Obj::GetRawStream(bool) {
    IllegalFunctionException("GetRawStream");
}
std::unique_ptr<Filters::Filter> Obj::GetDecodedStream(bool) {
    IllegalFunctionException("GetDecodedStream");
}
std::unique_ptr<Filters::Filter> Obj::GetDecodedStream() { return GetDecodedStream(false); }
void Obj::SetStreamData(const UInt8*, size_t, std::unique_ptr<Filters::Filter>) {
    IllegalFunctionException("SetStreamData");
}

void Obj::SetModified(bool modified, Obj* cause) {
    if (mp_owner) mp_owner->SetModified(modified, cause ? cause : this);
}
bool Obj::IsModified() const { return mp_owner && mp_owner->IsModified(); }

// --- Helpers ---

Obj* Obj::PutName(const Name& key, const char* name) {
    Obj* value = new Name(name);
    Put(key, value);
    return value;
}
Obj* Obj::PutArray(const Name& key) {
    Obj* value = new Array();
    Put(key, value);
    return value;
}
Obj* Obj::PutBool(const Name& key, bool v) {
    Obj* value = new Bool(v);
    Put(key, value);
    return value;
}
Obj* Obj::PutDict(const Name& key) {
    Obj* value = new Dict();
    Put(key, value);
    return value;
}
Obj* Obj::PutNumber(const Name& key, double v) {
    Obj* value = new Number(v);
    Put(key, value);
    return value;
}
Obj* Obj::PutString(const Name& key, const UInt8* bytes, size_t size) {
    Obj* value = new Str(bytes, size);
    Put(key, value);
    return value;
}
Obj* Obj::PutString(const Name& key, const char* text) {
    return PutString(key, reinterpret_cast<const UInt8*>(text), std::strlen(text));
}
Obj* Obj::PutIndirect(const Name& key, Indirect* ref) {
    Put(key, ref);
    return ref;
}

double Obj::FindNumber(const Name& key, double fallback) {
    Obj* value = FindObj(key);
    return value && value->IsNumber() ? value->GetNumber() : fallback;
}

// --- Visitors ---

ObjVisitor::~ObjVisitor() = default;
void ObjVisitor::Visit(Obj&) {}
void ObjVisitor::VisitBool(Bool& obj) { Visit(obj); }
void ObjVisitor::VisitNumber(Number& obj) { Visit(obj); }
void ObjVisitor::VisitNull(Null& obj) { Visit(obj); }
void ObjVisitor::VisitStr(Str& obj) { Visit(obj); }
void ObjVisitor::VisitName(Name& obj) { Visit(obj); }
void ObjVisitor::VisitArray(Array& obj) { Visit(obj); }
void ObjVisitor::VisitDict(Dict& obj) { Visit(obj); }
void ObjVisitor::VisitStream(Stream& obj) { Visit(obj); }
void ObjVisitor::VisitIndirect(Indirect& obj) { Visit(obj); }

void ContainerVisitor::Visit(Obj& obj) { OnObject(obj); }

void ContainerVisitor::VisitArray(Array& obj) {
    OnObject(obj);
    const UInt32 n = UInt32(obj.Size());
    for (UInt32 i = 0; i < n; ++i) obj.GetAt(i)->Accept(*this);
}

void ContainerVisitor::VisitDict(Dict& obj) {
    OnObject(obj);
    for (auto it = obj.DictBegin(); it != obj.DictEnd(); ++it) {
        it->first->Accept(*this);
        if (it->second) it->second->Accept(*this);
    }
}

void ContainerVisitor::VisitStream(Stream& obj) {
    OnObject(obj);
    if (obj.GetDict()) obj.GetDict()->Accept(*this);
}

void ContainerVisitor::VisitIndirect(Indirect&) {}

void ContainerVisitor::Walk(Obj& root) { root.Accept(*this); }

}  // namespace lum::SDF
