#pragma once
// The base of the security handlers and of the crypt handlers they make. A document holds two
// of these: the handler that passed authorisation and its clone, which the object parser and
// the streams ask to decrypt.
#include <memory>
#include <string>
#include <vector>

#include "Common/Types.h"

namespace lum::Filters {
class Filter;
}

namespace lum::SDF {

class Obj;

class SecurityHandler {
public:
    // Codes of Authorize and GetPermission; the bit numbers of P count from 0 at the low end.
    enum Permission {
        e_owner = 1,          // the owner flag
        e_doc_open = 2,       // the password test
        e_doc_modify = 3,     // bit 3
        e_print = 4,          // bit 2
        e_print_high = 5,     // bit 11
        e_extract = 6,        // bit 4
        e_annotate = 7,       // bit 5
        e_fill_forms = 8,     // bit 8
        e_accessibility = 9,  // bit 9
        e_assemble = 10,      // bit 10
    };

    SecurityHandler(int key_len_bytes, int version, const char* name);
    SecurityHandler(const SecurityHandler&) = default;
    SecurityHandler& operator=(const SecurityHandler&) = delete;

    // --- The virtual interface, in its fixed order ---
    virtual ~SecurityHandler();
    virtual void OnAuthFailed();
    virtual bool Authorize(Permission p) = 0;
    // True when fresh authorisation data was obtained.
    virtual bool RequestAuthData(Permission p);
    virtual bool RequestEditData(Permission p);
    // Writing documents is not this program's business; the handlers refuse it.
    virtual void WriteEncryptDict();
    // Reads the Encrypt dictionary. The document is reached only for its trailer, so that is
    // what is passed. `parent` is the security handler that made a crypt handler, else null.
    virtual void Initialize(Obj* trailer, Obj* encrypt, SecurityHandler* parent) = 0;
    // Authorize, then up to three rounds of RequestAuthData and Authorize again.
    virtual bool GetPermission(Permission p);
    virtual std::unique_ptr<Filters::Filter> CreateEncryptFilter(
        std::unique_ptr<Filters::Filter> chain, UInt32 obj_num, UInt32 gen);
    // Takes a chain of raw stream bytes and answers one that delivers them decrypted.
    virtual std::unique_ptr<Filters::Filter> CreateDecryptFilter(
        std::unique_ptr<Filters::Filter> chain, UInt32 obj_num, UInt32 gen) = 0;
    virtual void EncryptString(std::vector<UInt8>& bytes, UInt32 obj_num, UInt32 gen);
    // Decrypts a string of object `obj_num`, generation `gen`, in place.
    virtual void DecryptString(std::vector<UInt8>& bytes, UInt32 obj_num, UInt32 gen) = 0;
    virtual std::unique_ptr<SecurityHandler> Clone() const = 0;
    virtual int GetKeyLength() const;
    virtual int GetVersion() const;
    virtual const char* GetHandlerName() const;
    virtual bool IsModified() const;
    virtual void SetModified(bool modified);

    bool IsOwner() const { return m_owner; }
    void SetOwner(bool owner) { m_owner = owner; }

protected:
    bool m_modified = false;
    std::string m_name;
    Int32 m_V;
    Int32 m_key_len;
    bool m_owner = true;
};

}  // namespace lum::SDF
