#include "SDF/SecurityHandlerSetup.h"

#include <exception>

#include "Common/Exception.h"
#include "Common/NumberConversions.h"
#include "Common/UString.h"
#include "SDF/Obj.h"
#include "SDF/StdSecurityHandler.h"

namespace lum::SDF {

// --- SecurityManager ---

SecurityManager::SecurityManager() {
    m_handlers.emplace("Standard",
                       std::make_pair(std::string("Standard Security"),
                                      Factory([](const char* name, int key_bits, int version) {
                                          return std::unique_ptr<SecurityHandler>(
                                              new DefaultSecurityHandler(key_bits, version, name));
                                      })));
}

SecurityManager& SecurityManager::Instance() {
    // A function-local static is built once, under the runtime's own lock.
    static SecurityManager manager;
    return manager;
}

std::unique_ptr<SecurityHandler> SecurityManager::GetSecurityHandler(const char* name,
                                                                     int key_bits,
                                                                     int version) const {
    auto it = m_handlers.find(name ? name : "");
    if (it == m_handlers.end()) LUM_FAIL("Requested security handler was not found.");
    return it->second.second(name, key_bits, version);
}

const char* SecurityManager::GetDisplayName(const char* name) const {
    auto it = m_handlers.find(name ? name : "");
    return it == m_handlers.end() ? nullptr : it->second.first.c_str();
}

// --- Opening ---

// The clone's crypt handlers point at the handler installed with it, so both are replaced
// together.
void InstallSecurityHandler(DocSecurity security, std::unique_ptr<SecurityHandler> handler) {
    std::unique_ptr<SecurityHandler> clone = handler->Clone();
    clone->SetModified(false);
    security.security_handler = std::move(handler);
    security.crypt_handler = std::move(clone);
}

bool GetDocSecHdlrInfo(Obj* trailer, Obj*& out_encrypt_dict, std::string& out_filter,
                       int& out_v, int& out_length) {
    try {
        if (!trailer) return false;
        auto entry = trailer->Find(e_Encrypt);
        if (entry == trailer->DictEnd()) return false;
        out_encrypt_dict = entry->second;
        LUM_CHECK(out_encrypt_dict->IsDict(), "Encrypt must be a dict.");
        out_filter = out_encrypt_dict->Get(e_Filter)->second->GetName();
        auto v = out_encrypt_dict->Find(e_V);
        out_v = v == out_encrypt_dict->DictEnd() ? 0 : Common::TruncateToInt32(v->second->GetNumber());
        auto len = out_encrypt_dict->Find(e_Length);
        out_length =
            len == out_encrypt_dict->DictEnd() ? 40 : Common::TruncateToInt32(len->second->GetNumber());
        return true;
    } catch (const std::exception&) {
        // An Encrypt entry that cannot be read leaves the document readable without decryption.
        return false;
    }
}

bool InitSecurityHandler(Obj* trailer, DocSecurity security, void*, bool checking) {
    Obj* encrypt = nullptr;
    std::string filter;
    int version = 0;
    int length = 0;
    if (!GetDocSecHdlrInfo(trailer, encrypt, filter, version, length)) return true;

    // An unknown filter and key sizes the version cannot have reach the caller.
    std::unique_ptr<SecurityHandler> handler =
        SecurityManager::Instance().GetSecurityHandler(filter.c_str(), length, version);
    if (checking && (!dynamic_cast<StdSecurityHandler*>(handler.get()) || filter != "Standard"))
        return false;
    try {
        handler->Initialize(trailer, encrypt, nullptr);
        const bool auth_ok = handler->GetPermission(SecurityHandler::e_doc_open);
        if (!auth_ok) {
            if (checking) return false;
            LUM_CHECK(auth_ok, "Document authorization failed.");
        }
        InstallSecurityHandler(security, std::move(handler));
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool InitStdSecurityHandler(Obj* trailer, DocSecurity security, const UString& password) {
    Obj* encrypt = nullptr;
    std::string filter;
    int version = 0;
    int length = 0;
    if (!GetDocSecHdlrInfo(trailer, encrypt, filter, version, length)) return true;
    if (filter != "Standard") {
        // Reported as the document's operation: that is what the caller asked for.
        throw Common::Exception(
            "filter == \"Standard\"", __LINE__, __FILE__, "lum::SDF::DocImpl::InitStdSecurityHandler",
            "Not a standard security handler. The custom filter needs to be registered.");
    }
    auto handler = std::make_unique<DefaultSecurityHandler>(password, length, version);
    return InitStdSecurityHandlerInternal(trailer, security, std::move(handler), encrypt);
}

bool InitStdSecurityHandlerInternal(Obj* trailer, DocSecurity security,
                                    std::unique_ptr<StdSecurityHandler> handler, Obj* encrypt) {
    try {
        handler->Initialize(trailer, encrypt, nullptr);
        LUM_CHECK(handler->GetPermission(SecurityHandler::e_doc_open),
                  "Document authorization failed.");
        InstallSecurityHandler(security, std::move(handler));
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace lum::SDF
