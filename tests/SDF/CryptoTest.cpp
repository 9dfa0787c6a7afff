// Known-answer vectors of the published algorithms, and the streaming forms against the
// one-shot ones.
#include "SDF/Crypto.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "Common/Exception.h"

namespace {

using namespace lum;
using namespace lum::SDF::Crypto;

std::vector<UInt8> FromHex(const std::string& hex) {
    std::vector<UInt8> out;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) out.push_back(UInt8(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return out;
}

std::string ToHex(const UInt8* p, size_t n) {
    static const char* d = "0123456789abcdef";
    std::string s;
    for (size_t i = 0; i < n; ++i) {
        s += d[p[i] >> 4];
        s += d[p[i] & 15];
    }
    return s;
}

TEST(CryptoTest, RC4StreamsAcrossCalls) {
    ASSERT_TRUE(RC4Available()) << "the OpenSSL legacy provider is missing";
    // The key stream runs on across calls: pieces give the same bytes as one pass.
    std::vector<UInt8> whole(1000), pieces(1000);
    for (size_t i = 0; i < whole.size(); ++i) whole[i] = pieces[i] = UInt8(i * 7);
    const UInt8 key[5] = {1, 2, 3, 4, 5};
    RC4Crypt(key, 5, whole.data(), whole.size());
    RC4 rc4(key, 5);
    rc4.Process(pieces.data(), 1);
    rc4.Process(pieces.data() + 1, 600);
    rc4.Process(pieces.data() + 601, 399);
    EXPECT_EQ(whole, pieces);
    EXPECT_THROW(RC4(key, 0), Common::Exception);
}

TEST(CryptoTest, AESCBCVectorsBothKeySizes) {
    // NIST SP 800-38A, F.2.1 and F.2.5: two blocks each.
    const auto iv = FromHex("000102030405060708090a0b0c0d0e0f");
    const auto plain = FromHex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51");
    struct Case { const char* key; const char* cipher; };
    const Case cases[] = {
        {"2b7e151628aed2a6abf7158809cf4f3c",
         "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"},
        {"603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4",
         "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"},
    };
    for (const Case& c : cases) {
        const auto key = FromHex(c.key);
        auto data = plain;
        AESCBCEncrypt(key.data(), key.size(), iv.data(), data.data(), data.size());
        EXPECT_EQ(ToHex(data.data(), data.size()), c.cipher);
        // Block by block, the chaining block carries over.
        AESCBC dec(key.data(), key.size(), iv.data(), true);
        dec.Process(data.data(), 16);
        dec.Process(data.data() + 16, 16);
        EXPECT_EQ(data, plain);
    }
}

TEST(CryptoTest, AESRefusesPartialBlocksAndOddKeys) {
    const std::vector<UInt8> key(16, 1), iv(16, 0);
    std::vector<UInt8> data(17, 0);
    EXPECT_THROW(AESCBCDecrypt(key.data(), 16, iv.data(), data.data(), 17), Common::Exception);
    EXPECT_NO_THROW(AESCBCDecrypt(key.data(), 16, iv.data(), data.data(), 0));
    EXPECT_THROW(AESCBCDecrypt(key.data(), 24, iv.data(), data.data(), 16), Common::Exception);
}

}  // namespace
