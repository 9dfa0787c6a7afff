#include "SDF/SecurityHandler.h"

#include "Common/Exception.h"
#include "Filters/Filter.h"

namespace lum::SDF {

SecurityHandler::SecurityHandler(int key_len_bytes, int version, const char* name)
    : m_name(name ? name : ""), m_V(version), m_key_len(key_len_bytes) {}

SecurityHandler::~SecurityHandler() = default;

void SecurityHandler::OnAuthFailed() {}

bool SecurityHandler::RequestAuthData(Permission) { return false; }

bool SecurityHandler::RequestEditData(Permission) { return false; }

void SecurityHandler::WriteEncryptDict() { LUM_FAIL("Writing encrypted documents is not supported"); }

bool SecurityHandler::GetPermission(Permission p) {
    if (Authorize(p)) return true;
    for (int round = 0; round < 3; ++round) {
        if (!RequestAuthData(p)) return false;
        if (Authorize(p)) return true;
        OnAuthFailed();
    }
    return false;
}

std::unique_ptr<Filters::Filter> SecurityHandler::CreateEncryptFilter(
    std::unique_ptr<Filters::Filter>, UInt32, UInt32) {
    LUM_FAIL("Writing encrypted documents is not supported");
}

void SecurityHandler::EncryptString(std::vector<UInt8>&, UInt32, UInt32) {
    LUM_FAIL("Writing encrypted documents is not supported");
}

int SecurityHandler::GetKeyLength() const { return m_key_len; }
int SecurityHandler::GetVersion() const { return m_V; }
const char* SecurityHandler::GetHandlerName() const { return m_name.c_str(); }
bool SecurityHandler::IsModified() const { return m_modified; }
void SecurityHandler::SetModified(bool modified) { m_modified = modified; }

}  // namespace lum::SDF
