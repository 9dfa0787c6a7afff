#pragma once
// Reads the objects of one object stream: a head of N pairs (object number, offset from First)
// and the values behind it. The decoded stream is read only forward.
#include <memory>
#include <vector>

#include "SDF/Parser.h"

namespace lum::SDF {

class ObjStmParser : public Parser {
public:
    // Reads the head of `stream` (its N and First are required). In rebuild mode references
    // met in the values enter the table as placeholders.
    ObjStmParser(Obj* stream, DocImpl* doc, bool rebuild);
    ~ObjStmParser() override;

    // Pairs read from the head.
    size_t GetCount() const noexcept { return m_pairs.size() / 2; }
    // Object number of the current pair, 0 when the pairs are exhausted.
    UInt32 CurrentObjNum() const noexcept;
    // Reads the value of the current pair and moves to the next; the value is handed out.
    Obj* GetNextObj();
    // Moves to the next pair without reading its value.
    void SkipObj() noexcept { ++m_pos; }

    // Grows the table to hold `obj_num` while the table is rebuilt.
    void XRefResize(UInt32 obj_num);

protected:
    bool ContainerOperator(const char* word) override;

private:
    // Moves forward to `target` bytes from the stream's start; never backward.
    void SkipTo(Int64 target);

    bool m_rebuild;
    Int64 m_n = 0;
    Int64 m_first = 0;
    std::vector<UInt32> m_pairs;  // number, offset, number, offset, ...
    size_t m_pos = 0;             // index of the current pair
    std::unique_ptr<Filters::Filter> m_decoded;
};

}  // namespace lum::SDF
