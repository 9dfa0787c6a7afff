// Token boundaries and the number reader.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "ObjTestSupport.h"
#include "SDF/Parser.h"

using lum::SDF::ParseNumberToken;
using lum::SDF::Parser;
using namespace lum;
using namespace lum::test;

namespace {

TEST(Tokenizer, NumberTokens) {
    struct Case {
        const char* token;
        double value;
    };
    const Case cases[] = {
        {"0", 0},          {"42", 42},        {"-17", -17},     {"3.25", 3.25},
        {".5", 0.5},       {"-.5", -0.5},     {"5.", 5},        {"--5", -5},
        {"+-5", 5},        {"-+5", -5},       {"+5", 5},        {"1.-5", 1.5},
        {"1.+5", 1.5},     {"1.2.3", 0},      {"12abc", 0},     {"1e5", 0},
        {"5-3", 0},        {".", 0},          {"+", 0},         {"4294967295", 4294967295.0},
        {"4294967296", 4294967296.0},          {"1234567890123", 1234567890123.0},
        {"00000000000000000007", 7},
        // Around the parser's one-pass reading of short plain numbers.
        {"123456789", 123456789},             {"1234567890", 1234567890},
        {"-123456789.5", -123456789.5},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ParseNumberToken(c.token, std::strlen(c.token)), c.value) << c.token;
}

// A number operand read by the parser, where it stands in the window or through the token,
// has the bits of ParseNumberToken's value of its word.
TEST(Tokenizer, ParserNumbersMatchTheNumberReader) {
    const std::string long_fraction = "2." + std::string(70, '3');
    const char* words[] = {"0",    "-17",        "3.25",        ".5",          "-.5",   "5.",
                           "-",    ".",          "--5",         "+5",          "1.-5",  "1234567890",
                           "123456789", "-123456789.125", "0.1000000000000000055511151231257827",
                           long_fraction.c_str()};
    for (const char* w : words) {
        const double want = ParseNumberToken(w, std::strlen(w));
        for (const char* tail : {" ", "]", "%c\n"}) {
            const std::string text = std::string(w) + tail;
            for (size_t window : {0, 1, 3, 64}) {
                lum::test::TrickleFilter trickle(std::vector<lum::UInt8>(text.begin(), text.end()),
                                                 window ? window : text.size());
                Parser p(nullptr, &trickle);
                ASSERT_TRUE(p.GetObj()) << w << tail;
                const double got = p.GetOperandStack().back()->GetNumber();
                EXPECT_EQ(std::memcmp(&got, &want, sizeof got), 0) << w << tail << " " << window;
            }
        }
    }
}

TEST(Tokenizer, NumberEdgeValues) {
    // A lone minus is negative zero.
    const double z = ParseNumberToken("-", 1);
    EXPECT_EQ(z, 0.0);
    EXPECT_TRUE(std::signbit(z));
    // 38 integer digits are a (large) number, the 39th ends the parse as a failure.
    const std::string d38(38, '9'), d39(39, '9');
    EXPECT_GT(ParseNumberToken(d38.data(), d38.size()), 9e37);
    EXPECT_EQ(ParseNumberToken(d39.data(), d39.size()), 0);
    // Fraction digits are not counted against that bound.
    const std::string frac = "1." + std::string(60, '0') + "1";
    EXPECT_NEAR(ParseNumberToken(frac.data(), frac.size()), 1.0, 1e-12);
}

// Reads the whole input as a sequence: each value's type letter, or the word in quotes. With
// `window`, the bytes come that many at a time, so that words and comments span windows.
std::string Tokens(const std::string& bytes, size_t window = 0) {
    lum::test::TrickleFilter trickle(std::vector<lum::UInt8>(bytes.begin(), bytes.end()),
                                        window ? window : 1);
    MemParser whole(bytes);
    Parser parser(nullptr, &trickle);
    Parser* p = window ? &parser : &*whole;
    std::string out;
    for (int guard = 0; guard < 1000; ++guard) {
        p->ClearStack();
        p->ResetNesting();
        if (p->GetObj()) {
            lum::SDF::Obj* v = p->GetOperandStack().back();
            if (v->IsNumber()) {
                char buf[32];
                std::snprintf(buf, sizeof buf, "%g", v->GetNumber());
                out += buf;
            } else if (v->IsName()) {
                out += "/";
                out += v->GetName();
            } else {
                out += "v";
            }
            out += ' ';
            continue;
        }
        if (p->GetTokenSize() == 0) break;
        out += "'" + std::string(p->GetToken()) + "' ";
    }
    return out;
}

TEST(Tokenizer, WordBoundaries) {
    struct Case {
        const char* input;
        const char* tokens;
    };
    const Case cases[] = {
        // A percent ends a word and starts a comment; comments run to LF or CR.
        {"abc%comment\ndef", "'abc' 'def' "},
        {"12%x\r34", "12 34 "},
        // A percent inside a number token ends it.
        {"1%2\n3", "1 3 "},
        // Delimiters are tokens of one byte and never join a word.
        {"a{b}c", "'a' '{' 'b' '}' 'c' "},
        // Vertical tab and other control bytes are word bytes, not white space.
        {"a\x0b" "b c", "'a\x0b" "b' 'c' "},
        {"1\x01" "2", "0 "},
        {"/A/B /C", "/A /B /C "},
        {"  \t\r\n\f ", ""},
        {"%only a comment", ""},
        // Words longer than the short copy, and name escapes, across windows.
        {"abcdefghijklmnopqrstuvwxyz0123 %c\n/Ab#20c#x 0.5", "'abcdefghijklmnopqrstuvwxyz0123' /Ab c#x 0.5 "},
    };
    for (const auto& c : cases)
        for (size_t window : {0, 1, 3}) EXPECT_EQ(Tokens(c.input, window), c.tokens) << c.input << " " << window;
    // NUL is white space.
    EXPECT_EQ(Tokens(std::string("7\0" "8", 3)), "7 8 ");
}

TEST(Tokenizer, LongTokensPassTheInitialBuffer) {
    const std::string word(5000, 'w');
    MemParser p(word + " next");
    EXPECT_FALSE(p->GetObj());
    EXPECT_EQ(p->GetTokenSize(), 5000u);
    EXPECT_EQ(std::string(p->GetToken()), word);
    EXPECT_FALSE(p->GetObj());
    EXPECT_STREQ(p->GetToken(), "next");
    EXPECT_FALSE(p->GetObj());
    EXPECT_EQ(p->GetTokenSize(), 0u);
    EXPECT_FALSE(p->GetObj());  // the end stays the end
    EXPECT_EQ(p->GetTokenSize(), 0u);
}

// A value as text: numbers by %g, strings in parentheses, arrays in brackets.
std::string Show(lum::SDF::Obj* v) {
    if (v->IsNumber()) {
        char buf[32];
        std::snprintf(buf, sizeof buf, "%g", v->GetNumber());
        return buf;
    }
    if (v->IsString()) {
        const auto* b = reinterpret_cast<const char*>(v->GetBuffer());
        return "(" + std::string(b ? b : "", size_t(v->Size())) + ")";
    }
    if (v->IsArray()) {
        std::string out = "[";
        for (lum::UInt32 i = 0; i < v->Size(); ++i) out += (i ? " " : "") + Show(v->GetAt(i));
        return out + "]";
    }
    return "?";
}

// Values read after the stack was cleared reuse the spent ones: none may show what it held.
TEST(Tokenizer, SpentOperandsCarryNoOldValues) {
    const std::string long_text(5000, 'L');
    // More values at once than the parser keeps spare.
    std::string many = "[", many_shown = "[";
    for (int i = 0; i < 300; ++i) {
        const std::string item = "(s" + std::to_string(i) + ") " + std::to_string(i);
        many += item + " ";
        many_shown += (i ? " " : "") + item;
    }
    many += "]";
    many_shown += "]";
    struct Case {
        std::string input;
        std::string shown;
    };
    const Case cases[] = {
        {"(abcdef) (xy) () <41> 7 (z)", "(abcdef) (xy) () (A) 7 (z)"},
        {"[(a) -120 (bc)] [(d)] [] [5]", "[(a) -120 (bc)] [(d)] [] [5]"},
        {"[[1 2] (n)] [3] [[]]", "[[1 2] (n)] [3] [[]]"},
        {"(" + long_text + ") (short)", "(" + long_text + ") (short)"},
        {many + " [(a)] (b) 1 " + many, many_shown + " [(a)] (b) 1 " + many_shown},
    };
    for (const auto& c : cases) {
        MemParser p(c.input);
        std::string out;
        while (lum::SDF::Obj* v = p.One()) out += (out.empty() ? "" : " ") + Show(v);
        EXPECT_EQ(out, c.shown) << c.input.substr(0, 40);
    }
}

// A value taken off the stack is the caller's: clearing and reading on leaves it alone.
TEST(Tokenizer, TakenOperandSurvivesLaterReads) {
    MemParser p("(keep) [(k) 1] (other) [(x) 2] 9");
    ASSERT_NE(p.One(), nullptr);
    lum::SDF::Obj* str = p->PopObjNoDelete();
    ASSERT_NE(p.One(), nullptr);
    lum::SDF::Obj* arr = p->PopObjNoDelete();
    while (p.One()) {
    }
    EXPECT_EQ(Show(str), "(keep)");
    EXPECT_EQ(Show(arr), "[(k) 1]");
    delete str;
    delete arr;
}

}  // namespace
