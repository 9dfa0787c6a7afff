// Loading objects of a file through the document's table: the header, the body and its end,
// streams, and the failures of a damaged object. A bad object fails alone, and fails again
// the same way at the next use.
#include <gtest/gtest.h>

#include <string>

#include "ObjTestSupport.h"
#include "SDF/ObjParser.h"

using namespace lum::SDF;
using namespace lum;
using namespace lum::test;

namespace {

TEST(ObjLoad, BodiesAndTheirEnds) {
    const struct Case {
        const char* name;
        std::string text;
        std::string value;
    } cases[] = {
        {"plain", "3 0 obj 42 endobj", "42"},
        {"no endobj", "3 0 obj <</A 1>>\n9 0 obj (next) endobj", "<</A 1 >>"},
        {"any word ends", "3 0 obj [1 2] whatever", "[1 2]"},
        {"longer obj word", "3 0 objx (v) endobj", "(v)"},
        {"other header", "7 0 obj (seven) endobj", "(seven)"},
        {"top-level reference", "3 0 obj 2 0 R endobj", "2"},
        {"reference inside", "3 0 obj [2 0 R 99 0 R] endobj", "[R2 R0]"},
        {"comment in header", "3 %c\n0 obj true endobj", "true"},
        {"several values", "3 0 obj 1 2 3 endobj", "1"},
    };
    for (const auto& c : cases) {
        MemDoc doc(WithObjects({{3, c.text}}));
        EXPECT_EQ(Dump(doc->GetObj(3)->GetDirect()), c.value) << c.name;
        EXPECT_FALSE(doc.Impl().IsRebuilt()) << c.name;
    }
}

TEST(ObjLoad, Failures) {
    struct Case {
        const char* name;
        std::string text;
        const char* message;
        const char* condition;
    };
    const char* kTwo = "Operator obj expects two arguments";
    const char* kDict = "Stream expects a dictionary as an argument";
    const char* kDictCond = "m_operand_stack.size() == 1 && m_operand_stack.back()->IsDict()";
    const std::vector<Case> cases = {
        {"no header", "garbage 1 2", "Object header not found", "false"},
        {"header cut", "3 0 endobj", "Object header not found", "false"},
        {"one number", "0 obj 5 endobj", kTwo, "m_operand_stack.size() == 2"},
        {"three numbers", "1 3 0 obj 5 endobj", kTwo, "m_operand_stack.size() == 2"},
        {"empty body", "3 0 obj endobj", "Operator endobj expects a single argument",
         "m_operand_stack.size() >= 1"},
        {"stream of an array", "3 0 obj [1] stream\nabc\nendstream endobj", kDict, kDictCond},
        {"stream of two values", "3 0 obj 1 <<>> stream\nabc\nendstream endobj", kDict, kDictCond},
    };
    for (const auto& c : cases) {
        MemDoc doc(WithObjects({{3, c.text}}));
        Indirect* obj = doc->GetObj(3);
        for (int attempt = 0; attempt < 2; ++attempt) {
            EXPECT_LUM_FAILURE(obj->GetType(), c.message, c.condition, "lum::SDF::ObjParser::GetObj");
            EXPECT_FALSE(obj->IsLoaded()) << c.name;
        }
        // The object beside it is unharmed.
        EXPECT_EQ(Dump(doc->GetObj(2)->Get(e_Count)->second), "0") << c.name;
    }
}

TEST(ObjLoad, UnknownKindAndPlaceholder) {
    MemDoc doc(WithObjects({{3, "3 0 obj 1 endobj"}}));
    doc.Entry(3)->SetField1(3);
    EXPECT_LUM_FAILURE(doc->GetObj(3)->GetType(), "Unknown object type", "false",
                       "lum::SDF::ObjParser::GetObj");
    // A placeholder (offset all bits set) fails at the seek, not as null.
    doc.Entry(3)->SetField1(1);
    doc.Entry(3)->SetOffset(Indirect::kPlaceholderOffset);
    EXPECT_THROW(doc->GetObj(3)->GetType(), lum::Common::Exception);
}

TEST(ObjLoad, StreamsStartBehindTheirLine) {
    const struct Case {
        const char* name;
        std::string text;
        std::string data;
        lum::UInt64 offset_after_keyword;  // bytes between "stream" and the data
    } cases[] = {
        {"lf", "3 0 obj <</Length 3>> stream\nabc\nendstream endobj", "abc", 1},
        {"crlf", "3 0 obj <</Length 3>> stream\r\nabc\nendstream endobj", "abc", 2},
        {"lone cr", "3 0 obj <</Length 3>> stream\rabc\nendstream endobj", "abc", 1},
        {"spaces then lf", "3 0 obj <</Length 3>> stream   \nabc\nendstream endobj", "abc", 4},
        {"longer keyword", "3 0 obj <</Length 3>> streamy\nabc\nendstream endobj", "abc", 1},
    };
    for (const auto& c : cases) {
        const std::string file = WithObjects({{3, c.text}});
        MemDoc doc(file);
        Obj* s = doc->GetObj(3)->GetDirect();
        ASSERT_TRUE(s && s->IsStream()) << c.name;
        auto* fs = static_cast<FileStream*>(s);
        const size_t keyword = file.find("stream", file.find("3 0 obj"));
        const size_t word_end = file.find_first_of("\r\n ", keyword);
        EXPECT_EQ(fs->GetDataOffset(), word_end + c.offset_after_keyword) << c.name;
        EXPECT_EQ(fs->GetHeaderObjNum(), 3u);
        EXPECT_EQ(ReadAll(s->GetRawStream(false)), c.data) << c.name;
    }
}

TEST(ObjLoad, ReferenceNeedsTwoNumbers) {
    MemDoc doc(WithObjects({{3, "3 0 obj [R] endobj"}, {4, "4 0 obj [/A 0 R] endobj"}}));
    EXPECT_LUM_FAILURE(doc->GetObj(3)->GetType(), "Reference expects two arguments",
                       "stack_size>=2", "lum::SDF::ObjParser::ContainerOperator");
    EXPECT_LUM_FAILURE(doc->GetObj(4)->GetType(), "GetNumber() can't be invoked on Obj of this type.",
                       "false", "lum::SDF::Obj::IllegalFunctionException");
}

TEST(ObjLoad, ReferencesStayInTheirDocument) {
    MemDoc a(WithObjects({{3, "3 0 obj [1] endobj"}}));
    MemDoc b(WithObjects({}));
    Obj* root = a->GetRoot();
    Obj* kids = a->GetObj(3);
    Indirect* foreign = b->GetObj(2);
    const char* kCond = "this_doc == obj->GetDoc()";
    EXPECT_LUM_FAILURE(root->Put("X", foreign), "Objects cannot belong to different documents",
                       kCond, "lum::SDF::Dict::Put");
    EXPECT_LUM_FAILURE(root->Replace(root->Find(e_Pages), foreign),
                       "Objects can't belong to different documents", kCond,
                       "lum::SDF::Dict::Replace");
    EXPECT_LUM_FAILURE(kids->PushBack(foreign), "Objects cannot belong to different documents",
                       kCond, "lum::SDF::Array::Insert");
    EXPECT_LUM_FAILURE(kids->Replace(0, foreign), "Objects cannot belong to different documents",
                       kCond, "lum::SDF::Array::Replace");
    // A reference of the same document goes in, and a direct value takes the owner's number.
    root->Put("Y", a->GetObj(3));
    EXPECT_EQ(root->FindObj("Y"), a->GetObj(3));
    kids->PushBack(new Number(2));
    EXPECT_EQ(kids->GetAt(1)->GetObjNum(), 3u);
    EXPECT_TRUE(a->GetObj(3)->IsModified());
}

}  // namespace
