#pragma once
// A CMap read from a stream: the mappings of its cid and bf operators, looked up by code
// length (1 to 4 bytes, taken from the strings of the mappings; the code space is not read),
// singles before ranges, then the parent of `usecmap` or `UseCMap`.
//
// Storage is flat: for each length a sorted vector of singles and one of range ends, with the
// values in one pool. A range is two entries, the low code with its value and the high code
// with a marker, as in an ordered map; a later mapping of the same code replaces an earlier
// one. Ranges are never expanded, so a range over millions of codes costs two entries.
#include <vector>

#include "Filters/Filter.h"
#include "PDF/Font/CMap.h"

namespace lum::PDF::Fnt {

class CMapStm final : public CMap {
public:
    // Parses the decoded stream `stm` (which must outlive the CMap); `name` is the resource
    // name of a predefined CMap, empty for a stream of the document. `data`, when given, is
    // the stream's decoded bytes already at hand. Raises on a damaged CMap.
    CMapStm(SDF::Obj* stm, std::string name = {}, std::unique_ptr<Filters::Filter> data = nullptr);
    ~CMapStm() override;

    UInt32 MapToCID(UInt32 code) const override;
    int MapToCID(const UInt8* bytes, int length, UInt32& code, UInt32& cid) const override;
    bool MapToUnicode(UInt32 code, UInt16* units, int capacity, UInt32& length) const override;
    SDF::Obj* GetSDFObj() const override { return mp_stream; }
    const std::string& GetName() const override { return m_name; }
    bool IsHorizontal() const override;

    // Mappings held, singles plus range ends, over all lengths (not the parent's).
    size_t GetEntryCount() const;
    const CMap* GetParent() const { return mp_parent.get(); }

private:
    friend class CMapStmParser;

    struct Entry {
        UInt32 code;
        UInt32 offset;  // into m_values, or kMarker for the high end of a range
        UInt32 count;
    };
    static constexpr UInt32 kMarker = 0xFFFFFFFF;

    struct Table {
        std::vector<Entry> singles;
        std::vector<Entry> ranges;
    };

    // Building, for the parser.
    void AddSingle(int length, UInt32 code, const UInt32* values, UInt32 count);
    void AddRange(int length, UInt32 low, UInt32 high, const UInt32* values, UInt32 count);
    UInt32 StoreValues(const UInt32* values, UInt32 count);
    void Finish();

    // The values of a code of one length, singles then ranges; false when it has none. For a
    // range hit, `delta` is what the last value grows by.
    bool Lookup(int length, UInt32 code, const Entry*& hit, UInt32& delta) const;

    Table m_tables[4];
    std::vector<UInt32> m_values;
    SDF::Obj* mp_stream;
    std::string m_name;
    std::unique_ptr<CMap> mp_parent;
};

}  // namespace lum::PDF::Fnt
