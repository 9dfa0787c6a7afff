#pragma once
// A small reader of the encrypted test files, independent of the document store: it finds
// every "N G obj" by scanning, parses direct values into SDF objects, and keeps the raw bytes
// of streams. References become the referenced object's value when a resolver is given (the
// trailer's Encrypt), else the number of the object. Enough for files written by qpdf; not a
// PDF parser for anything else.
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Common/Types.h"
#include "SDF/Obj.h"
#include "SDF/SecurityHandler.h"

namespace lum::test {

struct TestObject {
    UInt32 num = 0;
    UInt32 gen = 0;
    std::unique_ptr<SDF::Obj> value;  // the dictionary of a stream
    bool is_stream = false;
    std::string data;  // raw stream bytes, as in the file
};

class TestPdf {
public:
    explicit TestPdf(const std::string& bytes);

    // The trailer dictionary (or the cross-reference stream's dictionary) with Encrypt
    // resolved to a copy of the dictionary it references.
    SDF::Obj* Trailer() const { return m_trailer.get(); }
    SDF::Obj* Encrypt() const;
    const std::map<UInt32, TestObject>& Objects() const { return m_objects; }
    const TestObject* Find(UInt32 num) const;
    // The first object whose dictionary has `key`, or null.
    const TestObject* FindWithKey(const char* key) const;

private:
    std::map<UInt32, TestObject> m_objects;
    std::unique_ptr<SDF::Obj> m_trailer;
};

// The stream's bytes through the handler's decryption, and then through FlateDecode if asked.
std::string DecryptStream(SDF::SecurityHandler& h, const TestObject& o, bool inflate = false);

// Parses one direct value at `pos` (moved past it); references become their object number.
SDF::Obj* ParseTestValue(const std::string& s, size_t& pos);

}  // namespace lum::test
