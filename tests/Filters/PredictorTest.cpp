#include <gtest/gtest.h>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "FilterTestUtil.h"
#include "Filters/PNGPredictorDecode.h"
#include "Filters/Predictor.h"
#include "Filters/TIFFPredictorDecode.h"

using namespace lum::Filters;
using namespace lum::test;

namespace {

using namespace std::string_literals;

// Decodes `in` through one stage, its input cut into windows of `window` bytes.
template <typename Stage>
struct Decoder {
    std::string operator()(const std::string& in, unsigned columns, unsigned colors = 1,
                           unsigned bits = 8, size_t window = 1 << 20) const {
        return ReadAll(std::make_unique<Stage>(Source(in, window), columns, colors, bits), 100);
    }
};
constexpr Decoder<PNGPredictorDecode> Png;
constexpr Decoder<TIFFPredictorDecode> Tiff;

struct RowCase {
    const char* what;
    std::string in;
    unsigned columns, colors, bits;
    std::string out;
};

TEST(PNGPredictorDecode, RowFilters) {
    const RowCase cases[] = {
        {"Up on the first row sees zeros", "\x02\x01\x02\x03"s, 3, 1, 8, "\x01\x02\x03"s},
        {"Sub adds the pixel to the left, 3 bytes away for RGB",
         "\x01\x01\x02\x03\x10\x10\x10"s, 2, 3, 8, "\x01\x02\x03\x11\x12\x13"s},
        {"Sub at 1 bit adds the whole byte to the left", "\x01\x0F\x01"s, 16, 1, 1, "\x0F\x10"s},
        {"Average takes the sum at full width", "\x00\xFF\xFF\x03\x01\xFF"s, 2, 1, 8,
         "\xFF\xFF\x80\xBE"s},
        {"Paeth tie of a and c goes to a", "\x00\x02\x03\x04\xFE\x00"s, 2, 1, 8,
         "\x02\x03\x00\x00"s},
        {"Paeth tie of b and c goes to b", "\x00\x01\x03\x04\xFF\x00"s, 2, 1, 8,
         "\x01\x03\x00\x03"s},
        {"Paeth picks b when b is nearest", "\x00\x05\x09\x04\x00\x00"s, 2, 1, 8,
         "\x05\x09\x05\x09"s},
        {"Paeth picks c when c is nearest", "\x00\x01\x02\x04\xFF\x00"s, 2, 1, 8,
         "\x01\x02\x00\x01"s},
        {"Tags 5 and 255 pass the row, which becomes the next previous row",
         "\x05\x07\x08\x02\x01\x01\xFF\x03\x03\x02\x00\x00"s, 2, 1, 8,
         "\x07\x08\x08\x09\x03\x03\x03\x03"s},
        {"A short last row is delivered as it is", "\x00\x01\x02\x03\x02\x01"s, 3, 1, 8,
         "\x01\x02\x03\x02"s},
        {"A lone tag at the end delivers nothing more", "\x00\x01\x02\x02"s, 2, 1, 8, "\x01\x02"s},
        {"Empty input", ""s, 4, 1, 8, ""s},
        {"16-bit samples: pixel size 2", "\x01\x01\x02\x01\x01"s, 2, 1, 16, "\x01\x02\x02\x03"s},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Png(c.in, c.columns, c.colors, c.bits), c.out) << c.what;
        EXPECT_EQ(Png(c.in, c.columns, c.colors, c.bits, 1), c.out) << c.what << " (1-byte windows)";
    }
}

TEST(PNGPredictorDecode, RoundTripsEveryTagMixAndFormat) {
    struct Format {
        unsigned columns, colors, bits;
    };
    const Format formats[] = {{1, 1, 8}, {7, 3, 8}, {5, 4, 16}, {33, 1, 1}, {9, 1, 2},
                              {10, 3, 4}, {300, 1, 8}, {4, 2, 8}};
    const std::vector<std::vector<int>> tag_mixes = {{0}, {1}, {2}, {3}, {4}, {0, 1, 2, 3, 4, 9}};
    for (const auto& f : formats) {
        size_t row = (size_t(f.columns) * f.colors * f.bits + 7) / 8;
        size_t ps = (size_t(f.colors) * f.bits + 7) / 8;
        std::string data = lum::test::Noise(row * 11 + row / 2, f.columns);
        for (const auto& tags : tag_mixes) {
            std::string enc = lum::test::PngEncode(data, row, ps, tags);
            EXPECT_EQ(Png(enc, f.columns, f.colors, f.bits), data)
                << f.columns << "x" << f.colors << "x" << f.bits << " tags " << tags.size();
        }
    }
}

TEST(TIFFPredictorDecode, Samples) {
    const RowCase cases[] = {
        {"8-bit, one colour", "\x01\x01\x01\xFF"s, 4, 1, 8, "\x01\x02\x03\x02"s},
        {"8-bit RGB adds per colour", "\x01\x02\x03\x01\x01\x01"s, 2, 3, 8,
         "\x01\x02\x03\x02\x03\x04"s},
        {"4-bit adds nibbles modulo 16", "\x1F\x11"s, 4, 1, 4, "\x10\x12"s},
        {"4-bit, two colours", "\x12\x11"s, 2, 2, 4, "\x12\x23"s},
        {"Columns 1 is unchanged", "\xAB\xCD"s, 1, 1, 8, "\xAB\xCD"s},
        {"16-bit carries between the bytes of a sample", "\x00\xFF\x00\x01"s, 2, 1, 16,
         "\x00\xFF\x01\x00"s},
        {"1-bit toggles", "\xA0"s, 4, 1, 1, "\xC0"s},
        {"Padding bits of the last byte stay", "\x0F"s, 2, 1, 2, "\x0F"s},
        {"32-bit wraps at 32 bits", "\xFF\xFF\xFF\xFF\x00\x00\x00\x02"s, 2, 1, 32,
         "\xFF\xFF\xFF\xFF\x00\x00\x00\x01"s},
        {"Empty input", ""s, 3, 1, 8, ""s},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Tiff(c.in, c.columns, c.colors, c.bits), c.out) << c.what;
        EXPECT_EQ(Tiff(c.in, c.columns, c.colors, c.bits, 1), c.out) << c.what << " (1-byte windows)";
    }
}

TEST(TIFFPredictorDecode, ShortLastRowStillGivesAFullRow) {
    // Row 1 decodes to 01 02 03; the short row 2 reads one byte over the old buffer and the
    // whole buffer is decoded again.
    std::string out = Tiff("\x01\x01\x01\x05"s, 3);
    ASSERT_EQ(out.size(), 6u);
    EXPECT_EQ(out.substr(0, 3), "\x01\x02\x03"s);
    EXPECT_EQ(out.substr(3), "\x05\x07\x0A"s);
}

TEST(TIFFPredictorDecode, RoundTripsEveryWidth) {
    for (unsigned bits : {1u, 2u, 4u, 8u, 16u, 32u, 3u, 12u}) {
        for (unsigned colors : {1u, 3u, 4u}) {
            unsigned columns = 13;
            size_t row = (size_t(columns) * colors * bits + 7) / 8;
            std::string data = lum::test::Noise(row * 5, bits * 7 + colors);
            std::string enc = lum::test::TiffEncode(data, columns, colors, bits);
            EXPECT_EQ(Tiff(enc, columns, colors, bits), data) << bits << "/" << colors;
        }
    }
}

TEST(Predictor, FactoryAndBounds) {
    EXPECT_EQ(CreatePredictorFilter(Source("abc"), 1, 1, 1, 8)->GetName(), std::string("Trickle"));
    EXPECT_EQ(CreatePredictorFilter(Source("abc"), 0, 1, 1, 8)->GetName(), std::string("Trickle"));
    EXPECT_EQ(CreatePredictorFilter(Source("abc"), 2, 1, 1, 8)->GetName(),
              std::string("TIFFPredictorDecode"));
    for (int p = 10; p <= 15; ++p)
        EXPECT_EQ(CreatePredictorFilter(Source("abc"), p, 1, 1, 8)->GetName(),
                  std::string("PNGPredictorDecode"));
    for (int p : {3, 9, 16})
        EXPECT_EQ(lum::test::Raised([&] { CreatePredictorFilter(Source("abc"), p, 1, 1, 8); }).GetMessage(),
                  "Unknown predictor function.")
            << p;

    const size_t max_row = lum::Limits::kMaxPredictorRowBytes;
    struct {
        lum::Int64 columns, colors, bits;
        bool ok;
    } const bounds[] = {
        {lum::Int64(max_row), 1, 8, true},      {lum::Int64(max_row) + 1, 1, 8, false},
        {lum::Int64(max_row) * 8, 1, 1, true},  {lum::Int64(max_row) * 8 + 1, 1, 1, false},
        {1, lum::Limits::kMaxPredictorColors, 8, true},
        {1, lum::Limits::kMaxPredictorColors + 1, 8, false},
        {1, 1, lum::Limits::kMaxPredictorBits, true},
        {1, 1, lum::Limits::kMaxPredictorBits + 1, false},
        {-1, 1, 8, false},                     {1, -1, 8, false},
        {INT64_MAX, 255, 32, false},           {0, 0, 0, true},
    };
    for (const auto& b : bounds) {
        for (int p : {2, 12}) {
            const auto f = lum::test::CatchFailure([&] {
                EXPECT_EQ(ReadAll(*CreatePredictorFilter(Source(""), p, b.columns, b.colors, b.bits)), "");
            });
            EXPECT_EQ(f.message, b.ok ? "" : "Bad predictor parameters")
                << b.columns << " " << b.colors << " " << b.bits << " p" << p;
        }
    }
}

}  // namespace
