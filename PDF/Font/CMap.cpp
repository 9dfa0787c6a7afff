#include "PDF/Font/CMap.h"

#include <cstring>

#include "Common/Limits.h"
#include "PDF/FerroxResources.h"
#include "PDF/Font/CMapStm.h"
#include "SDF/Obj.h"

namespace lum::PDF::Fnt {

namespace {

// CMaps being built on this thread: a CMap builds its parent while it is built itself, and a
// stream can name itself, or a chain of streams, as UseCMap.
thread_local int gl_cmap_depth = 0;

struct DepthGuard {
    DepthGuard() {
        LUM_CHECK(gl_cmap_depth < Limits::kMaxCMapNesting, "Invalid CMap: usecmap nesting");
        ++gl_cmap_depth;
    }
    ~DepthGuard() { --gl_cmap_depth; }
};

}  // namespace

CMap::~CMap() = default;

std::unique_ptr<CMap> CMap::Create(SDF::Obj* obj) {
    if (!obj) return nullptr;
    if (obj->IsName()) {
        const char* name = obj->GetName();
        if (std::strcmp(name, "Identity-H") == 0) return std::make_unique<CMapIdentity>(false);
        if (std::strcmp(name, "Identity-V") == 0) return std::make_unique<CMapIdentity>(true);
        std::unique_ptr<CMap> cmap;
        try {
            DepthGuard depth;
            cmap = Resource::GetCMap(name);
            if (!cmap) return nullptr;  // the resource document isn't open
        } catch (const Common::Exception&) {
        }
        if (!cmap.get())
            throw CMapNotFoundExc("cmap.get()", __LINE__, __FILE__, LUM_FUNCTION,
                                  "Searching for 'ferrox.res'. Use Ferrox::SetResourcesPath()\n"
                                  "to set the correct resource path.",
                                  0);
        return cmap;
    }
    try {
        DepthGuard depth;
        return std::make_unique<CMapStm>(obj);
    } catch (const Common::Exception&) {
        // A damaged CMap is the same as none.
        return nullptr;
    }
}

CMapIdentity::CMapIdentity(bool vertical) : m_name(vertical ? "Identity-V" : "Identity-H") {
    m_horizontal = !vertical;
}

int CMapIdentity::MapToCID(const UInt8* bytes, int length, UInt32& code, UInt32& cid) const {
    if (length <= 0) return 0;
    const int n = length < 2 ? length : 2;
    code = n == 2 ? (UInt32(bytes[0]) << 8) | bytes[1] : bytes[0];
    cid = code;
    return n;
}

bool CMapIdentity::MapToUnicode(UInt32 code, UInt16* units, int capacity, UInt32& length) const {
    length = 0;
    if (capacity < 1) return false;
    units[0] = static_cast<UInt16>(code);
    length = 1;
    return true;
}

}  // namespace lum::PDF::Fnt
