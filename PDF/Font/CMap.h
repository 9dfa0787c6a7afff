#pragma once
// CMaps: tables from character codes of one to four bytes to CIDs (the Encoding of a Type 0
// font) or to UTF-16 text (a ToUnicode stream, or a predefined -UCS2 CMap). `CMap` is the
// abstract table, `CMapIdentity` the two identity maps, `CMapStm` a table read from a stream
// (CMapStm.h). A CMap is built whole and never changes afterwards, so it needs no lock.
#include <memory>
#include <string>

#include "Common/Exception.h"
#include "Common/Types.h"

namespace lum::SDF {
class Obj;
}

namespace lum::PDF::Fnt {

// A predefined CMap that the resource file can't give.
class CMapNotFoundExc : public Common::Exception {
public:
    using Exception::Exception;
};

class CMap {
public:
    // The single way in:
    // - the name "Identity-H" or "Identity-V": a CMapIdentity;
    // - any other name: a fresh CMapStm on the predefined CMap of the resource file, empty when
    //   the resource document isn't open; a failed lookup raises CMapNotFoundExc;
    // - any other object is read as a stream; a damaged one gives an empty result.
    static std::unique_ptr<CMap> Create(SDF::Obj* obj);

    CMap() = default;
    CMap(const CMap&) = delete;
    CMap& operator=(const CMap&) = delete;

    // The value of a code, 0 when it has none.
    virtual UInt32 MapToCID(UInt32 code) const = 0;
    // Reads one code off `bytes` (`length` of them): the bytes eaten. When nothing maps, the
    // out values are left as they were, so callers preset them.
    virtual int MapToCID(const UInt8* bytes, int length, UInt32& code, UInt32& cid) const = 0;
    // The UTF-16 units of a code, at most `capacity` of them: found. Not found leaves one
    // unit U+FFFD.
    virtual bool MapToUnicode(UInt32 code, UInt16* units, int capacity, UInt32& length) const = 0;
    // The stream, null for an identity map.
    virtual SDF::Obj* GetSDFObj() const = 0;
    virtual const std::string& GetName() const = 0;
    virtual bool IsHorizontal() const { return m_horizontal; }
    virtual ~CMap();

protected:
    bool m_horizontal = true;
};

class CMapIdentity final : public CMap {
public:
    // `vertical` for "Identity-V".
    explicit CMapIdentity(bool vertical);

    UInt32 MapToCID(UInt32 code) const override { return code; }
    // Two bytes big-endian, or the one byte that is left at the end.
    int MapToCID(const UInt8* bytes, int length, UInt32& code, UInt32& cid) const override;
    bool MapToUnicode(UInt32 code, UInt16* units, int capacity, UInt32& length) const override;
    SDF::Obj* GetSDFObj() const override { return nullptr; }
    const std::string& GetName() const override { return m_name; }

private:
    std::string m_name;
};

}  // namespace lum::PDF::Fnt
