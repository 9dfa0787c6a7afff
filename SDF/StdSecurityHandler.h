#pragma once
// The standard security handler, revisions 2 to 6: reads the Encrypt dictionary, tests a
// password (owner before user), derives the file key and decrypts strings and streams, either
// itself (RC4 with the file key) or through the crypt filters that CF names.
#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Common/UString.h"
#include "SDF/CryptKeys.h"
#include "SDF/SecurityHandler.h"

namespace lum::SDF {

class StdSecurityHandler : public SecurityHandler {
public:
    // Fails for key sizes the version cannot have (V 1: 40 bits; V 2: 40 or more; V 4: 128;
    // V 5: 256).
    StdSecurityHandler(int key_bits, int version, const char* name = "Standard");
    ~StdSecurityHandler() override;

    bool Authorize(Permission p) override;
    void Initialize(Obj* trailer, Obj* encrypt, SecurityHandler* parent) override;
    std::unique_ptr<Filters::Filter> CreateEncryptFilter(std::unique_ptr<Filters::Filter> chain,
                                                         UInt32 obj_num, UInt32 gen) override;
    std::unique_ptr<Filters::Filter> CreateDecryptFilter(std::unique_ptr<Filters::Filter> chain,
                                                         UInt32 obj_num, UInt32 gen) override;
    void EncryptString(std::vector<UInt8>& bytes, UInt32 obj_num, UInt32 gen) override;
    void DecryptString(std::vector<UInt8>& bytes, UInt32 obj_num, UInt32 gen) override;
    // A plain StdSecurityHandler with the same fields and clones of the crypt handlers, which
    // keep this handler as their parent.
    std::unique_ptr<SecurityHandler> Clone() const override;

    // The password as bytes for the key tests: UTF-8 above revision 4, else PDFDocEncoding
    // (cut at 64 bytes and at a zero character; a character without a code there fails). An
    // empty password leaves `out` as it is. Answers the byte count.
    int ProcessPassword(const UString& password, std::vector<UInt8>& out) const;

    // --- What the crypt handlers and the tests read ---
    int GetRevision() const { return m_rev_num; }
    Int32 GetP() const { return m_data.P; }
    const StdEncryptData& GetEncryptData() const { return m_data; }
    const std::vector<UInt8>& GetUserPassword() const { return m_user_pwd; }
    const std::vector<UInt8>& GetOwnerPassword() const { return m_owner_pwd; }
    void SetUserPassword(std::vector<UInt8> pwd) { m_user_pwd = std::move(pwd); }
    void SetOwnerPassword(std::vector<UInt8> pwd) { m_owner_pwd = std::move(pwd); }
    Obj* GetEncryptDict() const { return mp_encrypt; }
    // The crypt handlers bound to strings and streams, null when none is.
    SecurityHandler* GetStringCryptHandler() const { return mp_str_handler; }
    SecurityHandler* GetStreamCryptHandler() const { return mp_stm_handler; }
    size_t GetCryptHandlerCount() const { return m_crypt_handlers.size(); }
    // The file key of the RC4 road (V other than 4 and 5).
    const UInt8* GetFileKey() const { return m_file_key.data(); }

protected:
    StdSecurityHandler(const StdSecurityHandler& other);

    Obj* mp_encrypt = nullptr;
    Int32 m_rev_num = 3;
    StdEncryptData m_data;  // P, U, O, OE, UE, document identifier, EncryptMetadata
    std::array<UInt8, 16> m_perms{};
    SecurityHandler* mp_str_handler = nullptr;
    SecurityHandler* mp_stm_handler = nullptr;
    std::map<std::string, std::unique_ptr<SecurityHandler>> m_crypt_handlers;
    std::vector<UInt8> m_user_pwd;
    std::vector<UInt8> m_owner_pwd;
    std::array<UInt8, 32> m_file_key{};

private:
    bool AuthorizeOpen();
    bool TestBits(int bit) const { return (UInt32(m_data.P) >> bit) & 1u; }
};

// The handler that is always built: it holds the password it was given and, when asked for
// fresh authorisation data, converts it again with the revision that Initialize found.
class DefaultSecurityHandler : public StdSecurityHandler {
public:
    DefaultSecurityHandler(int key_bits, int version, const char* name = "Standard");
    DefaultSecurityHandler(const UString& password, int key_bits, int version);

    bool RequestAuthData(Permission p) override;

private:
    UString m_password;
};

}  // namespace lum::SDF
