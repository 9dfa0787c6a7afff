// The standard handler's rules on Encrypt dictionaries that writers get wrong or that are made
// to hurt: refused key sizes, odd numbers, missing or wrong entries, crypt filter selection.
// Each case starts from a file encrypted by qpdf and changes one thing.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Common/UString.h"
#include "SDF/CryptHandler.h"
#include "SDF/CryptKeys.h"
#include "SDF/Obj.h"
#include "SDF/SecurityHandlerSetup.h"
#include "SDF/ObjTestSupport.h"
#include "SDF/SecurityTestPdf.h"
#include "SDF/StdSecurityHandler.h"
#include "support/TestSupport.h"

namespace {

using namespace lum;
using SDF::Obj;
using SDF::SecurityHandler;
using Bytes = std::vector<UInt8>;

Obj* Parse(const std::string& text) { return test::ParseValue(text).release(); }

UString Pwd(const std::string& bytes) { return UString(bytes.data(), int(bytes.size()), enc_ascii); }

struct Doc {
    explicit Doc(const char* file) : pdf(test::ReadFile(test::DataPath(file))) {}
    Obj* Trailer() { return pdf.Trailer(); }
    Obj* Encrypt() { return pdf.Encrypt(); }
    void Set(const char* key, const std::string& value) { Encrypt()->Put(SDF::Name(key), Parse(value)); }
    bool Open(const std::string& password) {
        return SDF::InitStdSecurityHandler(Trailer(), {sec, crypt}, Pwd(password));
    }
    bool OpenChecking() { return SDF::InitSecurityHandler(Trailer(), {sec, crypt}, nullptr, true); }
    std::string Message(const std::function<void()>& f) { return test::CatchFailure(f).message; }

    test::TestPdf pdf;
    std::unique_ptr<SecurityHandler> sec, crypt;
};

TEST(SecurityHandlerTest, ConstructorRefusesKeySizesTheVersionCannotHave) {
    const struct Case {
        int version, bits;
        const char* message;  // null: accepted
    } cases[] = {
        {1, 40, nullptr},
        {1, 41, "The encryption algorithm V=1 supports only 40 bits keys."},
        {2, 40, nullptr},
        {2, 128, nullptr},
        {2, 39, "Invalid key length for V=2 encryption."},
        {2, 16, "Invalid key length for V=2 encryption."},  // bytes instead of bits
        {4, 128, nullptr},
        {4, 40, "Invalid key length for AES encryption."},
        {5, 256, nullptr},
        {5, 128, "Invalid key length for AES encryption."},
        {0, 40, nullptr},
        {3, -7, nullptr},
        {0, std::numeric_limits<int>::max(), nullptr},
    };
    for (const Case& c : cases) {
        const auto f = test::CatchFailure([&] {
            SDF::StdSecurityHandler h(c.bits, c.version);
            EXPECT_EQ(h.GetKeyLength(), int((Int64(c.bits) + 7) / 8));
        });
        EXPECT_EQ(f.message, c.message ? c.message : "") << c.version << "/" << c.bits;
        EXPECT_EQ(f.condition, c.message ? "false" : "");
    }
}

TEST(SecurityHandlerTest, EncryptEntriesThatLeaveTheDocumentPlain) {
    const char* trailers[] = {
        "<< /Size 3 >>",
        "<< /Encrypt 12 >>",
        "<< /Encrypt << /V 2 /R 3 /Length 128 >> >>",  // no Filter
        "<< /Encrypt << /Filter 7 >> >>",              // Filter no name
        "<< /Encrypt << /Filter /Standard /V (x) >> >>",
    };
    for (const char* t : trailers) {
        std::unique_ptr<Obj> trailer(Parse(t));
        std::unique_ptr<SecurityHandler> sec, crypt;
        EXPECT_TRUE(SDF::InitSecurityHandler(trailer.get(), {sec, crypt}, nullptr, true)) << t;
        EXPECT_TRUE(SDF::InitSecurityHandler(trailer.get(), {sec, crypt}, nullptr, false)) << t;
        EXPECT_TRUE(SDF::InitStdSecurityHandler(trailer.get(), {sec, crypt}, Pwd("x"))) << t;
        EXPECT_EQ(sec, nullptr) << t;
        EXPECT_EQ(crypt, nullptr) << t;
    }
}

TEST(SecurityHandlerTest, FailuresThatReachTheCaller) {
    const struct Case {
        std::vector<std::pair<const char*, const char*>> changes;
        const char* no_password;    // InitSecurityHandler, both forms
        const char* with_password;  // InitStdSecurityHandler
    } cases[] = {
        {{{"Filter", "/Custom"}},
         "Requested security handler was not found.",
         "Not a standard security handler. The custom filter needs to be registered."},
        // V 4 without Length: the default of 40 bits.
        {{{"Length", "null"}},
         "Invalid key length for AES encryption.", "Invalid key length for AES encryption."},
        // Bytes written instead of bits.
        {{{"V", "2"}, {"Length", "16"}},
         "Invalid key length for V=2 encryption.", "Invalid key length for V=2 encryption."},
    };
    for (const Case& c : cases) {
        Doc d("enc-r4-aes128.pdf");
        for (const auto& [key, value] : c.changes) d.Set(key, value);
        EXPECT_EQ(d.Message([&] { d.OpenChecking(); }), c.no_password);
        EXPECT_EQ(d.Message([&] { SDF::InitSecurityHandler(d.Trailer(), {d.sec, d.crypt}, nullptr, false); }),
                  c.no_password);
        EXPECT_EQ(d.Message([&] { d.Open("user"); }), c.with_password);
        EXPECT_EQ(d.sec, nullptr);
    }
}

TEST(SecurityHandlerTest, DamagedEncryptDictionariesAnswerFalse) {
    const struct Case {
        const char* file;
        const char* key;
        const char* value;  // null: erase the key
    } cases[] = {
        {"enc-r4-aes128.pdf", "R", "7"},
        {"enc-r4-aes128.pdf", "R", "1"},
        {"enc-r4-aes128.pdf", "U", nullptr},
        {"enc-r4-aes128.pdf", "O", "/Name"},
        {"enc-r4-aes128.pdf", "CF", "<< /StdCF 5 >>"},
        {"enc-r4-aes128.pdf", "P", "4294967292"},  // unsigned form: another key
        {"enc-r6-aes256.pdf", "OE", "<00>"},
        {"enc-r6-aes256.pdf", "UE", nullptr},
        {"enc-r6-aes256.pdf", "Perms", "<0102030405060708090a0b0c0d0e0f>"},
        {"enc-r5-aes256.pdf", "Perms", "<0102030405060708090a0b0c0d0e0f1011>"},
    };
    for (const Case& c : cases) {
        Doc d(c.file);
        if (c.value)
            d.Set(c.key, c.value);
        else
            d.Encrypt()->Erase(SDF::Name(c.key));
        EXPECT_FALSE(d.Open("user")) << c.file << " " << c.key;
        EXPECT_FALSE(d.OpenChecking()) << c.file << " " << c.key;
        EXPECT_EQ(d.sec, nullptr);
    }
    // Perms with wrong content but the right size is accepted: it is never compared.
    Doc d("enc-r6-aes256.pdf");
    d.Set("Perms", "<0102030405060708090a0b0c0d0e0f10>");
    EXPECT_TRUE(d.Open("user"));
}

TEST(SecurityHandlerTest, DocumentIdentifier) {
    // An empty ID array fails; a missing ID gives another key, so the password no longer fits,
    // without a failure.
    Doc empty("enc-r3-rc4-128.pdf");
    empty.Trailer()->Put(SDF::Name("ID"), Parse("[]"));
    EXPECT_FALSE(empty.Open("user"));
    Doc none("enc-r3-rc4-128.pdf");
    none.Trailer()->Erase(SDF::Name("ID"));
    EXPECT_NO_THROW(EXPECT_FALSE(none.Open("user")));
    Doc not_string("enc-r3-rc4-128.pdf");
    not_string.Trailer()->Put(SDF::Name("ID"), Parse("[1 2]"));
    EXPECT_FALSE(not_string.Open("user"));
}

TEST(SecurityHandlerTest, VersionRoads) {
    const struct Case {
        const char* file;
        std::vector<std::pair<const char*, const char*>> changes;
        const char* password;
        bool opens;
    } cases[] = {
        // V absent is V 0 with 40 bits: the RC4 road of the file key, as V 1.
        {"enc-r2-rc4-40.pdf", {{"V", "null"}}, "user", true},
        {"enc-r3-rc4-128.pdf", {{"V", "3"}}, "user", true},
        // Key lengths the MD5 road cannot give are refused.
        {"enc-r3-rc4-128.pdf", {{"Length", "256"}}, "user", false},
        {"enc-r3-rc4-128.pdf", {{"V", "3"}, {"Length", "0"}}, "user", false},
        {"enc-r3-rc4-128.pdf", {{"V", "3"}, {"Length", "-64"}}, "user", false},
        // V 4 with R 3: the crypt filter tests by the rules of R 4.
        {"enc-r4-aes128.pdf", {{"R", "3"}}, "user", true},
        {"enc-r4-rc4-v4.pdf", {{"R", "3"}}, "owner", true},
        // An AESV2 or V2 filter in a document of V 5 would need a 32-byte key in a 16-byte field.
        {"enc-r6-aes256.pdf", {{"CF", "<< /StdCF << /CFM /AESV2 >> >>"}}, "user", false},
        {"enc-r6-aes256.pdf", {{"CF", "<< /StdCF << /CFM /V2 >> >>"}}, "owner", false},
    };
    for (const Case& c : cases) {
        Doc d(c.file);
        for (const auto& [key, value] : c.changes) d.Set(key, value);
        EXPECT_EQ(d.Open(c.password), c.opens) << c.file << " " << c.changes.back().first;
    }
}

TEST(SecurityHandlerTest, LongPasswordsAreCut) {
    const std::string p32 = "abcdefghijklmnopqrstuvwxyz012345";
    const std::string p127 = std::string(123, 'p') + "wxyz";
    const struct Case {
        const char* file;
        std::string password;
        bool opens;
    } cases[] = {
        {"enc-r4-aes128-long.pdf", p32, true},
        {"enc-r4-aes128-long.pdf", p32 + "and more", true},
        {"enc-r4-aes128-long.pdf", p32.substr(0, 31), false},
        {"enc-r6-aes256-long.pdf", p127, true},
        {"enc-r6-aes256-long.pdf", p127 + "and more", true},
        {"enc-r6-aes256-long.pdf", p127.substr(0, 126), false},
    };
    for (const Case& c : cases) {
        Doc d(c.file);
        EXPECT_EQ(d.Open(c.password), c.opens) << c.file << " " << c.password.size();
    }
}

TEST(SecurityHandlerTest, CryptFilterSelection) {
    const char* kTitle = "Title";
    enum Data { kDecrypted, kUnchanged, kUnkeyed };
    const struct Case {
        const char* what;
        const char* cf;      // null: keep the file's
        const char* strf;    // null: keep
        const char* stmf;    // null: keep
        bool any_password;   // opens with a wrong password
        Data strings, streams;
        size_t handlers;
    } cases[] = {
        {"as written", nullptr, nullptr, nullptr, false, kDecrypted, kDecrypted, 1},
        {"strings Identity", nullptr, "/Identity", nullptr, false, kUnchanged, kDecrypted, 1},
        {"streams Identity", nullptr, nullptr, "/Identity", false, kDecrypted, kUnchanged, 1},
        {"StrF absent", nullptr, "null", nullptr, false, kUnchanged, kDecrypted, 1},
        {"only Identity in CF", "<< /Identity << /CFM /None >> >>", "/Identity", "/Identity", true, kUnchanged, kUnchanged, 0},
        {"CFM None for streams", "<< /StdCF << /CFM /None >> >>", "/StdCF", "/StdCF", true, kUnchanged, kUnchanged, 1},
        {"no CFM", "<< /StdCF << /Length 16 >> >>", "/StdCF", "/StdCF", true, kUnchanged, kUnchanged, 1},
        {"EFOpen is not tested at opening", "<< /StdCF << /CFM /AESV2 /AuthEvent /EFOpen >> >>", "/StdCF",
         "/StdCF", true, kUnkeyed, kUnkeyed, 1},
        {"unknown StmF binds nothing", nullptr, nullptr, "/Other", false, kDecrypted, kUnchanged, 1},
        {"two filters, each bound", "<< /A << /CFM /AESV2 >> /B << /CFM /AESV2 /AuthEvent /DocOpen >> >>", "/A",
         "/B", false, kDecrypted, kDecrypted, 2},
    };
    for (const Case& c : cases) {
        Doc d("enc-r4-aes128.pdf");
        if (c.cf) d.Set("CF", c.cf);
        if (c.strf) d.Set("StrF", c.strf);
        if (c.stmf) d.Set("StmF", c.stmf);
        ASSERT_EQ(d.Open("wrong"), c.any_password) << c.what;
        if (!c.any_password) {
            ASSERT_TRUE(d.Open("user")) << c.what;
        }
        auto* h = dynamic_cast<SDF::StdSecurityHandler*>(d.sec.get());
        ASSERT_NE(h, nullptr);
        EXPECT_EQ(h->GetCryptHandlerCount(), c.handlers) << c.what;

        const test::TestObject* info = d.pdf.FindWithKey(kTitle);
        Obj* title = info->value->FindObj(SDF::Name(kTitle));
        Bytes s(title->GetBuffer(), title->GetBuffer() + title->Size());
        const std::string raw(s.begin(), s.end());
        d.crypt->DecryptString(s, info->num, info->gen);
        // A filter passed over at opening has no key: what it gives is not checked.
        if (c.strings != kUnkeyed) {
            EXPECT_EQ(std::string(s.begin(), s.end()), c.strings == kDecrypted ? "Hello, world." : raw) << c.what;
        }

        const test::TestObject* content = nullptr;  // the page's short content stream
        for (const auto& [num, o] : d.pdf.Objects())
            if (o.is_stream && o.data.size() < 100) content = &o;
        ASSERT_NE(content, nullptr);
        const std::string out = test::DecryptStream(*d.crypt, *content);
        if (c.streams != kUnkeyed) {
            EXPECT_EQ(out, c.streams == kDecrypted ? "BT /F1 24 Tf 72 760 Td (Hello, world.) Tj ET" : content->data)
                << c.what;
        }
    }
}

TEST(SecurityHandlerTest, CryptFilterCountBound) {
    std::string cf = "<< /Identity << >> ";
    for (size_t i = 0; i <= Limits::kMaxCryptFilters; ++i) cf += "/F" + std::to_string(i) + " << /CFM /AESV2 >> ";
    Doc d("enc-r4-aes128.pdf");
    d.Set("CF", cf + ">>");
    d.Set("StmF", "/F0");
    d.Set("StrF", "/F0");
    EXPECT_FALSE(d.Open("user"));
}

// Counts the tests, as a document would see the cost of a password.
class CountingHandler final : public SDF::DefaultSecurityHandler {
public:
    using DefaultSecurityHandler::DefaultSecurityHandler;
    bool Authorize(Permission p) override {
        ++authorize_calls;
        return DefaultSecurityHandler::Authorize(p);
    }
    void OnAuthFailed() override { ++failures; }
    int authorize_calls = 0;
    int failures = 0;
};

TEST(SecurityHandlerTest, PasswordRounds) {
    const struct Case {
        std::string password;
        bool opens;
        int authorize_calls;
    } cases[] = {
        {"wrong", false, 4},
        {"", false, 1},  // nothing to ask for again
        {"user", true, 1},
        {"owner", true, 1},
    };
    for (const Case& c : cases) {
        Doc d("enc-r4-aes128.pdf");
        auto handler = std::make_unique<CountingHandler>(Pwd(c.password), 128, 4);
        CountingHandler* raw = handler.get();
        raw->Initialize(d.Trailer(), d.Encrypt(), nullptr);
        EXPECT_EQ(raw->GetPermission(SecurityHandler::e_doc_open), c.opens) << c.password;
        EXPECT_EQ(raw->authorize_calls, c.authorize_calls) << c.password;
        EXPECT_EQ(raw->failures, c.opens ? 0 : c.authorize_calls - 1) << c.password;
    }
}

TEST(SecurityHandlerTest, PermissionBits) {
    const struct Case {
        const char* p;
        std::vector<std::pair<SecurityHandler::Permission, bool>> answers;
    } cases[] = {
        {"-4", {{SecurityHandler::e_print, true}, {SecurityHandler::e_print_high, true},
                {SecurityHandler::e_doc_modify, true}, {SecurityHandler::e_assemble, true}}},
        // Bits 2 to 5 and 8 to 11 clear: printing, changes, copying, annotations, forms.
        {"-3904", {{SecurityHandler::e_print, false}, {SecurityHandler::e_doc_modify, false},
                   {SecurityHandler::e_extract, false}, {SecurityHandler::e_annotate, false},
                   {SecurityHandler::e_fill_forms, false}, {SecurityHandler::e_accessibility, false},
                   {SecurityHandler::e_assemble, false}, {SecurityHandler::e_print_high, false}}},
        // Only bit 2 (print) and bit 9 (accessibility).
        {"516", {{SecurityHandler::e_print, true}, {SecurityHandler::e_accessibility, true},
                 {SecurityHandler::e_print_high, false}, {SecurityHandler::e_extract, false}}},
    };
    for (const Case& c : cases) {
        Doc d("enc-r2-rc4-40.pdf");
        d.Set("P", c.p);
        SDF::DefaultSecurityHandler h(Pwd("user"), 40, 1);
        h.Initialize(d.Trailer(), d.Encrypt(), nullptr);
        for (const auto& [code, answer] : c.answers) EXPECT_EQ(h.Authorize(code), answer) << c.p << " " << code;
        EXPECT_FALSE(h.Authorize(SecurityHandler::Permission(99)));
    }
    // Before any password test the owner flag stands as constructed.
    SDF::StdSecurityHandler fresh(40, 1);
    EXPECT_TRUE(fresh.GetPermission(SecurityHandler::e_owner));
}

TEST(SecurityHandlerTest, LaterPasswordsReplaceTheHandlersAndFailuresLeaveThem) {
    Doc d("enc-r4-aes128.pdf");
    ASSERT_TRUE(d.Open("user"));
    auto* sec = dynamic_cast<SDF::StdSecurityHandler*>(d.sec.get());
    auto* crypt = dynamic_cast<SDF::StdSecurityHandler*>(d.crypt.get());
    ASSERT_TRUE(sec && crypt);
    // The crypt handler is a clone with its own crypt filters, keyed like the first handler's.
    auto* clone_cf = dynamic_cast<SDF::CryptHandler*>(crypt->GetStreamCryptHandler());
    ASSERT_NE(clone_cf, nullptr);
    EXPECT_NE(clone_cf, sec->GetStreamCryptHandler());
    EXPECT_EQ(0, std::memcmp(clone_cf->GetKey(),
                             dynamic_cast<SDF::CryptHandler*>(sec->GetStreamCryptHandler())->GetKey(), 16));
    SecurityHandler* before = d.crypt.get();
    EXPECT_FALSE(d.Open("nope"));
    EXPECT_EQ(d.crypt.get(), before);
    EXPECT_TRUE(d.Open("owner"));
    EXPECT_NE(d.crypt.get(), before);
}

}  // namespace
