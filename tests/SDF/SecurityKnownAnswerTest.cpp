// Files encrypted by qpdf, an independent writer, in every combination it offers: the right
// passwords open them and give back the plain file's strings and streams; wrong ones do not.
// The files are tests/data/enc-*.pdf, made by tests/data/templates/enc-make.sh from
// enc-source.in (also committed as enc-source.pdf).
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "SDF/Obj.h"
#include "SDF/SecurityHandlerSetup.h"
#include "SDF/SecurityTestPdf.h"
#include "SDF/StdSecurityHandler.h"
#include "support/TestSupport.h"

namespace {

using namespace lum;
using SDF::Obj;
using SDF::SecurityHandler;
using Bytes = std::vector<UInt8>;

UString Widened(const std::string& bytes) {
    return UString(bytes.data(), int(bytes.size()), enc_ascii);
}

bool IsType(const test::TestObject& o, const char* type) {
    Obj* t = o.value->FindObj(SDF::Name("Type"));
    return t && t->IsName() && std::strcmp(t->GetName(), type) == 0;
}

struct Security {
    std::unique_ptr<SecurityHandler> sec, crypt;
    SDF::DocSecurity Slots() { return {sec, crypt}; }
};

struct EncCase {
    const char* file;
    std::string user;   // as bytes, widened for the handler
    std::string owner;
    int version;
    int revision;
    bool objstm;      // strings live in compressed object streams
    bool clear_meta;  // metadata left in the clear by the writer
};

void PrintTo(const EncCase& c, std::ostream* os) { *os << c.file; }

class KnownAnswerTest : public ::testing::TestWithParam<EncCase> {
protected:
    void SetUp() override {
        pdf = std::make_unique<test::TestPdf>(test::ReadFile(test::DataPath(GetParam().file)));
        plain = std::make_unique<test::TestPdf>(test::ReadFile(test::DataPath("enc-source.pdf")));
        for (const auto& [num, o] : plain->Objects())
            if (o.is_stream) plain_streams.insert(o.data);
    }

    // Everything the installed crypt handler decrypts must be the plain file's content.
    void CheckDecryption(SecurityHandler& h) {
        const EncCase& c = GetParam();
        int content_streams = 0;
        int object_streams = 0;
        for (const auto& [num, o] : pdf->Objects()) {
            if (!o.is_stream || IsType(o, "XRef")) continue;  // cross-reference streams stay clear
            if (IsType(o, "ObjStm")) {
                const std::string text = test::DecryptStream(h, o, true);
                // Strings of compressed objects come out readable with the stream, as they are.
                if (text.find("/Title (Hello, world.)") != std::string::npos) ++object_streams;
                continue;
            }
            if (IsType(o, "Metadata") && c.clear_meta) {
                EXPECT_TRUE(plain_streams.count(o.data)) << "the writer left it in the clear";
                continue;
            }
            const std::string text = test::DecryptStream(h, o, o.value->FindObj(SDF::Name("Filter")) != nullptr);
            EXPECT_TRUE(plain_streams.count(text)) << c.file << " object " << num << ": " << text.substr(0, 60);
            if (text.find(") Tj") != std::string::npos) ++content_streams;
        }
        EXPECT_EQ(content_streams, 2);
        EXPECT_EQ(object_streams, c.objstm ? 1 : 0);

        if (c.objstm) return;  // the strings were checked inside the decrypted object stream
        const test::TestObject* info = pdf->FindWithKey("Title");
        ASSERT_NE(info, nullptr);
        const std::pair<const char*, std::string> expected[] = {
            {"Title", "Hello, world."},
            {"Subject", "Sixteen bytes!!"},
            {"Author", "Exactly 16 bytes"},
            {"Keywords", "A string long enough to take several AES blocks once it is encrypted."},
            {"Creator", ""},
        };
        for (const auto& [key, text] : expected) {
            Obj* s = info->value->FindObj(SDF::Name(key));
            ASSERT_NE(s, nullptr) << key;
            Bytes b(s->GetBuffer(), s->GetBuffer() + s->Size());
            h.DecryptString(b, info->num, info->gen);
            EXPECT_EQ(std::string(b.begin(), b.end()), text) << c.file << " /" << key;
        }
    }

    std::unique_ptr<test::TestPdf> pdf, plain;
    std::set<std::string> plain_streams;
};

TEST_P(KnownAnswerTest, OpensWithTheRightPasswordsOnly) {
    const EncCase& c = GetParam();
    Security s;
    // Opening without a password: only files whose user password is empty.
    EXPECT_EQ(SDF::InitSecurityHandler(pdf->Trailer(), s.Slots(), nullptr, true), c.user.empty());
    EXPECT_EQ(s.sec != nullptr, c.user.empty());
    // The tool's form without a password says the same, its failure caught inside.
    EXPECT_EQ(SDF::InitSecurityHandler(pdf->Trailer(), s.Slots(), nullptr, false), c.user.empty());

    // A wrong password changes nothing that was installed.
    SecurityHandler* before = s.crypt.get();
    EXPECT_FALSE(SDF::InitStdSecurityHandler(pdf->Trailer(), s.Slots(), Widened("wrong")));
    EXPECT_EQ(s.crypt.get(), before);

    if (!c.user.empty()) {
        ASSERT_TRUE(SDF::InitStdSecurityHandler(pdf->Trailer(), s.Slots(), Widened(c.user)));
        ASSERT_NE(s.crypt, nullptr);
        EXPECT_EQ(s.sec->GetVersion(), c.version);
        EXPECT_FALSE(s.sec->GetPermission(SecurityHandler::e_owner)) << "the user is not the owner";
        EXPECT_FALSE(s.crypt->IsModified());
        CheckDecryption(*s.crypt);
    } else {
        CheckDecryption(*s.crypt);
    }

    ASSERT_TRUE(SDF::InitStdSecurityHandler(pdf->Trailer(), s.Slots(), Widened(c.owner)));
    EXPECT_TRUE(s.sec->GetPermission(SecurityHandler::e_owner));
    auto* std_handler = dynamic_cast<SDF::StdSecurityHandler*>(s.sec.get());
    ASSERT_NE(std_handler, nullptr);
    EXPECT_EQ(std_handler->GetRevision(), c.revision);
    CheckDecryption(*s.crypt);
}

const EncCase kCases[] = {
    {"enc-r2-rc4-40.pdf", "user", "owner", 1, 2, false, false},
    {"enc-r3-rc4-128.pdf", "user", "owner", 2, 3, false, false},
    {"enc-r4-rc4-v4.pdf", "user", "owner", 4, 4, false, false},
    {"enc-r4-aes128.pdf", "user", "owner", 4, 4, false, false},
    {"enc-r4-aes128-clearmeta.pdf", "user", "owner", 4, 4, false, true},
    {"enc-r4-aes128-objstm.pdf", "user", "owner", 4, 4, true, false},
    {"enc-r4-aes128-owneronly.pdf", "", "owner", 4, 4, false, false},
    {"enc-r4-aes128-latin1.pdf", "h\xF4tel", "\xE2ge", 4, 4, false, false},
    {"enc-r5-aes256.pdf", "user", "owner", 5, 5, false, false},
    {"enc-r6-aes256.pdf", "user", "owner", 5, 6, false, false},
    {"enc-r6-aes256-clearmeta.pdf", "user", "owner", 5, 6, false, true},
    {"enc-r6-aes256-objstm.pdf", "user", "owner", 5, 6, true, false},
    {"enc-r6-aes256-owneronly.pdf", "", "owner", 5, 6, false, false},
    // Widened UTF-8 bytes: the first, single-byte test of revision 6 passes them unchanged.
    {"enc-r6-aes256-utf8.pdf", "h\xC3\xB4tel", "\xC3\xA2ge", 5, 6, false, false},
};

INSTANTIATE_TEST_SUITE_P(Qpdf, KnownAnswerTest, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<EncCase>& p) {
                             std::string name = p.param.file;
                             name = name.substr(4, name.size() - 8);
                             for (char& ch : name)
                                 if (ch == '-') ch = '_';
                             return name;
                         });

// Files whose parameters no writer picks on purpose (tests/data/templates/enc-fixed.py): each
// opens with both passwords only when its road is taken exactly.
TEST(KnownAnswer, FixedFilesForRoadsWritersRarelyTake) {
    const char* const files[] = {
        "enc-r3-rc4-40.pdf",    // revision 3, 40-bit key: the owner road hashes 16 bytes
        "enc-r3-two-ids.pdf",   // two different ID strings: the key takes the first
        "enc-r6-loop-end.pdf",  // the hash loop ends where its round equals the last byte + 32
    };
    for (const char* file : files) {
        SCOPED_TRACE(file);
        test::TestPdf pdf(test::ReadFile(test::DataPath(file)));
        for (const char* pw : {"user", "owner"}) {
            Security s;
            EXPECT_TRUE(SDF::InitStdSecurityHandler(pdf.Trailer(), s.Slots(), Widened(pw))) << pw;
            EXPECT_EQ(std::string(pw) == "owner", s.sec && s.sec->GetPermission(SecurityHandler::e_owner));
        }
        Security s;
        EXPECT_FALSE(SDF::InitStdSecurityHandler(pdf.Trailer(), s.Slots(), Widened("wrong")));
    }
}

// How a non-ASCII password reaches the key: at revision 4 as PDFDocEncoding bytes, at revision
// 6 first as those bytes and then as UTF-8, within one GetPermission.
TEST(SecurityPasswordForms, NonAsciiPasswordsByRevision) {
    const test::TestPdf r4(test::ReadFile(test::DataPath("enc-r4-aes128-latin1.pdf")));
    const test::TestPdf r6(test::ReadFile(test::DataPath("enc-r6-aes256-utf8.pdf")));
    const UString decoded(std::string("h\xC3\xB4tel"));  // U+00F4 as one character
    const struct Case {
        const test::TestPdf* pdf;
        UString password;
        bool opens;
    } cases[] = {
        {&r4, decoded, true},
        {&r4, Widened("h\xC3\xB4tel"), false},  // UTF-8 bytes are not the PDFDocEncoding ones
        {&r6, decoded, true},                    // fails as F4, passes as C3 B4
        {&r6, Widened("h\xF4tel"), true},        // the same units, so the same two tries
        {&r6, Widened("h\xC3\xB4tel"), true},    // passes at once
    };
    for (const Case& c : cases) {
        std::unique_ptr<SecurityHandler> sec, crypt;
        EXPECT_EQ(SDF::InitStdSecurityHandler(c.pdf->Trailer(), {sec, crypt}, c.password), c.opens)
            << c.password.ConvertToAscii();
    }
    // A character without a PDFDocEncoding code fails in the constructor, at every revision.
    for (const test::TestPdf* pdf : {&r4, &r6}) {
        std::unique_ptr<SecurityHandler> sec, crypt;
        const auto f = test::CatchFailure(
            [&] { SDF::InitStdSecurityHandler(pdf->Trailer(), {sec, crypt}, Widened("\xC4\x80x")); });
        EXPECT_EQ(f.message, "SecurityHandler v4 or earlier does not support Unicode passwords.");
        EXPECT_EQ(f.condition, "!PASSWORD_HAS_UNICODE");
    }
}

}  // namespace
