// The image decoders as stream dictionaries configure them: parameters from DecodeParms and
// from the image itself.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Filters/FilterReader.h"
#include "ObjTestSupport.h"
#include "SDF/ImageColorInfo.h"
#include "SDF/Obj.h"

using namespace lum::SDF;
using namespace lum;
using namespace lum::test;

namespace {

struct Case {
    const char* name;
    std::string dict;
    std::string data;
    std::string decoded_hex;
};

void RunCases(const std::vector<Case>& cases) {
    for (const auto& c : cases) {
        auto s = MakeStream(c.dict, c.data);
        EXPECT_EQ(Hex(ReadAll(s->GetDecodedStream())), c.decoded_hex) << c.name;
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

TEST(ImageChain, JBIG2NeedsTheImageSize) {
    for (const char* dict : {"<</Filter /JBIG2Decode /Height 30>>", "<</Filter /JBIG2Decode /Width 13>>",
                             "<</Filter /JBIG2Decode /Width 13 /Height 30 /DecodeParms <</JBIG2Globals 5>>>>"}) {
        auto s = MakeStream(dict, "no JBIG2 data here");
        EXPECT_EQ(CatchFailure([&] { ReadAll(s->GetDecodedStream()); }).message,
                  "An error occurred while decoding JBIG2 stream")
            << dict;
    }
}

TEST(ImageChain, JPXShapeFromTheImage) {
    const struct JpxCase {
        const char* dict;
        int components, bits;
        bool stripe, own_colors;
    } cases[] = {
        {"<<>>", 1, 8, false, true},
        {"<</ColorSpace /DeviceRGB>>", 3, 8, false, false},
        {"<</ColorSpace /DeviceCMYK /BitsPerComponent 4>>", 4, 8, false, false},
        {"<</ColorSpace /DeviceGray /Decode [1 0]>>", 1, 8, true, false},
        {"<</ColorSpace [/CalRGB <<>>]>>", 3, 8, false, false},
        {"<</ColorSpace /Lab>>", 3, 8, false, false},
        {"<</ColorSpace [/Indexed /DeviceRGB 15 <00>] /BitsPerComponent 4>>", 1, 4, false, false},
        {"<</ColorSpace [/Separation /Spot /DeviceCMYK 5] /BitsPerComponent 2.7>>", 1, 2, false, false},
        {"<</ColorSpace [/DeviceN [/A /B /C] /DeviceCMYK 5] /BitsPerComponent 16>>", 3, 16, false, false},
        {"<</ColorSpace [/DeviceN [/A /B /C] /DeviceCMYK 5] /BitsPerComponent /Eight>>", 3, 8, false, false},
        {"<</ColorSpace /Unheard>>", 1, 8, false, false},
    };
    for (const auto& c : cases) {
        auto s = MakeStream(c.dict, "");
        const lum::Filters::JPXParams p = JPXParamsFromImage(s.get());
        EXPECT_EQ(std::tie(p.components, p.bits, p.stripe, p.own_colors),
                  std::tie(c.components, c.bits, c.stripe, c.own_colors))
            << c.dict;
    }
    // Inline image data come without a stream.
    const lum::Filters::JPXParams inline_params = JPXParamsFromImage(nullptr);
    EXPECT_EQ(inline_params.components, -1);
    EXPECT_FALSE(inline_params.stripe);
}

}  // namespace
