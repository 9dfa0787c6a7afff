// The resource file's decoder: raw LZMA1 behind a five-byte header, with and without LZMA's
// end marker, fed through windows of every size; its two failures.
#include <gtest/gtest.h>
#include <lzma.h>

#include <cstring>

#include "Filters/LZMADecode.h"
#include "FilterTestUtil.h"

using lum::Filters::LZMADecode;

namespace {

// A reference encoder: liblzma's raw LZMA1 encoder, with or without the end marker, behind the
// header that the resource file uses (properties 5D, dictionary 16 MiB).
std::string Pack(const std::string& data, bool end_marker, uint32_t dict_size = 1u << 24) {
    lzma_options_lzma opts;
    EXPECT_FALSE(lzma_lzma_preset(&opts, 6));
    opts.dict_size = dict_size;
    opts.ext_flags = 0;
    opts.ext_size_low = opts.ext_size_high = 0;
    lzma_filter filters[2] = {
        {end_marker ? LZMA_FILTER_LZMA1 : LZMA_FILTER_LZMA1EXT, &opts},
        {LZMA_VLI_UNKNOWN, nullptr}};
    std::string out(data.size() + data.size() / 2 + 1024, '\0');
    size_t pos = 5;
    EXPECT_EQ(LZMA_OK, lzma_raw_buffer_encode(filters, nullptr,
                                              reinterpret_cast<const uint8_t*>(data.data()),
                                              data.size(), reinterpret_cast<uint8_t*>(&out[0]),
                                              &pos, out.size()));
    out[0] = 0x5D;
    std::memcpy(&out[1], &dict_size, 4);  // little-endian on every platform we build on
    out.resize(pos);
    return out;
}

std::string Decode(const std::string& packed, size_t window = 1 << 20) {
    return lum::test::ReadAll(std::make_unique<LZMADecode>(lum::test::Source(packed, window)));
}

TEST(LZMADecode, DecodesWithAndWithoutEndMarkerAtEveryWindow) {
    const std::string data = lum::test::TextLike(100000, 3) + lum::test::Noise(3000, 4);
    const std::string with_marker = Pack(data, true);
    for (size_t window : {1, 2, 4, 5, 7, 4096, 1 << 20}) {
        EXPECT_EQ(Decode(with_marker, window), data) << "window " << window;
        // Bytes behind the marker are not read as data.
        EXPECT_EQ(Decode(with_marker + "trailing", window), data) << "window " << window;
    }
    // Without a marker the data ends where the input ends; the range coder's flush may decode
    // into a byte or two more, which is the format's nature.
    const std::string without = Decode(Pack(data, false), 3);
    ASSERT_GE(without.size(), data.size());
    EXPECT_LE(without.size(), data.size() + 4);
    EXPECT_EQ(without.substr(0, data.size()), data);
    EXPECT_EQ(Decode(Pack("", true)), "");
}

TEST(LZMADecode, FailuresRaiseWithTheirMessages) {
    struct Case {
        const char* what;
        std::string input;
        const char* message;
        const char* condition;
    };
    const std::string good = Pack(lum::test::TextLike(5000, 9), true);
    std::string bad_props = good;
    bad_props[0] = static_cast<char>(0xFF);  // lc/lp/pb beyond their ranges
    std::string huge_dict = good;
    huge_dict[4] = static_cast<char>(0xF0);  // 4 GiB - 256 MiB
    std::string garbage = good.substr(0, 5) + lum::test::Noise(4000, 2);
    const Case cases[] = {
        {"empty", "", "Not enough data to get lzma properties", "avail >= 5"},
        {"four bytes", good.substr(0, 4), "Not enough data to get lzma properties", "avail >= 5"},
        {"bad properties", bad_props, "error in lzma decoding process", "res == SZ_OK"},
        {"huge dictionary", huge_dict, "error in lzma decoding process", "res == SZ_OK"},
        {"garbage", garbage, "error in lzma decoding process", "res == SZ_OK"},
    };
    for (const Case& c : cases) {
        auto e = lum::test::Raised([&] { Decode(c.input, 2); });
        EXPECT_EQ(e.GetMessage(), c.message) << c.what;
        EXPECT_EQ(e.GetCondition(), c.condition) << c.what;
    }
}

TEST(LZMADecode, TruncatedDataDeliversWhatItHas) {
    const std::string data = lum::test::TextLike(50000, 7);
    const std::string packed = Pack(data, true);
    const std::string half = Decode(packed.substr(0, packed.size() / 2));
    EXPECT_GT(half.size(), data.size() / 4);
    EXPECT_EQ(half, data.substr(0, half.size()));
}

}  // namespace
