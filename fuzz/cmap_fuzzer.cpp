// CMap streams: ToUnicode and Encoding CMaps as a document embeds them, with the bf and cid
// operators, usecmap of predefined CMaps (the library is started once) and a dictionary's
// WMode. Header: [flags]; bit 0 sets WMode 1 in the dictionary. The CMap is then asked for the
// codes of its own bytes.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "PDF/Ferrox.h"
#include "PDF/Font/CMap.h"
#include "SDF/Obj.h"

using namespace lum;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool started = [] {
        PDF::Ferrox::Initialize();
        return true;
    }();
    (void)started;
    if (size < 1) return 0;
    auto* dict = new SDF::Dict();
    if (data[0] & 1) dict->PutNumber("WMode", 1);
    SDF::FileStream stm(dict, std::vector<UInt8>(data + 1, data + size));
    std::unique_ptr<PDF::Fnt::CMap> cmap = PDF::Fnt::CMap::Create(&stm);
    if (!cmap) return 0;
    cmap->IsHorizontal();
    const UInt8* bytes = data + 1;
    int left = static_cast<int>(size - 1);
    for (int i = 0; i < 64 && left > 0; ++i) {
        UInt32 code = 0, cid = 0;
        int n = cmap->MapToCID(bytes, left, code, cid);
        if (n < 1) n = 1;
        if (n > left) n = left;
        bytes += n;
        left -= n;
        Unicode units[10];
        UInt32 count = 0;
        cmap->MapToUnicode(code, units, 10, count);
        cmap->MapToCID(cid);
    }
    return 0;
}
