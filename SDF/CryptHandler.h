#pragma once
// Crypt handlers: one for each crypt filter that CF names in a document of V 4 or 5. Each
// computes its own key from the parent's passwords and decrypts strings and streams its own
// way. The parent is the StdSecurityHandler that made them; questions about permissions go
// to it.
#include <array>
#include <memory>

#include "SDF/SecurityHandler.h"

namespace lum::SDF {

class StdSecurityHandler;

class CryptHandler : public SecurityHandler {
public:
    ~CryptHandler() override;

    void OnAuthFailed() override;
    bool RequestAuthData(Permission p) override;
    bool RequestEditData(Permission p) override;
    void WriteEncryptDict() override;
    // Takes the parent and the key length, from Length of the Encrypt dictionary when present
    // (not from the crypt filter's own dictionary).
    void Initialize(Obj* trailer, Obj* encrypt, SecurityHandler* parent) override;
    bool GetPermission(Permission p) override;

    StdSecurityHandler* GetParent() const { return mp_parent; }
    const UInt8* GetKey() const { return m_key.data(); }

protected:
    CryptHandler(int key_len, int version);
    CryptHandler(const CryptHandler&) = default;

    StdSecurityHandler& Parent() const;
    // Whether Initialize reads a key length (the None handler has no key).
    virtual bool HasKey() const { return true; }

    StdSecurityHandler* mp_parent = nullptr;
    std::array<UInt8, 32> m_key{};
};

// CFM V2: RC4 with per-object keys.
class V2CryptHandler final : public CryptHandler {
public:
    V2CryptHandler();
    bool Authorize(Permission p) override;
    std::unique_ptr<Filters::Filter> CreateEncryptFilter(std::unique_ptr<Filters::Filter> chain,
                                                         UInt32 obj_num, UInt32 gen) override;
    std::unique_ptr<Filters::Filter> CreateDecryptFilter(std::unique_ptr<Filters::Filter> chain,
                                                         UInt32 obj_num, UInt32 gen) override;
    void EncryptString(std::vector<UInt8>& bytes, UInt32 obj_num, UInt32 gen) override;
    void DecryptString(std::vector<UInt8>& bytes, UInt32 obj_num, UInt32 gen) override;
    std::unique_ptr<SecurityHandler> Clone() const override;

    // Also the test of AESV2: the revision 4 rules whatever R the document gives.
    static bool AuthorizeMD5(StdSecurityHandler& parent, int key_len, UInt8* key_out);
};

// CFM AESV2: AES-128 with per-object keys.
class AESV2CryptHandler final : public CryptHandler {
public:
    AESV2CryptHandler();
    bool Authorize(Permission p) override;
    std::unique_ptr<Filters::Filter> CreateDecryptFilter(std::unique_ptr<Filters::Filter> chain,
                                                         UInt32 obj_num, UInt32 gen) override;
    void DecryptString(std::vector<UInt8>& bytes, UInt32 obj_num, UInt32 gen) override;
    std::unique_ptr<SecurityHandler> Clone() const override;
};

// CFM AESV3: AES-256 with the file key itself.
class AESV3CryptHandler final : public CryptHandler {
public:
    explicit AESV3CryptHandler(int rev);
    bool Authorize(Permission p) override;
    std::unique_ptr<Filters::Filter> CreateDecryptFilter(std::unique_ptr<Filters::Filter> chain,
                                                         UInt32 obj_num, UInt32 gen) override;
    void DecryptString(std::vector<UInt8>& bytes, UInt32 obj_num, UInt32 gen) override;
    std::unique_ptr<SecurityHandler> Clone() const override;

    int GetRevision() const { return m_rev; }

private:
    int m_rev;
};

// Any other CFM, or none: the data pass unchanged.
class NoneCryptHandler final : public CryptHandler {
public:
    NoneCryptHandler();
    bool Authorize(Permission p) override;
    std::unique_ptr<Filters::Filter> CreateDecryptFilter(std::unique_ptr<Filters::Filter> chain,
                                                         UInt32 obj_num, UInt32 gen) override;
    void DecryptString(std::vector<UInt8>& bytes, UInt32 obj_num, UInt32 gen) override;
    std::unique_ptr<SecurityHandler> Clone() const override;

protected:
    bool HasKey() const override { return false; }
};

// The handler for a crypt filter's CFM name (null or empty for none); `rev` is the document's R.
std::unique_ptr<CryptHandler> MakeCryptHandler(const char* cfm, int rev);

// Decrypts an AES string in place: the first 16 bytes are the initialisation vector. Strings
// shorter than two blocks or not made of whole blocks stay as they are. AES-256 always drops
// the vector and ignores a padding byte that cannot be one; AES-128 keeps the whole string when
// the padding byte is bad.
void DecryptAESString(const UInt8* key, size_t key_len, std::vector<UInt8>& bytes);

}  // namespace lum::SDF
