// The value reader: literal and hex strings, names, arrays and dictionaries, with their
// tolerances and failures.
#include <gtest/gtest.h>

#include <string>

#include "Common/Limits.h"
#include "ObjTestSupport.h"
#include "SDF/Parser.h"

using namespace lum;
using namespace lum::test;

namespace {

struct ValueCase {
    std::string input;
    std::string value;
};

void ExpectValues(const std::vector<ValueCase>& cases) {
    for (const auto& c : cases) {
        MemParser p(c.input);
        EXPECT_EQ(Dump(p.One()), c.value) << c.input;
    }
}

TEST(Parser, LiteralStrings) {
    ExpectValues({
        {"(abc)", "(abc)"},
        {"()", "()"},
        {"(a(b)c)", "(a(b)c)"},        // balanced parentheses stay
        {"(a\\(b)", "(a(b)"},
        {"(a\\)b)", "(a)b)"},
        {"(a\r\nb)", "(a\\x0Ab)"},     // CR LF is one LF
        {"(a\rb)", "(a\\x0Ab)"},       // a lone CR too
        {"(a\nb)", "(a\\x0Ab)"},       // a lone LF is ordinary
        {"(a\n\rb)", "(a\\x0A\\x0Ab)"},
        {"(a\\\r\nb)", "(ab)"},        // backslash line continuations
        {"(a\\\nb)", "(ab)"},
        {"(a\\\rb)", "(ab)"},
        {"(\\400)", "(\\x00)"},        // three octal digits overflow to 8 bits
        {"(\\101\\0615)", "(A15)"},    // at most three digits
        {"(\\7x)", "(\\x07x)"},
        {"(\\18)", "(\\x018)"},
        {"(\\8\\9\\q\\\\)", "(89q\\)"},  // other escaped bytes stand for themselves
        {"(\\b\\f\\n\\r\\t)", "(\\x08\\x0C\\x0A\\x0D\\x09)"},
        {"(%not a comment)", "(%not a comment)"},
        {"(\xff\x80)", "(\\xFF\\x80)"},
    });
    MemParser p("()");
    EXPECT_EQ(p.One()->GetBuffer(), nullptr);
}

TEST(Parser, HexStrings) {
    ExpectValues({
        {"<414243>", "(ABC)"},
        {"<>", "()"},
        {"<aBcD>", "(\\xAB\\xCD)"},
        {"<41 42\n\t43>", "(ABC)"},     // white space between digits
        {"<4 1>", "(A)"},               // even between the two digits of a byte
        {"<4%comment\n1>", "(A)"},      // comments are honoured inside
        {"<414>", "(A@)"},              // an odd last digit is a high nibble
        {"<41 4 >", "(A@)"},
    });
}

TEST(Parser, Names) {
    ExpectValues({
        {"/Type", "/Type"},
        {"/A#42", "/AB"},
        {"/A#", "/A#"},       // a number sign at the very end stays
        {"/A#4", "/A#4"},
        {"/A#4G", "/A#4G"},   // ...and one that does not begin two hex digits
        {"/A#G1", "/A#G1"},
        {"/#2F#28", "//("},
        {"/A#00B", "/A"},     // a 0 byte ends the name
        {"/", "/"},           // the empty name
        {"/a.b-c_d", "/a.b-c_d"},
    });
}

TEST(Parser, ArraysAndDictionaries) {
    ExpectValues({
        {"[1 [2 3] (x) /N]", "[1 [2 3] (x) /N]"},
        {"[]", "[]"},
        {"<<>>", "<<>>"},
        {"<</A 1 /A 2>>", "<</A 2 >>"},                   // the last duplicate key wins
        {"<</B 1 /A 2 /B 3 /A 4>>", "<</A 4 /B 3 >>"},
        {"<</A [1 2 >>", "<</A [1 2] >>"},                // the dictionary end closes both
        {"<</A [1 [2 >>", "<</A [1 [2]] >>"},
        {"<</A null>>", "<</A null >>"},                  // kept in the map
        {"<</A 1 foo /C 3>>", "<</A 1 >>"},               // a stray word ends it
        {"<</A 1", "<</A 1 >>"},                          // the end of the data as well
        {"<< /K true /L false /M null >>", "<</K true /L false /M null >>"},
        {"<</A<</B<</C 1>>>>>>", "<</A <</B <</C 1 >> >> >>"},
    });
}

TEST(Parser, WordsAreHandedBack) {
    // With the default container operator, a reference is three things: 1, 0 and the word R.
    MemParser p("1 0 R");
    EXPECT_TRUE(p->GetObj());
    EXPECT_TRUE(p->GetObj());
    EXPECT_FALSE(p->GetObj());
    EXPECT_STREQ(p->GetToken(), "R");
    EXPECT_EQ(p->GetOperandStack().size(), 2u);

    // Inside an array the word ends the array, and reaches the caller.
    MemParser q("[1 0 R] x");
    EXPECT_FALSE(q->GetObj());
    EXPECT_STREQ(q->GetToken(), "R");
    EXPECT_EQ(Dump(q->GetOperandStack().back()), "[1 0]");
    EXPECT_FALSE(q->GetObj());
    EXPECT_STREQ(q->GetToken(), "]");

    // An unclosed array at the end of the data is complete with what it holds.
    MemParser r("[1 2");
    EXPECT_FALSE(r->GetObj());
    EXPECT_EQ(r->GetTokenSize(), 0u);
    EXPECT_EQ(Dump(r->GetOperandStack().back()), "[1 2]");

    // Keywords and other words answer false and stay readable.
    for (const char* word : {"fals", "nul", "truex", "}", "{", ">", "]", "obj", "endobj"}) {
        MemParser w(word);
        EXPECT_FALSE(w->GetObj()) << word;
        EXPECT_STREQ(w->GetToken(), word);
        EXPECT_TRUE(w->GetOperandStack().empty()) << word;
    }

    // A stray word in a dictionary is lost and reading goes on behind it.
    MemParser s("<</A 1 foo /C 3>> /Next");
    EXPECT_TRUE(s->GetObj());
    EXPECT_TRUE(s->GetObj());
    EXPECT_EQ(Dump(s->GetOperandStack().back()), "/C");
}

TEST(Parser, Failures) {
    struct Case {
        const char* input;
        const char* message;
        const char* condition;
        const char* function;
    };
    const Case cases[] = {
        {")", "')' is not matched", "false", "lum::SDF::Parser::GetObj"},
        {"[1 )]", "')' is not matched", "false", "lum::SDF::Parser::GetObj"},
        {"<</A 1>", "'<<' is not matched", "m_stream.Get() == '>'", "lum::SDF::Parser::LexDict"},
        {"<</A 1> >", "'<<' is not matched", "m_stream.Get() == '>'", "lum::SDF::Parser::LexDict"},
        {"<</A 1 /B foo>>", "the number of key-value elements should be even",
         "num_elements>=0 && (num_elements % 2 == 0)", "lum::SDF::Parser::LexDict"},
        {"<</A>>", "the number of key-value elements should be even",
         "num_elements>=0 && (num_elements % 2 == 0)", "lum::SDF::Parser::LexDict"},
        {"<<1 2>>", "Bad key",
         "!m_operand_stack[i-1]->IsIndirect() && m_operand_stack[i-1]->IsName()",
         "lum::SDF::Parser::LexDict"},
        {"<</A 1 (k) 2>>", "Bad key",
         "!m_operand_stack[i-1]->IsIndirect() && m_operand_stack[i-1]->IsName()",
         "lum::SDF::Parser::LexDict"},
        {"<4G>", "Bad String", "false", "lum::SDF::Parser::LexHexString"},
        {"<41", "Bad String", "false", "lum::SDF::Parser::LexHexString"},
        {"<4 x>", "Bad String", "false", "lum::SDF::Parser::LexHexString"},
        {"(abc", "Corrupt string", "false", "lum::SDF::Parser::LexLiteralString"},
        {"(a(b)", "Corrupt string", "false", "lum::SDF::Parser::LexLiteralString"},
        {"(abc\\", "Corrupt string", "false", "lum::SDF::Parser::LexLiteralString"},
    };
    for (const auto& c : cases) {
        MemParser p(c.input);
        EXPECT_LUM_FAILURE(p.One(), c.message, c.condition, c.function);
    }
}

TEST(Parser, NestingLimit) {
    constexpr int kMax = lum::Limits::kMaxNestingLevels;
    struct Case {
        const char* open;
        const char* close;
        const char* function;
    };
    const Case cases[] = {
        {"[", "]", "lum::SDF::Parser::LexArray"},
        {"<</K ", ">>", "lum::SDF::Parser::LexDict"},
    };
    for (const auto& c : cases) {
        auto nested = [&](int levels) {
            std::string s;
            for (int i = 0; i < levels; ++i) s += c.open;
            s += "0";
            for (int i = 0; i < levels; ++i) s += c.close;
            return s;
        };
        MemParser ok(nested(kMax - 1));
        lum::SDF::Obj* v = nullptr;
        EXPECT_NO_THROW(v = ok.One()) << c.open;
        EXPECT_NE(v, nullptr);
        MemParser deep(nested(kMax));
        EXPECT_LUM_FAILURE(deep.One(), "Exceeds maximum nesting level",
                           "++m_max_nesting < gl_max_levels", c.function);
    }
}

TEST(Parser, ResetStartsOver) {
    MemParser p("1 2 (x) 3");
    EXPECT_TRUE(p->GetObj());
    EXPECT_TRUE(p->GetObj());
    p->Reset();
    EXPECT_TRUE(p->GetOperandStack().empty());
    EXPECT_EQ(p->GetTokenSize(), 0u);
    EXPECT_EQ(Dump(p.One()), "1");
}

TEST(Parser, SkipHeader) {
    struct Case {
        std::string input;
        std::string header;  // empty: "Header not found"
        std::string next;    // first value behind the header
    };
    const std::vector<Case> cases = {
        {"%PDF-1.7\n1 0 obj", "%PDF-1.7", "1"},
        {"garbage\n%PDF-1.4 5", "%PDF-1.4", "5"},
        {"%FDF-1.2 7", "%FDF-1.2", "7"},                 // the word need not be PDF
        {"%PDF-1.45 9", "%PDF-1.45", "9"},
        {"%%EOF %PDF-2.0 3", "%PDF-2.0", "3"},
        {"%xx-1.z %PDF-1.3 4", "%PDF-1.3", "4"},         // a broken match restarts
        {"%PDF-1.7", "", ""},                            // must end before the last byte read
        {"%PDF-.7 ", "", ""},
        {"%PDF-1. ", "", ""},
        {"%PDF1.7 ", "", ""},
        {"%ABCDEFGHIJKLMNOP-1.0 ", "", ""},              // longer than 20 bytes
        {"%ABCDEFGHIJKLMN-1.0 6", "%ABCDEFGHIJKLMN-1.0", "6"},
        {"%%PDF-1.5 ", "", ""},                          // a percent without letters skips two
        {std::string(4100, ' ') + "%PDF-1.7 ", "", ""},  // only the first 4096 bytes count
    };
    for (const auto& c : cases) {
        MemParser p(c.input);
        if (c.header.empty()) {
            EXPECT_LUM_FAILURE(p->SkipHeader(), "Header not found", "false",
                               "lum::SDF::Parser::SkipHeader");
            continue;
        }
        std::string header;
        ASSERT_NO_THROW(header = p->SkipHeader()) << c.input;
        EXPECT_EQ(header, c.header);
        EXPECT_EQ(Dump(p.One()), c.next) << c.input;
    }
}


// "R" takes the top two operands, wherever they stand, as the object parsers do.
class RParser : public lum::SDF::Parser {
public:
    explicit RParser(lum::Filters::Filter* f) : Parser(nullptr, f) {}

protected:
    bool ContainerOperator(const char* word) override {
        if (std::string(word) != "R" || GetOperandStack().size() < 2) return false;
        PopObj();
        PopObj();
        Push(new lum::SDF::Null());
        return true;
    }
};

TEST(Parser, OperatorTakingOperandsOfAnOuterContainer) {
    struct Case {
        std::string input;
        std::string value;  // empty: the even-count failure
    };
    const std::vector<Case> cases = {
        {"[1 2 0 R]", "[1 null]"},
        {"[4 0 [R]]", "[null []]"},
        {"[4 0 [R 5]]", "[null [5]]"},
        {"[1 2 <<R>>]", ""},
    };
    for (const auto& c : cases) {
        lum::Filters::ExtBufInputFilter f(reinterpret_cast<const lum::UInt8*>(c.input.data()),
                                          c.input.size());
        RParser p(&f);
        if (c.value.empty()) {
            EXPECT_LUM_FAILURE(p.GetObj(), "the number of key-value elements should be even",
                               "num_elements>=0 && (num_elements % 2 == 0)",
                               "lum::SDF::Parser::LexDict");
            continue;
        }
        EXPECT_TRUE(p.GetObj()) << c.input;
        EXPECT_EQ(Dump(p.GetOperandStack().back()), c.value) << c.input;
    }
}

}  // namespace
