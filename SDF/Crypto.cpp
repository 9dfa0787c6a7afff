#include "SDF/Crypto.h"

#include <openssl/evp.h>
#include <openssl/provider.h>

#include <climits>

#include "Common/Exception.h"

namespace lum::SDF::Crypto {

namespace {

// Algorithms are fetched once per process: a fetch is a provider lookup under a lock, and key
// tests call the digests hundreds of times per password.
struct Algorithms {
    OSSL_PROVIDER* legacy = nullptr;
    OSSL_PROVIDER* deflt = nullptr;
    EVP_MD* md5 = nullptr;
    EVP_MD* sha256 = nullptr;
    EVP_MD* sha384 = nullptr;
    EVP_MD* sha512 = nullptr;
    EVP_CIPHER* rc4 = nullptr;
    EVP_CIPHER* aes128 = nullptr;
    EVP_CIPHER* aes256 = nullptr;

    Algorithms() {
        // Loading any provider by hand stops OpenSSL from loading the default one on its own,
        // so both are named. RC4 is only in the legacy provider.
        legacy = OSSL_PROVIDER_load(nullptr, "legacy");
        deflt = OSSL_PROVIDER_load(nullptr, "default");
        md5 = EVP_MD_fetch(nullptr, "MD5", nullptr);
        sha256 = EVP_MD_fetch(nullptr, "SHA256", nullptr);
        sha384 = EVP_MD_fetch(nullptr, "SHA384", nullptr);
        sha512 = EVP_MD_fetch(nullptr, "SHA512", nullptr);
        if (legacy) rc4 = EVP_CIPHER_fetch(nullptr, "RC4", nullptr);
        aes128 = EVP_CIPHER_fetch(nullptr, "AES-128-CBC", nullptr);
        aes256 = EVP_CIPHER_fetch(nullptr, "AES-256-CBC", nullptr);
    }
    // Deliberately never freed: the objects live as long as the process, and OpenSSL's own
    // exit handler may already have run when static destructors do.
};

const Algorithms& Algos() {
    static const Algorithms* algos = new Algorithms();
    return *algos;
}

void Digest(const EVP_MD* md, const char* name, const UInt8* data, size_t size, UInt8* out) {
    LUM_CHECK(md != nullptr, "The digest %s is not available in OpenSSL", name);
    unsigned int len = 0;
    static const UInt8 kNothing = 0;
    LUM_CHECK(EVP_Digest(data ? data : &kNothing, size, out, &len, md, nullptr) == 1,
              "The digest %s failed", name);
}

const EVP_CIPHER* AESCipher(size_t key_len) {
    LUM_CHECK(key_len == 16 || key_len == 32, "AES needs a key of 16 or 32 bytes, not %zu",
              key_len);
    const EVP_CIPHER* c = key_len == 16 ? Algos().aes128 : Algos().aes256;
    LUM_CHECK(c != nullptr, "AES-CBC is not available in OpenSSL");
    return c;
}

evp_cipher_ctx_st* NewContext() {
    EVP_CIPHER_CTX* ctx = EVP_CIPHER_CTX_new();
    LUM_CHECK(ctx != nullptr, "Out of memory for a cipher context");
    return ctx;
}

// EVP update in place; OpenSSL takes an int length, so large buffers go in slices.
void Update(EVP_CIPHER_CTX* ctx, UInt8* data, size_t size) {
    constexpr size_t kSlice = size_t(1) << 30;  // a multiple of the AES block
    while (size > 0) {
        const int n = int(size < kSlice ? size : kSlice);
        int out_len = 0;
        LUM_CHECK(EVP_CipherUpdate(ctx, data, &out_len, data, n) == 1 && out_len == n,
                  "The cipher failed");
        data += n;
        size -= size_t(n);
    }
}

}  // namespace

void MD5(const UInt8* data, size_t size, UInt8 out[kMD5Size]) {
    Digest(Algos().md5, "MD5", data, size, out);
}
void SHA256(const UInt8* data, size_t size, UInt8 out[kSHA256Size]) {
    Digest(Algos().sha256, "SHA-256", data, size, out);
}
void SHA384(const UInt8* data, size_t size, UInt8 out[kSHA384Size]) {
    Digest(Algos().sha384, "SHA-384", data, size, out);
}
void SHA512(const UInt8* data, size_t size, UInt8 out[kSHA512Size]) {
    Digest(Algos().sha512, "SHA-512", data, size, out);
}

bool RC4Available() { return Algos().rc4 != nullptr; }

RC4::RC4(const UInt8* key, size_t key_len) : mp_ctx(nullptr) {
    LUM_CHECK(RC4Available(),
              "RC4 decryption needs the OpenSSL legacy provider (legacy.so), which could not be "
              "loaded");
    LUM_CHECK(key_len >= 1 && key_len <= 256, "An RC4 key must have 1 to 256 bytes, not %zu",
              key_len);
    mp_ctx = NewContext();
    // The key length is set between two init calls: RC4's default is 16 bytes.
    if (EVP_CipherInit_ex2(mp_ctx, Algos().rc4, nullptr, nullptr, 0, nullptr) != 1 ||
        EVP_CIPHER_CTX_set_key_length(mp_ctx, int(key_len)) != 1 ||
        EVP_CipherInit_ex2(mp_ctx, nullptr, key, nullptr, 0, nullptr) != 1) {
        EVP_CIPHER_CTX_free(mp_ctx);
        LUM_FAIL("RC4 key setup failed");
    }
}

RC4::~RC4() { EVP_CIPHER_CTX_free(mp_ctx); }

void RC4::Process(UInt8* data, size_t size) { Update(mp_ctx, data, size); }

void RC4Crypt(const UInt8* key, size_t key_len, UInt8* data, size_t size) {
    RC4 rc4(key, key_len);
    rc4.Process(data, size);
}

AESCBC::AESCBC(const UInt8* key, size_t key_len, const UInt8 iv[kAESBlock], bool decrypt)
    : mp_ctx(nullptr), m_decrypt(decrypt) {
    const EVP_CIPHER* cipher = AESCipher(key_len);
    mp_ctx = NewContext();
    if (EVP_CipherInit_ex2(mp_ctx, cipher, key, iv, decrypt ? 0 : 1, nullptr) != 1 ||
        EVP_CIPHER_CTX_set_padding(mp_ctx, 0) != 1) {
        EVP_CIPHER_CTX_free(mp_ctx);
        LUM_FAIL("AES key setup failed");
    }
}

AESCBC::~AESCBC() { EVP_CIPHER_CTX_free(mp_ctx); }

void AESCBC::Process(UInt8* data, size_t size) {
    LUM_CHECK(size % kAESBlock == 0, "AES-CBC needs whole blocks, not %zu bytes", size);
    Update(mp_ctx, data, size);
}

void AESCBC::Rekey(const UInt8* key, const UInt8 iv[kAESBlock]) {
    // Padding is set again: with it on, a decrypting update would hold back the last block.
    LUM_CHECK(EVP_CipherInit_ex2(mp_ctx, nullptr, key, iv, m_decrypt ? 0 : 1, nullptr) == 1 &&
                  EVP_CIPHER_CTX_set_padding(mp_ctx, 0) == 1,
              "AES key setup failed");
}

void AESCBCDecrypt(const UInt8* key, size_t key_len, const UInt8 iv[kAESBlock], UInt8* data,
                   size_t size) {
    AESCBC aes(key, key_len, iv, true);
    aes.Process(data, size);
}

void AESCBCEncrypt(const UInt8* key, size_t key_len, const UInt8 iv[kAESBlock], UInt8* data,
                   size_t size) {
    AESCBC aes(key, key_len, iv, false);
    aes.Process(data, size);
}

}  // namespace lum::SDF::Crypto
