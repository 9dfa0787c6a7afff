// Reading object streams: the head of pairs, offsets from First, and the failures of a
// damaged head or body. (Loading into a document's table is tested with whole files.)
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Common/Limits.h"
#include "ObjTestSupport.h"
#include "SDF/ObjStmParser.h"

using namespace lum::SDF;
using namespace lum;
using namespace lum::test;

namespace {

// Every object of the stream, as "number=value" in head order.
std::string ReadAllObjects(Obj* stream) {
    ObjStmParser p(stream, nullptr, false);
    std::string out;
    for (size_t i = 0; i < p.GetCount(); ++i) {
        const UInt32 num = p.CurrentObjNum();
        std::unique_ptr<Obj> v(p.GetNextObj());
        out += std::to_string(num) + "=" + Dump(v.get()) + " ";
    }
    return out;
}

TEST(ObjStm, ReadsObjectsByOffset) {
    const struct Case {
        const char* name;
        std::string dict;
        std::string data;
        std::string objects;
    } cases[] = {
        {"plain", "<</Type /ObjStm /N 3 /First 12>>", "5 0 6 2 7 5 1 /B (three)",
         "5=1 6=/B 7=(three) "},
        {"containers", "<</N 2 /First 9>>", "1 0 2 13 <</A [1 2]>> [true]",
         "1=<</A [1 2] >> 2=[true] "},
        // References inside values become null without a document.
        {"references", "<</N 1 /First 4>>", "9 0 [1 0 R]", "9=[null] "},
        // Offsets behind the value: the reader moves forward over the gap.
        {"gaps", "<</N 2 /First 9>>", "1 0 2 10 (a)       (b)", "1=(a) 2=(b) "},
        // Offsets out of order: the reader never goes back, so it takes what comes next.
        {"backwards", "<</N 2 /First 8>>", "1 4 2 0 (a) (b) (c)", "1=(b) 2=(c) "},
        // A First below the head skips nothing.
        {"short first", "<</N 1 /First 0>>", "3 0 42", "3=42 "},
        {"empty", "<</N 0 /First 0>>", "", ""},
        {"null value", "<</N 1 /First 4>>", "4 0 null", "4=null "},
    };
    for (const auto& c : cases) {
        auto s = MakeStream(c.dict, c.data);
        EXPECT_EQ(ReadAllObjects(s.get()), c.objects) << c.name;
    }
}

TEST(ObjStm, Failures) {
    const struct Case {
        const char* name;
        std::string dict;
        std::string data;
        const char* message;
        const char* condition;
        const char* function;
    } cases[] = {
        {"no N", "<</First 0>>", "", "The dictionary does not contain required key: N", "false",
         "lum::SDF::Dict::Get"},
        {"no First", "<</N 0>>", "", "The dictionary does not contain required key: First",
         "false", "lum::SDF::Dict::Get"},
        {"head too short", "<</N 2 /First 4>>", "1 0 ", "Compressed object is corrupt",
         "GetObj()", "lum::SDF::ObjStmParser::ObjStmParser"},
        {"word in the head", "<</N 1 /First 4>>", "1 obj 5", "Compressed object is corrupt",
         "GetObj()", "lum::SDF::ObjStmParser::ObjStmParser"},
        {"missing body", "<</N 1 /First 4>>", "1 0 ", "Compressed object is corrupt", "GetObj()",
         "lum::SDF::ObjStmParser::GetNextObj"},
        {"body is a word", "<</N 1 /First 4>>", "1 0 endobj", "Compressed object is corrupt",
         "GetObj()", "lum::SDF::ObjStmParser::GetNextObj"},
        {"head value no number", "<</N 1 /First 4>>", "/A 0 1", "GetNumber() can't be invoked on Obj of this type.",
         "false", "lum::SDF::Obj::IllegalFunctionException"},
    };
    for (const auto& c : cases) {
        auto s = MakeStream(c.dict, c.data);
        EXPECT_LUM_FAILURE(ReadAllObjects(s.get()), c.message, c.condition, c.function);
    }
}

TEST(ObjStm, HeadBound) {
    // A head that claims more pairs than any table can use is read only up to the bound.
    constexpr long long kMax = lum::Limits::kMaxObjStmObjects;
    std::string head;
    head.reserve(size_t(kMax + 1) * 4);
    for (long long i = 0; i <= kMax; ++i) head += "1 0 ";
    for (long long n : {kMax, kMax + 1}) {
        auto s = MakeStream("<</N " + std::to_string(n) + " /First 0>>", head);
        ObjStmParser p(s.get(), nullptr, false);
        EXPECT_EQ(p.GetCount(), size_t(kMax)) << n;
    }
}

}  // namespace
