// The rebuild of the table by one scan of a damaged file.
#include <gtest/gtest.h>

#include "SDF/XRefTestSupport.h"
#include "support/TestSupport.h"

using namespace lum;
using namespace lum::test;
using SDF::Indirect;

namespace {

// Cross-reference data that can't be read: every file here goes to the rebuild.
const char kBrokenEnd[] = "startxref\n999999999\n%%EOF\n";

// Opens `body` followed by broken cross-reference data.
MemDoc Rebuilt(const std::string& body) {
    MemDoc doc(body + kBrokenEnd);
    EXPECT_TRUE(doc.Impl().IsRebuilt());
    return doc;
}

bool Found(MemDoc& doc, UInt32 num) {
    return num < doc.Impl().GetXRefSize() && !doc.Get(num)->IsFree();
}

TEST(Rebuild, StreamLengthsFromTheKeywords) {
    MemDoc doc(ReadFile(DataPath("rebuild-length.pdf")));
    ASSERT_TRUE(doc.Impl().IsRebuilt());
    const struct Case {
        UInt32 num;
        double length;
        std::string raw;
    } cases[] = {
        {4, 30, "BT /F1 12 Tf (Hello) Tj ET\n%%%"},
        {5, 4, "4142"},  // a filtered stream keeps its Length
        {6, 16, "endstream inside"},
        {7, 0, ""},  // "endstream" right behind the stream line
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.num);
        Indirect* s = doc.Get(c.num);
        EXPECT_EQ(s->FindObj(SDF::e_Length)->GetNumber(), c.length);
        EXPECT_EQ(ReadAll(s->GetRawStream(false)), c.raw);
    }
    EXPECT_EQ(ReadAll(doc.Get(5)->GetDecodedStream()), "AB");
}

TEST(Rebuild, WrongLengthIsBelievedWithoutRebuild) {
    // The same objects with a good table: the Length as written cuts the data.
    std::string file = ReadFile(DataPath("rebuild-length.pdf"));
    const size_t table = file.find("xref\n0 8");
    file.replace(file.find("999999"), 6, std::to_string(table));
    MemDoc doc(file);
    ASSERT_FALSE(doc.Impl().IsRebuilt()) << doc.Impl().GetRepairReason();
    EXPECT_EQ(ReadAll(doc.Get(4)->GetRawStream(false)), "BT /F");
}

TEST(Rebuild, FileCutInsideAStream) {
    PdfBuilder b;
    b.PageTree().Object(4, "(kept)");
    const std::string cut = b.Bytes() + "5 0 obj\n<< /Length 100 >>\nstream\nBT (lost";
    MemDoc doc(cut);
    ASSERT_TRUE(doc.Impl().IsRebuilt());
    EXPECT_EQ(StrText(doc.Get(4)), "kept");
    EXPECT_FALSE(Found(doc, 5));
}

TEST(Rebuild, FileWithoutTrailerGetsAnEmptyOne) {
    PdfBuilder b;
    b.PageTree();
    MemDoc doc = Rebuilt(b.Bytes());
    ASSERT_TRUE(doc.Trailer()->IsDict());
    EXPECT_EQ(doc.Trailer()->Size(), 0u);
    EXPECT_STREQ(doc.Get(1)->FindObj(SDF::e_Type)->GetName(), "Catalog");
    EXPECT_EQ(doc.Impl().GetTrailer()->GetObjNum(), 0u);
    // A header alone gives entry 0 and the empty trailer.
    MemDoc empty = Rebuilt("%PDF-1.7\n");
    EXPECT_EQ(empty.Impl().GetXRefSize(), 1u);
    EXPECT_TRUE(empty.Trailer()->IsDict());
}

TEST(Rebuild, LastDefinitionWins) {
    PdfBuilder b;
    b.PageTree().Object(5, "(first)", 3).Object(5, "(second)", 0);
    MemDoc doc = Rebuilt(b.Bytes());
    EXPECT_EQ(StrText(doc.Get(5)), "second");
    EXPECT_EQ(doc.Get(5)->GetGenNum(), 0);
    EXPECT_EQ(doc.Get(5)->GetOffset(), b.OffsetOf(5));
}

TEST(Rebuild, TrailerChoice) {
    const struct Case {
        const char* name;
        std::string trailers;  // behind the objects
        const char* kept;      // the value of /Which in the trailer chosen
    } cases[] = {
        {"first is always taken", "trailer\n<< /Which (a) /Prev 10 >>\n", "a"},
        {"a later one with Prev does not replace",
         "trailer\n<< /Which (old) /Root 1 0 R >>\ntrailer\n<< /Which (new) /Prev 10 >>\n", "old"},
        {"a later one without Prev does (linearised main trailer)",
         "trailer\n<< /Which (first page) /Prev 99 >>\ntrailer\n<< /Which (main) >>\n", "main"},
        {"a plain trailer never displaces a cross-reference stream",
         "9 0 obj\n<< /Type /XRef /Which (stream) /Size 10 /W [1 2 1] /Filter /AHx /Length 1 >>"
         "\nstream\n>\nendstream\nendobj\ntrailer\n<< /Which (plain) >>\n",
         "stream"},
        {"behind an old table", "xref\n0 1\n0000000000 65535 f \ntrailer\n<< /Which (t) >>\n", "t"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        PdfBuilder b;
        b.PageTree();
        MemDoc doc = Rebuilt(b.Bytes() + c.trailers);
        EXPECT_EQ(StrText(doc.Trailer()->FindObj("Which")), c.kept);
        // Objects behind the trailers are still found.
        EXPECT_TRUE(Found(doc, 3));
    }
}

TEST(Rebuild, CrossReferenceStreamBecomesTheTrailer) {
    PdfBuilder b;
    b.PageTree();
    b.Raw("9 0 obj\n<< /Type /XRef /Root 1 0 R /Size 10 /W [1 2 1] /Filter /AHx /Length 1 >>"
          "\nstream\n>\nendstream\nendobj\n");
    MemDoc doc = Rebuilt(b.Bytes());
    EXPECT_TRUE(doc.Impl().HasXRefStream());
    EXPECT_TRUE(doc.Trailer()->IsStream());
    EXPECT_STREQ(doc.Doc().GetRoot()->FindObj(SDF::e_Type)->GetName(), "Catalog");
    // It is the trailer, not an object of the table.
    EXPECT_TRUE(doc.Get(9)->IsFree());
}

TEST(Rebuild, CrossReferenceStreamFlagFollowsTheRepair) {
    // The newest section is a stream (read first, so the parse sets the flag) whose Prev leads
    // nowhere; the rebuild keeps the plain trailer it met first, as the stream has Prev.
    PdfBuilder b;
    b.PageTree().Raw("trailer\n<< /Root 1 0 R >>\n");
    const size_t at = b.Pos();
    b.Raw("9 0 obj\n<< /Type /XRef /Root 1 0 R /Size 10 /Prev 99999 /W [1 2 1] /Index [1 0] "
          "/Filter /AHx /Length 1 >>\nstream\n>\nendstream\nendobj\nstartxref\n" +
          std::to_string(at) + "\n%%EOF\n");
    MemDoc doc(b.Bytes());
    EXPECT_TRUE(doc.Impl().IsRebuilt());
    EXPECT_FALSE(doc.Impl().HasXRefStream());
    EXPECT_TRUE(doc.Trailer()->IsDict());
}

TEST(Rebuild, ObjectStreamsAreUnpacked) {
    PdfBuilder b;
    b.PageTree();
    const std::string data = "5 0 6 13 (compressed) (also)";
    b.Raw("4 0 obj\n<< /Type /ObjStm /N 2 /First 9 /Length " + std::to_string(data.size()) +
          " >>\nstream\n" + data + "\nendstream\nendobj\n");
    MemDoc doc = Rebuilt(b.Bytes());
    EXPECT_EQ(doc.Get(5)->GetField1(), 2);
    EXPECT_EQ(doc.Get(5)->GetOffset(), 4u);
    EXPECT_EQ(StrText(doc.Get(5)), "compressed");
    EXPECT_EQ(StrText(doc.Get(6)), "also");
    EXPECT_TRUE(doc.Get(4)->IsStream());
}

TEST(Rebuild, ObjectStreamNamedBeforeItsHeaderKeepsThePlaceholder) {
    // Object 1 refers to 4 before the scan meets "4 0 obj": the entry exists as a placeholder,
    // which keeps its offset; the objects inside are reached all the same.
    PdfBuilder b;
    b.Object(1, "<< /Type /Catalog /Pages 2 0 R /Stm 4 0 R >>");
    b.Object(2, "<< /Type /Pages /Kids [] /Count 0 >>");
    const std::string data = "5 0 (inside)";
    b.Raw("4 0 obj\n<< /Type /ObjStm /N 1 /First 4 /Length " + std::to_string(data.size()) +
          " >>\nstream\n" + data + "\nendstream\nendobj\n");
    MemDoc doc = Rebuilt(b.Bytes());
    EXPECT_EQ(doc.Get(4)->GetOffset(), Indirect::kPlaceholderOffset);
    EXPECT_EQ(StrText(doc.Get(5)), "inside");
}

TEST(Rebuild, WhatTheScanStepsOverAndWhatEndsIt) {
    const struct Case {
        const char* name;
        std::string between;  // between object 3 and object 4
        bool four_found;
    } cases[] = {
        {"stray words", "garbage words here\n", true},
        {"endobj and endstream alone", "endstream\nendobj\n", true},
        {"startxref followed by an object", "startxref\n123\n", true},
        // Comments are skipped between the offset and the next token.
        {"startxref, end marker, object", "startxref\n123\n%%EOF\n", true},
        {"startxref, end marker, other token", "startxref\n123\n%%EOF\n(junk)\n", false},
        {"number in front of a header", "7 ", false},
        {"a closing parenthesis", ") junk\n", false},
        {"t-word inside an old table", "xref\n0 1\n0000000000 65535 f \ntrash 0 0\n", false},
        {"object without endobj", "8 0 obj\n<< /A 1 >>\n", false},
        {"empty object", "8 0 obj\nendobj\n", false},
        {"header number too large", "1048576 0 obj\n(x)\nendobj\n", false},
        {"largest header number", "1048575 0 obj\n(x)\nendobj\n", true},
        {"trailer that is no dictionary", "trailer\n5\n", false},
        {"stream without dictionary", "8 0 obj\n[1]\nstream\ndata\nendstream\nendobj\n", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        PdfBuilder b;
        b.PageTree().Raw(c.between).Object(4, "(four)");
        MemDoc doc = Rebuilt(b.Bytes());
        EXPECT_TRUE(Found(doc, 3));
        EXPECT_EQ(Found(doc, 4), c.four_found);
    }
}

TEST(Rebuild, FailedBodySkipsToTheNextEndObj) {
    // The search for "endobj" wants a separator in front and reads plainly: the byte that
    // fails the match is consumed, even when it is the next separator.
    const struct Case {
        const char* name;
        std::string bad;  // a body whose parse fails, then its end
        bool next_found;  // object 5, written directly behind
    } cases[] = {
        {"LF before endobj", "4 0 obj\n<< /A ) x\nendobj\n", true},
        // The CR passes as the separator, the LF fails as the first letter: "endobj" is not
        // seen, and the search runs on through object 5 to its endobj.
        {"CR LF before endobj", "4 0 obj\n<< /A ) x\r\nendobj\r\n", false},
        {"reference with one operand", "4 0 obj\n[ R ]\nx endobj\n", true},
        {"reference number too large", "4 0 obj\n[1048576 0 R]\nx endobj\n", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        PdfBuilder b;
        b.PageTree().Raw(c.bad).Object(5, "55").Object(6, "66");
        MemDoc doc = Rebuilt(b.Bytes());
        EXPECT_FALSE(Found(doc, 4));
        EXPECT_EQ(Found(doc, 5), c.next_found);
        EXPECT_TRUE(Found(doc, 6));
    }
}

TEST(Rebuild, ReferencesWithoutObjectsAndGaps) {
    PdfBuilder b;
    b.Object(1, "<< /Type /Catalog /Pages 2 0 R /Missing 7 0 R >>");
    b.Object(2, "<< /Type /Pages /Kids [] /Count 0 >>");
    b.Object(5, "(five)");
    MemDoc doc = Rebuilt(b.Bytes());
    // A number only referred to: in use at an offset no seek reaches, so its use fails.
    Indirect* missing = doc.Get(7);
    EXPECT_EQ(missing->GetField1(), 1);
    EXPECT_EQ(missing->GetOffset(), Indirect::kPlaceholderOffset);
    EXPECT_TRUE(missing->IsModified());
    EXPECT_THROW(missing->GetType(), Common::Exception);
    // A number nothing mentions: free, generation 1.
    for (UInt32 n : {3u, 4u, 6u}) {
        SCOPED_TRACE(n);
        EXPECT_TRUE(doc.Get(n)->IsFree());
        EXPECT_EQ(doc.Get(n)->GetGenNum(), 1);
        EXPECT_EQ(doc.Get(n)->GetObjNum(), n);
    }
    EXPECT_EQ(doc.Impl().GetXRefSize(), 8u);
}

TEST(Rebuild, NoHeaderMeansNoPdf) {
    const Failure f = CatchFailure([] { MemDoc doc(std::string(5000, ' ') + "%PDF-1.7\n"); });
    EXPECT_TRUE(f.thrown);
    EXPECT_EQ(f.message, "Header not found");
    EXPECT_EQ(f.function, "lum::SDF::Parser::SkipHeader");
}

TEST(Rebuild, ScanOfAStreamHoldingEndStream) {
    // The data holds "endstream" followed by something other than endobj, and an "endst"
    // that a partial "endobj" match must not lose.
    PdfBuilder b;
    b.PageTree();
    b.Raw("4 0 obj\n<< >>\nstream\nab endstream end endstream\nendobj\n");
    b.Object(5, "(five)");
    MemDoc doc = Rebuilt(b.Bytes());
    EXPECT_EQ(ReadAll(doc.Get(4)->GetRawStream(false)), "ab endstream end");
    EXPECT_TRUE(Found(doc, 5));
}

TEST(Rebuild, StreamWithoutEndObjRunsToTheNextOne) {
    PdfBuilder b;
    b.PageTree();
    b.Raw("4 0 obj\n<< >>\nstream\nabc\nendstream\n");
    b.Object(5, "(swallowed)");
    b.Raw("6 0 obj\n<< >>\nstream\nxyz\nendstream\nendobj\n");
    b.Object(7, "(seven)");
    MemDoc doc = Rebuilt(b.Bytes());
    EXPECT_TRUE(Found(doc, 4));
    EXPECT_FALSE(Found(doc, 5));
    EXPECT_FALSE(Found(doc, 6));
    EXPECT_EQ(StrText(doc.Get(7)), "seven");
}

}  // namespace
