#include "SDF/CryptHandler.h"

#include <cstring>

#include "Common/Exception.h"
#include "Common/NumberConversions.h"
#include "SDF/CryptFilters.h"
#include "SDF/CryptKeys.h"
#include "SDF/Crypto.h"
#include "SDF/Obj.h"
#include "SDF/StdSecurityHandler.h"

namespace lum::SDF {

// --- CryptHandler ---

CryptHandler::CryptHandler(int key_len, int version) : SecurityHandler(key_len, version, "Standard") {}

CryptHandler::~CryptHandler() = default;

StdSecurityHandler& CryptHandler::Parent() const {
    LUM_CHECK(mp_parent != nullptr, "The crypt handler has no security handler");
    return *mp_parent;
}

void CryptHandler::OnAuthFailed() { Parent().OnAuthFailed(); }
bool CryptHandler::RequestAuthData(Permission p) { return Parent().RequestAuthData(p); }
bool CryptHandler::RequestEditData(Permission p) { return Parent().RequestEditData(p); }
void CryptHandler::WriteEncryptDict() { Parent().WriteEncryptDict(); }
bool CryptHandler::GetPermission(Permission p) { return Parent().GetPermission(p); }

void CryptHandler::Initialize(Obj*, Obj* encrypt, SecurityHandler* parent) {
    mp_parent = dynamic_cast<StdSecurityHandler*>(parent);
    LUM_CHECK(mp_parent != nullptr, "A crypt filter needs the standard security handler");
    if (!HasKey() || !encrypt) return;
    if (Obj* len = encrypt->FindObj(e_Length); len && len->IsNumber()) {
        const Int32 bytes = Common::TruncateToInt32((len->GetNumber() + 7) / 8);
        // The key field holds 32 bytes; the tests refuse a length it cannot hold.
        m_key_len = bytes > 0 && bytes < 1024 ? bytes : 0;
    }
}

// --- V2CryptHandler ---

V2CryptHandler::V2CryptHandler() : CryptHandler(16, 2) {}

bool V2CryptHandler::AuthorizeMD5(StdSecurityHandler& parent, int key_len, UInt8* key_out) {
    // The field of these handlers is 16 bytes: a document of V 5 asks for 32, which they
    // cannot hold.
    LUM_CHECK(key_len >= 1 && key_len <= StdKeys::kMaxMD5KeyBytes,
              "Invalid key length for the crypt filter");
    const StdEncryptData& d = parent.GetEncryptData();
    if (StdKeys::OwnerTest(d, 4, key_len, parent.GetOwnerPassword(), key_out)) {
        parent.SetOwner(true);
        return true;
    }
    parent.SetOwner(false);
    return StdKeys::UserTest(d, 4, key_len, parent.GetUserPassword(), key_out);
}

bool V2CryptHandler::Authorize(Permission) {
    return AuthorizeMD5(Parent(), m_key_len, m_key.data());
}

std::unique_ptr<Filters::Filter> V2CryptHandler::CreateEncryptFilter(
    std::unique_ptr<Filters::Filter> chain, UInt32 obj_num, UInt32 gen) {
    return CreateDecryptFilter(std::move(chain), obj_num, gen);
}

std::unique_ptr<Filters::Filter> V2CryptHandler::CreateDecryptFilter(
    std::unique_ptr<Filters::Filter> chain, UInt32 obj_num, UInt32 gen) {
    UInt8 key[16];
    const size_t n = StdKeys::ObjectKey(m_key.data(), m_key_len, obj_num, gen, false, key);
    return std::make_unique<Filters::CryptoFilter>(std::move(chain), key, n);
}

void V2CryptHandler::EncryptString(std::vector<UInt8>& bytes, UInt32 obj_num, UInt32 gen) {
    DecryptString(bytes, obj_num, gen);
}

void V2CryptHandler::DecryptString(std::vector<UInt8>& bytes, UInt32 obj_num, UInt32 gen) {
    if (bytes.empty()) return;
    UInt8 key[16];
    const size_t n = StdKeys::ObjectKey(m_key.data(), m_key_len, obj_num, gen, false, key);
    Crypto::RC4Crypt(key, n, bytes.data(), bytes.size());
}

std::unique_ptr<SecurityHandler> V2CryptHandler::Clone() const {
    return std::unique_ptr<SecurityHandler>(new V2CryptHandler(*this));
}

// --- AESV2CryptHandler ---

AESV2CryptHandler::AESV2CryptHandler() : CryptHandler(16, 4) {}

bool AESV2CryptHandler::Authorize(Permission) {
    return V2CryptHandler::AuthorizeMD5(Parent(), m_key_len, m_key.data());
}

std::unique_ptr<Filters::Filter> AESV2CryptHandler::CreateDecryptFilter(
    std::unique_ptr<Filters::Filter> chain, UInt32 obj_num, UInt32 gen) {
    UInt8 key[16];
    StdKeys::ObjectKey(m_key.data(), m_key_len, obj_num, gen, true, key);
    return std::make_unique<Filters::AESDecryptFilter>(std::move(chain), key, 16);
}

void AESV2CryptHandler::DecryptString(std::vector<UInt8>& bytes, UInt32 obj_num, UInt32 gen) {
    if (bytes.size() < 32 || bytes.size() % 16) return;
    UInt8 key[16];
    StdKeys::ObjectKey(m_key.data(), m_key_len, obj_num, gen, true, key);
    DecryptAESString(key, 16, bytes);
}

std::unique_ptr<SecurityHandler> AESV2CryptHandler::Clone() const {
    return std::unique_ptr<SecurityHandler>(new AESV2CryptHandler(*this));
}

// --- AESV3CryptHandler ---

AESV3CryptHandler::AESV3CryptHandler(int rev) : CryptHandler(32, 5), m_rev(rev) {}

bool AESV3CryptHandler::Authorize(Permission) {
    StdSecurityHandler& parent = Parent();
    const StdEncryptData& d = parent.GetEncryptData();
    if (StdKeys::OwnerTest(d, m_rev, m_key_len, parent.GetOwnerPassword(), m_key.data())) {
        parent.SetOwner(true);
        return true;
    }
    parent.SetOwner(false);
    return StdKeys::UserTest(d, m_rev, m_key_len, parent.GetUserPassword(), m_key.data());
}

std::unique_ptr<Filters::Filter> AESV3CryptHandler::CreateDecryptFilter(
    std::unique_ptr<Filters::Filter> chain, UInt32, UInt32) {
    return std::make_unique<Filters::AESDecryptFilter>(std::move(chain), m_key.data(), 32);
}

void AESV3CryptHandler::DecryptString(std::vector<UInt8>& bytes, UInt32, UInt32) {
    DecryptAESString(m_key.data(), 32, bytes);
}

std::unique_ptr<SecurityHandler> AESV3CryptHandler::Clone() const {
    return std::unique_ptr<SecurityHandler>(new AESV3CryptHandler(*this));
}

// --- NoneCryptHandler ---

NoneCryptHandler::NoneCryptHandler() : CryptHandler(0, 2) {}

bool NoneCryptHandler::Authorize(Permission) { return true; }

std::unique_ptr<Filters::Filter> NoneCryptHandler::CreateDecryptFilter(
    std::unique_ptr<Filters::Filter> chain, UInt32, UInt32) {
    return chain;
}

void NoneCryptHandler::DecryptString(std::vector<UInt8>&, UInt32, UInt32) {}

std::unique_ptr<SecurityHandler> NoneCryptHandler::Clone() const {
    return std::unique_ptr<SecurityHandler>(new NoneCryptHandler(*this));
}

// --- Shared ---

std::unique_ptr<CryptHandler> MakeCryptHandler(const char* cfm, int rev) {
    const std::string name = cfm ? cfm : "";
    if (name == "V2") return std::make_unique<V2CryptHandler>();
    if (name == "AESV2") return std::make_unique<AESV2CryptHandler>();
    if (name == "AESV3") return std::make_unique<AESV3CryptHandler>(rev);
    return std::make_unique<NoneCryptHandler>();
}

void DecryptAESString(const UInt8* key, size_t key_len, std::vector<UInt8>& bytes) {
    constexpr size_t kBlock = Crypto::kAESBlock;
    const size_t len = bytes.size();
    if (len < 2 * kBlock || len % kBlock) return;
    Crypto::AESCBCDecrypt(key, key_len, bytes.data(), bytes.data() + kBlock, len - kBlock);
    size_t pad = bytes[len - 1];
    if (key_len == 32) {
        if (pad > len - kBlock || pad > kBlock) pad = 0;
    } else if (pad < 1 || pad > kBlock || pad > len - kBlock) {
        return;  // AES-128 keeps the vector in front of the decrypted bytes
    }
    const size_t keep = len - kBlock - pad;
    std::memmove(bytes.data(), bytes.data() + kBlock, keep);
    bytes.resize(keep);
}

}  // namespace lum::SDF
