#pragma once
// Makes the document's table from the file's bytes alone, trusting no cross-reference data:
// one scan from front to back that recognises objects by "N G obj", streams by their end
// keywords, and trailers and cross-reference streams wherever they stand. What it does not
// know it steps over; a failure ends the scan and keeps all that was found.
#include <memory>

#include "SDF/Parser.h"

namespace lum::SDF {

class XRefRebuilderImpl : public Parser {
public:
    explicit XRefRebuilderImpl(DocImpl* doc);
    ~XRefRebuilderImpl() override;

    // Clears the table and fills it anew. Fails only when the input can't be read from the
    // start or holds no header in its first 4096 bytes; otherwise every number up to the
    // largest one seen has an entry afterwards, and entry 0 a trailer (empty if none was found).
    void Rebuild();

    // Makes room in the table for object `num`; numbers from 2^20 up fail unless the table
    // already holds them.
    void XRefResize(UInt64 num);
    // Steps over an old table up to its trailer, and offers that as the trailer.
    void SkipXRefTable();
    // Offers `candidate` (or the top of the operand stack) as the trailer; answers whether it
    // took its place.
    bool FoundTrailer(Obj* candidate = nullptr);

protected:
    // Any word inside a container acts as R; unknown numbers become placeholders.
    bool ContainerOperator(const char* word) override;

private:
    // The steps of the scan behind an object header at `pos`, and behind the word "stream".
    // They share the name of Rebuild so that a failure raised inside names the scan. The
    // stream step answers the stream taken from the stack for the entry (one without Filter),
    // or null, and sets `done` when the object needs no recording.
    struct ObjectBody {};
    struct StreamData {};
    void Rebuild(ObjectBody, UInt64 pos, UInt64 obj_num, UInt16 gen);
    Obj* Rebuild(StreamData, UInt64 pos, UInt32 num, UInt16 gen, bool& done);
    // Records object `num` found at `pos`, with `target` (owned) when given.
    void Record(UInt64 pos, UInt32 num, UInt16 gen, Obj* target);
    // Reads up to the next "endobj" that follows a separator, or the end of the file.
    void SkipToEndObj();
    // Fills the gaps of the table and gives entry 0 a trailer.
    void Finish();

    std::unique_ptr<Filters::Filter> m_stream_owner;
};

}  // namespace lum::SDF
