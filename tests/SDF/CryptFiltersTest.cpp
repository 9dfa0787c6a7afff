// The decrypting filters and AES strings on hand-made ciphertexts: padding, the held-back
// block, short and ragged inputs, and sources that deliver a few bytes at a time.
#include "SDF/CryptFilters.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "Filters/ExtBufInputFilter.h"
#include "ObjTestSupport.h"
#include "SDF/CryptHandler.h"
#include "SDF/CryptKeys.h"
#include "SDF/Crypto.h"

namespace {

using namespace lum;
using Bytes = std::vector<UInt8>;
using lum::test::TrickleFilter;

const UInt8 kKey16[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
const UInt8 kKey32[32] = {31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16,
                          15, 14, 13, 12, 11, 10, 9,  8,  7,  6,  5,  4,  3,  2,  1,  0};
const UInt8 kIV[16] = {0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7,
                       0xA8, 0xA9, 0xAA, 0xAB, 0xAC, 0xAD, 0xAE, 0xAF};

Bytes WithIV(const Bytes& data) {
    Bytes out(16 + data.size());
    std::memcpy(out.data(), kIV, 16);
    if (!data.empty()) std::memcpy(out.data() + 16, data.data(), data.size());
    return out;
}

// IV followed by the CBC encryption of `plain` (whole blocks, padding already in place).
Bytes Encrypt(const UInt8* key, size_t key_len, Bytes plain) {
    SDF::Crypto::AESCBCEncrypt(key, key_len, kIV, plain.data(), plain.size());
    return WithIV(plain);
}

Bytes Padded(const std::string& text) {
    Bytes b(text.begin(), text.end());
    const size_t pad = 16 - b.size() % 16;
    b.insert(b.end(), pad, UInt8(pad));
    return b;
}

Bytes ReadAll(Filters::Filter& f) {
    Bytes out;
    for (size_t n; (n = f.Size()) > 0;) {
        out.insert(out.end(), f.Begin(), f.Begin() + n);
        f.Consume(n);
    }
    return out;
}

Bytes ThroughAES(const Bytes& stream, const UInt8* key, size_t key_len, size_t step) {
    Filters::AESDecryptFilter f(std::make_unique<TrickleFilter>(stream, step), key, key_len);
    return ReadAll(f);
}

TEST(CryptFiltersTest, AESStreamRoundTripsAtEverySize) {
    // Sizes around the 1024-byte buffer and its held-back block, through sources of several
    // window sizes, for both key lengths.
    for (size_t size : {0, 1, 15, 16, 17, 1000, 1007, 1008, 1009, 1023, 1024, 1025, 1040, 3000}) {
        std::string text(size, 'x');
        for (size_t i = 0; i < size; ++i) text[i] = char('a' + i % 26);
        for (size_t step : {1, 7, 16, 4096}) {
            const Bytes e16 = Encrypt(kKey16, 16, Padded(text));
            EXPECT_EQ(ThroughAES(e16, kKey16, 16, step), Bytes(text.begin(), text.end()))
                << "size " << size << " step " << step;
            const Bytes e32 = Encrypt(kKey32, 32, Padded(text));
            EXPECT_EQ(ThroughAES(e32, kKey32, 32, step), Bytes(text.begin(), text.end()))
                << "size " << size << " step " << step;
        }
    }
}

TEST(CryptFiltersTest, AESStreamOddEndings) {
    // Only the initialisation vector: no data.
    EXPECT_TRUE(ThroughAES(Bytes(kIV, kIV + 16), kKey16, 16, 4096).empty());
    // A source shorter than the vector gives nothing either.
    EXPECT_TRUE(ThroughAES(Bytes(5, 1), kKey16, 16, 4096).empty());

    // A last byte of 17 or more drops the whole last buffer, and only that one.
    Bytes plain(1040, 'q');
    plain.back() = 17;
    Bytes out = ThroughAES(Encrypt(kKey16, 16, plain), kKey16, 16, 4096);
    EXPECT_EQ(out, Bytes(1008, 'q'));

    // A padding byte of 0 removes nothing.
    plain.assign(32, 'z');
    plain.back() = 0;
    out = ThroughAES(Encrypt(kKey32, 32, plain), kKey32, 32, 4096);
    EXPECT_EQ(out, plain);

    // Data that is no whole number of blocks stays as read, and its last byte is still taken as
    // padding: 3 here, so the last three raw bytes go.
    Bytes ragged = Encrypt(kKey16, 16, Bytes(32, 'r'));
    ragged.push_back(0x41);
    ragged.push_back(0x42);
    ragged.push_back(0x03);
    out = ThroughAES(ragged, kKey16, 16, 4096);
    ASSERT_EQ(out.size(), 32u);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 32), Bytes(ragged.begin() + 16, ragged.begin() + 48));

    // A key of another length sets nothing up: the bytes pass as they are, less the vector.
    const Bytes raw = Encrypt(kKey16, 16, Padded("abc"));
    out = ThroughAES(raw, kKey16, 24, 4096);
    const size_t p = raw.back();
    EXPECT_EQ(out, p > 16 ? Bytes() : Bytes(raw.begin() + 16, raw.end() - p));
}

TEST(CryptFiltersTest, RC4StreamMatchesOneShot) {
    Bytes plain(5000);
    for (size_t i = 0; i < plain.size(); ++i) plain[i] = UInt8(i * 13 + 1);
    Bytes cipher = plain;
    SDF::Crypto::RC4Crypt(kKey16, 10, cipher.data(), cipher.size());
    for (size_t step : {1, 100, 1024, 8192}) {
        Filters::CryptoFilter f(std::make_unique<TrickleFilter>(cipher, step), kKey16, 10);
        EXPECT_EQ(ReadAll(f), plain) << step;
    }
}

TEST(CryptFiltersTest, AESStrings) {
    struct Case {
        const char* what;
        Bytes input;      // as stored in the file
        size_t key_len;
        Bytes expected;
    };
    const Bytes short16(kIV, kIV + 16);
    const Bytes short31(31, 7), short33(33, 7);
    Bytes full_pad(16, 16);  // one block of padding only
    Bytes zero_pad(16, 'k');
    zero_pad.back() = 0;
    Bytes bad_pad(16, 'k');
    bad_pad.back() = 40;
    const Bytes hello = Padded("Hello, world.");
    const Case cases[] = {
        {"16 bytes stay", short16, 16, short16},
        {"31 bytes stay", short31, 32, short31},
        {"33 bytes stay", short33, 16, short33},
        {"padding 16 empties 32 bytes", Encrypt(kKey16, 16, full_pad), 16, {}},
        {"AES-256 padding 16", Encrypt(kKey32, 32, full_pad), 32, {}},
        {"text, AES-128", Encrypt(kKey16, 16, hello), 16, Bytes(hello.begin(), hello.begin() + 13)},
        {"text, AES-256", Encrypt(kKey32, 32, hello), 32, Bytes(hello.begin(), hello.begin() + 13)},
        {"AES-128 keeps the vector on padding 0", Encrypt(kKey16, 16, zero_pad), 16, WithIV(zero_pad)},
        {"AES-256 drops it", Encrypt(kKey32, 32, zero_pad), 32, zero_pad},
        {"AES-128 bad padding keeps all", Encrypt(kKey16, 16, bad_pad), 16,
         WithIV(bad_pad)},
        {"AES-256 bad padding removes nothing", Encrypt(kKey32, 32, bad_pad), 32, bad_pad},
    };
    for (const Case& c : cases) {
        Bytes b = c.input;
        SDF::DecryptAESString(c.key_len == 16 ? kKey16 : kKey32, c.key_len, b);
        EXPECT_EQ(b, c.expected) << c.what;
    }
}

TEST(CryptFiltersTest, ObjectKeysUseLowBytesOnly) {
    UInt8 a[16], b[16];
    const size_t n = SDF::StdKeys::ObjectKey(kKey16, 5, 1, 0, false, a);
    EXPECT_EQ(n, 10u);
    SDF::StdKeys::ObjectKey(kKey16, 5, 16777217, 0, false, b);
    EXPECT_EQ(0, std::memcmp(a, b, n));
    SDF::StdKeys::ObjectKey(kKey16, 5, 1, 65536, false, b);
    EXPECT_EQ(0, std::memcmp(a, b, n));
    SDF::StdKeys::ObjectKey(kKey16, 5, 2, 0, false, b);
    EXPECT_NE(0, std::memcmp(a, b, n));
    EXPECT_EQ(SDF::StdKeys::ObjectKey(kKey16, 16, 1, 0, false, a), 16u);
    // The AES salt changes the key.
    EXPECT_EQ(SDF::StdKeys::ObjectKey(kKey16, 16, 1, 0, true, b), 16u);
    EXPECT_NE(0, std::memcmp(a, b, 16));
}

}  // namespace
