// Object streams: a head of pairs and the values behind First, read through a decoder chain
// chosen by the first byte. The second and third bytes give N and First.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "ObjQuestions.h"
#include "SDF/ObjStmParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace lum;
    if (size < 3) return 0;
    static const char* const kFilters[] = {nullptr, "AHx", "A85", "RL", "Fl", "LZW", "Crypt"};
    const char* filter = kFilters[data[0] % (sizeof kFilters / sizeof kFilters[0])];

    auto* dict = new SDF::Dict();
    dict->PutName(SDF::e_Type, "ObjStm");
    dict->PutNumber(SDF::e_N, data[1] % 64);
    dict->PutNumber(SDF::e_First, data[2]);
    if (filter) dict->PutName(SDF::e_Filter, filter);
    SDF::FileStream stream(dict, std::vector<UInt8>(data + 3, data + size));

    fuzz::Try([&] {
        SDF::ObjStmParser parser(&stream, nullptr, false);
        for (size_t i = 0; i < parser.GetCount(); ++i) {
            (void)parser.CurrentObjNum();
            std::unique_ptr<SDF::Obj> v(parser.GetNextObj());
            fuzz::AskEverything(v.get());
        }
    });
    return 0;
}
