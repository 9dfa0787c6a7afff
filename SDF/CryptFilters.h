#pragma once
// The decrypting stages of a stream's filter chain: RC4 and AES-CBC. Each sits directly on the
// raw bytes of the stream, works in place in a buffer of its own, and keeps its cipher state
// to itself, so any number of streams can be read at once.
#include <memory>

#include "Common/Types.h"
#include "Filters/Filter.h"
#include "SDF/Crypto.h"

namespace lum::Filters {

// What both decrypting stages share: a 1024-byte buffer of their own, and a stream length
// that concerns the raw bytes beneath them.
class DecryptingFilter : public BufFilter {
public:
    static constexpr size_t kBufferSize = 1024;

    void SetStreamLength(size_t bytes) override;

protected:
    explicit DecryptingFilter(std::unique_ptr<Filter> chain);
};

class CryptoFilter final : public DecryptingFilter {
public:
    CryptoFilter(std::unique_ptr<Filter> chain, const UInt8* key, size_t key_len);
    ~CryptoFilter() override;

    const char* GetName() const override { return "CryptoFilter"; }

protected:
    size_t Process() override;

private:
    SDF::Crypto::RC4 m_rc4;
};

// AES in CBC mode over a stream whose first 16 bytes are the initialisation vector. The last
// block of a stream holds the padding, so each buffer but the last holds back its final block
// until it is known whether more follows.
class AESDecryptFilter final : public DecryptingFilter {
public:
    // `key_len` 16 or 32; with another length the bytes pass undecrypted.
    AESDecryptFilter(std::unique_ptr<Filter> chain, const UInt8* key, size_t key_len);
    ~AESDecryptFilter() override;

    const char* GetName() const override { return "AESDecryptFilter"; }

protected:
    size_t Process() override;

private:
    std::unique_ptr<SDF::Crypto::AESCBC> mp_aes;
    bool m_at_end = false;
    bool m_first_delivered = false;
};

}  // namespace lum::Filters
