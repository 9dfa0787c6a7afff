// Real files, read in place from the shared corpus: every object of files that other readers
// open without complaint must load, and every stream must decode (except image codings that
// this build does not decode).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Filters/FilterReader.h"
#include "Filters/MappedFile.h"
#include "ObjTestSupport.h"
#include "support/TestSupport.h"

using namespace lum::SDF;
using lum::UInt32;
using lum::UInt8;
using namespace lum::test;

namespace {

// Files whose structure our object layer must read in full: object streams and the text
// filters, in files that no reader calls damaged, and that need no password.
std::vector<CorpusRow> Selection(const std::filesystem::path& dir) {
    std::vector<CorpusRow> picked;
    for (const auto& r : CorpusManifest(dir)) {
        if (r.bytes > 1500000) continue;
        if (!(r.Has("objstm") || r.Has("lzw") || r.Has("ascii85") || r.Has("asciihex"))) continue;
        if (r.Has("damaged") || r.Has("qpdf-warnings") || r.Has("qpdf-fails") || r.Has("filter-unknown") ||
            r.Has("stream-errors") || r.After("encrypt"))
            continue;
        picked.push_back(r);
    }
    return picked;
}

// Files that this reader reads differently from others on purpose. Compressed objects are
// read by offset only forward, so two objects written without a byte between them
// ("12345678" holding 1234 and 5678) read as one number, and the stream then runs short.
const char* const kKnownDifferent[] = {"qpdf/no-space-compressed-object.pdf"};

bool KnownDifferent(const std::string& file) {
    for (const char* known : kKnownDifferent)
        if (file == known) return true;
    return false;
}

bool IsImageCoding(Obj* stream) {
    Obj* f = stream->FindObj(e_Filter);
    if (!f) return false;
    std::string names;
    if (f->IsName()) names = f->GetName();
    if (f->IsArray())
        for (UInt32 i = 0; i < f->Size(); ++i)
            if (f->GetAt(i)->IsName()) names += std::string(f->GetAt(i)->GetName()) + " ";
    for (const char* image : {"DCT", "JPX", "JBIG2", "CCITT", "CCF"})
        if (names.find(image) != std::string::npos) return true;
    return false;
}

TEST(ObjCorpus, CleanFilesLoadEveryObjectAndStream) {
    const auto dir = CorpusDir();
    if (!dir) GTEST_SKIP() << "shared corpus not found; skipping the real-file sweep";
    const auto files = Selection(*dir);
    ASSERT_FALSE(files.empty());
    std::vector<std::string> problems;
    size_t objects = 0, streams = 0;
    for (const auto& row : files) {
        if (KnownDifferent(row.file)) continue;
        const std::string path = (*dir / row.file).string();
        std::unique_ptr<SDFDoc> doc;
        try {
            doc = std::make_unique<SDFDoc>(std::make_unique<lum::Filters::MappedFile>(path));
        } catch (const lum::Common::Exception& e) {
            problems.push_back(row.file + ": open: " + e.GetMessage());
            continue;
        }
        DocImpl& impl = *doc->GetImpl();
        for (size_t n = 1; n < impl.GetXRefSize(); ++n) {
            Indirect* entry = impl.GetEntry(n);
            if (!entry || entry->IsFree()) continue;
            Obj* value = nullptr;
            try {
                value = entry->GetDirect();
                ++objects;
            } catch (const lum::Common::Exception& e) {
                problems.push_back(row.file + ": object " + std::to_string(n) + ": " + e.GetMessage());
                continue;
            }
            if (!value || !value->IsStream()) continue;
            try {
                auto chain = value->GetDecodedStream();
                lum::Filters::FilterReader reader(chain.get());
                UInt8 buf[4096];
                for (int i = 0; i < 64 && reader.Read(buf, sizeof buf) == sizeof buf; ++i) {
                }
                ++streams;
            } catch (const lum::Common::Exception& e) {
                if (IsImageCoding(value) && e.GetMessage() == "Unknown filter") continue;
                problems.push_back(row.file + ": stream " + std::to_string(n) + ": " + e.GetMessage());
            }
        }
    }
    std::string report;
    for (size_t i = 0; i < problems.size() && i < 25; ++i) report += problems[i] + "\n";
    EXPECT_TRUE(problems.empty()) << problems.size() << " problems in " << files.size()
                                  << " files:\n" << report;
    EXPECT_GT(objects, 1000u);
    EXPECT_GT(streams, 100u);
}

// Strings are decrypted as their object is parsed, streams as they are read: with the empty
// user password every revision gives the same text and content as the plain copy.
TEST(ObjCorpus, EncryptedStringsAndStreamsReadAsThePlainCopy) {
    const auto dir = CorpusDir();
    if (!dir) GTEST_SKIP() << "shared corpus not found; skipping the encrypted files";
    const auto folder = *dir / "pypdf" / "encryption";
    if (!std::filesystem::exists(folder / "unencrypted.pdf")) GTEST_SKIP() << "no pypdf files";

    struct Read {
        std::string author, creator, content;
    };
    auto read = [](const std::filesystem::path& path) {
        SDFDoc doc(std::make_unique<lum::Filters::MappedFile>(path.string()));
        Read r;
        Obj* info = doc.GetTrailer()->FindObj("Info");
        auto text = [](Obj* s) {
            return s ? std::string(reinterpret_cast<const char*>(s->GetBuffer()), s->Size()) : "";
        };
        r.author = text(info->FindObj("Author"));
        r.creator = text(info->FindObj("Creator"));
        Obj* page = doc.GetRoot()->FindObj(e_Pages)->FindObj("Kids")->GetAt(0);
        r.content = ReadAll(page->FindObj(e_Contents)->GetDecodedStream());
        return r;
    };
    const Read plain = read(folder / "unencrypted.pdf");
    EXPECT_EQ(plain.author, "cheng");
    EXPECT_EQ(plain.creator, "WPS Writer");
    EXPECT_GT(plain.content.size(), 100u);
    for (const char* name : {"r2-empty-password.pdf", "r3-empty-password.pdf",
                             "r5-empty-password.pdf", "r6-empty-password.pdf"}) {
        Read got;
        try {
            got = read(folder / name);
        } catch (const lum::Common::Exception& e) {
            ADD_FAILURE() << name << ": " << e.GetMessage();
            continue;
        }
        EXPECT_EQ(got.author, plain.author) << name;
        EXPECT_EQ(got.creator, plain.creator) << name;
        EXPECT_EQ(got.content, plain.content) << name;
    }
}

}  // namespace
