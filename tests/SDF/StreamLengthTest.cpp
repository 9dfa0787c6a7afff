// How long a stream's data is: a numeric Length is believed, anything else makes the reader
// search for "endstream" ... "endobj" and store what it found.
#include <gtest/gtest.h>

#include <string>

#include "Filters/FilterReader.h"
#include "ObjTestSupport.h"

using namespace lum::SDF;
using namespace lum;
using namespace lum::test;

namespace {

// Object 3: a stream of `dict` and, behind its "stream" line, `rest`.
PdfObject Three(const std::string& dict, const std::string& rest = "hello\nendstream\nendobj") {
    return {3, "3 0 obj " + dict + " stream\n" + rest};
}

TEST(StreamLength, WhatTheReaderDelivers) {
    const struct Case {
        const char* name;
        std::vector<PdfObject> objects;
        std::string data;
        bool searched;  // Length was not a number and was stored by the search
    } cases[] = {
        {"numeric", {Three("<</Length 5>>")}, "hello", false},
        // A number is believed: 0 in front of real data is an empty stream, a long one runs on.
        {"zero", {Three("<</Length 0>>")}, "", false},
        {"too long", {Three("<</Length 8>>")}, "hello\nen", false},
        {"indirect number", {Three("<</Length 4 0 R>>"), {4, "4 0 obj 4 endobj"}}, "hell", false},
        // Missing, free, out of the table, the stream itself: the search runs. It keeps the line
        // end in front of "endstream".
        {"missing", {Three("<<>>")}, "hello\n", true},
        {"free", {Three("<</Length 5 0 R>>")}, "hello\n", true},
        {"outside the table", {Three("<</Length 999 0 R>>")}, "hello\n", true},
        {"itself", {Three("<</Length 3 0 R>>")}, "hello\n", true},
        {"name", {Three("<</Length /Five>>")}, "hello\n", true},
        // "endstream" inside the data, not followed by "endobj": the search passes over it.
        {"keyword in data", {Three("<<>>", "ab endstream cd\nendstream\nendobj")}, "ab endstream cd\n", true},
        // The rule counts "endstream" and one byte behind it: more white space or a comment
        // there lengthens the data into the keyword.
        {"comment before endobj", {Three("<<>>", "xy\nendstream %c\n endobj")}, "xy\nends", true},
        {"endstream at once", {Three("<<>>", "endstream\nendobj")}, "", true},
        {"overlapping start", {Three("<<>>", "endendstream\nendobj")}, "end", true},
        // A partial keyword in the data: the match restarts inside it, not behind it.
        {"partial keyword", {Three("<<>>", "ABCendstrendstream\nendobj")}, "ABCendstr", true},
    };
    for (const auto& c : cases) {
        MemDoc doc(WithObjects(c.objects, 6));
        Obj* s = doc->GetObj(3);
        EXPECT_EQ(ReadAll(s->GetRawStream(false)), c.data) << c.name;
        Obj* len = s->FindObj(e_Length);
        if (c.searched) {
            ASSERT_TRUE(len && len->IsNumber() && !len->IsIndirect()) << c.name;
            EXPECT_EQ(len->GetNumber(), double(c.data.size())) << c.name;
            EXPECT_TRUE(doc->GetObj(3)->IsModified()) << c.name;
        } else {
            EXPECT_FALSE(doc->GetObj(3)->IsModified()) << c.name;
        }
        EXPECT_EQ(s->GetRawStreamLength(), c.searched ? c.data.size() : len->GetNumber()) << c.name;
    }
}

TEST(StreamLength, RawLengthRunsTheSearch) {
    MemDoc doc(WithObjects({Three("<</Length 9 0 R>>", "abcdef\nendstream\nendobj")}, 10));
    EXPECT_EQ(doc->GetObj(3)->GetRawStreamLength(), 7u);
    EXPECT_EQ(doc->GetObj(3)->Get(e_Length)->second->GetNumber(), 7);
}

TEST(StreamLength, NoEndFails) {
    MemDoc doc(WithObjects({Three("<<>>", "abc endstream endobx")}));
    EXPECT_LUM_FAILURE(doc->GetObj(3)->GetRawStream(false), "Unexpected end of stream",
                       "byte != EOF", "lum::SDF::FileStream::CalcStmLength");
}

TEST(StreamLength, DecodedFromTheFile) {
    const std::string text = "BT /F1 12 Tf (Hello) Tj ET";
    const std::string z = Deflate(text);
    MemDoc doc(WithObjects({{3, "3 0 obj <</Length " + std::to_string(z.size()) +
                                    " /Filter /FlateDecode>> stream\n" + z + "\nendstream\nendobj"}}));
    Obj* s = doc->GetObj(3);
    EXPECT_EQ(ReadAll(s->GetDecodedStream()), text);
    // Each call makes a new chain; two may be read side by side.
    auto a = s->GetDecodedStream(), b = s->GetDecodedStream();
    lum::Filters::FilterReader ra(a.get()), rb(b.get());
    for (char ch : text) {
        EXPECT_EQ(ra.Get(), (unsigned char)ch);
        EXPECT_EQ(rb.Get(), (unsigned char)ch);
    }
    // A stream hashes its dictionary and its first decoded bytes, and equals itself by value.
    EXPECT_TRUE(s->IsEqualValue(s->GetDirect()));
    EXPECT_NE(s->Hash(), s->GetDirect()->Hash());  // a reference hashes its number
}

}  // namespace
