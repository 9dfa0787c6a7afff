#pragma once
// The PDF value types. Every value answers every question of the `Obj` interface, with a value
// or a typed failure, and an `Indirect` forwards every question to its target (loading it
// first), so code above this layer holds plain `Obj*` and never tests for references.
#include <cstddef>
#include <map>
#include <memory>
#include <vector>

#include "Common/Types.h"
#include "SDF/NameTable.h"

namespace lum {
class UString;
}
namespace lum::Filters {
class Filter;
class FilterWriter;
}  // namespace lum::Filters

namespace lum::SDF {

class SDFDoc;
class DocImpl;
class Obj;
class Null;
class Bool;
class Number;
class Name;
class Str;
class Container;
class Dict;
class Array;
class Stream;
class FileStream;
class Indirect;
class ObjVisitor;

class Obj {
public:
    enum Type {
        e_null = 0,
        e_bool = 1,
        e_number = 2,
        e_name = 3,
        e_string = 4,
        e_dict = 5,
        e_array = 6,
        e_stream = 7,
    };

    // Dictionary order: the name's text as unsigned bytes, up to its first NUL. Transparent, so
    // a lookup by C string needs no `Name` at all.
    struct NameCompare {
        using is_transparent = void;
        bool operator()(const Name* a, const Name* b) const noexcept;
        bool operator()(const Name* a, const char* b) const noexcept;
        bool operator()(const char* a, const Name* b) const noexcept;
    };
    using DictMap = std::map<Name*, Obj*, NameCompare>;
    using DictIterator = DictMap::iterator;
    using DictConstIterator = DictMap::const_iterator;

    Obj() = default;
    Obj(const Obj&) = delete;
    Obj& operator=(const Obj&) = delete;

    // --- The virtual interface, in its fixed order ---
    virtual ~Obj();
    virtual Type GetType() const = 0;
    virtual void Accept(ObjVisitor& visitor) = 0;
    virtual SDFDoc* GetDoc() const;
    virtual Obj* Clone() const = 0;
    virtual void Write(Filters::FilterWriter& writer) const = 0;
    virtual bool IsEqual(const Obj* other) const;
    virtual bool IsEqualValue(const Obj* other) const;
    virtual const Obj* GetDirect(bool load = true) const;
    virtual Obj* GetDirect(bool load = true);

    virtual bool IsBool() const;
    virtual bool GetBool() const;
    virtual void SetBool(bool value);

    virtual bool IsNumber() const;
    virtual double GetNumber() const;
    virtual void SetNumber(double value);

    virtual bool IsNull() const;

    virtual bool IsString() const;
    virtual const UInt8* GetBuffer() const;
    virtual void GetAsPDFText(UString& out) const;
    virtual void SetString(const UString& value);
    virtual void SetString(const UInt8* bytes, size_t size);

    virtual bool IsName() const;
    virtual const char* GetName() const;
    virtual void SetName(const char* name);

    virtual bool IsIndirect() const;
    virtual UInt32 GetObjNum() const;
    virtual UInt16 GetGenNum() const;
    virtual UInt64 GetOffset() const;
    virtual bool IsFree() const;
    virtual void SetMark(bool mark);
    virtual bool IsMarked() const;
    virtual bool IsLoaded() const;

    virtual bool IsContainer() const;
    virtual UInt64 Size() const;

    virtual DictIterator DictBegin();
    virtual DictConstIterator DictBegin() const;
    virtual DictIterator DictEnd();
    virtual DictConstIterator DictEnd() const;
    virtual bool IsDict() const;
    // An absent key, a null value and a reference to a free object all answer DictEnd.
    virtual DictIterator Find(const Name& key);
    // The value as stored (an Indirect stays one), or null where Find answers DictEnd.
    virtual Obj* FindObj(const Name& key);
    // Plain lookup; a missing key fails. For keys a file must have.
    virtual DictIterator Get(const Name& key);
    // Takes ownership of a direct `value`; answers the entry.
    virtual DictIterator Put(const Name& key, Obj* value);
    virtual void Erase(DictIterator pos);
    virtual void Erase(const Name& key);
    virtual void Replace(UInt32 index, Obj* value);
    virtual void Replace(DictIterator pos, Obj* value);
    virtual DictIterator Rename(DictIterator pos, const Name& new_key);
    virtual DictIterator Rename(const Name& old_key, const Name& new_key);

    virtual bool IsArray() const;
    virtual Obj* GetAt(UInt32 index);
    // Takes ownership of a direct `value`; a position at or past the end appends.
    virtual void Insert(UInt32 pos, Obj* value);
    virtual void PushBack(Obj* value);
    // Past the end does nothing.
    virtual void EraseAt(UInt32 index);

    virtual bool IsStream() const;
    virtual bool IsNewStream() const;
    virtual UInt64 GetRawStreamLength();
    // A new, owned reader on the raw bytes of the stream, decrypted when asked.
    virtual std::unique_ptr<Filters::Filter> GetRawStream(bool decrypt);
    // A new, owned chain of decoders; `leave_last` keeps the last coded layer for the caller.
    virtual std::unique_ptr<Filters::Filter> GetDecodedStream(bool leave_last);
    virtual std::unique_ptr<Filters::Filter> GetDecodedStream();
    virtual void SetStreamData(const UInt8* bytes, size_t size,
                               std::unique_ptr<Filters::Filter> filter_chain);

    virtual void SetModified(bool modified = true, Obj* cause = nullptr);
    virtual bool IsModified() const;
    virtual UInt32 Hash() const = 0;

    // --- Helpers: create a value, Put it under a key, answer the value put ---
    Obj* PutName(const Name& key, const char* name);
    Obj* PutArray(const Name& key);
    Obj* PutBool(const Name& key, bool value);
    Obj* PutDict(const Name& key);
    Obj* PutNumber(const Name& key, double value);
    Obj* PutString(const Name& key, const UInt8* bytes, size_t size);
    Obj* PutString(const Name& key, const char* text);
    Obj* PutIndirect(const Name& key, Indirect* ref);  // a reference

    // The number under `key`, or `fallback` when the key is absent or holds no number.
    double FindNumber(const Name& key, double fallback);

    // The Indirect this value lives in, or null.
    Indirect* GetOwner() const { return mp_owner; }

protected:
    // Raises the illegal-operation failure naming `operation`.
    [[noreturn]] static void IllegalFunctionException(const char* operation);

private:
    friend class AssocIndirectVst;
    friend class Indirect;
    Indirect* mp_owner = nullptr;
};

// Text and order of names are by C string; `owned` marks text that this object must free.
class Name final : public Obj {
public:
    // A table name costs nothing; another text is copied.
    Name(StaticName slot) noexcept;  // NOLINT: implicit on purpose, keys are written as e_Type
    Name(const char* text);          // NOLINT: implicit on purpose, keys may be written "Type"
    Name(const char* bytes, size_t size);
    ~Name() override;

    Type GetType() const override { return e_name; }
    void Accept(ObjVisitor& visitor) override;
    Obj* Clone() const override;
    void Write(Filters::FilterWriter& writer) const override;
    bool IsName() const override { return true; }
    const char* GetName() const override { return m_text; }
    void SetName(const char* name) override;
    UInt32 Hash() const override;

    // Whether the text lives in the static table.
    bool IsStatic() const noexcept { return !m_owned; }

private:
    void Assign(const char* bytes, size_t size);
    const char* m_text;
    bool m_owned = false;
};

class Null final : public Obj {
public:
    Type GetType() const override { return e_null; }
    void Accept(ObjVisitor& visitor) override;
    Obj* Clone() const override;
    void Write(Filters::FilterWriter& writer) const override;
    bool IsNull() const override { return true; }
    UInt32 Hash() const override;
};

class Bool final : public Obj {
public:
    explicit Bool(bool value) noexcept : m_value(value) {}
    Type GetType() const override { return e_bool; }
    void Accept(ObjVisitor& visitor) override;
    Obj* Clone() const override;
    void Write(Filters::FilterWriter& writer) const override;
    bool IsBool() const override { return true; }
    bool GetBool() const override { return m_value; }
    void SetBool(bool value) override;
    UInt32 Hash() const override;

private:
    bool m_value;
};

class Number final : public Obj {
public:
    explicit Number(double value) noexcept : m_value(value) {}
    Type GetType() const override { return e_number; }
    void Accept(ObjVisitor& visitor) override;
    Obj* Clone() const override;
    void Write(Filters::FilterWriter& writer) const override;
    bool IsNumber() const override { return true; }
    double GetNumber() const override { return m_value; }
    void SetNumber(double value) override;
    UInt32 Hash() const override;

    // For parsers: gives a spent value a new number (no owner, nothing to mark modified).
    void AssignParsed(double value) noexcept { m_value = value; }

private:
    double m_value;
};

// The bytes of a string, after decryption.
class Str final : public Obj {
public:
    Str() = default;
    Str(const UInt8* bytes, size_t size);
    explicit Str(std::vector<UInt8>&& bytes) noexcept : m_bytes(std::move(bytes)) {}
    Type GetType() const override { return e_string; }
    void Accept(ObjVisitor& visitor) override;
    Obj* Clone() const override;
    void Write(Filters::FilterWriter& writer) const override;
    bool IsString() const override { return true; }
    const UInt8* GetBuffer() const override;  // null for an empty string
    void GetAsPDFText(UString& out) const override;
    void SetString(const UString& value) override;
    void SetString(const UInt8* bytes, size_t size) override;
    UInt64 Size() const override { return m_bytes.size(); }
    UInt32 Hash() const override;

    const std::vector<UInt8>& GetBytes() const noexcept { return m_bytes; }

    // For parsers: gives a spent value new bytes, reusing its buffer.
    void AssignParsed(const UInt8* bytes, size_t size) { m_bytes.assign(bytes, bytes + size); }
    size_t ParsedCapacity() const noexcept { return m_bytes.capacity(); }

private:
    std::vector<UInt8> m_bytes;
};

class Container : public Obj {
public:
    bool IsContainer() const override { return true; }
};

class Dict final : public Container {
public:
    Dict() = default;
    ~Dict() override;
    Type GetType() const override { return e_dict; }
    void Accept(ObjVisitor& visitor) override;
    Obj* Clone() const override;
    void Write(Filters::FilterWriter& writer) const override;
    bool IsDict() const override { return true; }
    UInt64 Size() const override { return m_map.size(); }
    DictIterator DictBegin() override { return m_map.begin(); }
    DictConstIterator DictBegin() const override { return m_map.begin(); }
    DictIterator DictEnd() override { return m_map.end(); }
    DictConstIterator DictEnd() const override { return m_map.end(); }
    DictIterator Find(const Name& key) override;
    Obj* FindObj(const Name& key) override;
    DictIterator Get(const Name& key) override;
    DictIterator Put(const Name& key, Obj* value) override;
    void Erase(DictIterator pos) override;
    void Erase(const Name& key) override;
    void Replace(DictIterator pos, Obj* value) override;
    DictIterator Rename(DictIterator pos, const Name& new_key) override;
    DictIterator Rename(const Name& old_key, const Name& new_key) override;
    UInt32 Hash() const override;

    // For parsers: inserts a key it already owns, keeping an existing entry of that key (the
    // caller builds from the last entry backwards, so the last one in the file wins). Answers
    // false, with nothing taken, when the key was present.
    bool InsertParsed(Name* key, Obj* value);

private:
    // Removes an entry, destroying its key and its value unless that is a reference.
    void EraseEntry(DictIterator pos) noexcept;
    DictMap m_map;
};

class Array final : public Container {
public:
    Array() = default;
    ~Array() override;
    Type GetType() const override { return e_array; }
    void Accept(ObjVisitor& visitor) override;
    Obj* Clone() const override;
    void Write(Filters::FilterWriter& writer) const override;
    bool IsArray() const override { return true; }
    UInt64 Size() const override { return m_items.size(); }
    Obj* GetAt(UInt32 index) override;
    void Insert(UInt32 pos, Obj* value) override;
    void PushBack(Obj* value) override;
    void EraseAt(UInt32 index) override;
    void Replace(UInt32 index, Obj* value) override;
    UInt32 Hash() const override;

    virtual void PushFront(Obj* value);

    // For parsers: takes the values as they are, with no checks (they are fresh and unowned).
    void AdoptParsed(Obj* const* values, size_t count);
    // For parsers: hands every value to `take` and empties the array, keeping its storage.
    template <class Take>
    void ReleaseParsed(Take&& take) noexcept {
        for (Obj* item : m_items) take(item);
        m_items.clear();
    }
    size_t ParsedCapacity() const noexcept { return m_items.capacity(); }

private:
    size_t size() const noexcept { return m_items.size(); }
    // The checks of Insert and Replace, and the owner link for the value.
    void Adopt(Obj* obj);
    std::vector<Obj*> m_items;
};

// A stream: its dictionary, and data that the subclass knows how to reach. All dictionary
// operations go to the dictionary; a stream is not a dictionary (`IsDict` is false).
class Stream : public Container {
public:
    explicit Stream(Dict* dict);  // takes ownership
    ~Stream() override;
    Type GetType() const override { return e_stream; }
    void Accept(ObjVisitor& visitor) override;
    bool IsStream() const override { return true; }
    UInt64 Size() const override;
    DictIterator DictBegin() override;
    DictConstIterator DictBegin() const override;
    DictIterator DictEnd() override;
    DictConstIterator DictEnd() const override;
    DictIterator Find(const Name& key) override;
    Obj* FindObj(const Name& key) override;
    DictIterator Get(const Name& key) override;
    DictIterator Put(const Name& key, Obj* value) override;
    void Erase(DictIterator pos) override;
    void Erase(const Name& key) override;
    void Replace(DictIterator pos, Obj* value) override;
    DictIterator Rename(DictIterator pos, const Name& new_key) override;
    DictIterator Rename(const Name& old_key, const Name& new_key) override;

    Dict* GetDict() const noexcept { return mp_dict; }

protected:
    Dict* mp_dict;
};

// A stream whose data lies in the document's file (or in memory for a stream made by a
// program). Nothing is read until someone asks for the bytes.
class FileStream final : public Stream {
public:
    // `dict` is owned; the numbers are those of the object header the parser met, and they
    // drive decryption.
    FileStream(Dict* dict, UInt64 data_offset, UInt32 obj_num, UInt16 gen);
    // A stream held in memory.
    FileStream(Dict* dict, std::vector<UInt8>&& data);
    ~FileStream() override;

    Obj* Clone() const override;  // answers the owner: a file stream is not copied
    void Write(Filters::FilterWriter& writer) const override;
    bool IsNewStream() const override { return m_is_new; }
    UInt64 GetRawStreamLength() override;
    std::unique_ptr<Filters::Filter> GetRawStream(bool decrypt) override;
    std::unique_ptr<Filters::Filter> GetDecodedStream(bool leave_last) override;
    std::unique_ptr<Filters::Filter> GetDecodedStream() override;
    void SetStreamData(const UInt8* bytes, size_t size,
                       std::unique_ptr<Filters::Filter> filter_chain) override;
    UInt32 Hash() const override;

    UInt64 GetDataOffset() const noexcept { return m_data_offset; }
    UInt32 GetHeaderObjNum() const noexcept { return m_obj_num; }
    UInt16 GetHeaderGenNum() const noexcept { return m_gen; }

private:
    // Finds the data's length by searching for "endstream" from the reader's position and
    // stores it under Length.
    UInt64 CalcStmLength(Filters::Filter& reader);

    UInt64 m_data_offset = 0;
    UInt32 m_obj_num = 0;
    UInt16 m_gen = 0;
    bool m_is_new = false;
    std::vector<UInt8> m_mem_data;
    bool m_has_mem_data = false;
};

// The entry of the cross-reference table and the reference at once: one per object number.
class Indirect final : public Obj {
public:
    // The offset that marks an entry created by a reference before any row was read for it.
    static constexpr UInt64 kPlaceholderOffset = ~UInt64(0);

    Indirect(DocImpl* doc, UInt32 obj_num, UInt16 gen, UInt64 offset, UInt8 field1);
    ~Indirect() override;  // destroys the target

    Type GetType() const override;
    void Accept(ObjVisitor& visitor) override;
    SDFDoc* GetDoc() const override;
    Obj* Clone() const override { return const_cast<Indirect*>(this); }
    void Write(Filters::FilterWriter& writer) const override;
    bool IsEqual(const Obj* other) const override;
    bool IsEqualValue(const Obj* other) const override;
    const Obj* GetDirect(bool load = true) const override;
    Obj* GetDirect(bool load = true) override;

    bool IsBool() const override;
    bool GetBool() const override;
    void SetBool(bool value) override;
    bool IsNumber() const override;
    double GetNumber() const override;
    void SetNumber(double value) override;
    bool IsNull() const override;
    bool IsString() const override;
    const UInt8* GetBuffer() const override;
    void GetAsPDFText(UString& out) const override;
    void SetString(const UString& value) override;
    void SetString(const UInt8* bytes, size_t size) override;
    bool IsName() const override;
    const char* GetName() const override;
    void SetName(const char* name) override;
    bool IsIndirect() const override { return true; }
    UInt32 GetObjNum() const override { return m_obj_num; }
    UInt16 GetGenNum() const override { return m_field1 == 2 ? 0 : m_gen; }
    UInt64 GetOffset() const override { return m_offset; }
    bool IsFree() const override { return m_field1 == 0; }
    void SetMark(bool mark) override { m_mark = mark; }
    bool IsMarked() const override { return m_mark; }
    bool IsLoaded() const override { return mp_target != nullptr; }
    bool IsContainer() const override;
    UInt64 Size() const override;
    DictIterator DictBegin() override;
    DictConstIterator DictBegin() const override;
    DictIterator DictEnd() override;
    DictConstIterator DictEnd() const override;
    bool IsDict() const override;
    DictIterator Find(const Name& key) override;
    Obj* FindObj(const Name& key) override;
    DictIterator Get(const Name& key) override;
    DictIterator Put(const Name& key, Obj* value) override;
    void Erase(DictIterator pos) override;
    void Erase(const Name& key) override;
    void Replace(UInt32 index, Obj* value) override;
    void Replace(DictIterator pos, Obj* value) override;
    DictIterator Rename(DictIterator pos, const Name& new_key) override;
    DictIterator Rename(const Name& old_key, const Name& new_key) override;
    bool IsArray() const override;
    Obj* GetAt(UInt32 index) override;
    void Insert(UInt32 pos, Obj* value) override;
    void PushBack(Obj* value) override;
    void EraseAt(UInt32 index) override;
    bool IsStream() const override;
    bool IsNewStream() const override;
    UInt64 GetRawStreamLength() override;
    std::unique_ptr<Filters::Filter> GetRawStream(bool decrypt) override;
    std::unique_ptr<Filters::Filter> GetDecodedStream(bool leave_last) override;
    std::unique_ptr<Filters::Filter> GetDecodedStream() override;
    void SetStreamData(const UInt8* bytes, size_t size,
                       std::unique_ptr<Filters::Filter> filter_chain) override;
    void SetModified(bool modified = true, Obj* cause = nullptr) override;
    bool IsModified() const override { return m_modified; }
    UInt32 Hash() const override;

    // --- For the document store and the parsers ---
    DocImpl* GetDocImpl() const noexcept { return mp_doc; }
    UInt8 GetField1() const noexcept { return m_field1; }
    void SetField1(UInt8 kind) noexcept { m_field1 = kind; }
    void SetOffset(UInt64 offset) noexcept { m_offset = offset; }
    // The raw generation field; for a compressed object the index in its object stream.
    UInt16 GetGenField() const noexcept { return m_gen; }
    void SetGenField(UInt16 gen) noexcept { m_gen = gen; }
    void SetObjNum(UInt32 num) noexcept { m_obj_num = num; }
    // Sets `modified` without telling anyone (for the repair of the table).
    void SetModifiedFlag(bool modified) noexcept { m_modified = modified; }
    // The target as it is, without loading.
    Obj* GetTarget() const noexcept { return mp_target; }
    // Makes `value` (direct, unowned) the target, destroying an old one, and stores this
    // object as the owner through the whole value. Takes the object lock.
    void SetTarget(Obj* value);
    // Gives the target out unowned; the owner links inside it stay.
    Obj* ReleaseTarget();

private:
    // Loads the target under the object lock when it is missing; answers it.
    Obj* Target() const;

    Obj* mp_target = nullptr;
    DocImpl* mp_doc;
    UInt64 m_offset;
    UInt32 m_obj_num;
    UInt16 m_gen;
    UInt8 m_field1;
    bool m_modified = false;
    bool m_mark = false;
};

// Visits by class. Each typed visit falls back to `Visit`, which does nothing.
class ObjVisitor {
public:
    virtual ~ObjVisitor();
    virtual void Visit(Obj& obj);
    virtual void VisitBool(Bool& obj);
    virtual void VisitNumber(Number& obj);
    virtual void VisitNull(Null& obj);
    virtual void VisitStr(Str& obj);
    virtual void VisitName(Name& obj);
    virtual void VisitArray(Array& obj);
    virtual void VisitDict(Dict& obj);
    virtual void VisitStream(Stream& obj);
    virtual void VisitIndirect(Indirect& obj);
};

// Walks a direct value: every object reached (containers, keys and values, stream
// dictionaries) goes to `OnObject`. It stops at references, which belong to the table, so it
// recurses only as deep as a value nests (bounded by the parser's nesting limit).
class ContainerVisitor : public ObjVisitor {
public:
    void Visit(Obj& obj) override;
    void VisitArray(Array& obj) override;
    void VisitDict(Dict& obj) override;
    void VisitStream(Stream& obj) override;
    void VisitIndirect(Indirect& obj) override;
    // Walks `root` and everything it holds.
    void Walk(Obj& root);
    virtual void OnObject(Obj& obj) = 0;
};

// Stores one Indirect as the owner of everything it reaches.
class AssocIndirectVst final : public ContainerVisitor {
public:
    explicit AssocIndirectVst(Indirect* owner) noexcept : mp_owner(owner) {}
    void OnObject(Obj& obj) override { obj.mp_owner = mp_owner; }

private:
    Indirect* mp_owner;
};

// Deletes a value that a container or parser held, unless it belongs to the table.
inline void DeleteDirect(Obj* obj) noexcept {
    if (obj && !obj->IsIndirect()) delete obj;
}

}  // namespace lum::SDF
