#pragma once
// The ciphers and digests of the security handlers, through OpenSSL. Everything here works on
// whole buffers the caller owns; nothing is home-made. Failures raise lum::Common::Exception.
#include <cstddef>

#include "Common/Types.h"

struct evp_cipher_ctx_st;

namespace lum::SDF::Crypto {

constexpr size_t kMD5Size = 16;
constexpr size_t kSHA256Size = 32;
constexpr size_t kSHA384Size = 48;
constexpr size_t kSHA512Size = 64;
constexpr size_t kAESBlock = 16;

void MD5(const UInt8* data, size_t size, UInt8 out[kMD5Size]);
void SHA256(const UInt8* data, size_t size, UInt8 out[kSHA256Size]);
void SHA384(const UInt8* data, size_t size, UInt8 out[kSHA384Size]);
void SHA512(const UInt8* data, size_t size, UInt8 out[kSHA512Size]);

// An RC4 key stream. The state runs on from one Process call to the next, so a stream can be
// decrypted buffer by buffer. RC4 lives in OpenSSL's legacy provider; when that cannot be
// loaded the constructor raises with a message that says so.
class RC4 {
public:
    // `key_len` from 1 to 256 bytes.
    RC4(const UInt8* key, size_t key_len);
    ~RC4();
    RC4(const RC4&) = delete;
    RC4& operator=(const RC4&) = delete;

    // Encrypts or decrypts `size` bytes in place (the two are the same operation).
    void Process(UInt8* data, size_t size);

private:
    evp_cipher_ctx_st* mp_ctx;
};

// One-shot RC4 over a buffer, in place.
void RC4Crypt(const UInt8* key, size_t key_len, UInt8* data, size_t size);

// AES in CBC mode without padding, for 16- or 32-byte keys. The chaining block carries over
// from one Process call to the next. Every length must be a whole number of blocks; a length
// that is not raises, and a zero length does nothing.
class AESCBC {
public:
    AESCBC(const UInt8* key, size_t key_len, const UInt8 iv[kAESBlock], bool decrypt);
    ~AESCBC();
    AESCBC(const AESCBC&) = delete;
    AESCBC& operator=(const AESCBC&) = delete;

    // In place.
    void Process(UInt8* data, size_t size);
    // Starts over with a new key and initialisation vector, keeping the context (the revision 6
    // hash sets a key per round).
    void Rekey(const UInt8* key, const UInt8 iv[kAESBlock]);

private:
    evp_cipher_ctx_st* mp_ctx;
    bool m_decrypt;
};

// One-shot CBC over whole blocks, in place.
void AESCBCDecrypt(const UInt8* key, size_t key_len, const UInt8 iv[kAESBlock], UInt8* data,
                   size_t size);
void AESCBCEncrypt(const UInt8* key, size_t key_len, const UInt8 iv[kAESBlock], UInt8* data,
                   size_t size);

// Whether RC4 can be used in this process (the legacy provider loaded).
bool RC4Available();

}  // namespace lum::SDF::Crypto
