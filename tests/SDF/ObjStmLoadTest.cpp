// Objects inside object streams, loaded through the document's table: all objects of a
// stream come in at the first use of one, each by its number, and entries that point
// elsewhere stay as they are.
#include <gtest/gtest.h>

#include <string>

#include "ObjTestSupport.h"
#include "SDF/ObjParser.h"

using namespace lum::SDF;
using namespace lum;
using namespace lum::test;

namespace {

// Object 5: an object stream holding `body` behind `head`; other objects as given.
std::string FileWithObjStm(const std::string& head, const std::string& body, int n,
                           std::vector<PdfObject> extra = {}, UInt32 size = 12,
                           const std::string& length = "") {
    const std::string data = head + body;
    auto objs = BaseObjects();
    objs.push_back({5, "5 0 obj <</Type /ObjStm /N " + std::to_string(n) + " /First " +
                           std::to_string(head.size()) + " /Length " +
                           (length.empty() ? std::to_string(data.size()) : length) +
                           ">> stream\n" + data + "\nendstream\nendobj"});
    objs.insert(objs.end(), extra.begin(), extra.end());
    return BuildPdf(objs, size);
}

// Points entry `num` into object stream `container` at `index`.
void MakeCompressed(MemDoc& doc, UInt32 num, UInt32 container, lum::UInt16 index) {
    Indirect* e = doc.Entry(num);
    e->SetField1(2);
    e->SetOffset(container);
    e->SetGenField(index);
}

TEST(ObjStmLoad, FirstUseLoadsTheWholeStream) {
    MemDoc doc(FileWithObjStm("6 0 7 8 ", "<</A 1>> [7 0 R]", 2));
    MakeCompressed(doc, 6, 5, 0);
    MakeCompressed(doc, 7, 5, 1);
    EXPECT_EQ(Dump(doc->GetObj(7)->GetDirect()), "[R7]");
    EXPECT_TRUE(doc.Entry(6)->IsLoaded());
    EXPECT_EQ(Dump(doc->GetObj(6)->GetDirect()), "<</A 1 >>");
    // The index goes: generation 0, and the values know their number.
    EXPECT_EQ(doc.Entry(6)->GetGenField(), 0u);
    EXPECT_EQ(doc->GetObj(6)->Get("A")->second->GetObjNum(), 6u);
}

TEST(ObjStmLoad, EntriesThatPointElsewhereStay) {
    MemDoc doc(FileWithObjStm("6 0 7 5 ", "(six) (old)", 2, {{7, "7 0 obj (new) endobj"}}));
    MakeCompressed(doc, 6, 5, 0);
    // Entry 7 is in the file (a newer section moved it): loading 6 leaves it alone.
    EXPECT_EQ(Dump(doc->GetObj(6)->GetDirect()), "(six)");
    EXPECT_FALSE(doc.Entry(7)->IsLoaded());
    EXPECT_EQ(Dump(doc->GetObj(7)->GetDirect()), "(new)");
}

TEST(ObjStmLoad, Failures) {
    struct Case {
        const char* name;
        std::string file;
        UInt32 container;
        const char* condition;
        const char* function;
    };
    const char* kGetObj = "lum::SDF::ObjParser::GetObj";
    const char* kLoad = "lum::SDF::ObjParser::LoadCompressedObjects";
    const char* kContainer = "ind_obj_stm && ind_obj_stm->GetField1()== 1 && ind_obj_stm->IsStream()";
    const std::vector<Case> cases = {
        {"container beyond the table", FileWithObjStm("6 0 ", "1", 1), 40,
         "cs_obj_num<mp_doc->m_xref.size()", kGetObj},
        {"container no stream", FileWithObjStm("6 0 ", "1", 1, {{4, "4 0 obj <<>> endobj"}}), 4,
         kContainer, kGetObj},
        {"container free", FileWithObjStm("6 0 ", "1", 1), 9, kContainer, kGetObj},
        {"number 0 in the head", FileWithObjStm("0 0 6 2 ", "1 2", 2), 5, "objnum>0", kLoad},
        {"number beyond the table", FileWithObjStm("60 0 6 2 ", "1 2", 2), 5,
         "objnum<UInt32(mp_doc->m_xref.size())", kLoad},
        {"not in its container", FileWithObjStm("7 0 ", "1", 1), 5, "indirect_obj.IsLoaded()",
         kGetObj},
    };
    for (const auto& c : cases) {
        MemDoc doc(c.file);
        MakeCompressed(doc, 6, c.container, 0);
        EXPECT_LUM_FAILURE(doc->GetObj(6)->GetType(), "Bad obj stream", c.condition, c.function);
        EXPECT_FALSE(doc.Entry(6)->IsLoaded()) << c.name;
    }
    // A container that is itself compressed is refused.
    MemDoc nested(FileWithObjStm("6 0 ", "1", 1));
    MakeCompressed(nested, 6, 5, 0);
    MakeCompressed(nested, 5, 3, 0);
    EXPECT_LUM_FAILURE(nested->GetObj(6)->GetType(), "Bad obj stream", kContainer, kGetObj);
    // A number whose slot is empty.
    // A number whose slot is empty: the rows end at 7, the trailer's Size makes room to 12.
    std::string holes = FileWithObjStm("6 0 8 2 ", "1 2", 2, {}, 8);
    holes.replace(holes.find("<</Size 8 "), 10, "<</Size 12 ");
    MemDoc empty(holes);
    MakeCompressed(empty, 6, 5, 0);
    EXPECT_LUM_FAILURE(empty->GetObj(6)->GetType(), "Bad obj stream", "false", kLoad);
}

TEST(ObjStmLoad, StreamWhoseLengthLiesInsideItself) {
    // Loading 6 reads stream 5, whose Length is object 8 in stream 5: the load must fail,
    // not recurse.
    MemDoc doc(FileWithObjStm("6 0 8 2 ", "1 9", 2, {}, 12, "8 0 R"));
    MakeCompressed(doc, 6, 5, 0);
    MakeCompressed(doc, 8, 5, 1);
    EXPECT_THROW(doc->GetObj(6)->GetType(), lum::Common::Exception);
    EXPECT_FALSE(doc.Entry(6)->IsLoaded());
}

// The same file without a usable table: the rebuild unpacks the object stream.
std::string Unlisted(std::string file) {
    file.replace(file.rfind("startxref\n") + 10, std::string::npos, "0\n%%EOF\n");
    return file;
}

TEST(ObjStmLoad, RebuildModeEntersNumbers) {
    MemDoc doc(Unlisted(FileWithObjStm("20 0 6 9 ", "[30 0 R] (x)", 2)));
    ASSERT_TRUE(doc.Impl().IsRebuilt());
    ASSERT_GT(doc.Impl().GetXRefSize(), 30u);
    Indirect* e20 = doc.Entry(20);
    ASSERT_NE(e20, nullptr);
    EXPECT_EQ(e20->GetField1(), 2);
    EXPECT_EQ(e20->GetOffset(), 5u);
    EXPECT_EQ(Dump(e20->GetDirect()), "[R30]");
    // The reference met inside became a placeholder of kind 1.
    Indirect* e30 = doc.Entry(30);
    ASSERT_NE(e30, nullptr);
    EXPECT_EQ(e30->GetOffset(), Indirect::kPlaceholderOffset);
    EXPECT_EQ(e30->GetField1(), 1);
    // An existing entry is taken over in rebuild mode.
    EXPECT_EQ(doc.Entry(6)->GetField1(), 2);
    EXPECT_EQ(Dump(doc.Entry(6)->GetDirect()), "(x)");
    // Numbers from 2^20 on end the scan there; the one below is entered.
    MemDoc huge(Unlisted(FileWithObjStm("1048576 0 ", "1", 1)));
    EXPECT_LT(huge.Impl().GetXRefSize(), 1048576u);
    MemDoc below(Unlisted(FileWithObjStm("1048575 0 ", "1", 1)));
    EXPECT_EQ(below.Impl().GetXRefSize(), 1048576u);
}

}  // namespace
