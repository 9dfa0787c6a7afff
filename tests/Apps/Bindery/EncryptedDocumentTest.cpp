// Encrypted documents through the built program: files that an independent writer (qpdf)
// encrypts in every way it offers give the plain file's page report with the user and the owner
// password, and the password failures end only their file.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/TestSupport.h"

namespace fs = std::filesystem;
using lum::test::RunResult;
using lum::test::RunScrivex;
using lum::test::TempDir;

namespace {

bool HaveQpdf() { return fs::exists("/usr/bin/qpdf"); }

// The report without the echo line that names the file.
std::string Report(const RunResult& r) {
    const size_t nl = r.out.find('\n');
    return nl == std::string::npos ? std::string() : r.out.substr(nl + 1);
}

struct Cipher {
    const char* name;
    std::vector<std::string> args;  // after --encrypt USER OWNER
};

const Cipher kCiphers[] = {
    {"rc4_40", {"40"}},
    {"rc4_128", {"128", "--use-aes=n"}},
    {"aes_128", {"128", "--use-aes=y"}},
    {"aes_128_clearmeta", {"128", "--use-aes=y", "--cleartext-metadata"}},
    {"aes_256", {"256"}},
    {"aes_256_clearmeta", {"256", "--cleartext-metadata"}},
};

struct Passwords {
    const char* name;
    const char* user;
    const char* owner;
};

const Passwords kPasswords[] = {
    {"both", "usr-pw", "own-pw"},
    {"owner_only", "", "own-pw"},
};

fs::path Encrypt(const TempDir& dir, const fs::path& plain, const Cipher& c, const Passwords& p,
                 const char* objstm, const std::string& name) {
    const fs::path out = dir / name;
    std::vector<std::string> args = {"--allow-weak-crypto", std::string("--object-streams=") + objstm,
                                     "--encrypt", p.user, p.owner};
    args.insert(args.end(), c.args.begin(), c.args.end());
    args.push_back("--");
    args.push_back(plain.string());
    args.push_back(out.string());
    const RunResult r = lum::test::Run("/usr/bin/qpdf", args);
    EXPECT_EQ(0, r.status) << r.out << r.err;
    return out;
}

TEST(EncryptedDocument, EveryCipherOpensWithUserAndOwnerPassword) {
    if (!HaveQpdf()) GTEST_SKIP() << "qpdf is not installed";
    TempDir dir;
    for (const char* source : {"hello.pdf", "pages-boxes.pdf"}) {
        const fs::path plain = lum::test::DataPath(source);
        const std::string expected = Report(RunScrivex({"--pageinfo", plain.string()}));
        ASSERT_FALSE(expected.empty()) << source;
        for (const Cipher& c : kCiphers) {
            for (const Passwords& p : kPasswords) {
                for (const char* objstm : {"generate", "disable"}) {
                    const std::string label = std::string(source) + "/" + c.name + "/" + p.name + "/" + objstm;
                    const fs::path f = Encrypt(dir, plain, c, p, objstm, "e.pdf");
                    for (const char* pw : {p.user, p.owner}) {
                        std::vector<std::string> args = {"--pageinfo", "--noprompt"};
                        if (*pw) args.insert(args.end(), {"-p", pw});
                        args.push_back(f.string());
                        const RunResult r = RunScrivex(args);
                        EXPECT_EQ(0, r.status) << label;
                        EXPECT_EQ(expected, Report(r)) << label << " with '" << pw << "'";
                    }
                }
            }
        }
    }
}

TEST(EncryptedDocument, WrongPasswordWithoutPromptEndsOnlyThatFile) {
    if (!HaveQpdf()) GTEST_SKIP() << "qpdf is not installed";
    TempDir dir;
    const fs::path plain = lum::test::DataPath("hello.pdf");
    for (const Cipher& c : kCiphers) {
        const fs::path f = Encrypt(dir, plain, c, kPasswords[0], "disable", "locked.pdf");
        const RunResult r = RunScrivex({"--pageinfo", "--noprompt", "-p", "wrong", f.string(), plain.string()});
        EXPECT_EQ(0, r.status) << c.name;
        EXPECT_NE(std::string::npos,
                  r.out.find("Error: A valid password is required to open: " + f.string() + "\n"))
            << c.name << "\n" << r.out;
        // The plain file after it is still reported.
        EXPECT_NE(std::string::npos, r.out.find(plain.string() + "\n595.28, 841.89")) << r.out;
    }
}

TEST(EncryptedDocument, PromptLoopKeepsTheLastTypedPasswordForTheNextFile) {
    if (!HaveQpdf()) GTEST_SKIP() << "qpdf is not installed";
    TempDir dir;
    const fs::path plain = lum::test::DataPath("hello.pdf");
    const fs::path first = Encrypt(dir, plain, kCiphers[4], {"a", "zzz", "own-a"}, "disable", "first.pdf");
    const fs::path second = Encrypt(dir, plain, kCiphers[2], {"b", "third", "own-b"}, "disable", "second.pdf");
    // Three wrong lines for the first file; the third is the first try on the second file.
    const RunResult r = RunScrivex({"--pageinfo", first.string(), second.string()}, {}, "one\ntwo\nthird\n");
    EXPECT_EQ(0, r.status);
    EXPECT_NE(std::string::npos, r.out.find("Error: Wrong password. Failed to open: " + first.string() + "\n"))
        << r.out;
    const size_t second_at = r.out.find(second.string() + "\n");
    ASSERT_NE(std::string::npos, second_at) << r.out;
    EXPECT_EQ(second.string() + "\n595.28, 841.89, 0, 0, 595.28, 841.89, 0, 0, 595.28, 841.89, 0\n",
              r.out.substr(second_at));

    // A wrong line, then the right one, opens.
    const RunResult again = RunScrivex({"--pageinfo", first.string()}, {}, "nope\nzzz\n");
    EXPECT_EQ(first.string() + "\nWrong password.\nPlease enter the correct password: "
                               "Wrong password.\nPlease enter the correct password: "
                               "595.28, 841.89, 0, 0, 595.28, 841.89, 0, 0, 595.28, 841.89, 0\n",
              again.out);
}

}  // namespace
