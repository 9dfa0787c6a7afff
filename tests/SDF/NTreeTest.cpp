// Number tree lookups over small trees of our own: sorted and unsorted leaves, Limits that hold,
// lie or have the wrong kind, Kids beside Nums, null values, cycles, and the failures of a
// damaged tree; key comparison; positions and their values; hostile sizes and depths.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "ObjTestSupport.h"
#include "SDF/NTree.h"
#include "SDF/NTreeIndex.h"

using namespace lum::SDF;
using namespace lum;
using namespace lum::test;

namespace {

PdfObject Body(UInt32 num, const std::string& body) {
    return {num, std::to_string(num) + " 0 obj " + body + " endobj"};
}

// What a lookup of `key` in the tree rooted at object 3 gives: the value's dump, "none", or
// "fail: " and the failure's message.
std::string LookUp(MemDoc& doc, Int32 key) {
    try {
        const NTreeNode node(doc->GetObj(3), key);
        return node.IsEnd() ? "none" : Dump(node.Value());
    } catch (const lum::Common::Exception& e) {
        return "fail: " + e.GetMessage();
    }
}

TEST(NTree, Lookups) {
    struct Case {
        const char* name;
        std::vector<PdfObject> tree;  // object 3 is the root
        Int32 key;
        std::string expect;
    };
    const std::string illegal_get_at = "fail: GetAt() can't be invoked on Obj of this type.";
    const std::string illegal_number = "fail: GetNumber() can't be invoked on Obj of this type.";
    const std::string odd = "fail: The size of Names array in the NameTree is not an even number";
    const std::vector<Case> cases = {
        {"sorted leaf", {Body(3, "<</Nums [1 (a) 2 (b) 3 (c)]>>")}, 2, "(b)"},
        {"unsorted leaf", {Body(3, "<</Nums [3 (c) 1 (a) 2 (b)]>>")}, 1, "(a)"},
        {"first of two equal keys", {Body(3, "<</Nums [2 (first) 2 (second)]>>")}, 2, "(first)"},
        {"absent key", {Body(3, "<</Nums [1 (a) 2 (b)]>>")}, 5, "none"},
        {"empty leaf", {Body(3, "<</Nums []>>")}, 0, "none"},
        {"neither Kids nor Nums", {Body(3, "<</Names [1 (a)]>>")}, 1, "none"},
        {"negative key", {Body(3, "<</Nums [-5 (n) 5 (p)]>>")}, -5, "(n)"},
        {"no tolerance", {Body(3, "<</Nums [1.0000001 (near) 2.0 (two)]>>")}, 1, "none"},
        {"real equal to integer", {Body(3, "<</Nums [1.0000001 (near) 2.0 (two)]>>")}, 2, "(two)"},
        {"key through a reference", {Body(3, "<</Nums [4 0 R (a)]>>"), Body(4, "7")}, 7, "(a)"},
        {"value is a reference", {Body(3, "<</Nums [1 4 0 R]>>"), Body(4, "[(x)]")}, 1, "R4"},
        {"null value", {Body(3, "<</Nums [1 null 1 (later)]>>")}, 1, "none"},
        {"reference to null", {Body(3, "<</Nums [1 4 0 R]>>"), Body(4, "null")}, 1, "none"},
        {"null value, next kid searched",
         {Body(3, "<</Kids [4 0 R 5 0 R]>>"), Body(4, "<</Nums [1 null]>>"),
          Body(5, "<</Nums [1 (b)]>>")},
         1, "(b)"},
        {"Limits hold the key",
         {Body(3, "<</Kids [4 0 R 5 0 R]>>"), Body(4, "<</Limits [0 4] /Nums [1 (a)]>>"),
          Body(5, "<</Limits [5 9] /Nums [6 (b)]>>")},
         6, "(b)"},
        {"Limits exclude a key that stands in the node",
         {Body(3, "<</Kids [4 0 R 5 0 R]>>"), Body(4, "<</Limits [5 9] /Nums [1 (a)]>>"),
          Body(5, "<</Nums [1 (b)]>>")},
         1, "(b)"},
        {"Limits on an inner node skip its subtree",
         {Body(3, "<</Kids [4 0 R 6 0 R]>>"), Body(4, "<</Limits [10 20] /Kids [5 0 R]>>"),
          Body(5, "<</Nums [1 (deep)]>>"), Body(6, "<</Nums [1 (other)]>>")},
         1, "(other)"},
        {"Limits at the edges", {Body(3, "<</Limits [1 1] /Nums [1 (a)]>>")}, 1, "(a)"},
        {"Limits on the root", {Body(3, "<</Limits [2 3] /Nums [1 (a)]>>")}, 1, "none"},
        {"Kids win over Nums",
         {Body(3, "<</Kids [4 0 R] /Nums [1 (root)]>>"), Body(4, "<</Nums [1 (kid)]>>")}, 1,
         "(kid)"},
        {"Nums beside Kids never read",
         {Body(3, "<</Kids [4 0 R] /Nums [1 (root)]>>"), Body(4, "<</Nums [2 (kid)]>>")}, 1,
         "none"},
        {"empty Kids", {Body(3, "<</Kids [] /Nums [1 (a)]>>")}, 1, "none"},
        {"kid pointing back to the root",
         {Body(3, "<</Kids [3 0 R 4 0 R]>>"), Body(4, "<</Nums [1 (a)]>>")}, 1, "(a)"},
        {"cycle two levels down",
         {Body(3, "<</Kids [4 0 R 5 0 R]>>"), Body(4, "<</Kids [3 0 R 4 0 R]>>"),
          Body(5, "<</Nums [1 (a)]>>")},
         1, "(a)"},
        {"node reached twice is entered once",
         {Body(3, "<</Kids [4 0 R 4 0 R 5 0 R]>>"), Body(4, "<</Nums [2 (x)]>>"),
          Body(5, "<</Nums [1 (a)]>>")},
         1, "(a)"},
        {"kid to a missing object reads the trailer",
         {Body(3, "<</Kids [99 0 R 4 0 R]>>"), Body(4, "<</Nums [1 (a)]>>")}, 1, "(a)"},
        {"odd leaf", {Body(3, "<</Nums [1 (a) 2]>>")}, 1, odd},
        {"odd leaf never reached",
         {Body(3, "<</Kids [4 0 R 5 0 R]>>"), Body(4, "<</Nums [1 (a)]>>"),
          Body(5, "<</Nums [1]>>")},
         1, "(a)"},
        {"odd leaf skipped by its Limits",
         {Body(3, "<</Kids [5 0 R 4 0 R]>>"), Body(4, "<</Nums [1 (a)]>>"),
          Body(5, "<</Limits [7 9] /Nums [1]>>")},
         1, "(a)"},
        {"Nums not an array", {Body(3, "<</Nums 5>>")}, 1, odd},
        {"key of another type before the match", {Body(3, "<</Nums [(x) (a) 1 (b)]>>")}, 1,
         illegal_number},
        {"key of another type behind the match", {Body(3, "<</Nums [1 (b) (x) (a)]>>")}, 1, "(b)"},
        {"Limits not an array", {Body(3, "<</Limits 5 /Nums [1 (a)]>>")}, 1, illegal_get_at},
        {"Limits of one element", {Body(3, "<</Limits [0] /Nums [1 (a)]>>")}, 1,
         "fail: Array::GetAt - Index is out of range"},
        {"Limits of strings", {Body(3, "<</Limits [(a) (z)] /Nums [1 (a)]>>")}, 1, illegal_number},
        {"null Limits count as absent", {Body(3, "<</Limits null /Nums [1 (a)]>>")}, 1, "(a)"},
        {"Kids not an array", {Body(3, "<</Kids 5>>")}, 1, illegal_get_at},
        {"kid that is no dictionary", {Body(3, "<</Kids [7]>>")}, 1,
         "fail: Find() can't be invoked on Obj of this type."},
        {"kid that is a free object", {Body(3, "<</Kids [4 0 R]>>")}, 1,
         "fail: Attempt to load a free object"},
        {"root that is no dictionary", {Body(3, "[1 (a)]")}, 1,
         "fail: Find() can't be invoked on Obj of this type."},
    };
    for (const auto& c : cases) {
        MemDoc doc(WithObjects(c.tree, 8));  // numbers up to 7; the unused ones free
        EXPECT_EQ(LookUp(doc, c.key), c.expect) << c.name;
    }
}

TEST(NTree, PathOfAFoundKey) {
    MemDoc doc(WithObjects({Body(3, "<</Kids [4 0 R 5 0 R]>>"), Body(4, "<</Nums [1 null]>>"),
                            Body(5, "<</Nums [0 (x) 1 (y)]>>")}));
    const NTreeNode node(doc->GetObj(3), 1);
    ASSERT_EQ(node.Positions(), (std::vector<Int32>{1, 2}));
    EXPECT_EQ(Dump(node.Arrays()[0]), "[R4 R5]");
    EXPECT_EQ(Dump(node.Arrays()[1]), "[0 (x) 1 (y)]");
    EXPECT_STREQ(node.KeyWord(), "Nums");
    EXPECT_TRUE(node == NTreeNode(doc->GetObj(3), 1));
    EXPECT_FALSE(node == NTreeNode(doc->GetObj(3), 0));
    EXPECT_FALSE(node == NTreeNode());
    EXPECT_TRUE(NTreeNode(doc->GetObj(3), 7) == NTreeNode());
}

TEST(NTree, NameTreeByString) {
    MemDoc doc(WithObjects({Body(3, "<</Kids [4 0 R 5 0 R]>>"),
                            Body(4, "<</Limits [(a) (c)] /Names [(a) 1 (c) 3]>>"),
                            Body(5, "<</Limits [(d) (f)] /Names [(f) 6 (d) 4 (e) 5]>>")}));
    for (const auto& [key, expect] : std::vector<std::pair<std::string, std::string>>{
             {"d", "4"}, {"e", "5"}, {"a", "1"}, {"b", "none"}, {"", "none"}, {"ee", "none"}}) {
        NTreeNode node;
        NTreeNode::VisitedSet visited;
        Str str(reinterpret_cast<const lum::UInt8*>(key.data()), key.size());
        Obj* value = node.FindImpl(visited, doc->GetObj(3), &str);
        EXPECT_EQ(value ? Dump(value) : "none", expect) << key;
        if (value) {
            EXPECT_EQ(Dump(node.Value()), expect) << key;
        }
    }
}

TEST(NTree, WithoutAKeyTheFirstEntry) {
    // Limits aren't asked, a leaf of fewer than two elements has nothing, the first pair of
    // the next leaf counts whatever its order.
    MemDoc doc(WithObjects({Body(3, "<</Kids [4 0 R 5 0 R]>>"),
                            Body(4, "<</Limits [(x) (x)] /Names []>>"),
                            Body(5, "<</Limits [(z) (z)] /Names [(b) 2 (a) 1]>>")}));
    NTreeNode first;
    NTreeNode::VisitedSet visited;
    EXPECT_EQ(Dump(first.FindImpl(visited, doc->GetObj(3), nullptr)), "2");
    EXPECT_EQ(first.Positions(), (std::vector<Int32>{1, 0}));
}

TEST(NTree, KeyOrder) {
    auto num = [](double v) { return std::make_unique<Number>(v); };
    auto str = [](const std::string& s) {
        return std::make_unique<Str>(reinterpret_cast<const lum::UInt8*>(s.data()), s.size());
    };
    struct Case {
        std::unique_ptr<Obj> a, b;
        int expect;
    };
    Case cases[] = {
        {num(1), num(2), -1},
        {num(2), num(1), 1},
        {num(-0.0), num(0), 0},
        {num(1), num(1.0000000001), -1},
        {str("a"), str("b"), -1},
        {str("ab"), str("a"), 1},
        {str("a"), str("ab"), -1},
        {str(""), str("a"), -1},
        {str(""), str(""), 0},
        {str("\xff"), str("a"), 1},  // unsigned bytes
        {str(std::string("a\0b", 3)), str(std::string("a\0c", 3)), -1},
    };
    for (const Case& c : cases)
        EXPECT_EQ(NTreeNode::Compare(c.a.get(), c.b.get()), c.expect)
            << Dump(c.a.get()) << " vs " << Dump(c.b.get());
    EXPECT_TRUE(CatchFailure([&] { NTreeNode::Compare(num(1).get(), str("1").get()); }).thrown);
    EXPECT_TRUE(CatchFailure([&] { NTreeNode::Compare(str("1").get(), num(1).get()); }).thrown);
}

TEST(NTree, ValueFailures) {
    EXPECT_LUM_FAILURE(NTreeNode().Value(), "Dereferencing NULL NameTreeIterator",
                       "!m_pos.empty() && !m_names.empty() && !m_arr.empty() && m_pos.size() == "
                       "m_names.size() && m_pos.size() == m_arr.size()",
                       "lum::SDF::NTreeNode::Value");
    MemDoc doc(WithObjects({Body(3, "<</Nums [1 (a) 2 (b)]>>")}));
    const NTreeNode node(doc->GetObj(3), 2);
    ASSERT_FALSE(node.IsEnd());
    Obj* leaf = node.Arrays().back();
    leaf->EraseAt(3);  // the value behind the key goes
    EXPECT_LUM_FAILURE(node.Value(), "NameTreeIterator is corrupt",
                       "m_pos.back()+1<int(names_arr->Size())", "lum::SDF::NTreeNode::Value");
    MemDoc odd(WithObjects({Body(3, "<</Nums [1]>>")}));
    EXPECT_LUM_FAILURE(NTreeNode(odd->GetObj(3), 1),
                       "The size of Names array in the NameTree is not an even number",
                       "(sz%2)== 0", "lum::SDF::NTreeNode::FindImpl");
}

// --- Hostile trees: the work stays bounded and the answers are those of the rules ---

std::string Refs(UInt32 from, UInt32 to) {
    std::string out;
    for (UInt32 n = from; n < to; ++n) out += std::to_string(n) + " 0 R ";
    return out;
}

TEST(NTree, DeepChainWithACycleAtTheBottom) {
    const UInt32 depth = 10000;
    std::vector<PdfObject> objs;
    for (UInt32 n = 3; n < 3 + depth; ++n)
        objs.push_back(Body(n, "<</Kids [" + Refs(n + 1, n + 2) + "]>>"));
    objs.push_back(Body(3 + depth, "<</Kids [3 0 R " + Refs(4 + depth, 5 + depth) + "]>>"));
    objs.push_back(Body(4 + depth, "<</Nums [42 (bottom)]>>"));
    MemDoc doc(WithObjects(objs));
    EXPECT_EQ(LookUp(doc, 42), "(bottom)");
    EXPECT_EQ(NTreeNode(doc->GetObj(3), 42).Positions().size(), size_t(depth + 2));
    EXPECT_EQ(LookUp(doc, 41), "none");
}

TEST(NTree, MillionKids) {
    // A million references to the one leaf, then one to a leaf that holds the key.
    std::string kids;
    kids.reserve(7000000);
    for (int i = 0; i < 1000000; ++i) kids += "4 0 R ";
    MemDoc doc(WithObjects({Body(3, "<</Kids [" + kids + "5 0 R]>>"), Body(4, "<</Nums [1 (a)]>>"),
                            Body(5, "<</Nums [2 (b)]>>")}));
    EXPECT_EQ(LookUp(doc, 2), "(b)");
    EXPECT_EQ(LookUp(doc, 3), "none");
}

TEST(NTree, SharedKidsArrayIsWalkedOnce) {
    // Every node's Kids is the same array of all nodes: walked once per node, that would be
    // n * n entries (400 million here); the search keeps the same order and answer in n.
    const UInt32 n = 20000;
    const std::string shared = "<</Kids " + std::to_string(4 + n) + " 0 R>>";
    std::vector<PdfObject> objs;
    for (UInt32 i = 3; i < 3 + n; ++i) objs.push_back(Body(i, shared));
    objs.push_back(Body(3 + n, "<</Nums [9 (end)]>>"));
    objs.push_back(Body(4 + n, "[" + Refs(3, 4 + n) + "]"));
    MemDoc doc(WithObjects(objs));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(LookUp(doc, 9), "(end)");
    EXPECT_EQ(LookUp(doc, 8), "none");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

// Large leaves are searched through the document's index; it must answer as the scan from the
// front does, failures included.
TEST(NTree, LargeLeavesAnswerAsTheScan) {
    auto leaf = [](const std::string& tail) {
        std::string keys;
        for (int i = 0; i < 100; ++i)
            keys += std::to_string((i * 37) % 101) + " (v" + std::to_string(i) + ") ";
        return "<</Nums [" + keys + tail + "]>>";
    };
    const std::vector<std::pair<const char*, std::string>> trees = {
        {"unsorted", leaf("")},
        {"repeated keys", leaf("5 (again) 200 (new) 200 (twice)")},
        {"a string key in the middle", leaf("(x) (s) 300 (behind)")},
        {"a free key in the middle", leaf("5 0 R (f) 300 (behind)")},
        {"a key through a reference", leaf("4 0 R (ref) 300 (behind)")},
    };
    for (const auto& [name, tree] : trees) {
        MemDoc doc(WithObjects({Body(3, tree), Body(4, "400")}, 6));
        Obj* nums = doc->GetObj(3)->FindObj(Name(e_Nums));
        for (Int32 k : {0, 5, 36, 100, 101, 200, 300, 400, -1}) {
            Number key(k);
            const auto scan = CatchFailure([&] { ScanLeaf(nums, nums->Size(), &key, 0); });
            const auto indexed = CatchFailure([&] { FindKeyInLeaf(nums, nums->Size(), &key); });
            EXPECT_EQ(indexed.thrown, scan.thrown) << name << " key " << k;
            EXPECT_EQ(indexed.message, scan.message) << name << " key " << k;
            if (!scan.thrown) {
                EXPECT_EQ(FindKeyInLeaf(nums, nums->Size(), &key),
                          ScanLeaf(nums, nums->Size(), &key, 0))
                    << name << " key " << k;
            }
        }
    }
}

TEST(NTree, FlatLeafOfManyPagesIsNotScannedPerLookup) {
    // 50,000 pairs looked up one after another, as the pages of a document do: scanned, that
    // is over a billion comparisons.
    const Int32 n = 50000;
    std::string nums;
    for (Int32 i = n - 1; i >= 0; --i) nums += std::to_string(i) + " 4 0 R ";
    MemDoc doc(WithObjects({Body(3, "<</Nums [" + nums + "]>>"), Body(4, "[(parent)]")}));
    const auto start = std::chrono::steady_clock::now();
    for (Int32 k = 0; k < n; ++k) ASSERT_EQ(LookUp(doc, k), "R4");
    EXPECT_EQ(LookUp(doc, n), "none");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
