// CMap streams: ToUnicode and Encoding CMaps as a document embeds them, with the bf and cid
// operators, usecmap of predefined CMaps (the library is started once) and the dictionary's
// WMode and UseCMap. Header: [flags]; bit 0 sets WMode 1 in the dictionary, bit 1 gives the
// dictionary a UseCMap, the predefined CMap named by bits 4 to 7 (a name the resource file
// lacks among them). The CMap is then asked for the codes of its own bytes, as an Encoding
// reads a string, and for codes of every length as a ToUnicode is asked.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "PDF/Ferrox.h"
#include "PDF/Font/CMap.h"
#include "SDF/Obj.h"

using namespace lum;

namespace {

const char* const kParents[16] = {
    "Identity-H",    "Identity-V",     "UniJIS-UCS2-H", "UniJIS-UCS2-V", "90ms-RKSJ-H",
    "90ms-RKSJ-V",   "GBK-EUC-H",      "UniGB-UTF16-H", "UniCNS-UTF16-H", "UniKS-UCS2-H",
    "Adobe-Japan1-UCS2", "Adobe-GB1-UCS2", "H",         "V",             "EUC-H",
    "No-Such-CMap",
};

void Ask(const PDF::Fnt::CMap& cmap, UInt32 code) {
    Unicode units[10];
    UInt32 count = 0;
    cmap.MapToUnicode(code, units, 10, count);
    cmap.MapToUnicode(code, units, 1, count);
    cmap.MapToCID(code);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool started = [] {
        PDF::Ferrox::Initialize();
        return true;
    }();
    (void)started;
    if (size < 1) return 0;
    auto* dict = new SDF::Dict();
    if (data[0] & 1) dict->PutNumber("WMode", 1);
    if (data[0] & 2) dict->PutName("UseCMap", kParents[data[0] >> 4]);
    SDF::FileStream stm(dict, std::vector<UInt8>(data + 1, data + size));
    std::unique_ptr<PDF::Fnt::CMap> cmap;
    try {
        cmap = PDF::Fnt::CMap::Create(&stm);
    } catch (const PDF::Fnt::CMapNotFoundExc&) {
        return 0;  // a UseCMap the resource file lacks
    }
    if (!cmap) return 0;
    cmap->IsHorizontal();
    const UInt8* bytes = data + 1;
    int left = static_cast<int>(size - 1);
    for (int i = 0; i < 64 && left > 0; ++i) {
        // Preset as the text road presets them: four misses leave them untouched.
        UInt32 code = 0, cid = 0;
        int n = cmap->MapToCID(bytes, left, code, cid);
        if (n < 1) n = 1;
        if (n > left) n = left;
        Ask(*cmap, code);
        cmap->MapToCID(cid);
        // The same bytes as codes of one to four bytes, as a ToUnicode is asked.
        UInt32 c = 0;
        for (int k = 0; k < 4 && k < left; ++k) Ask(*cmap, c = (c << 8) | bytes[k]);
        bytes += n;
        left -= n;
    }
    return 0;
}
