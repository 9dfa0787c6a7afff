#pragma once
// Fills the document's table from what the file says about itself: the header, the last
// startxref, the newest cross-reference section and the chain of Prev behind it. Strict where
// a wrong guess would give wrong objects (any failure sends the file to the rebuild), tolerant
// where only the layout is off.
#include <memory>
#include <unordered_set>

#include "SDF/Parser.h"

namespace lum::SDF {

class XRefParser : public Parser {
public:
    // Reads the document's input through a reader of its own.
    explicit XRefParser(DocImpl* doc);
    ~XRefParser() override;

    // Fills the table; fails with an exception. `start_num` is 0 on the first pass; a table
    // whose oldest first subsection does not start at 0 is parsed a second time with it.
    void Parse(UInt64 start_num = 0);

protected:
    // Any word inside a trailer acts as R: the two numbers below it become a table entry,
    // made as a placeholder that a row of an older section may fill.
    bool ContainerOperator(const char* word) override;

private:
    // Finds the header in the first 1024 bytes, stores it and the first object number in the
    // document, and answers its offset (the bytes in front of it), or 0.
    UInt64 ReadHeader();
    // The value behind the last "startxref" within 1028 bytes of the end.
    UInt64 FindXRefOffset();
    // Reads one section at `offset` and answers its trailer (null when a table has no
    // subsection). The first section's trailer goes into entry 0; another section's trailer
    // stays on the operand stack until the next section is read.
    Obj* ParseXRef(UInt64 offset, UInt64 header_offset, bool first_section, bool second_pass,
                   UInt64& start_num);
    // The two kinds of section, behind their first bytes. They share the name of ParseXRef so
    // that a failure raised inside names the step of the parse it belongs to.
    struct TableSection {};
    struct StreamSection {};
    Obj* ParseXRef(TableSection, UInt64 header_offset, bool first_section, bool second_pass,
                   UInt64& start_num);
    Obj* ParseXRef(StreamSection, UInt64 header_offset, bool first_section);
    // Reads the records of one Index range of a cross-reference stream.
    void ReadXRefStream(Filters::FilterReader& reader, UInt64 start, UInt64 count,
                        UInt32 w1, UInt32 w2, UInt32 w3,
                        UInt64 header_offset);
    // Applies a table row to entry n.
    void ApplyRow(UInt64 n, UInt64 offset, UInt64 gen, bool free, UInt64 header_offset);
    // Grows the table to n entries; fails beyond the bound of this file.
    void GrowTable(UInt64 n);
    // Makes sure entry 0 exists, as the free-list head every table has.
    void EnsureEntryZero();
    // Creates entry n (the slot must be empty); fails when the file has made more entries
    // than its size allows.
    Indirect* MakeEntry(UInt64 n, UInt16 gen, UInt64 offset, UInt8 kind);

    std::unique_ptr<Filters::Filter> m_reader_owner;
    UInt64 m_file_size = 0;
    // Entries made in one pass may not outnumber the file's bytes (beyond a floor): a table
    // may be sparse, but every entry made stands for bytes of a row or record.
    UInt64 m_max_made = 0;
    UInt64 m_entries_made = 0;
    // Offsets of the sections of the Prev chain, so a chain that comes back fails instead of
    // running forever; stream sections named by XRefStm are read once each.
    std::unordered_set<UInt64> m_sections_seen;
    std::unordered_set<UInt64> m_stream_sections_seen;
    // Records read from cross-reference streams in this pass; their ranges may overlap, so
    // this bounds the work where the table's size does not.
    UInt64 m_records_read = 0;
};

}  // namespace lum::SDF
