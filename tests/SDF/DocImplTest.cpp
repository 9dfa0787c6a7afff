// Opening a document (the order of parse, security check, root check and the one repair),
// lazy loading, the objects the store makes itself, and loads from several threads.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "Common/UString.h"
#include "Filters/MemoryFilter.h"
#include "SDF/XRefTestSupport.h"
#include "support/TestSupport.h"

using namespace lum;
using namespace lum::test;
using SDF::Indirect;

namespace {

std::string SimpleFile(const std::string& trailer_extra = "/Root 1 0 R") {
    PdfBuilder b;
    b.PageTree().Object(4, "(four)");
    return b.WithTable(trailer_extra);
}

TEST(DocImpl, NumbersWithoutEntryAnswerTheTrailer) {
    PdfBuilder b;
    b.PageTree().Object(4, "<< /Far 99999 0 R /Gap 6 0 R >>");
    const size_t at = b.Pos();
    // Rows for 0 to 4 and 7: slots 5 and 6 stay empty.
    std::string file = b.Bytes() + b.Table() + "7 1\n" + PdfBuilder::Row(b.OffsetOf(4), 0, 'n') +
                       "trailer\n<< /Size 8 /Root 1 0 R >>\nstartxref\n" + std::to_string(at) +
                       "\n%%EOF\n";
    MemDoc doc(file);
    ASSERT_FALSE(doc.Impl().IsRebuilt()) << doc.Impl().GetRepairReason();
    Indirect* zero = doc.Impl().GetTrailer();
    EXPECT_EQ(doc.Get(99999), zero);
    EXPECT_EQ(doc.Get(6), zero);
    EXPECT_NE(doc.Get(7), zero);
    // A reference to such a number behaves as the trailer dictionary.
    SDF::Obj* far = doc.Get(4)->FindObj("Far");
    EXPECT_EQ(far, zero);
    EXPECT_EQ(far->FindObj(SDF::e_Root), doc.Doc().GetRoot());
    EXPECT_EQ(doc.Get(4)->FindObj("Gap")->FindObj(SDF::e_Size)->GetNumber(), 8);
}

TEST(DocImpl, ReferenceToAFreeObject) {
    // Object 5 stands in the file, but its row marks it free.
    PdfBuilder b;
    b.PageTree().Object(4, "<< /Key 5 0 R /List [5 0 R] >>").Object(5, "(gone)");
    std::string file = b.Bytes();
    const size_t at = file.size();
    file += "xref\n0 6\n" + PdfBuilder::Row(0, 65535, 'f');
    for (UInt32 n = 1; n <= 4; ++n) file += PdfBuilder::Row(b.OffsetOf(n), 0, 'n');
    file += PdfBuilder::Row(0, 1, 'f') + "trailer\n<< /Size 6 /Root 1 0 R >>\nstartxref\n" +
            std::to_string(at) + "\n%%EOF\n";
    MemDoc freed(file);
    SDF::Obj* four = freed.Get(4);
    EXPECT_EQ(four->Find(SDF::Name("Key")), four->DictEnd());
    SDF::Obj* element = four->FindObj("List")->GetAt(0);
    ASSERT_TRUE(element->IsIndirect());
    EXPECT_LUM_FAILURE(element->GetType(), "Attempt to load a free object", "obj.IsFree() == false",
                       "lum::SDF::DocImpl::LoadObj");
    // The next use tries again, with the same result.
    EXPECT_THROW(element->GetType(), Common::Exception);
}

TEST(DocImpl, OpeningChecksTheCatalog) {
    struct Case {
        const char* name;
        std::string file;
        bool check_root;
        bool rebuilt;
    };
    PdfBuilder no_pages;
    no_pages.Object(1, "<< /Type /Catalog >>").Object(2, "<< /Type /Pages /Kids [] /Count 0 >>");
    const std::string without_pages = no_pages.WithTable();
    // The same catalog defined again further on, with Pages: the rebuild takes the last one.
    PdfBuilder twice;
    twice.Object(1, "<< /Type /Catalog >>").Object(2, "<< /Type /Pages /Kids [] /Count 0 >>");
    twice.WithTable();
    twice.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");

    PdfBuilder bad_offset;
    bad_offset.PageTree();
    std::string moved = bad_offset.WithTable();
    moved.replace(moved.find(PdfBuilder::Row(bad_offset.OffsetOf(1), 0, 'n')), 20,
                  PdfBuilder::Row(bad_offset.OffsetOf(1) + 3, 0, 'n'));
    const Case cases[] = {
        {"good", SimpleFile(), true, false},
        {"catalog without Pages", without_pages, true, true},
        {"catalog without Pages, no check", without_pages, false, false},
        {"catalog defined again", twice.Bytes(), true, true},
        {"wrong catalog offset", moved, true, true},
        {"trailer without Root", SimpleFile("/Info 4 0 R"), true, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        MemDoc doc(c.file, c.check_root);
        EXPECT_EQ(doc.Impl().IsRebuilt(), c.rebuilt) << doc.Impl().GetRepairReason();
    }
    MemDoc again(twice.Bytes());
    EXPECT_TRUE(again.Doc().GetRoot()->FindObj(SDF::e_Pages));

    // Without Root even after the repair: opening works, asking for the root fails.
    MemDoc rootless(SimpleFile("/Info 4 0 R"));
    EXPECT_LUM_FAILURE(rootless.Doc().GetRoot(), "Doc root not found", "root", "lum::SDF::DocImpl::GetRoot");
}

TEST(DocImpl, EncryptedDocumentWaitsForItsPasswordBeforeTheRootCheck) {
    const std::string encrypt = "/Encrypt << /Filter /Standard /V 1 /R 2 /O (x) /U (y) /P -4 >>";
    const struct Case {
        const char* name;
        std::string trailer;
        bool rebuilt;
    } cases[] = {
        {"standard Encrypt", "/Root 1 0 R " + encrypt, false},
        {"Encrypt that is no dictionary", "/Root 1 0 R /Encrypt 5", true},
        {"Encrypt without Filter", "/Root 1 0 R /Encrypt << /V 1 >>", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        PdfBuilder b;
        b.PageTree();
        std::string file = b.WithTable(c.trailer);
        // The catalog's row points into the middle of its object.
        file.replace(file.find(PdfBuilder::Row(b.OffsetOf(1), 0, 'n')), 20,
                     PdfBuilder::Row(b.OffsetOf(1) + 3, 0, 'n'));
        MemDoc doc(file);
        EXPECT_EQ(doc.Impl().IsRebuilt(), c.rebuilt) << doc.Impl().GetRepairReason();
    }
}

TEST(DocImpl, SecurityAtOpening) {
    {
        SCOPED_TRACE("empty user password: decrypting from the start");
        MemDoc doc(ReadFile(DataPath("enc-r4-aes128-owneronly.pdf")));
        EXPECT_NE(doc.Impl().GetCryptHandler(), nullptr);
        EXPECT_TRUE(doc.Doc().InitSecurityHandler());
    }
    {
        SCOPED_TRACE("a user password: nothing is installed until it is given");
        MemDoc doc(ReadFile(DataPath("enc-r4-aes128-objstm.pdf")));
        EXPECT_FALSE(doc.Impl().IsRebuilt());
        EXPECT_EQ(doc.Impl().GetCryptHandler(), nullptr);
        EXPECT_FALSE(doc.Doc().InitStdSecurityHandler(UString("wrong", -1, enc_ascii)));
        EXPECT_EQ(doc.Impl().GetCryptHandler(), nullptr);
        EXPECT_TRUE(doc.Doc().InitStdSecurityHandler(UString("user", -1, enc_ascii)));
        EXPECT_NE(doc.Impl().GetCryptHandler(), nullptr);
        // Compressed objects come from an encrypted object stream.
        EXPECT_STREQ(doc.Doc().GetRoot()->FindObj(SDF::e_Type)->GetName(), "Catalog");
    }
    {
        SCOPED_TRACE("the checking form runs again after a repair");
        std::string bytes = ReadFile(DataPath("enc-r4-aes128-owneronly.pdf"));
        const size_t at = bytes.rfind("startxref") + 10;
        bytes.replace(at, bytes.find_first_of("\r\n", at) - at, "1");
        MemDoc doc(bytes);
        EXPECT_TRUE(doc.Impl().IsRebuilt());
        EXPECT_NE(doc.Impl().GetCryptHandler(), nullptr);
    }
}

TEST(DocImpl, WrongOffsetFailsOnlyItsObject) {
    PdfBuilder b;
    b.PageTree().Object(4, "<< /Type /Font >>");
    std::string file = b.WithTable();
    file.replace(file.find(PdfBuilder::Row(b.OffsetOf(4), 0, 'n')), 20,
                 PdfBuilder::Row(b.OffsetOf(4) + 1, 0, 'n'));
    MemDoc doc(file);
    EXPECT_FALSE(doc.Impl().IsRebuilt());
    EXPECT_THROW(doc.Get(4)->GetType(), Common::Exception);
    EXPECT_FALSE(doc.Get(4)->IsLoaded());
    EXPECT_STREQ(doc.Get(3)->FindObj(SDF::e_Type)->GetName(), "Page");
}

TEST(DocImpl, DocumentDiesCleanlyAfterAFailedLoad) {
    // The failed parse leaves a reference to entry 1 on the object parser's stack; the parser
    // must let go of it before the table's entries die.
    PdfBuilder b;
    b.PageTree().Object(4, "[1 0 R (no end");
    auto doc = std::make_unique<MemDoc>(b.WithTable());
    EXPECT_THROW(doc->Get(4)->GetType(), Common::Exception);
    doc.reset();
}

TEST(DocImpl, InputFilterRequirements) {
    const Failure f = CatchFailure(
        [] { SDF::SDFDoc doc(std::make_unique<Filters::MemoryFilter>(100, false)); });
    EXPECT_EQ(f.message, "The filter must be of the input type");
    EXPECT_EQ(f.function, "lum::SDF::DocImpl::DocImpl");

    // An input that can't seek is read into memory first.
    const std::string file = SimpleFile();
    SDF::SDFDoc doc(std::make_unique<TrickleFilter>(std::vector<UInt8>(file.begin(), file.end()), 100));
    EXPECT_FALSE(doc.IsRebuilt());
    EXPECT_EQ(StrText(doc.GetObj(4)), "four");
}

TEST(DocImpl, DefaultFontAndBlankPageAreMadeOnce) {
    MemDoc doc(SimpleFile());
    SDF::DocImpl& impl = doc.Impl();
    const size_t size = impl.GetXRefSize();
    Indirect* font = impl.GetDefaultFont();
    EXPECT_EQ(impl.GetDefaultFont(), font);
    EXPECT_EQ(font->GetObjNum(), size);  // behind every number of the file
    EXPECT_EQ(font->GetField1(), 0);
    EXPECT_TRUE(font->IsLoaded());
    EXPECT_STREQ(font->FindObj(SDF::e_BaseFont)->GetName(), "Helvetica");
    EXPECT_STREQ(font->FindObj(SDF::e_Encoding)->GetName(), "WinAnsiEncoding");
    EXPECT_STREQ(font->FindObj(SDF::e_Subtype)->GetName(), "Type1");
    EXPECT_EQ(impl.GetEntry(size), font);
    EXPECT_EQ(impl.GetXRefSize(), size);  // the main part does not change

    Indirect* page = impl.GetBlankPage();
    EXPECT_EQ(impl.GetBlankPage(), page);
    EXPECT_EQ(page->GetObjNum(), size + 1);
    EXPECT_EQ(page->FindObj(SDF::e_MediaBox)->GetAt(3)->GetNumber(), 792);
    EXPECT_EQ(page->FindObj(SDF::e_Resources)->FindObj(SDF::e_ProcSet)->Size(), 5u);
}

TEST(DocImpl, ThreadsLoadTheSameObjects) {
    const std::string bytes = ReadFile(DataPath("xref-stream.pdf"));
    for (int round = 0; round < 20; ++round) {
        MemDoc doc(bytes);
        const size_t n = doc.Impl().GetXRefSize();
        std::vector<std::vector<SDF::Obj*>> seen(4, std::vector<SDF::Obj*>(n));
        std::atomic<int> failures{0};
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&, t] {
                // Each thread walks the table from another end.
                for (size_t i = 1; i < n; ++i) {
                    const size_t k = t % 2 ? n - i : i;
                    try {
                        seen[t][k] = doc.Get(static_cast<UInt32>(k))->GetDirect(true);
                    } catch (const Common::Exception&) {
                        ++failures;
                    }
                }
                doc.Impl().GetDefaultFont();
            });
        }
        for (auto& th : threads) th.join();
        EXPECT_EQ(failures.load(), 0);
        for (int t = 1; t < 4; ++t) EXPECT_EQ(seen[t], seen[0]);
        EXPECT_NE(seen[0][5], nullptr);
    }
}

}  // namespace
