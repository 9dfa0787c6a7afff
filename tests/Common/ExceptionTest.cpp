#include <gtest/gtest.h>

#include <sstream>

#include "Common/Exception.h"
#include "support/TestSupport.h"

using lum::Common::Exception;

namespace {

TEST(Exception, FileKeepsLastComponentOfEitherSeparator) {
    struct Case { const char* file; const char* expected; };
    const Case cases[] = {
        {"..\\..\\PDF\\Page", "Page"},
        {"a\\b/c.cpp", "c.cpp"},
        {"a/b\\c.cpp", "c.cpp"},
        {"plain.cpp", "plain.cpp"},
        {"dir/", ""},
    };
    for (const auto& c : cases) {
        Exception e("cond", 1, c.file, "f", "m", 0);
        EXPECT_EQ(e.GetFileName(), c.expected) << c.file;
    }
}

TEST(Exception, FullTextLayout) {
    Exception e("x > 0", 42, "src/Filters/Flate.cpp", "", "Bad data", 7);
    EXPECT_EQ(e.GetFullText(),
              "Exception: \n\t Message: Bad data\n\t Conditional expression: x > 0"
              "\n\t Filename   : Flate.cpp\n\t Function   : \n\t Linenumber : 42\n");
    std::ostringstream os;
    os << e;
    EXPECT_EQ(os.str(), e.GetFullText());
    EXPECT_STREQ(e.what(), "Bad data");
    EXPECT_STREQ(e.GetTypeName(), "unspecified");
}

TEST(Exception, FormattedMessageAndRunTimePercentIsInert) {
    try {
        int n = 3;
        LUM_CHECK(n == 4, "Expected %d, got %d", 4, n);
        FAIL() << "no throw";
    } catch (const Exception& e) {
        EXPECT_EQ(e.GetMessage(), "Expected 4, got 3");
        EXPECT_EQ(e.GetCondition(), "n == 4");
        EXPECT_EQ(e.GetFileName(), "ExceptionTest.cpp");
        EXPECT_EQ(e.GetCode(), 0u);
    }
    const std::string token = "100%d";
    const lum::test::Failure f = lum::test::CatchFailure([&] { LUM_FAIL("%s", token.c_str()); });
    EXPECT_EQ(f.message, "100%d");
    EXPECT_EQ(f.condition, "false");
}

struct Widget {
    void* mp_impl = nullptr;
    void Use() const { LUM_CHECK_OBJECT(mp_impl, "Bad font"); }
};

TEST(Exception, CheckObjectAndFunctionName) {
    EXPECT_LUM_FAILURE(Widget{}.Use(), "Bad font", "mp_impl", "{anonymous}::Widget::Use");
}

TEST(Exception, QualifiedFunctionNames) {
    using lum::Common::QualifiedFunctionName;
    EXPECT_EQ(QualifiedFunctionName("std::string lum::PDF::Font::GetName() const"), "lum::PDF::Font::GetName");
    EXPECT_EQ(QualifiedFunctionName("lum::Obj* lum::SDF::Doc::Get(int)"), "lum::SDF::Doc::Get");
    EXPECT_EQ(QualifiedFunctionName("void f(std::vector<int>)"), "f");
    EXPECT_EQ(QualifiedFunctionName("lum::A::A(int)"), "lum::A::A");
    EXPECT_EQ(QualifiedFunctionName("bool X::operator()(int) const"), "X::operator()");
    EXPECT_EQ(QualifiedFunctionName("std::map<int, int> g<a b>::h()"), "g<a b>::h");
}

}  // namespace
