#pragma once
// Opening an encrypted document: the registry of security handlers by filter name, and the
// steps that find the Encrypt dictionary, build a handler, test a password with it and install
// it. The document keeps the result in a DocSecurity: the handler that passed and its clone,
// which decrypts.
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "Common/Types.h"
#include "SDF/SecurityHandler.h"

namespace lum {
class UString;
}

namespace lum::SDF {

class Obj;
class StdSecurityHandler;

// The process-wide table of security handlers. It has one entry, "Standard"; the map does not
// change after it is built, so lookups need no lock.
class SecurityManager {
public:
    using Factory =
        std::function<std::unique_ptr<SecurityHandler>(const char* name, int key_bits, int version)>;

    static SecurityManager& Instance();

    // Fails with "Requested security handler was not found." for a name without entry; the
    // constructor's failures (key bits that the version cannot have) come through.
    std::unique_ptr<SecurityHandler> GetSecurityHandler(const char* name, int key_bits,
                                                        int version) const;
    // The display name of a filter, or null.
    const char* GetDisplayName(const char* name) const;

private:
    SecurityManager();
    std::map<std::string, std::pair<std::string, Factory>> m_handlers;
};

// The two places where a document keeps its security: the handler that passed authorisation
// (null for a plain document) and its clone, which the object parser and the streams ask to
// decrypt. Built on the fly over the document's own members.
struct DocSecurity {
    std::unique_ptr<SecurityHandler>& security_handler;
    std::unique_ptr<SecurityHandler>& crypt_handler;
};

// Installs a handler that passed: it replaces the security handler and its clone, marked
// unmodified, replaces the crypt handler.
void InstallSecurityHandler(DocSecurity security, std::unique_ptr<SecurityHandler> handler);

// What the trailer says about encryption. Swallows every failure and answers false then, and
// when there is no Encrypt entry: the document is taken as plain.
bool GetDocSecHdlrInfo(Obj* trailer, Obj*& out_encrypt_dict, std::string& out_filter,
                       int& out_v, int& out_length);

// Opens with no password. `checking` is the form of the document constructor: it also answers
// false for a handler that is not the standard one. A plain document answers true.
bool InitSecurityHandler(Obj* trailer, DocSecurity security, void* custom_data, bool checking);

// Opens with a password. A filter other than Standard fails with "Not a standard security
// handler. The custom filter needs to be registered."; so do key sizes the version cannot have
// and a password that revision 4 and earlier cannot take. A wrong password answers false and
// leaves what was installed before.
bool InitStdSecurityHandler(Obj* trailer, DocSecurity security, const UString& password);

// The shared ending: Initialize, the open test, and the installation. Answers false on any
// failure, leaving `security` as it was.
bool InitStdSecurityHandlerInternal(Obj* trailer, DocSecurity security,
                                    std::unique_ptr<StdSecurityHandler> handler, Obj* encrypt);

}  // namespace lum::SDF
