#include "SDF/CryptKeys.h"

#include <algorithm>
#include <cstring>

#include "Common/Exception.h"
#include "SDF/Crypto.h"

namespace lum::SDF::StdKeys {

const UInt8 kPadding[32] = {0x28, 0xBF, 0x4E, 0x5E, 0x4E, 0x75, 0x8A, 0x41, 0x64, 0x00, 0x4E,
                            0x56, 0xFF, 0xFA, 0x01, 0x08, 0x2E, 0x2E, 0x00, 0xB6, 0xD0, 0x68,
                            0x3E, 0x80, 0x2F, 0x0C, 0xA9, 0xFE, 0x64, 0x53, 0x69, 0x7A};

namespace {

// Revisions 5 and 6 read at most this many password bytes.
constexpr size_t kMaxAESPasswordBytes = 127;

void CheckMD5KeyLen(int key_len) {
    LUM_CHECK(key_len >= 1 && key_len <= kMaxMD5KeyBytes, "Invalid key length %d", key_len);
}

// The password cut to 32 bytes or filled up from the padding string.
void PadPassword(const Bytes& password, UInt8 out[32]) {
    const size_t n = std::min<size_t>(password.size(), 32);
    if (n) std::memcpy(out, password.data(), n);
    std::memcpy(out + n, kPadding, 32 - n);
}

// Twenty RC4 passes with the key XORed by 0 to 19. RC4 only XORs a key stream into the data,
// so the passes commute and one order serves encryption and decryption alike.
void TwentyPasses(const UInt8* key, int key_len, UInt8* data, size_t size) {
    UInt8 k[kMaxMD5KeyBytes];
    for (int i = 0; i < 20; ++i) {
        for (int j = 0; j < key_len; ++j) k[j] = UInt8(key[j] ^ i);
        Crypto::RC4Crypt(k, size_t(key_len), data, size);
    }
}

bool UserTestMD5(const StdEncryptData& d, int rev, int key_len, const Bytes& password,
                 UInt8* key_out) {
    ComputeFileKey(d, rev, key_len, password, key_out);
    if (rev == 2) {
        UInt8 u[32];
        std::memcpy(u, kPadding, 32);
        Crypto::RC4Crypt(key_out, size_t(key_len), u, 32);
        return std::memcmp(u, d.U.data(), 32) == 0;
    }
    Bytes buf(kPadding, kPadding + 32);
    buf.insert(buf.end(), d.doc_id.begin(), d.doc_id.end());
    UInt8 u[Crypto::kMD5Size];
    Crypto::MD5(buf.data(), buf.size(), u);
    TwentyPasses(key_out, key_len, u, sizeof u);
    return std::memcmp(u, d.U.data(), 16) == 0;
}

bool OwnerTestMD5(const StdEncryptData& d, int rev, int key_len, const Bytes& password,
                  UInt8* key_out) {
    CheckMD5KeyLen(key_len);
    UInt8 padded[32];
    PadPassword(password, padded);
    UInt8 h[Crypto::kMD5Size];
    Crypto::MD5(padded, 32, h);
    if (rev >= 3)
        for (int i = 0; i < 50; ++i) Crypto::MD5(h, sizeof h, h);
    UInt8 user[32];
    std::memcpy(user, d.O.data(), 32);
    if (rev == 2)
        Crypto::RC4Crypt(h, size_t(key_len), user, 32);
    else
        TwentyPasses(h, key_len, user, 32);
    // What comes out is the padded user password, so the user test with it gives the key.
    return UserTestMD5(d, rev, key_len, Bytes(user, user + 32), key_out);
}

// Revisions 5 and 6 in one routine: the owner hash first; with `owner_only` false the user
// hash after it. The file key is the owner's or the user's encrypted key, decrypted.
bool AESPasswordTest(const StdEncryptData& d, int rev, const Bytes& password, bool owner_only,
                     UInt8* key_out) {
    const Bytes pwd(password.begin(),
                    password.begin() + std::min(password.size(), kMaxAESPasswordBytes));
    UInt8 hash[32];
    UInt8 inter[32];
    const UInt8* encrypted_key = nullptr;
    PasswordHash(rev, pwd, d.O.data() + 32, d.U.data(), hash);
    if (std::memcmp(hash, d.O.data(), 32) == 0) {
        PasswordHash(rev, pwd, d.O.data() + 40, d.U.data(), inter);
        encrypted_key = d.OE.data();
    } else {
        if (owner_only) return false;
        PasswordHash(rev, pwd, d.U.data() + 32, nullptr, hash);
        if (std::memcmp(hash, d.U.data(), 32) != 0) return false;
        PasswordHash(rev, pwd, d.U.data() + 40, nullptr, inter);
        encrypted_key = d.UE.data();
    }
    static const UInt8 kZeroIV[Crypto::kAESBlock] = {};
    std::memcpy(key_out, encrypted_key, kAESKeyBytes);
    Crypto::AESCBCDecrypt(inter, sizeof inter, kZeroIV, key_out, kAESKeyBytes);
    return true;
}

}  // namespace

void ComputeFileKey(const StdEncryptData& d, int rev, int key_len, const Bytes& password,
                    UInt8* key_out) {
    CheckMD5KeyLen(key_len);
    Bytes buf(32 + 32 + 4 + d.doc_id.size() + 4);
    UInt8* p = buf.data();
    PadPassword(password, p);
    std::memcpy(p + 32, d.O.data(), 32);
    const UInt32 perm = UInt32(d.P);
    for (int i = 0; i < 4; ++i) p[64 + i] = UInt8(perm >> (8 * i));
    size_t len = 68;
    if (!d.doc_id.empty()) std::memcpy(p + len, d.doc_id.data(), d.doc_id.size());
    len += d.doc_id.size();
    if (rev >= 4 && !d.encrypt_metadata) {
        std::memset(p + len, 0xFF, 4);
        len += 4;
    }
    UInt8 h[Crypto::kMD5Size];
    Crypto::MD5(p, len, h);
    if (rev >= 3)
        for (int i = 0; i < 50; ++i) Crypto::MD5(h, size_t(key_len), h);
    std::memcpy(key_out, h, size_t(key_len));
}

bool UserTest(const StdEncryptData& d, int rev, int key_len, const Bytes& password,
              UInt8* key_out) {
    if (rev >= 5) return AESPasswordTest(d, rev, password, false, key_out);
    return UserTestMD5(d, rev, key_len, password, key_out);
}

bool OwnerTest(const StdEncryptData& d, int rev, int key_len, const Bytes& password,
               UInt8* key_out) {
    if (rev >= 5) return AESPasswordTest(d, rev, password, true, key_out);
    return OwnerTestMD5(d, rev, key_len, password, key_out);
}

void PasswordHash(int rev, const Bytes& password, const UInt8* salt, const UInt8* udata,
                  UInt8 out[32]) {
    const size_t pwd_len = std::min(password.size(), kMaxAESPasswordBytes);
    const size_t u_len = udata ? 48 : 0;
    Bytes input(pwd_len + 8 + u_len);
    if (pwd_len) std::memcpy(input.data(), password.data(), pwd_len);
    std::memcpy(input.data() + pwd_len, salt, 8);
    if (u_len) std::memcpy(input.data() + pwd_len + 8, udata, u_len);

    UInt8 k[Crypto::kSHA512Size];
    Crypto::SHA256(input.data(), input.size(), k);
    if (rev < 6) {
        std::memcpy(out, k, 32);
        return;
    }

    // The iterated hash: each round encrypts 64 copies of (password, K, U) under a key taken
    // from K and hashes the result with the digest that the result itself selects. It ends
    // after 64 rounds at the earliest and 288 at the latest, since the last byte is below 256.
    size_t k_len = 32;
    Bytes k1(64 * (pwd_len + Crypto::kSHA512Size + u_len));
    Crypto::AESCBC aes(k, 16, k + 16, false);
    for (int round = 1;; ++round) {
        const size_t seq = pwd_len + k_len + u_len;
        UInt8* q = k1.data();
        if (pwd_len) std::memcpy(q, password.data(), pwd_len);
        std::memcpy(q + pwd_len, k, k_len);
        if (u_len) std::memcpy(q + pwd_len + k_len, udata, u_len);
        for (int i = 1; i < 64; ++i) std::memcpy(q + i * seq, q, seq);
        const size_t e_len = 64 * seq;  // a multiple of the AES block
        aes.Rekey(k, k + 16);
        aes.Process(q, e_len);
        unsigned sum = 0;
        for (int i = 0; i < 16; ++i) sum += q[i];
        switch (sum % 3) {
            case 0: Crypto::SHA256(q, e_len, k); k_len = 32; break;
            case 1: Crypto::SHA384(q, e_len, k); k_len = 48; break;
            default: Crypto::SHA512(q, e_len, k); k_len = 64; break;
        }
        if (round >= 64 && round >= int(q[e_len - 1]) + 32) break;
    }
    std::memcpy(out, k, 32);
}

size_t ObjectKey(const UInt8* file_key, int key_len, UInt32 obj_num, UInt32 gen, bool aes,
                 UInt8 out[16]) {
    CheckMD5KeyLen(key_len);
    UInt8 buf[kMaxMD5KeyBytes + 5 + 4];
    std::memcpy(buf, file_key, size_t(key_len));
    size_t len = size_t(key_len);
    buf[len++] = UInt8(obj_num);
    buf[len++] = UInt8(obj_num >> 8);
    buf[len++] = UInt8(obj_num >> 16);
    buf[len++] = UInt8(gen);
    buf[len++] = UInt8(gen >> 8);
    if (aes) {
        std::memcpy(buf + len, "sAlT", 4);
        len += 4;
    }
    Crypto::MD5(buf, len, out);
    return aes ? 16 : std::min<size_t>(size_t(key_len) + 5, 16);
}

}  // namespace lum::SDF::StdKeys
