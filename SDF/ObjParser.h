#pragma once
// The parser of the document's own file: loads the value of a table entry, from the file or
// from an object stream. One per document, used under the document's object lock.
#include <set>

#include "SDF/Parser.h"

namespace lum::SDF {

class ObjParser : public Parser {
public:
    // `input` is the document's input filter; the document keeps it alive.
    ObjParser(DocImpl* doc, Filters::Filter* input);
    ~ObjParser() override;

    using Parser::GetObj;
    // Loads the target of `entry`: kind 1 from its offset in the file, kind 2 through its
    // object stream. Fails without touching the entry when the object can't be read.
    void GetObj(Indirect& entry);

    // Loads every object of the object stream `stream` whose entry still points at it. In
    // rebuild mode the table grows for the numbers met, and entries are made for them.
    void LoadCompressedObjects(Obj* stream, bool rebuild);

protected:
    // "R" inside a container: the two numbers below it become the table's entry.
    bool ContainerOperator(const char* word) override;
    // Strings of file objects are decrypted with the numbers of the header being parsed.
    void OnString(std::vector<UInt8>& bytes) override;

private:
    // Numbers of the object header being parsed; meaningful only while m_in_object.
    UInt32 m_obj_num = 0;
    UInt16 m_gen = 0;
    bool m_in_object = false;
    // Object streams being read now (a load can reach the same stream again through its
    // own Length).
    std::set<UInt32> m_streams_loading;
};

}  // namespace lum::SDF
