// Reading the file's own cross-reference data: tables, streams, chains of sections, and the
// failures that send a file to the rebuild.
#include <gtest/gtest.h>

#include "Common/Limits.h"
#include "SDF/XRefParser.h"
#include "SDF/XRefTestSupport.h"
#include "support/TestSupport.h"

using namespace lum;
using namespace lum::test;
using SDF::Indirect;

namespace {

MemDoc OpenData(const std::string& name) { return MemDoc(ReadFile(DataPath(name))); }

// The failure of the table's reading that sent `bytes` to the rebuild, with all its texts.
Failure ParseFailure(const std::string& bytes) {
    MemDoc doc(bytes, false);
    const Common::Exception* e = doc.Impl().GetRepairCause();
    return e ? Failure{true, e->GetMessage(), e->GetCondition(), e->GetFunction()} : Failure{};
}

// A document whose table is right, with `tail` standing where the table and trailer go.
std::string WithTail(const std::string& tail) {
    PdfBuilder b;
    b.PageTree();
    return b.Bytes() + tail;
}

TEST(XRefParser, IncrementalUpdateOverridesAndFreesObjects) {
    MemDoc doc = OpenData("xref-incremental.pdf");
    EXPECT_FALSE(doc.Impl().IsRebuilt()) << doc.Impl().GetRepairReason();
    EXPECT_EQ(StrText(doc.Get(4)), "revision 2");
    // The newer section frees 5: its older in-use row must not come back.
    EXPECT_TRUE(doc.Get(5)->IsFree());
    EXPECT_EQ(doc.Get(5)->GetGenNum(), 1);
    // Only the newest trailer stands in entry 0.
    EXPECT_TRUE(doc.Trailer()->FindObj(SDF::e_Prev));
    EXPECT_EQ(doc.Impl().GetLastXRefOffset(), doc.Bytes().rfind("xref\n0 1"));
}

TEST(XRefParser, HybridFileReadsTheStreamNamedByXRefStm) {
    MemDoc doc = OpenData("xref-hybrid.pdf");
    EXPECT_FALSE(doc.Impl().IsRebuilt()) << doc.Impl().GetRepairReason();
    EXPECT_FALSE(doc.Impl().HasXRefStream());
    Indirect* five = doc.Get(5);
    EXPECT_EQ(five->GetField1(), 2);
    EXPECT_EQ(five->GetOffset(), 4u);
    EXPECT_TRUE(five->FindObj("Compressed")->GetBool());
    // The page comes from the newer table, which names the compressed object.
    EXPECT_EQ(doc.Get(3)->FindObj("Extra"), five);
}

TEST(XRefParser, CrossReferenceStreamAsNewestSection) {
    MemDoc doc = OpenData("xref-stream.pdf");
    EXPECT_FALSE(doc.Impl().IsRebuilt()) << doc.Impl().GetRepairReason();
    EXPECT_TRUE(doc.Impl().HasXRefStream());
    EXPECT_TRUE(doc.Trailer()->IsStream());
    EXPECT_STREQ(doc.Doc().GetRoot()->FindObj(SDF::e_Type)->GetName(), "Catalog");
    EXPECT_TRUE(doc.Get(5)->FindObj("Compressed")->GetBool());
    // The stream object itself is in the table through its own record.
    EXPECT_TRUE(doc.Get(6)->IsStream());
}

TEST(XRefParser, EntryTakesTheObjectItsOffsetPointsAt) {
    MemDoc doc = OpenData("xref-wrongnum.pdf");
    EXPECT_FALSE(doc.Impl().IsRebuilt());
    EXPECT_EQ(StrText(doc.Get(4)), "object five");
    EXPECT_EQ(StrText(doc.Get(5)), "object five");
    EXPECT_NE(doc.Get(4)->GetDirect(), doc.Get(5)->GetDirect());
}

TEST(XRefParser, PrevLoopLeadsToTheRebuild) {
    MemDoc doc = OpenData("xref-prevloop.pdf");
    EXPECT_TRUE(doc.Impl().IsRebuilt());
    EXPECT_NE(doc.Impl().GetRepairReason().find("Loop in the Prev chain"), std::string::npos);
    // The rebuild takes the last definition of 3.
    EXPECT_EQ(doc.Get(3)->FindObj(SDF::e_MediaBox)->GetAt(2)->GetNumber(), 200);
}

TEST(XRefParser, BytesBeforeTheHeaderShiftEveryOffset) {
    const std::string junk = "From: someone\r\nSubject: a mail header of a few lines\r\n\r\n";
    PdfBuilder b(junk + "%PDF-1.4\n");
    b.PageTree();
    // The file's offsets count from the header, as its writer saw it.
    const std::string body = b.Bytes();
    std::string file = body + "xref\n0 4\n" + PdfBuilder::Row(0, 65535, 'f');
    for (UInt32 n = 1; n <= 3; ++n) file += PdfBuilder::Row(b.OffsetOf(n) - junk.size(), 0, 'n');
    MemDoc doc(file + PdfBuilder::Trailer("/Size 4 /Root 1 0 R", body.size() - junk.size()));
    EXPECT_FALSE(doc.Impl().IsRebuilt()) << doc.Impl().GetRepairReason();
    EXPECT_EQ(doc.Impl().GetHeader(), "%PDF-1.4");
    EXPECT_EQ(doc.Get(3)->GetOffset(), b.OffsetOf(3));
    EXPECT_EQ(doc.Impl().GetLastXRefOffset(), body.size());
    EXPECT_STREQ(doc.Get(3)->FindObj(SDF::e_Type)->GetName(), "Page");
}

TEST(XRefParser, HeaderRecognition) {
    const struct Case {
        std::string start;
        const char* header;  // stored text
        UInt32 first_obj_num;
        bool rebuilt;  // the header's offset shifts every offset of the file
    } cases[] = {
        {"%PDF-1.7\n", "%PDF-1.7", 1, false},
        {"%FDF-2.0\r\n", "%FDF-2.0", 1, false},
        {"%%PDF-1.5\n", "", 0, false},                  // a percent and a non-letter skip two bytes
        {"%PDF1.4 %PDF-1.3\n", "%PDF-1.3", 1, true},    // a broken pattern restarts where it broke
        {"%PDF-1.\n", "", 0, false},                    // no digit behind the point: no header
        {"%" + std::string(30, 'P') + "-1.7\n", "", 0, false},  // longer than 30 bytes
        {"%PDF-1.7 %" + std::string(40, 'A') + "-1.0\n", "%PDF-1.7", 1, false},
        // Past the first kilobyte no header is found, and none is needed while the offsets fit.
        {std::string(1100, ' ') + "\n%PDF-1.7\n", "", 0, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.start);
        PdfBuilder b(c.start);
        b.PageTree();
        MemDoc doc(b.WithTable());
        EXPECT_EQ(doc.Impl().GetHeader(), c.header);
        EXPECT_EQ(doc.Impl().GetFirstObjNum(), c.first_obj_num);
        EXPECT_EQ(doc.Impl().IsRebuilt(), c.rebuilt) << doc.Impl().GetRepairReason();
    }
}

TEST(XRefParser, StartXRefSearchFromTheEnd) {
    const struct Case {
        const char* name;
        std::string tail;  // what follows the table's offset line
        bool rebuilt;
    } cases[] = {
        {"plain", "\n%%EOF\n", false},
        {"1000 bytes after EOF", "\n%%EOF\n" + std::string(1000, 'x'), false},
        {"1100 bytes after EOF", "\n%%EOF\n" + std::string(1100, 'x'), true},
        {"no line end at all", "", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        PdfBuilder b;
        b.PageTree();
        const size_t at = b.Pos();
        MemDoc doc(b.Bytes() + b.Table() + "trailer\n<< /Size 4 /Root 1 0 R >>\nstartxref\n" +
                   std::to_string(at) + c.tail);
        EXPECT_EQ(doc.Impl().IsRebuilt(), c.rebuilt) << doc.Impl().GetRepairReason();
    }
}

TEST(XRefParser, FailuresOfTheFileStructure) {
    // Longer than the 1028 bytes searched for startxref, so that the search can fail by itself.
    PdfBuilder b("%PDF-1.7\n%" + std::string(1100, '-') + "\n");
    b.PageTree();
    const std::string objects = b.Bytes();
    const std::string at = std::to_string(objects.size());
    const std::string table = b.Table();
    const std::string trailer = "trailer\n<< /Size 4 /Root 1 0 R >>\n";
    const std::string end = "startxref\n" + at + "\n%%EOF\n";
    const char* kParseXRef = "lum::SDF::XRefParser::ParseXRef";
    const char* kFind = "lum::SDF::XRefParser::FindXRefOffset";
    const char* kCorrupt = "Cross reference table is corrupt.";
    const char* kRowWord = "(opr_str[0] == 'f' || opr_str[0] == 'n') && opr_str[1] == '\\0'";
    const std::string rows = "xref\n0 2\n0000000000 65535 f\r\n";
    const struct Case {
        const char* name;
        std::string file;
        const char* message;
        const char* condition;
        const char* function;
        bool root_after_repair = true;  // files without a trailer outside the table need
                                        // the catalog search of the document layer
    } cases[] = {
        {"keyword glued to a word", objects + table + trailer + "xstartxref\n" + at + "\n",
         "PDF startxref not found. The file is not a valid PDF document.", "false", kFind},
        {"no value behind startxref", objects + table + trailer + "startxref\nend\n",
         "startxref expects a single argument", "m_operand_stack.size() == 1", kFind},
        {"x that is no xref", objects + "xrf\n0 1\n" + trailer + end, "xref table not found",
         "m_stream.Get() == 'x' && m_stream.Get() == 'r' && m_stream.Get() == 'e' && m_stream.Get() == 'f'",
         kParseXRef},
        {"xref then trailer", objects + "xref\n" + trailer + end, "Could not read the trailer.", "trailer1",
         "lum::SDF::XRefParser::Parse"},
        {"head of three values", objects + "xref\n0 4 5\n" + table.substr(10) + trailer + end, "Bad xref",
         "m_operand_stack.size() == 4", kParseXRef},
        {"count wraps", objects + "xref\n5 -1\n0000000000 65535 f\r\n" + trailer + end, "Bad xref",
         "sect_start <= sect_end", kParseXRef},
        {"row word", objects + rows + "0000000009 00000 x\r\n" + trailer + end, kCorrupt, kRowWord, kParseXRef},
        {"one row too few", objects + "xref\n0 3\n0000000000 65535 f\r\n0000000009 00000 n\r\n" + trailer + end,
         kCorrupt, kRowWord, kParseXRef},
        {"row of three values", objects + rows + "0000000009 0 00000 n\r\n" + trailer + end, kCorrupt,
         "m_operand_stack.size() == 2", kParseXRef},
        // In the rebuild a t-word in a table ends the scan before any trailer.
        {"no trailer word", objects + table + "trailor\n<< >>\n" + end, "Missing trailer.", "false", kParseXRef,
         false},
        // An array offered as trailer ends the rebuild's scan.
        {"trailer without dictionary", objects + table + "trailer\n[1 2]\n" + end,
         "Operator trailer expects a single dictionary",
         "m_operand_stack.size() == 1 && m_operand_stack[0]->IsDict()", kParseXRef, false},
        // The same trailer ends the rebuild's scan: no Root is found.
        {"word with one operand in the trailer", objects + table + "trailer\n<< R /Size 4 /Root 1 0 R >>\n" + end,
         "R takes 2 args", "stack_size>=2", "lum::SDF::XRefParser::ContainerOperator", false},
        {"stream section without obj", objects + "7 0 ojb\n<< >>\nstream\n" + end, "Object header not found",
         "false", kParseXRef, false},
        {"stream section header of one value", objects + "7 obj\n<< >>\nstream\n" + end,
         "Operator obj expects two arguments", "m_operand_stack.size() == 2", kParseXRef, false},
        {"stream section without stream", objects + "7 0 obj\n<< /Size 3 >>\nendobj\n" + end,
         "PDF 1.5 XRef table is not a stream object", "strcmp(opr_str, \"stream\") == 0", kParseXRef, false},
        {"stream section without dictionary", objects + "7 0 obj\n[1]\nstream\n" + end,
         "Stream expects a dictionary as an argument", "m_operand_stack.size() == 1 && dict->IsDict()",
         kParseXRef, false},
        {"stream section without Size",
         objects + "7 0 obj\n<< /Type /XRef /W [1 2 1] /Length 0 >>\nstream\n\nendstream\n" + end,
         "The dictionary does not contain required key: Size", "false", "lum::SDF::Dict::Get", false},
        {"field width 64",
         objects + "7 0 obj\n<< /Type /XRef /Size 1 /W [1 64 1] /Length 0 >>\nstream\n\nendstream\n" + end,
         "Bad xref", "field1_sz<64 && field2_sz<64 && field3_sz<64", "lum::SDF::XRefParser::ReadXRefStream",
         false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Failure f = ParseFailure(c.file);
        EXPECT_TRUE(f.thrown);
        EXPECT_EQ(f.message, c.message);
        EXPECT_EQ(f.condition, c.condition);
        EXPECT_EQ(f.function, c.function);
        // Opening repairs all of them.
        MemDoc doc(c.file);
        EXPECT_TRUE(doc.Impl().IsRebuilt());
        EXPECT_EQ(doc.Impl().GetRepairReason(), std::string("Corrupt PDF: ") + c.message);
        if (c.root_after_repair) {
            EXPECT_STREQ(doc.Doc().GetRoot()->FindObj(SDF::e_Type)->GetName(), "Catalog");
        }
    }
}

TEST(XRefParser, RowsAreReadAsTokens) {
    // Rows need not be 20 bytes: any white space and comments between the numbers work.
    PdfBuilder b;
    b.PageTree();
    const size_t at = b.Pos();
    std::string file = b.Bytes() + "xref\n0 4 0 65535 f\n" + std::to_string(b.OffsetOf(1)) +
                       " 0 n % one\n" + std::to_string(b.OffsetOf(2)) + "\r0\rn\r\n" +
                       std::to_string(b.OffsetOf(3)) + "   0   n\ntrailer<</Size 4/Root 1 0 R>>" +
                       "startxref\n" + std::to_string(at) + "\n%%EOF";
    MemDoc doc(file);
    EXPECT_FALSE(doc.Impl().IsRebuilt()) << doc.Impl().GetRepairReason();
    EXPECT_STREQ(doc.Get(3)->FindObj(SDF::e_Type)->GetName(), "Page");
}

TEST(XRefParser, InUseRowAtOffsetZero) {
    // Object 1 stands right behind the header, so the header offset is its offset; any other
    // in-use row with offset 0 is a dropped object.
    const std::string junk(50, '\n');
    std::string file = junk + "%PDF-1.7\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\n";
    const size_t two = file.size();
    file += "2 0 obj\n<< /Type /Pages /Kids [] /Count 0 >>\nendobj\n";
    const size_t at = file.size();
    file += "xref\n0 4\n" + PdfBuilder::Row(0, 65535, 'f') + PdfBuilder::Row(0, 0, 'n') +
            PdfBuilder::Row(two - junk.size(), 0, 'n') + PdfBuilder::Row(0, 0, 'n') +
            PdfBuilder::Trailer("/Size 4 /Root 1 0 R", at - junk.size());
    MemDoc doc(file);
    EXPECT_FALSE(doc.Impl().IsRebuilt()) << doc.Impl().GetRepairReason();
    EXPECT_EQ(doc.Impl().GetFirstObjNum(), 1u);
    EXPECT_FALSE(doc.Get(1)->IsFree());
    EXPECT_EQ(doc.Get(1)->GetOffset(), junk.size());
    EXPECT_TRUE(doc.Get(3)->IsFree());
}

TEST(XRefParser, TableStartingAtOneIsReadTwice) {
    // The oldest table starts at 1; the second pass moves the later subsection down by 1, so
    // the row written for "5" lands on object 4.
    PdfBuilder b;
    b.PageTree().Object(4, "(four)");
    const size_t at = b.Pos();
    MemDoc doc(b.Bytes() + "xref\n1 3\n" + PdfBuilder::Row(b.OffsetOf(1), 0, 'n') +
               PdfBuilder::Row(b.OffsetOf(2), 0, 'n') + PdfBuilder::Row(b.OffsetOf(3), 0, 'n') +
               "5 1\n" + PdfBuilder::Row(b.OffsetOf(4), 0, 'n') +
               PdfBuilder::Trailer("/Size 5 /Root 1 0 R", at));
    EXPECT_FALSE(doc.Impl().IsRebuilt()) << doc.Impl().GetRepairReason();
    EXPECT_EQ(StrText(doc.Get(4)), "four");
    EXPECT_EQ(doc.Impl().GetXRefSize(), 5u);
}

TEST(XRefParser, TrailerReferencesBecomePlaceholders) {
    PdfBuilder b;
    b.PageTree();
    MemDoc doc(b.WithTable("/Root 1 0 R /Info 9 0 R"));
    EXPECT_FALSE(doc.Impl().IsRebuilt());
    Indirect* info = doc.Get(9);
    EXPECT_EQ(info->GetObjNum(), 9u);
    EXPECT_TRUE(info->IsFree());
    EXPECT_EQ(info->GetOffset(), Indirect::kPlaceholderOffset);
    EXPECT_EQ(doc.Trailer()->Find(SDF::Name("Info")), doc.Trailer()->DictEnd());
}

TEST(XRefParser, OlderRowsFillPlaceholdersOnly) {
    // The newest section has no row for 3 but its trailer names it; the older section's row
    // fills the placeholder. Its row for 1 does not replace the newer row.
    PdfBuilder b;
    b.PageTree().Object(1, "<< /Type /Catalog /Pages 2 0 R /Newer true >>");
    const size_t old_at = b.Pos();
    std::string file = b.Bytes() + "xref\n0 4\n" + PdfBuilder::Row(0, 65535, 'f') +
                       PdfBuilder::Row(b.Bytes().find("1 0 obj"), 0, 'n') +
                       PdfBuilder::Row(b.OffsetOf(2), 0, 'n') + PdfBuilder::Row(b.OffsetOf(3), 0, 'n') +
                       PdfBuilder::Trailer("/Size 4 /Root 1 0 R", old_at);
    const size_t new_at = file.size();
    file += "xref\n1 1\n" + PdfBuilder::Row(b.OffsetOf(1), 0, 'n') +
            PdfBuilder::Trailer("/Size 4 /Root 1 0 R /Page 3 0 R /Prev " + std::to_string(old_at), new_at);
    MemDoc doc(file);
    EXPECT_FALSE(doc.Impl().IsRebuilt()) << doc.Impl().GetRepairReason();
    EXPECT_TRUE(doc.Doc().GetRoot()->FindObj("Newer"));
    EXPECT_STREQ(doc.Trailer()->FindObj("Page")->FindObj(SDF::e_Type)->GetName(), "Page");
}

// A cross-reference stream section with the given dictionary entries and hex records; the
// objects of the page tree stand in front of it.
std::string StreamSectionFile(const std::string& dict, const std::string& hex_records,
                              const std::string& before = "") {
    PdfBuilder b(before + "%PDF-1.7\n");
    b.PageTree();
    const size_t at = b.Pos();
    const std::string data = hex_records + ">";
    b.Raw("4 0 obj\n<< /Type /XRef /Filter /ASCIIHexDecode /Length " +
          std::to_string(data.size()) + " " + dict + " >>\nstream\n" + data +
          "\nendstream\nendobj\nstartxref\n" + std::to_string(at - before.size()) + "\n%%EOF\n");
    return b.Bytes();
}

std::string Hex4(size_t v) {
    char buf[8];
    std::snprintf(buf, sizeof buf, "%04zX", v);
    return buf;
}

TEST(XRefParser, StreamRecords) {
    PdfBuilder b;
    b.PageTree();
    const std::string o1 = Hex4(b.OffsetOf(1)), o2 = Hex4(b.OffsetOf(2)), o3 = Hex4(b.OffsetOf(3));

    {
        SCOPED_TRACE("Index ranges and a wide kind field of which the last byte counts");
        MemDoc doc(StreamSectionFile("/Size 8 /Root 1 0 R /W [2 2 1] /Index [0 1 1 3 7 1]",
                                     "0000 0000 FF  FF01 " + o1 + " 00  0001 " + o2 +
                                         " 00  0001 " + o3 + " 00  0002 0009 05"));
        EXPECT_FALSE(doc.Impl().IsRebuilt()) << doc.Impl().GetRepairReason();
        EXPECT_STREQ(doc.Get(3)->FindObj(SDF::e_Type)->GetName(), "Page");
        EXPECT_EQ(doc.Get(7)->GetField1(), 2);
        EXPECT_EQ(doc.Get(7)->GetOffset(), 9u);  // the object stream's number
        EXPECT_EQ(doc.Get(7)->GetGenField(), 5);  // the index in it
        EXPECT_EQ(doc.Get(7)->GetGenNum(), 0);
        EXPECT_EQ(doc.Get(5), doc.Get(0));  // no record: no entry
    }
    {
        SCOPED_TRACE("Without W's kind field every record is in use; offsets get the header offset");
        const std::string junk(16, '\n');
        PdfBuilder s(junk + "%PDF-1.7\n");
        s.PageTree();
        auto rel = [&](UInt32 n) { return Hex4(s.OffsetOf(n) - junk.size()); };
        MemDoc doc(StreamSectionFile("/Size 4 /Root 1 0 R /W [0 2 0] /Index [1 3]",
                                     rel(1) + rel(2) + rel(3), junk));
        EXPECT_FALSE(doc.Impl().IsRebuilt()) << doc.Impl().GetRepairReason();
        EXPECT_EQ(doc.Get(3)->GetOffset(), s.OffsetOf(3));
        EXPECT_STREQ(doc.Get(3)->FindObj(SDF::e_Type)->GetName(), "Page");
    }
    {
        SCOPED_TRACE("A zero-width offset field gives offset 0, without the header offset");
        MemDoc doc(StreamSectionFile("/Size 4 /Root 1 0 R /W [1 0 1] /Index [3 1]", "01 00", "\n\n"), false);
        EXPECT_EQ(doc.Get(3)->GetOffset(), 0u);
    }
    {
        SCOPED_TRACE("A kind of 3 leaves the reader inside its record");
        MemDoc doc(StreamSectionFile("/Size 6 /Root 1 0 R /W [1 2 1] /Index [1 3 4 2]",
                                     "01" + o1 + "00 01" + o2 + "00 01" + o3 + "00 03 1122 01 01" +
                                         o1 + "00"),
                   false);
        // Record 4 is kind 3; record 5 reads "11" as its kind, which is unknown too.
        for (UInt32 n : {4u, 5u}) {
            EXPECT_EQ(doc.Get(n)->GetField1(), 1) << n;
            EXPECT_EQ(doc.Get(n)->GetOffset(), 0u) << n;
            EXPECT_TRUE(doc.Get(n)->IsModified()) << n;
        }
    }
    {
        SCOPED_TRACE("Records past the end of the data");
        MemDoc doc(StreamSectionFile("/Size 4 /Root 1 0 R /W [1 2 1] /Index [1 3]",
                                     "01" + o1 + "00 01" + o2 + "00"),
                   false);
        EXPECT_EQ(doc.Get(2)->GetOffset(), b.OffsetOf(2));
        EXPECT_EQ(doc.Get(3)->GetOffset(), 0u);
        EXPECT_EQ(doc.Get(3)->GetField1(), 1);
    }
}

TEST(XRefParser, StreamSectionFailuresLeadToTheRebuild) {
    PdfBuilder b;
    b.PageTree();
    const std::string rec = "01" + Hex4(b.OffsetOf(1)) + "00";
    const char* cases[] = {
        "/Size 2 /Root 1 0 R /Index [1 1]",              // no W
        "/Size 2 /Root 1 0 R /W [1 2] /Index [1 1]",     // W too short
        "/Size 2 /Root 1 0 R /W [1 2 1] /Index [1 1 4]", // odd Index
        "/Size 2 /Root 1 0 R /W [1 -1 1] /Index [1 1]",  // negative width
        "/Size 2 /Root 1 0 R /W /Wide /Index [1 1]",     // W is no array
    };
    for (const char* dict : cases) {
        SCOPED_TRACE(dict);
        MemDoc doc(StreamSectionFile(dict, rec));
        EXPECT_TRUE(doc.Impl().IsRebuilt());
        EXPECT_STREQ(doc.Doc().GetRoot()->FindObj(SDF::e_Type)->GetName(), "Catalog");
    }
}

TEST(XRefParser, TableSizeBound) {
    // The trailer's Size grows the table up to the bound; one more is a damaged file.
    for (UInt64 size : {Limits::kMaxXRefEntries, Limits::kMaxXRefEntries + 1}) {
        SCOPED_TRACE(size);
        PdfBuilder b;
        b.PageTree();
        const size_t at = b.Pos();
        const std::string dict = "/Size " + std::to_string(size) + " /Root 1 0 R";
        MemDoc doc(b.Bytes() + b.Table() + PdfBuilder::Trailer(dict, at));
        EXPECT_EQ(doc.Impl().IsRebuilt(), size > Limits::kMaxXRefEntries);
        if (!doc.Impl().IsRebuilt()) {
            EXPECT_EQ(doc.Impl().GetXRefSize(), size);
        }
    }
    // A subsection count far beyond it fails before anything is allocated.
    MemDoc doc(WithTail("xref\n0 99999999999\n0000000000 65535 f\r\ntrailer\n<< /Root 1 0 R >>\n"
                        "startxref\n" + std::to_string(PdfBuilder().PageTree().Pos()) + "\n"));
    EXPECT_TRUE(doc.Impl().IsRebuilt());
    EXPECT_NE(doc.Impl().GetRepairReason().find("too large"), std::string::npos);
}

TEST(XRefParser, EntriesMadeAreBoundedByTheFileSize) {
    // A tiny stream whose Index asks for records far past its data: every record there makes
    // an entry, and a small file may make at most kMinXRefEntryBound of them. Entry 0 and the
    // placeholder of Root count among them.
    for (UInt64 count : {Limits::kMinXRefEntryBound, Limits::kMinXRefEntryBound + 1}) {
        SCOPED_TRACE(count);
        PdfBuilder b;
        b.PageTree();
        const std::string records = "00 0000 FF 01" + Hex4(b.OffsetOf(1)) + "00";
        MemDoc doc(StreamSectionFile("/Size 4 /Root 1 0 R /W [1 2 1] /Index [0 " +
                                         std::to_string(count) + "]",
                                     records));
        EXPECT_EQ(doc.Impl().IsRebuilt(), count > Limits::kMinXRefEntryBound)
            << doc.Impl().GetRepairReason();
    }
}

TEST(XRefParser, OverlappingIndexRangesAreBounded) {
    // The same range again and again: little memory, but the work must stay bounded too.
    std::string index = "[";
    for (int i = 0; i < 200; ++i) index += "0 60000 ";
    index += "]";
    PdfBuilder b;
    b.PageTree();
    MemDoc doc(StreamSectionFile("/Size 4 /Root 1 0 R /W [1 2 1] /Index " + index,
                                 "00 0000 FF 01" + Hex4(b.OffsetOf(1)) + "00"));
    EXPECT_TRUE(doc.Impl().IsRebuilt());
    EXPECT_NE(doc.Impl().GetRepairReason().find("too many records"), std::string::npos);
}

TEST(XRefParser, XRefStmNamedByTwoTrailersIsReadOnce) {
    MemDoc doc = OpenData("xref-hybrid.pdf");
    // The same file with an extra revision whose trailer names the same stream again.
    std::string file = doc.Bytes();
    const size_t prev = file.rfind("startxref\n");
    const std::string newest = file.substr(prev + 10, file.find('\n', prev + 10) - prev - 10);
    const std::string stm = file.substr(file.find("/XRefStm ") + 9, 3);
    const size_t at = file.size();
    file += "xref\n0 1\n" + PdfBuilder::Row(0, 65535, 'f') +
            PdfBuilder::Trailer("/Size 7 /Root 1 0 R /Prev " + newest + " /XRefStm " + stm, at);
    MemDoc again(file);
    EXPECT_FALSE(again.Impl().IsRebuilt()) << again.Impl().GetRepairReason();
    EXPECT_TRUE(again.Get(5)->FindObj("Compressed")->GetBool());
}

}  // namespace
