// The JBIG2 stage on pages built here from generic regions in MMR coding, whose data are the
// Group 4 known-answer data of libtiff's encoder, with and without globals; and its failures.
#include <gtest/gtest.h>

#include <ctime>
#include <sstream>

#include "Common/Limits.h"
#include "FilterTestUtil.h"
#include "Filters/JBIG2Decode.h"
#include "support/TestSupport.h"

using namespace lum::Filters;
using lum::Int64;
using lum::test::ReadAll;
using lum::test::Source;

namespace {

std::string Be32(uint32_t v) {
    return {char(v >> 24), char(v >> 16), char(v >> 8), char(v)};
}

// A segment of an embedded stream: number, type, page 1, no referred-to segments.
std::string Segment(uint32_t number, int type, const std::string& data) {
    return Be32(number) + char(type) + '\0' + '\1' + Be32(uint32_t(data.size())) + data;
}

std::string PageInfo(uint32_t w, uint32_t h) {
    return Segment(0, 48, Be32(w) + Be32(h) + Be32(0) + Be32(0) + '\0' + '\0' + '\0');
}

// An immediate lossless generic region at (x, y), MMR-coded.
std::string MmrRegion(uint32_t w, uint32_t h, uint32_t x, uint32_t y, const std::string& g4) {
    return Segment(1, 39, Be32(w) + Be32(h) + Be32(x) + Be32(y) + '\0' + '\1' + g4);
}

struct Image {
    int w = 0, h = 0;
    std::string pixels;  // PBM rows, 1 black
};

Image Fixture(const std::string& name) {
    std::istringstream in(lum::test::ReadFile(lum::test::DataPath("fax/" + name + ".pbm")));
    Image img;
    std::string magic;
    in >> magic >> img.w >> img.h;
    in.get();
    img.pixels.assign(std::istreambuf_iterator<char>(in), {});
    return img;
}

std::string Invert(std::string s) {
    for (char& c : s) c = static_cast<char>(~c);
    return s;
}

std::string Decode(const std::string& data, const std::string& globals, Int64 w, Int64 h) {
    return ReadAll(std::make_unique<JBIG2Decode>(Source(data, 7),
                                                 globals.empty() ? nullptr : Source(globals), w, h));
}

TEST(JBIG2Decode, GenericRegionsWithAndWithoutGlobals) {
    for (const char* name : {"noise", "text", "steps"}) {
        const Image img = Fixture(name);
        const std::string g4 = lum::test::ReadFile(lum::test::DataPath(std::string("fax/") + name + "-g4.fax"));
        const std::string page = PageInfo(img.w, img.h);
        const std::string region = MmrRegion(img.w, img.h, 0, 0, g4);
        // Black is 0 in what the stage delivers.
        EXPECT_TRUE(Decode(page + region, "", img.w, img.h) == Invert(img.pixels)) << name;
        // The globals come first in the joined data.
        EXPECT_TRUE(Decode(region, page, img.w, img.h) == Invert(img.pixels)) << name;
    }
}

TEST(JBIG2Decode, ImageSizeComesFromTheDictionary) {
    const Image img = Fixture("noise");  // 13 x 30
    const std::string g4 = lum::test::ReadFile(lum::test::DataPath("fax/noise-g4.fax"));
    const std::string data = PageInfo(13, 30) + MmrRegion(13, 30, 0, 0, g4);
    // Wider and taller than the page: white around it. Each row of 13 pixels is 2 bytes.
    const std::string wide = Decode(data, "", 24, 31);
    ASSERT_EQ(wide.size(), 3u * 31);
    for (int y = 0; y < 30; ++y) {
        EXPECT_EQ(wide.substr(y * 3, 2), Invert(img.pixels.substr(y * 2, 2))) << y;
        EXPECT_EQ(static_cast<unsigned char>(wide[y * 3 + 2]), 0xFF) << y;
    }
    EXPECT_EQ(wide.substr(90), "\xFF\xFF\xFF");
    // Narrower: the page is cut, and the bits behind the last column are white.
    const std::string narrow = Decode(data, "", 4, 2);
    ASSERT_EQ(narrow.size(), 2u);
    for (int y = 0; y < 2; ++y)
        EXPECT_EQ(static_cast<unsigned char>(narrow[y]),
                  (static_cast<unsigned char>(~img.pixels[y * 2]) | 0x0F))
            << y;
}

TEST(JBIG2Decode, FailuresRaise) {
    const std::string g4 = lum::test::ReadFile(lum::test::DataPath("fax/noise-g4.fax"));
    const std::string good = PageInfo(13, 30) + MmrRegion(13, 30, 0, 0, g4);
    struct Case {
        const char* what;
        std::string data;
        Int64 w, h;
    };
    const Case cases[] = {
        {"no width", good, 0, 30},
        {"no height", good, 13, 0},
        {"no page in the data", "garbage, no segments at all", 13, 30},
        {"empty data", "", 13, 30},
        // Checked against the stated size before anything is allocated.
        {"100,000 x 100,000 pixels", good, 100000, 100000},
    };
    for (const auto& c : cases) {
        const auto e = lum::test::Raised([&] { Decode(c.data, "", c.w, c.h); });
        EXPECT_EQ(e.GetMessage(), "An error occurred while decoding JBIG2 stream") << c.what;
        EXPECT_EQ(e.GetCondition(), "m_dec_ok") << c.what;
    }
    // A page header claiming more than the codec may allocate makes no page.
    const auto e = lum::test::Raised([&] { Decode(PageInfo(200000, 200000) + MmrRegion(13, 30, 0, 0, g4), "", 13, 30); });
    EXPECT_EQ(e.GetCondition(), "m_dec_ok");
    // A Huffman-coded dictionary claiming 4 million symbols in a few bytes: the module decodes
    // them from nothing, one message each, until its work runs out.
    const std::string many = Segment(2, 0, std::string("\0\1", 2) + Be32(19) + Be32(4000000) +
                                               std::string("\x30\0\1\0\0\0\x13\4\0\0\xcb\0", 12));
    const std::clock_t start = std::clock();
    const auto spun = lum::test::Raised([&] { Decode(PageInfo(13, 30) + many, "", 13, 30); });
    EXPECT_EQ(spun.GetCondition(), "m_dec_ok");
    EXPECT_LT(lum::test::CpuSecondsSince(start), 1.0 * lum::test::kSecondsScale);
}

TEST(JBIG2Decode, ResetGivesTheImageAgain) {
    const Image img = Fixture("noise");
    const std::string g4 = lum::test::ReadFile(lum::test::DataPath("fax/noise-g4.fax"));
    JBIG2Decode d(Source(PageInfo(13, 30) + MmrRegion(13, 30, 0, 0, g4)), nullptr, 13, 30);
    const std::string first = ReadAll(d);
    d.Reset();
    EXPECT_EQ(ReadAll(d), first);
    EXPECT_TRUE(first == Invert(img.pixels));
}

}  // namespace
