#pragma once
// The objects of an encrypted test file, read without the document store: the parser walks
// the file from the start and keeps every "N G obj" value with the raw bytes of its stream.
// References stand as the number of their object; the trailer's Encrypt is resolved to a
// copy of the dictionary it names. Enough for the files qpdf writes.
#include <map>
#include <memory>
#include <string>

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

    // The last trailer dictionary (or the cross-reference stream's dictionary).
    SDF::Obj* Trailer() const { return m_trailer.get(); }
    SDF::Obj* Encrypt() const { return m_trailer->FindObj(SDF::Name("Encrypt")); }
    const std::map<UInt32, TestObject>& Objects() const { return m_objects; }
    // The first object whose dictionary has `key`, or null.
    const TestObject* FindWithKey(const char* key) const;

private:
    std::map<UInt32, TestObject> m_objects;
    std::unique_ptr<SDF::Obj> m_trailer;
};

// The stream's bytes through the handler's decryption, and then through FlateDecode if asked.
std::string DecryptStream(SDF::SecurityHandler& h, const TestObject& o, bool inflate = false);

}  // namespace lum::test
