#include "SDF/StdSecurityHandler.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Common/NumberConversions.h"
#include "SDF/CryptFilters.h"
#include "SDF/CryptHandler.h"
#include "SDF/Crypto.h"
#include "SDF/Obj.h"

namespace lum::SDF {

namespace {

// The bytes of a string value, at most `N` of them, into a zeroed field.
template <size_t N>
void CopyString(Obj* str, std::array<UInt8, N>& field) {
    const UInt8* bytes = str->GetBuffer();
    const size_t n = std::min<size_t>(str->Size(), N);
    field.fill(0);
    if (bytes && n) std::memcpy(field.data(), bytes, n);
}

Int32 ReadInt(Obj* dict, const Name& key) {
    return Common::TruncateToInt32(dict->Get(key)->second->GetNumber());
}

}  // namespace

// --- StdSecurityHandler ---

StdSecurityHandler::StdSecurityHandler(int key_bits, int version, const char* name)
    : SecurityHandler(Int32((Int64(key_bits) + 7) / 8), version, name) {
    switch (version) {
        case 1:
            if (key_bits != 40) LUM_FAIL("The encryption algorithm V=1 supports only 40 bits keys.");
            break;
        case 2:
            if (key_bits < 40) LUM_FAIL("Invalid key length for V=2 encryption.");
            break;
        case 4:
            if (key_bits != 128) LUM_FAIL("Invalid key length for AES encryption.");
            break;
        case 5:
            if (key_bits != 256) LUM_FAIL("Invalid key length for AES encryption.");
            break;
        default:
            break;
    }
}

StdSecurityHandler::StdSecurityHandler(const StdSecurityHandler& other)
    : SecurityHandler(other),
      mp_encrypt(other.mp_encrypt),
      m_rev_num(other.m_rev_num),
      m_data(other.m_data),
      m_perms(other.m_perms),
      m_user_pwd(other.m_user_pwd),
      m_owner_pwd(other.m_owner_pwd),
      m_file_key(other.m_file_key) {
    // The clones keep the original as their parent, as copies of the parent pointer.
    for (const auto& [name, handler] : other.m_crypt_handlers) {
        auto clone = handler->Clone();
        if (handler.get() == other.mp_str_handler) mp_str_handler = clone.get();
        if (handler.get() == other.mp_stm_handler) mp_stm_handler = clone.get();
        m_crypt_handlers.emplace(name, std::move(clone));
    }
}

StdSecurityHandler::~StdSecurityHandler() = default;

std::unique_ptr<SecurityHandler> StdSecurityHandler::Clone() const {
    return std::unique_ptr<SecurityHandler>(new StdSecurityHandler(*this));
}

void StdSecurityHandler::Initialize(Obj* trailer, Obj* encrypt, SecurityHandler*) {
    mp_encrypt = encrypt;
    m_rev_num = ReadInt(encrypt, e_R);
    LUM_CHECK(m_rev_num>1 && m_rev_num<=6, "Invalid revision number");
    CopyString(encrypt->Get(e_O)->second, m_data.O);
    CopyString(encrypt->Get(e_U)->second, m_data.U);
    m_data.P = ReadInt(encrypt, e_P);

    m_data.doc_id.clear();
    if (Obj* id = trailer ? trailer->FindObj(e_ID) : nullptr; id && id->IsArray()) {
        Obj* first = id->GetAt(0);
        if (first->IsString() && first->Size() > 0)
            m_data.doc_id.assign(first->GetBuffer(), first->GetBuffer() + first->Size());
    }
    if (m_V != 4 && m_V != 5) return;

    m_data.encrypt_metadata = true;
    if (m_rev_num >= 4 && m_rev_num <= 6) {
        auto it = encrypt->Find(e_EncryptMetadata);
        if (it != encrypt->DictEnd()) m_data.encrypt_metadata = it->second->GetBool();
    }
    if (m_rev_num >= 5) {
        Obj* str = encrypt->Get(e_OE)->second;
        LUM_CHECK(str->Size()==32, "Invalid OE size");
        CopyString(str, m_data.OE);
        str = encrypt->Get(e_UE)->second;
        LUM_CHECK(str->Size()==32, "Invalid UE size");
        CopyString(str, m_data.UE);
        str = encrypt->Get(e_Perms)->second;
        LUM_CHECK(str->Size()==16, "Invalid Perms size");
        CopyString(str, m_perms);  // read for its size only: nothing compares it
    }

    auto cf_entry = encrypt->Find(e_CF);
    if (cf_entry == encrypt->DictEnd()) return;
    Obj* cf = cf_entry->second;
    auto name_of = [encrypt](StaticName key) -> std::string {
        auto it = encrypt->Find(key);
        return it == encrypt->DictEnd() ? std::string() : std::string(it->second->GetName());
    };
    const std::string strf = name_of(e_StrF);
    const std::string stmf = name_of(e_StmF);

    m_crypt_handlers.clear();
    mp_str_handler = mp_stm_handler = nullptr;
    for (auto it = cf->DictBegin(); it != cf->DictEnd(); ++it) {
        const std::string key = it->first->GetName();
        if (key == "Identity") continue;
        // Each handler tests the password on its own: a dictionary with thousands of filters
        // would cost thousands of key computations.
        LUM_CHECK(m_crypt_handlers.size() < Limits::kMaxCryptFilters,
                  "Too many crypt filters in CF");
        Obj* filter = it->second;
        auto cfm = filter->Find(e_CFM);
        auto handler =
            MakeCryptHandler(cfm == filter->DictEnd() ? nullptr : cfm->second->GetName(), m_rev_num);
        SecurityHandler* raw = handler.get();
        m_crypt_handlers[key] = std::move(handler);
        raw->Initialize(trailer, encrypt, this);
        if (key == strf) mp_str_handler = raw;
        if (key == stmf) mp_stm_handler = raw;
    }
}

bool StdSecurityHandler::Authorize(Permission p) {
    switch (p) {
        case e_owner: return m_owner;
        case e_doc_open: return AuthorizeOpen();
        case e_doc_modify: return TestBits(3);
        case e_print: return TestBits(2);
        case e_print_high: return TestBits(11);
        case e_extract: return TestBits(4);
        case e_annotate: return TestBits(5);
        case e_fill_forms: return TestBits(8);
        case e_accessibility: return TestBits(9);
        case e_assemble: return TestBits(10);
    }
    return false;
}

bool StdSecurityHandler::AuthorizeOpen() {
    if (m_V == 4 || m_V == 5) {
        for (const auto& [name, handler] : m_crypt_handlers) {
            Obj* filter = mp_encrypt->Get(e_CF)->second->Get(Name(name.c_str()))->second;
            auto event = filter->Find(e_AuthEvent);
            // A filter opened on another event (EFOpen) is not tested here and gets no key.
            if (event != filter->DictEnd() && std::strcmp(event->second->GetName(), "DocOpen") != 0)
                continue;
            if (!handler->Authorize(e_doc_open)) return false;
        }
        return true;
    }
    LUM_CHECK(m_key_len > 0, "Invalid key length");
    // The object keys hash n bytes of an MD5 digest, which has 16.
    LUM_CHECK(m_key_len <= StdKeys::kMaxMD5KeyBytes, "Invalid key length");
    if (StdKeys::OwnerTest(m_data, m_rev_num, m_key_len, m_owner_pwd, m_file_key.data())) {
        m_owner = true;
        return true;
    }
    m_owner = false;
    return StdKeys::UserTest(m_data, m_rev_num, m_key_len, m_user_pwd, m_file_key.data());
}

std::unique_ptr<Filters::Filter> StdSecurityHandler::CreateEncryptFilter(
    std::unique_ptr<Filters::Filter> chain, UInt32 obj_num, UInt32 gen) {
    if (m_V == 4 || m_V == 5) {
        if (mp_stm_handler) return mp_stm_handler->CreateEncryptFilter(std::move(chain), obj_num, gen);
        return chain;
    }
    return CreateDecryptFilter(std::move(chain), obj_num, gen);  // RC4 is its own inverse
}

std::unique_ptr<Filters::Filter> StdSecurityHandler::CreateDecryptFilter(
    std::unique_ptr<Filters::Filter> chain, UInt32 obj_num, UInt32 gen) {
    if (m_V == 4 || m_V == 5) {
        if (mp_stm_handler) return mp_stm_handler->CreateDecryptFilter(std::move(chain), obj_num, gen);
        return chain;
    }
    UInt8 key[16];
    const size_t n = StdKeys::ObjectKey(m_file_key.data(), m_key_len, obj_num, gen, false, key);
    return std::make_unique<Filters::CryptoFilter>(std::move(chain), key, n);
}

void StdSecurityHandler::EncryptString(std::vector<UInt8>& bytes, UInt32 obj_num, UInt32 gen) {
    if (m_V == 4 || m_V == 5) {
        if (mp_str_handler) mp_str_handler->EncryptString(bytes, obj_num, gen);
        return;
    }
    DecryptString(bytes, obj_num, gen);
}

void StdSecurityHandler::DecryptString(std::vector<UInt8>& bytes, UInt32 obj_num, UInt32 gen) {
    if (m_V == 4 || m_V == 5) {
        if (mp_str_handler) mp_str_handler->DecryptString(bytes, obj_num, gen);
        return;
    }
    if (bytes.empty()) return;
    UInt8 key[16];
    const size_t n = StdKeys::ObjectKey(m_file_key.data(), m_key_len, obj_num, gen, false, key);
    Crypto::RC4Crypt(key, n, bytes.data(), bytes.size());
}

int StdSecurityHandler::ProcessPassword(const UString& password, std::vector<UInt8>& out) const {
    if (password.Empty()) return 0;
    if (m_rev_num > 4) {
        const std::string utf8 = password.ConvertToUtf8();
        out.assign(utf8.begin(), utf8.end());
        return int(out.size());
    }
    // A zero character ends the password, as it would end a C string.
    const Unicode* units = password.GetBuffer();
    int n = 0;
    while (n < password.GetLength() && units[n] != 0) ++n;
    const std::string bytes = password.SubStr(0, n).ConvertToPDFText();
    // One byte per character means every character had a PDFDocEncoding code; anything else
    // is the UTF-16 form, which these revisions cannot take.
    if (bytes.size() != size_t(n))
        throw Common::Exception("!PASSWORD_HAS_UNICODE", __LINE__, __FILE__, LUM_FUNCTION,
                                "SecurityHandler v4 or earlier does not support Unicode passwords.");
    constexpr size_t kMaxBytes = 64;
    out.assign(bytes.begin(), bytes.begin() + std::min(bytes.size(), kMaxBytes));
    return int(out.size());
}

// --- DefaultSecurityHandler ---

DefaultSecurityHandler::DefaultSecurityHandler(int key_bits, int version, const char* name)
    : StdSecurityHandler(key_bits, version, name) {}

DefaultSecurityHandler::DefaultSecurityHandler(const UString& password, int key_bits, int version)
    : StdSecurityHandler(key_bits, version), m_password(password) {
    // Runs with the default revision, before Initialize has read R: the first test of a
    // revision 5 or 6 document uses these single-byte codes.
    ProcessPassword(m_password, m_user_pwd);
    ProcessPassword(m_password, m_owner_pwd);
}

bool DefaultSecurityHandler::RequestAuthData(Permission) {
    if (m_password.Empty()) return false;
    ProcessPassword(m_password, m_user_pwd);
    ProcessPassword(m_password, m_owner_pwd);
    return true;
}

}  // namespace lum::SDF
