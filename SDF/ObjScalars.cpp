// The values that hold no other values: names, null, booleans, numbers and strings.
#include <cstring>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "SDF/Obj.h"

namespace lum::SDF {

// --- Name ---

Name::Name(StaticName slot) noexcept : m_text(NameTable::gl_slots[slot]) {}

Name::Name(const char* text) : m_text("") { Assign(text, std::strlen(text)); }

Name::Name(const char* bytes, size_t size) : m_text("") { Assign(bytes, size); }

Name::~Name() {
    if (m_owned) delete[] m_text;
}

void Name::Assign(const char* bytes, size_t size) {
    // A 0 byte (written #00) ends the name for every purpose, so it ends it here already.
    if (const void* nul = std::memchr(bytes, 0, size))
        size = static_cast<size_t>(static_cast<const char*>(nul) - bytes);
    const char* old = m_owned ? m_text : nullptr;
    const int slot = NameTable::Lookup(bytes, size);
    if (slot >= 0) {
        m_text = NameTable::gl_slots[slot];
        m_owned = false;
    } else {
        char* copy = new char[size + 1];
        std::memcpy(copy, bytes, size);
        copy[size] = 0;
        m_text = copy;
        m_owned = true;
    }
    delete[] old;
}

void Name::Accept(ObjVisitor& visitor) { visitor.VisitName(*this); }

// The lookup finds the same slot again for a table name; other texts are copied.
Obj* Name::Clone() const { return new Name(m_text); }

void Name::SetName(const char* name) {
    Assign(name, std::strlen(name));
    SetModified();
}

// --- Null, Bool, Number ---

void Null::Accept(ObjVisitor& visitor) { visitor.VisitNull(*this); }
Obj* Null::Clone() const { return new Null(); }

void Bool::Accept(ObjVisitor& visitor) { visitor.VisitBool(*this); }
Obj* Bool::Clone() const { return new Bool(m_value); }
void Bool::SetBool(bool value) {
    m_value = value;
    SetModified();
}

void Number::Accept(ObjVisitor& visitor) { visitor.VisitNumber(*this); }
Obj* Number::Clone() const { return new Number(m_value); }
void Number::SetNumber(double value) {
    m_value = value;
    SetModified();
}

// --- Str ---

Str::Str(const UInt8* bytes, size_t size) : m_bytes(bytes, bytes + size) {}

void Str::Accept(ObjVisitor& visitor) { visitor.VisitStr(*this); }
Obj* Str::Clone() const { return new Str(m_bytes.data(), m_bytes.size()); }

const UInt8* Str::GetBuffer() const { return m_bytes.empty() ? nullptr : m_bytes.data(); }

void Str::GetAsPDFText(UString& out) const {
    if (m_bytes.empty()) {
        out.Clear();
        return;
    }
    out = UString(reinterpret_cast<const char*>(m_bytes.data()), int(m_bytes.size()), enc_pdftext);
}

void Str::SetString(const UString& value) {
    const std::string bytes = value.ConvertToPDFText();
    m_bytes.assign(bytes.begin(), bytes.end());
    SetModified();
}

void Str::SetString(const UInt8* bytes, size_t size) {
    m_bytes.assign(bytes, bytes + size);
    SetModified();
}

}  // namespace lum::SDF
