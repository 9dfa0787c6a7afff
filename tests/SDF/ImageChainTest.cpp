// The image decoders as stream dictionaries configure them: parameters from DecodeParms and
// from the image itself.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Filters/FilterReader.h"
#include "ObjTestSupport.h"
#include "SDF/Obj.h"

using namespace lum::SDF;
using lum::objtest::ReadAll;
using lum::UInt8;

namespace {

std::unique_ptr<FileStream> MakeStream(const std::string& dict, const std::string& data) {
    lum::objtest::MemParser p(dict);
    p.One();
    auto* d = static_cast<Dict*>(p->PopObjNoDelete());
    return std::make_unique<FileStream>(d, std::vector<UInt8>(data.begin(), data.end()));
}

std::string Hex(const std::string& s) {
    static const char kHex[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : s) {
        out += kHex[c >> 4];
        out += kHex[c & 15];
    }
    return out;
}

struct Case {
    const char* name;
    std::string dict;
    std::string data;
    std::string decoded_hex;
};

void RunCases(const std::vector<Case>& cases) {
    for (const auto& c : cases) {
        auto s = MakeStream(c.dict, c.data);
        try {
            EXPECT_EQ(Hex(ReadAll(s->GetDecodedStream())), c.decoded_hex) << c.name;
        } catch (const lum::Common::Exception& e) {
            ADD_FAILURE() << c.name << ": " << e.GetMessage();
        }
    }
}

TEST(ImageChain, CCITTFaxParameters) {
    // Two rows of 8 columns, two-dimensional: all white (V0), then w2 b4 w2 (H, V0); EOFB.
    const std::string g4("\x97\x70\x01\x00\x10", 5);
    // One-dimensional: w8 then w2 b4 w2, no EOLs.
    const std::string g3 = "\x9B\xB7";
    RunCases({
        {"defaults: K 0, 1728 columns", "<</Filter /CCF>>", "", ""},
        {"K, Columns", "<</Filter /CCITTFaxDecode /DecodeParms <</K -1 /Columns 8>>>>", g4, "FFC3"},
        {"BlackIs1", "<</Filter /CCF /DecodeParms <</K -1 /Columns 8 /BlackIs1 true>>>>", g4, "003C"},
        {"Rows repeats the last row", "<</Filter /CCF /DecodeParms <</Columns 8 /Rows 3>>>>", g3,
         "FFC3C3"},
        {"Height above Rows counts", "<</Filter /CCF /DecodeParms <</Columns 8 /Rows 1>> /Height 4>>",
         g3, "FFC3C3C3"},
        {"Height without Rows does not", "<</Filter /CCF /DecodeParms <</Columns 8>> /Height 4>>", g3,
         "FFC3"},
        {"Width raises a negative Columns", "<</Filter /CCF /DecodeParms <</Columns -1>> /Width 8>>", g3,
         "FFC3"},
        {"parameters in an array", "<</Filter [/CCF] /DecodeParms [<</Columns 8 /K -1>>]>>", g4,
         "FFC3"},
    });
}

}  // namespace
