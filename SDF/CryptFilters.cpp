#include "SDF/CryptFilters.h"

#include <cstring>

namespace lum::Filters {

namespace {

// Copies up to `n` bytes from `src` into `dst`; fewer only at the end of the source.
size_t Pull(Filter& src, UInt8* dst, size_t n) {
    size_t got = 0;
    while (got < n) {
        const size_t avail = src.Size();
        if (avail == 0) break;
        const size_t take = avail < n - got ? avail : n - got;
        std::memcpy(dst + got, src.Begin(), take);
        src.Consume(take);
        got += take;
    }
    return got;
}

}  // namespace

// --- DecryptingFilter ---

DecryptingFilter::DecryptingFilter(std::unique_ptr<Filter> chain)
    : BufFilter(std::move(chain), kBufferSize, true) {}

void DecryptingFilter::SetStreamLength(size_t bytes) {
    if (m_attached) m_attached->SetStreamLength(bytes);
}

// --- CryptoFilter ---

CryptoFilter::CryptoFilter(std::unique_ptr<Filter> chain, const UInt8* key, size_t key_len)
    : DecryptingFilter(std::move(chain)), m_rc4(key, key_len) {}

CryptoFilter::~CryptoFilter() = default;

size_t CryptoFilter::Process() {
    if (!m_attached) return 0;
    const size_t n = Pull(*m_attached, m_buf_begin, m_buf_size);
    m_rc4.Process(m_buf_begin, n);
    return n;
}

// --- AESDecryptFilter ---

AESDecryptFilter::AESDecryptFilter(std::unique_ptr<Filter> chain, const UInt8* key,
                                   size_t key_len)
    : DecryptingFilter(std::move(chain)) {
    UInt8 iv[SDF::Crypto::kAESBlock] = {};
    if (m_attached) Pull(*m_attached, iv, sizeof iv);
    if (key_len == 16 || key_len == 32)
        mp_aes = std::make_unique<SDF::Crypto::AESCBC>(key, key_len, iv, true);
}

AESDecryptFilter::~AESDecryptFilter() = default;

size_t AESDecryptFilter::Process() {
    constexpr size_t kBlock = SDF::Crypto::kAESBlock;
    if (m_at_end || !m_attached) return 0;
    // The block held back last time moves to the front; it was already decrypted.
    size_t held = 0;
    if (m_first_delivered) {
        std::memmove(m_buf_begin, m_buf_begin + m_buf_size - kBlock, kBlock);
        held = kBlock;
    }
    const size_t space = m_buf_size - held;
    const size_t got = Pull(*m_attached, m_buf_begin + held, space);
    // A read that is not a whole number of blocks stays as it came: CBC has nothing to work on.
    if (mp_aes && got % kBlock == 0) mp_aes->Process(m_buf_begin + held, got);

    const size_t total = held + got;
    if (got == space && m_attached->Size() > 0) {
        m_first_delivered = true;
        return total - kBlock;
    }
    m_at_end = true;
    if (total == 0) return 0;
    // The last byte counts the padding; one that cannot be padding drops the whole buffer.
    const size_t pad = m_buf_begin[total - 1];
    if (pad > kBlock || pad > total) return 0;
    return total - pad;
}

}  // namespace lum::Filters
