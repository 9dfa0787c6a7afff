// The value classes: the fat interface and its failures, dictionary lookups, ownership and
// owner links, names and the static table, equality and hashing.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <set>
#include <string>

#include "Common/UString.h"
#include "ObjTestSupport.h"
#include "SDF/NameTable.h"
#include "SDF/Obj.h"

using namespace lum::SDF;
using namespace lum;
using namespace lum::test;

namespace {

TEST(Dict, FindFilterAndGet) {
    // Entry 7 is free, entry 0 is free-looking but stands for the trailer; neither is loaded.
    Indirect free_ref(nullptr, 7, 0, 0, 0);
    Indirect null_ref(nullptr, 8, 0, 10, 1);
    null_ref.SetTarget(new Null());
    Indirect num_ref(nullptr, 9, 0, 20, 1);
    num_ref.SetTarget(new Number(5));

    Dict d;
    d.Put("Null", new Null());
    d.Put("NullRef", &null_ref);
    d.Put("Free", &free_ref);
    d.Put("Num", &num_ref);
    d.Put("Direct", new Number(1));

    for (const char* key : {"Null", "NullRef", "Free", "Absent"}) {
        EXPECT_EQ(d.Find(key), d.DictEnd()) << key;
        EXPECT_EQ(d.FindObj(key), nullptr) << key;
    }
    // Get does not filter: the null entries are there.
    EXPECT_TRUE(d.Get("Null")->second->IsNull());
    EXPECT_EQ(d.Get("Free")->second, &free_ref);
    // An indirect value comes back as its Indirect and answers as its target.
    EXPECT_EQ(d.FindObj("Num"), &num_ref);
    EXPECT_EQ(d.FindObj("Num")->GetNumber(), 5);
    EXPECT_EQ(d.FindObj(e_Type), nullptr);

    EXPECT_LUM_FAILURE(d.Get("Missing"), "The dictionary does not contain required key: Missing",
                       "false", "lum::SDF::Dict::Get");
    // Through a reference the failure names the operation of the target.
    Indirect dict_ref(nullptr, 3, 0, 0, 1);
    dict_ref.SetTarget(new Dict());
    EXPECT_LUM_FAILURE(dict_ref.GetNumber(), "GetNumber() can't be invoked on Obj of this type.",
                       "false", "lum::SDF::Obj::IllegalFunctionException");
    EXPECT_EQ(num_ref.GetNumber(), 5);
    // The free entry was never touched.
    EXPECT_FALSE(free_ref.IsLoaded());
}

TEST(Dict, PutReplaceEraseRename) {
    Dict d;
    EXPECT_LUM_FAILURE(d.Put("A", nullptr), "The value can't be NULL (0)", "obj", "lum::SDF::Dict::Put");
    auto it = d.Put("A", new Number(1));
    EXPECT_LUM_FAILURE(d.Replace(it, nullptr), "The value can't be NULL (0)", "obj",
                       "lum::SDF::Dict::Replace");
    Obj* two = new Number(2);
    d.Put("A", two);
    EXPECT_EQ(d.Size(), 1u);
    d.Put("A", two);  // the same pointer again changes nothing (and frees nothing)
    EXPECT_EQ(d.Get("A")->second->GetNumber(), 2);
    d.Replace(d.Get("A"), new Number(3));
    EXPECT_EQ(Dump(&d), "<</A 3 >>");
    d.PutName("B", "Name");
    d.PutBool("C", true);
    d.PutString("D", "str");
    d.PutArray("E")->PushBack(new Number(4));
    d.PutDict(e_Type)->PutNumber("X", 1);
    EXPECT_EQ(Dump(&d), "<</A 3 /B /Name /C true /D (str) /E [4] /Type <</X 1 >> >>");
    d.Rename("A", "Z");
    d.Rename("B", "C");  // over an existing key: its old value goes
    d.Erase("E");
    d.Erase("Nothing");
    EXPECT_EQ(Dump(&d), "<</C /Name /D (str) /Type <</X 1 >> /Z 3 >>");
    d.Erase(d.Find("D"));
    EXPECT_EQ(d.Size(), 3u);
}

TEST(Dict, KeysOrderByUnsignedBytes) {
    Dict d;
    for (const char* k : {"\xE9t\xE9", "a", "B", "aa", "A"}) d.PutNumber(k, 0);
    std::string order;
    for (auto it = d.DictBegin(); it != d.DictEnd(); ++it) order += std::string(it->first->GetName()) + ",";
    EXPECT_EQ(order, "A,B,a,aa,\xE9t\xE9,");
}

TEST(Array, Operations) {
    Array a;
    EXPECT_LUM_FAILURE(a.GetAt(0), "Array::GetAt - Index is out of range", "index<size()",
                       "lum::SDF::Array::GetAt");
    EXPECT_LUM_FAILURE(a.Insert(0, nullptr), "Obj can't be NULL (0)", "obj", "lum::SDF::Array::Insert");
    Null spare;  // a failed Replace does not take the value
    EXPECT_LUM_FAILURE(a.Replace(0, &spare), "Array::Replace: Index is out of range",
                       "pos < size()", "lum::SDF::Array::Replace");
    a.PushBack(new Number(1));       // on an empty array
    a.Insert(100, new Number(3));    // past the end appends
    a.Insert(1, new Number(2));
    a.PushFront(new Number(0));
    EXPECT_EQ(Dump(&a), "[0 1 2 3]");
    EXPECT_LUM_FAILURE(a.Replace(1, nullptr), "Obj can't be NULL (0)", "obj", "lum::SDF::Array::Replace");
    a.Replace(1, new Name("x"));
    a.EraseAt(99);  // past the end does nothing
    a.EraseAt(0);
    EXPECT_EQ(Dump(&a), "[/x 2 3]");
    EXPECT_LUM_FAILURE(a.GetAt(3), "Array::GetAt - Index is out of range", "index<size()",
                       "lum::SDF::Array::GetAt");
}

TEST(Str, PDFTextAndBack) {
    Str empty;
    EXPECT_EQ(empty.GetBuffer(), nullptr);
    lum::UString text;
    empty.GetAsPDFText(text);
    EXPECT_TRUE(text.Empty());

    // A PDF text string: UTF-16 behind a byte-order mark, else PDFDocEncoding.
    Str utf16(reinterpret_cast<const UInt8*>("\xFE\xFF\x00h\x04\x10"), 6);
    utf16.GetAsPDFText(text);
    ASSERT_EQ(text.GetLength(), 2);
    EXPECT_EQ(text.GetAt(0), 'h');
    EXPECT_EQ(text.GetAt(1), 0x0410);
    Str doc(reinterpret_cast<const UInt8*>("ab"), 2);
    doc.GetAsPDFText(text);
    EXPECT_EQ(text.ConvertToAscii(), "ab");

    Str s;
    s.SetString(lum::UString(Unicode(0x0410)));
    EXPECT_EQ(Dump(&s), "(\\xFE\\xFF\\x04\\x10)");
}

TEST(Name, StaticTableAndHeapNames) {
    Name fromSlot(e_Pages);
    Name fromText("Pages");
    EXPECT_TRUE(fromSlot.IsStatic());
    EXPECT_TRUE(fromText.IsStatic());
    EXPECT_EQ(fromSlot.GetName(), fromText.GetName());  // the same slot

    // 26 bytes or more never come from the table; a heap name equals a table name by text.
    const std::string long_name(26, 'A');
    EXPECT_FALSE(Name(long_name.c_str()).IsStatic());
    Name heap("Pages", 5);
    EXPECT_TRUE(heap.IsEqualValue(&fromSlot));
    EXPECT_EQ(heap.Hash(), fromSlot.Hash());

    // #00 ends the name: A#00B and A#00C are the same key, which is A.
    Name ab("A\0B", 3), ac("A\0C", 3);
    EXPECT_STREQ(ab.GetName(), "A");
    EXPECT_TRUE(ab.IsEqualValue(&ac));
    Dict d;
    d.Put(ab, new Number(1));
    d.Put(ac, new Number(2));
    EXPECT_EQ(Dump(&d), "<</A 2 >>");
}

TEST(Name, EveryListedNameHasItsOwnSlot) {
    std::ifstream in(std::string(LUM_TOOLS_DIR) + "/names.txt");
    ASSERT_TRUE(in) << "tools/names.txt";
    std::set<int> slots;
    std::string line;
    size_t count = 0;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        const int slot = NameTable::Lookup(line.data(), line.size());
        ASSERT_GE(slot, 0) << line;
        EXPECT_STREQ(NameTable::gl_slots[slot], line.c_str());
        slots.insert(slot);
        ++count;
    }
    EXPECT_EQ(slots.size(), NameTable::kNames);
    EXPECT_GE(count, NameTable::kNames);  // the list may repeat a name
    // Near misses and the empty name are not in the table.
    for (const char* miss : {"", "Page2", "pages", "Pages ", "Typ", "Typee"})
        EXPECT_LT(NameTable::Lookup(miss, std::strlen(miss)), 0) << miss;
}

TEST(Obj, OwnerLinks) {
    Indirect owner(nullptr, 12, 3, 100, 1);
    Obj* value = ParseValue("<</A [1 <</B (x)>>] /C 2>>").release();
    EXPECT_LUM_FAILURE(value->GetObjNum(), "GetObjNum() can't be invoked on Obj of this type.",
                       "false", "lum::SDF::Obj::IllegalFunctionException");
    owner.SetTarget(value);
    Obj* inner = value->Get("A")->second->GetAt(1)->Get("B")->second;
    EXPECT_EQ(inner->GetObjNum(), 12u);
    EXPECT_EQ(inner->GetGenNum(), 3u);
    EXPECT_EQ(inner->GetOffset(), 100u);
    EXPECT_FALSE(inner->IsFree());
    // A value put later into the tree gets the owner too.
    Obj* added = value->PutArray("New");
    added->PushBack(new Number(1));
    EXPECT_EQ(added->GetAt(0)->GetObjNum(), 12u);
    // Marks and modification go through the owner.
    inner->SetMark(true);
    EXPECT_TRUE(owner.IsMarked());
    EXPECT_TRUE(owner.IsModified());  // the Put above
    owner.SetModified(false);
    inner->SetModified();
    EXPECT_TRUE(owner.IsModified());
    // A kind 2 entry answers generation 0.
    Indirect compressed(nullptr, 5, 7, 40, 2);
    EXPECT_EQ(compressed.GetGenNum(), 0u);
    EXPECT_EQ(compressed.GetGenField(), 7u);
}

TEST(Obj, IdentityAndValueEquality) {
    Indirect ref(nullptr, 4, 0, 0, 1);
    Obj* target = new Number(7);
    ref.SetTarget(target);
    Indirect other(nullptr, 5, 0, 0, 1);
    other.SetTarget(new Number(7));

    EXPECT_TRUE(ref.IsEqual(&ref));
    EXPECT_TRUE(ref.IsEqual(target));  // a reference equals its own target
    EXPECT_TRUE(target->IsEqual(&ref));
    EXPECT_FALSE(ref.IsEqual(&other));
    EXPECT_FALSE(target->IsEqual(nullptr));
    EXPECT_FALSE(target->IsEqual(other.GetTarget()));
    EXPECT_TRUE(ref.IsEqualValue(&other));
    EXPECT_TRUE(target->IsEqualValue(&other));

    const struct Case {
        const char* a;
        const char* b;
        bool equal;
    } cases[] = {
        {"1", "1.0", true},          {"1", "2", false},         {"/A", "/A", true},
        {"/A", "(A)", false},        {"(ab)", "<6162>", true},  {"(ab)", "(abc)", false},
        {"[1 [2]]", "[1 [2]]", true}, {"[1 [2]]", "[1 [3]]", false}, {"[1]", "[1 1]", false},
        {"<</A 1 /B 2>>", "<</B 2 /A 1>>", true}, {"<</A 1>>", "<</A 2>>", false},
        {"<</A 1>>", "<</B 1>>", false}, {"null", "null", true}, {"true", "false", false},
        {"null", "0", false},
    };
    for (const auto& c : cases) {
        auto a = ParseValue(c.a), b = ParseValue(c.b);
        EXPECT_EQ(a->IsEqualValue(b.get()), c.equal) << c.a << " vs " << c.b;
        EXPECT_EQ(b->IsEqualValue(a.get()), c.equal) << c.b << " vs " << c.a;
    }
    EXPECT_FALSE(ParseValue("1")->IsEqualValue(nullptr));
}

TEST(Obj, ValueEqualityEndsOnCycles) {
    // 1 0 obj [1 0 R] and 2 0 obj [2 0 R]: equal as far as one can look, but the comparison
    // must come back.
    Indirect one(nullptr, 1, 0, 0, 1), two(nullptr, 2, 0, 0, 1);
    auto* a1 = new Array();
    a1->PushBack(&one);
    one.SetTarget(a1);
    auto* a2 = new Array();
    a2->PushBack(&two);
    two.SetTarget(a2);
    EXPECT_FALSE(one.IsEqualValue(&two));
    EXPECT_TRUE(one.IsEqualValue(&one));
}

TEST(Obj, HashInputs) {
    // Strings hash by type alone; arrays and dictionaries by their elements, in order.
    EXPECT_EQ(ParseValue("(a)")->Hash(), ParseValue("(b)")->Hash());
    EXPECT_NE(ParseValue("[1 2]")->Hash(), ParseValue("[2 1]")->Hash());
    EXPECT_EQ(ParseValue("<</A 1>>")->Hash(), ParseValue("<</A 1.0>>")->Hash());
    EXPECT_NE(ParseValue("<</A 1>>")->Hash(), ParseValue("<</B 1>>")->Hash());
    EXPECT_NE(ParseValue("true")->Hash(), ParseValue("false")->Hash());
    // A reference hashes its number only, whatever it refers to.
    EXPECT_EQ(Indirect(nullptr, 42, 0, 0, 1).Hash(), Indirect(nullptr, 42, 3, 7, 1).Hash());
}

TEST(Obj, ClonesAreDeepExceptReferences) {
    Indirect ref(nullptr, 9, 0, 0, 1);
    ref.SetTarget(new Number(1));
    auto d = ParseValue("<</A [1 (s) /N] /B <</C true>>>>");
    d->Put("R", &ref);
    std::unique_ptr<Obj> copy(d->Clone());
    EXPECT_TRUE(copy->IsEqualValue(d.get()));
    EXPECT_NE(copy->Get("A")->second, d->Get("A")->second);
    EXPECT_EQ(copy->Get("R")->second, &ref);
    EXPECT_EQ(ref.Clone(), &ref);
}

}  // namespace
