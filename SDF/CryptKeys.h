#pragma once
// Password tests and key derivation of the standard security handler: the MD5/RC4 road of
// revisions 2 to 4, the SHA-2/AES road of revisions 5 and 6, and the key of each object.
// Pure functions over the numbers of the Encrypt dictionary, so that they can be checked
// against files made by other writers without a document around them.
#include <array>
#include <cstddef>
#include <vector>

#include "Common/Types.h"

namespace lum::SDF {

// What the password tests read from the Encrypt dictionary and the trailer. Strings shorter
// than their field leave the rest zero.
struct StdEncryptData {
    std::array<UInt8, 48> O{};
    std::array<UInt8, 48> U{};
    std::array<UInt8, 32> OE{};
    std::array<UInt8, 32> UE{};
    Int32 P = -4;
    std::vector<UInt8> doc_id;  // element 0 of the trailer's ID, empty when there is none
    bool encrypt_metadata = true;
};

namespace StdKeys {

using Bytes = std::vector<UInt8>;

// The 32-byte padding string of the MD5 road.
extern const UInt8 kPadding[32];

// The longest file key of the MD5 road: an MD5 digest.
constexpr int kMaxMD5KeyBytes = 16;
// File keys of revisions 5 and 6.
constexpr int kAESKeyBytes = 32;

// The file key from a user password (revisions 2 to 4), `key_len` bytes from 1 to 16.
void ComputeFileKey(const StdEncryptData& d, int rev, int key_len, const Bytes& password,
                    UInt8* key_out);

// The user test: true when `password` is the user password; the file key is then in
// `key_out` (key_len bytes for revisions 2 to 4, 32 bytes for 5 and 6). At revisions 5 and 6
// the owner password passes as well.
bool UserTest(const StdEncryptData& d, int rev, int key_len, const Bytes& password,
              UInt8* key_out);

// The owner test: true when `password` is the owner password; the file key is in `key_out`.
bool OwnerTest(const StdEncryptData& d, int rev, int key_len, const Bytes& password,
               UInt8* key_out);

// The password hash of revisions 5 (SHA-256) and 6 (the iterated SHA-2/AES hash), over the
// password (at most 127 bytes are used), an 8-byte salt and the 48 bytes of U for owner
// hashes (null for user hashes).
void PasswordHash(int rev, const Bytes& password, const UInt8* salt, const UInt8* udata,
                  UInt8 out[32]);

// The key for the strings and streams of one object. `aes` appends the salt of AES-128.
// Answers the cipher key length: min(key_len + 5, 16) for RC4, 16 for AES-128.
size_t ObjectKey(const UInt8* file_key, int key_len, UInt32 obj_num, UInt32 gen, bool aes,
                 UInt8 out[16]);

}  // namespace StdKeys
}  // namespace lum::SDF
