// Decoder chains from Filter and DecodeParms, on streams held in memory.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Common/Limits.h"
#include "Filters/FilterReader.h"
#include "ObjTestSupport.h"
#include "SDF/Obj.h"

using namespace lum::SDF;
using namespace lum;
using namespace lum::test;

namespace {

// Data for an ASCIIHexDecode stage, with its end marker.
std::string AHx(const std::string& s) { return Hex(s) + ">"; }

// LZW with literal codes only (clear, bytes, end), 9 bits wide: valid for short data.
std::string LzwLiteral(const std::string& s) {
    std::string out;
    UInt32 acc = 0;
    int bits = 0;
    auto put = [&](UInt32 code) {
        acc = (acc << 9) | code;
        bits += 9;
        while (bits >= 8) {
            out += char((acc >> (bits - 8)) & 0xFF);
            bits -= 8;
        }
    };
    put(256);
    for (unsigned char c : s) put(c);
    put(257);
    if (bits > 0) out += char((acc << (8 - bits)) & 0xFF);
    return out;
}

std::string RunLength(const std::string& s) {
    std::string out;
    for (size_t i = 0; i < s.size(); i += 128) {
        const size_t n = std::min<size_t>(128, s.size() - i);
        out += char(n - 1);
        out += s.substr(i, n);
    }
    return out + char(128);
}

// Rows of 3 bytes behind PNG "Sub" tags: each byte the difference to the one on its left.
const std::string kPlainRows = "\x01\x02\x03\x10\x20\x30";
const std::string kPngRows = std::string("\x01\x01\x01\x01\x01\x10\x10\x10", 8);

TEST(Stream, DecoderChains) {
    struct Case {
        const char* name;
        std::string dict;
        std::string data;
        std::string decoded;
    };
    const std::string text = "Hello, object streams!";
    const std::string a85 = "87cURD_*#L@VTIaF<GXHEb/ZrF!1~>";
    const std::vector<Case> cases = {
        {"no filter", "<<>>", "raw bytes", "raw bytes"},
        {"empty array", "<</Filter []>>", "raw bytes", "raw bytes"},
        {"hex", "<</Filter /ASCIIHexDecode>>", AHx(text), text},
        {"hex abbreviated", "<</Filter /AHx>>", AHx(text), text},
        {"a85", "<</Filter /A85>>", a85, text},
        {"array in order", "<</Filter [/AHx /ASCII85Decode]>>", AHx(a85), text},
        {"flate", "<</Filter /FlateDecode>>", Deflate(text), text},
        {"fl", "<</Filter /Fl>>", Deflate(text), text},
        {"run length", "<</Filter /RL>>", RunLength(text), text},
        {"lzw", "<</Filter /LZWDecode>>", LzwLiteral(text), text},
        {"lzw early 0", "<</Filter /LZW /DecodeParms <</EarlyChange 0>>>>", LzwLiteral(text), text},
        {"png predictor", "<</Filter /Fl /DecodeParms <</Predictor 12 /Columns 3>>>>",
         Deflate(kPngRows), kPlainRows},
        {"png predictor in arrays",
         "<</Filter [/AHx /Fl] /DecodeParms [null <</Predictor 15 /Columns 3>>]>>",
         AHx(Deflate(kPngRows)), kPlainRows},
        {"predictor 11 on lzw", "<</Filter /LZW /DecodeParms <</Predictor 11 /Columns 3>>>>",
         LzwLiteral(kPngRows), kPlainRows},
        {"predictor 1", "<</Filter /Fl /DecodeParms <</Predictor 1 /Columns 3>>>>",
         Deflate(kPngRows), kPngRows},
        {"no predictor", "<</Filter /Fl /DecodeParms <</Columns 3>>>>", Deflate(kPngRows), kPngRows},
        // Filter array with a single dictionary: the dictionary is no array, so no parameters.
        {"array with dict parms", "<</Filter [/Fl] /DecodeParms <</Predictor 12 /Columns 3>>>>",
         Deflate(kPngRows), kPngRows},
        // Filter name with an array of parameters: the array is no dictionary.
        {"name with array parms", "<</Filter /Fl /DecodeParms [<</Predictor 12 /Columns 3>>]>>",
         Deflate(kPngRows), kPngRows},
        // A parameter array shorter than the filter array means no parameters for the rest.
        {"short parms", "<</Filter [/AHx /Fl] /DecodeParms [null]>>", AHx(Deflate(text)), text},
        // Without a security handler a Crypt stage leaves the chain as it is.
        {"crypt without handler", "<</Filter [/AHx /Crypt] /DecodeParms [null <</Name /X>>]>>",
         AHx(text), text},
    };
    for (const auto& c : cases) {
        auto s = MakeStream(c.dict, c.data);
        EXPECT_EQ(ReadAll(s->GetDecodedStream()), c.decoded) << c.name;
        EXPECT_EQ(ReadAll(s->GetRawStream(true)), c.data) << c.name;
    }
}

TEST(Stream, LeaveLastStage) {
    const std::string text = "inner";
    auto two = MakeStream("<</Filter [/AHx /Fl]>>", AHx(Deflate(text)));
    EXPECT_EQ(ReadAll(two->GetDecodedStream(true)), Deflate(text));
    auto one = MakeStream("<</Filter /AHx>>", AHx(text));
    EXPECT_EQ(ReadAll(one->GetDecodedStream(true)), AHx(text));
    auto none = MakeStream("<</Filter []>>", "x");
    EXPECT_EQ(ReadAll(none->GetDecodedStream(true)), "x");
}

TEST(Stream, ChainFailures) {
    const char* kCreate = "lum::SDF::StreamCreateDecodeFilter";
    const char* kPredictor = "lum::SDF::StreamCreatePredictorFilter";
    const char* kNegative = "CCITTFaxDecode Columns is negative";
    const struct Case {
        const char* dict;
        const char* message;
        const char* condition;
        const char* function;
    } cases[] = {
        {"<</Filter /NoSuchDecode>>", "Unknown filter", "false", kCreate},
        {"<</Filter [/AHx /Bogus]>>", "Unknown filter", "false", kCreate},
        {"<</Filter /Fl /DecodeParms <</Predictor 5>>>>", "Unknown predictor function.", "false", kPredictor},
        {"<</Filter /Fl /DecodeParms <</Predictor 16>>>>", "Unknown predictor function.", "false", kPredictor},
        {"<</Filter /CCF /DecodeParms <</Columns -5>>>>", kNegative, "Columns >= 0", kCreate},
        // A Width that is not larger leaves Columns negative.
        {"<</Filter /CCITTFaxDecode /DecodeParms <</Columns -5>> /Width -7>>", kNegative, "Columns >= 0", kCreate},
        {"<</Filter 5>>", "GetName() can't be invoked on Obj of this type.", "false",
         "lum::SDF::Obj::IllegalFunctionException"},
    };
    for (const auto& c : cases) {
        auto s = MakeStream(c.dict, "00");
        EXPECT_LUM_FAILURE(s->GetDecodedStream(), c.message, c.condition, c.function);
    }
    // A file stream that belongs to no document has no file to read.
    FileStream orphan(new Dict(), 0, 1, 0);
    EXPECT_LUM_FAILURE(orphan.GetRawStream(false), "Stm -> NULL doc", "d",
                       "lum::SDF::FileStream::GetRawStream");
}

TEST(Stream, FilterStageBound) {
    constexpr int kMax = int(lum::Limits::kMaxFilterStages);
    const std::string text = "deep";
    auto nested = [&](int stages) {
        std::string data = text, names = "[";
        for (int i = 0; i < stages; ++i) {
            data = RunLength(data);
            names += "/RL ";
        }
        return MakeStream("<</Filter " + names + "]>>", data);
    };
    EXPECT_EQ(ReadAll(nested(kMax)->GetDecodedStream()), text);
    EXPECT_LUM_FAILURE(nested(kMax + 1)->GetDecodedStream(), "Too many filters in a stream",
                       "n <= Limits::kMaxFilterStages", "lum::SDF::FileStream::GetDecodedStream");
}

}  // namespace
