// Identity, value equality and hashing of values.
#include <cstring>

#define XXH_STATIC_LINKING_ONLY
#include <xxhash.h>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Filters/FilterReader.h"
#include "SDF/Obj.h"

namespace lum::SDF {

namespace {

constexpr UInt32 kHashSeed = 188686784;
// Decoded bytes of a stream that take part in its hash, and the chunk of a stream comparison.
constexpr size_t kStreamChunk = 1024;

class Hasher {
public:
    Hasher() { XXH32_reset(&m_state, kHashSeed); }
    void Add(const void* bytes, size_t n) { XXH32_update(&m_state, bytes, n); }
    void Add32(UInt32 v) { Add(&v, sizeof v); }
    UInt32 Digest() const { return XXH32_digest(&m_state); }

private:
    XXH32_state_t m_state;
};

// Reads up to `n` bytes of a decoded stream; a decoder failure ends the data early, since a
// hash or a comparison must answer for damaged streams too.
size_t ReadSome(Filters::FilterReader& reader, UInt8* buf, size_t n) {
    try {
        return reader.Read(buf, n);
    } catch (const Common::Exception&) {
        return 0;
    }
}

// Value comparison with a budget: references may form cycles and shared subgraphs, which
// would otherwise make two hostile values compare forever.
class ValueComparer {
public:
    bool Equal(const Obj* a, const Obj* b, int depth);

private:
    bool EqualStreams(Obj* a, Obj* b, int depth);
    long m_steps = 0;
};

bool ValueComparer::Equal(const Obj* a, const Obj* b, int depth) {
    if (a == b) return true;
    if (!a || !b) return false;
    if (++m_steps > Limits::kMaxCompareSteps || depth > Limits::kMaxNestingLevels) return false;
    // Both sides are asked through the interface, so references on either side are followed.
    Obj* x = const_cast<Obj*>(a);
    Obj* y = const_cast<Obj*>(b);
    if (x->IsNull()) return y->IsNull();
    if (x->IsName()) return y->IsName() && std::strcmp(x->GetName(), y->GetName()) == 0;
    if (x->IsNumber()) return y->IsNumber() && x->GetNumber() == y->GetNumber();
    if (x->IsBool()) return y->IsBool() && x->GetBool() == y->GetBool();
    if (x->IsStream()) return y->IsStream() && EqualStreams(x, y, depth);
    if (x->IsDict()) {
        if (!y->IsDict() || x->Size() != y->Size()) return false;
        auto i = x->DictBegin(), j = y->DictBegin();
        for (; i != x->DictEnd() && j != y->DictEnd(); ++i, ++j)
            if (!Equal(i->first, j->first, depth + 1) || !Equal(i->second, j->second, depth + 1))
                return false;
        return true;
    }
    if (x->IsArray()) {
        if (!y->IsArray() || x->Size() != y->Size()) return false;
        const UInt32 n = UInt32(x->Size());
        for (UInt32 k = 0; k < n; ++k)
            if (!Equal(x->GetAt(k), y->GetAt(k), depth + 1)) return false;
        return true;
    }
    if (x->IsString()) {
        if (!y->IsString() || x->Size() != y->Size()) return false;
        return x->Size() == 0 || std::memcmp(x->GetBuffer(), y->GetBuffer(), x->Size()) == 0;
    }
    return false;
}

bool ValueComparer::EqualStreams(Obj* a, Obj* b, int depth) {
    if (a->Size() != b->Size()) return false;
    std::unique_ptr<Filters::Filter> fa = a->GetDecodedStream();
    std::unique_ptr<Filters::Filter> fb = b->GetDecodedStream();
    Filters::FilterReader ra(fa.get()), rb(fb.get());
    UInt8 ba[kStreamChunk], bb[kStreamChunk];
    for (;;) {
        const size_t na = ReadSome(ra, ba, kStreamChunk);
        const size_t nb = ReadSome(rb, bb, kStreamChunk);
        if (na != nb || std::memcmp(ba, bb, na) != 0) return false;
        if (na < kStreamChunk) break;
    }
    Obj* da = a->GetDirect();
    Obj* db = b->GetDirect();
    return Equal(static_cast<Stream*>(da)->GetDict(), static_cast<Stream*>(db)->GetDict(),
                 depth + 1);
}

}  // namespace

// --- Identity ---

bool Obj::IsEqual(const Obj* other) const {
    if (other == this) return true;
    if (!other || !other->IsIndirect()) return false;
    return other->IsEqual(this);
}

// A reference equals its own target, by pointer.
bool Indirect::IsEqual(const Obj* other) const {
    if (other == this) return true;
    if (!other || other->IsIndirect()) return false;
    return other->IsEqual(mp_target);
}

bool Obj::IsEqualValue(const Obj* other) const { return ValueComparer().Equal(this, other, 0); }

bool Indirect::IsEqualValue(const Obj* other) const {
    if (other == this) return true;
    if (!other) return false;
    return ValueComparer().Equal(Target(), other, 0);
}

// --- Hash ---

UInt32 Null::Hash() const {
    Hasher h;
    h.Add32(e_null);
    return h.Digest();
}

UInt32 Bool::Hash() const {
    Hasher h;
    h.Add32(e_bool);
    h.Add32(m_value ? 1 : 0);
    return h.Digest();
}

UInt32 Number::Hash() const {
    Hasher h;
    h.Add32(e_number);
    h.Add(&m_value, sizeof m_value);
    return h.Digest();
}

UInt32 Name::Hash() const {
    Hasher h;
    h.Add32(e_name);
    h.Add(m_text, std::strlen(m_text));
    return h.Digest();
}

// A string's bytes do not take part: strings hash by type alone.
UInt32 Str::Hash() const {
    Hasher h;
    h.Add32(e_string);
    return h.Digest();
}

UInt32 Array::Hash() const {
    Hasher h;
    h.Add32(e_array);
    for (const Obj* item : m_items) h.Add32(item->Hash());
    return h.Digest();
}

UInt32 Dict::Hash() const {
    Hasher h;
    h.Add32(e_dict);
    for (const auto& [key, value] : m_map) {
        h.Add32(key->Hash());
        if (value) h.Add32(value->Hash());
    }
    return h.Digest();
}

UInt32 FileStream::Hash() const {
    Hasher h;
    h.Add32(e_stream);
    h.Add32(mp_dict->Hash());
    UInt8 buf[kStreamChunk];
    size_t n = 0;
    try {
        std::unique_ptr<Filters::Filter> chain = const_cast<FileStream*>(this)->GetDecodedStream();
        Filters::FilterReader reader(chain.get());
        n = ReadSome(reader, buf, kStreamChunk);
    } catch (const Common::Exception&) {
        n = 0;  // a stream that can't be opened hashes by its dictionary
    }
    h.Add(buf, n);
    return h.Digest();
}

UInt32 Indirect::Hash() const {
    Hasher h;
    h.Add32(m_obj_num);
    return h.Digest();
}

}  // namespace lum::SDF
