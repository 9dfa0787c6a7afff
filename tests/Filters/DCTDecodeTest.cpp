// The JPEG stage on images that libjpeg's own encoder makes here, in every colour layout a PDF
// meets, and on damaged data.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include <jpeglib.h>

#include "FilterTestUtil.h"
#include "Filters/DCTDecode.h"
#include "Filters/FilterReader.h"

using namespace lum::Filters;
using namespace lum::test;

namespace {

struct Layout {
    const char* name;
    int components;
    J_COLOR_SPACE in;     // what the samples are
    J_COLOR_SPACE coded;  // how they are stored
    bool jfif, adobe, progressive;
    lum::Int64 color_transform;  // the stream's /ColorTransform
};

// Smooth samples that compress well, so that a decoded image stays close to them.
std::string Pixels(int w, int h, int components) {
    std::string s;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < components; ++c)
                s += static_cast<char>((x * 4 + y * 2 + c * 60) % 256 / 2 + 64);
    return s;
}

std::string Encode(const Layout& l, int w, int h, const std::string& pixels) {
    jpeg_compress_struct cinfo;
    jpeg_error_mgr err;
    cinfo.err = jpeg_std_error(&err);
    jpeg_create_compress(&cinfo);
    unsigned char* out = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&cinfo, &out, &size);
    cinfo.image_width = w;
    cinfo.image_height = h;
    cinfo.input_components = l.components;
    cinfo.in_color_space = l.in;
    jpeg_set_defaults(&cinfo);
    jpeg_set_colorspace(&cinfo, l.coded);
    jpeg_set_quality(&cinfo, 95, TRUE);
    cinfo.write_JFIF_header = l.jfif;
    cinfo.write_Adobe_marker = l.adobe;
    if (l.progressive) jpeg_simple_progression(&cinfo);
    jpeg_start_compress(&cinfo, TRUE);
    while (cinfo.next_scanline < cinfo.image_height) {
        JSAMPROW row = reinterpret_cast<JSAMPROW>(
            const_cast<char*>(pixels.data() + size_t(cinfo.next_scanline) * w * l.components));
        jpeg_write_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_compress(&cinfo);
    std::string jpeg(reinterpret_cast<char*>(out), size);
    jpeg_destroy_compress(&cinfo);
    std::free(out);
    return jpeg;
}

double Psnr(const std::string& a, const std::string& b) {
    if (a.size() != b.size() || a.empty()) return 0;
    double se = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        const double d = double(static_cast<unsigned char>(a[i])) - static_cast<unsigned char>(b[i]);
        se += d * d;
    }
    return se == 0 ? 99 : 10 * std::log10(255.0 * 255.0 * double(a.size()) / se);
}

std::string Decode(const std::string& data, lum::Int64 color_transform = -1, size_t window = 1 << 20) {
    return ReadAll(std::make_unique<DCTDecode>(Source(data, window), color_transform));
}

constexpr int kW = 37, kH = 23;

const Layout kLayouts[] = {
    {"gray", 1, JCS_GRAYSCALE, JCS_GRAYSCALE, true, false, false, -1},
    {"YCbCr, JFIF", 3, JCS_RGB, JCS_YCbCr, true, false, false, -1},
    {"YCbCr, progressive", 3, JCS_RGB, JCS_YCbCr, true, false, true, -1},
    {"RGB stored, ColorTransform 0", 3, JCS_RGB, JCS_RGB, false, false, false, 0},
    {"CMYK, Adobe marker", 4, JCS_CMYK, JCS_CMYK, false, true, false, -1},
    {"CMYK without Adobe marker, no ColorTransform", 4, JCS_CMYK, JCS_CMYK, false, false, false, -1},
    {"YCCK without Adobe marker, ColorTransform 1", 4, JCS_CMYK, JCS_YCCK, false, false, false, 1},
};

TEST(DCTDecode, DecodesEveryLayout) {
    for (const Layout& l : kLayouts) {
        const std::string pixels = Pixels(kW, kH, l.components);
        const std::string jpeg = Encode(l, kW, kH, pixels);
        for (size_t window : {size_t(1) << 20, size_t(1)}) {
            const std::string got = Decode(jpeg, l.color_transform, window);
            EXPECT_EQ(got.size(), pixels.size()) << l.name;
            EXPECT_GT(Psnr(got, pixels), 30) << l.name << " window " << window;
        }
    }
}

TEST(DCTDecode, ColorTransformDecidesWithoutAdobeMarker) {
    // RGB stored as it is, read as YCbCr: the colours come out wrong.
    const Layout& rgb = kLayouts[3];
    const std::string pixels = Pixels(kW, kH, 3);
    const std::string jpeg = Encode(rgb, kW, kH, pixels);
    EXPECT_LT(Psnr(Decode(jpeg, 1), pixels), 20);
    EXPECT_LT(Psnr(Decode(jpeg, -1), pixels), 20);
    // With an Adobe marker the marker decides, whatever the parameter says.
    const Layout& adobe = kLayouts[4];
    const std::string cmyk = Pixels(kW, kH, 4);
    const std::string with_marker = Encode(adobe, kW, kH, cmyk);
    EXPECT_GT(Psnr(Decode(with_marker, 1), cmyk), 35);
}

TEST(DCTDecode, GarbageAheadAndTruncation) {
    const Layout& l = kLayouts[1];
    const int w = 160, h = 120;
    const std::string jpeg = Encode(l, w, h, Pixels(w, h, 3));
    const std::string full = Decode(jpeg);
    EXPECT_EQ(Decode(std::string("\r\n%garbage\xFF\x00\xFF", 13) + jpeg), full);
    // Cut in the middle of the scan: a short image, as many rows, no failure.
    const size_t scan = jpeg.find("\xFF\xDA");
    ASSERT_NE(scan, std::string::npos);
    const std::string cut = Decode(jpeg.substr(0, (scan + jpeg.size()) / 2));
    ASSERT_EQ(cut.size(), full.size());
    EXPECT_EQ(cut.substr(0, w * 3 * 16), full.substr(0, w * 3 * 16));
    EXPECT_NE(cut, full);
}

TEST(DCTDecode, UnreadBytesStayWithTheInput) {
    // What follows the image (the end of an inline image) is left for the next reader.
    const std::string jpeg = Encode(kLayouts[0], kW, kH, Pixels(kW, kH, 1));
    DCTDecode d(Source(jpeg + "EI Q", 1 << 20));
    ReadAll(d);
    auto rest = d.ReleaseAttachedFilter();
    EXPECT_EQ(ReadAll(*rest), "EI Q");
}

std::string WithoutSegment(const std::string& jpeg, unsigned char marker) {
    for (size_t i = 2; i + 4 < jpeg.size();) {
        const size_t len = (static_cast<unsigned char>(jpeg[i + 2]) << 8) | static_cast<unsigned char>(jpeg[i + 3]);
        if (static_cast<unsigned char>(jpeg[i + 1]) == marker) return jpeg.substr(0, i) + jpeg.substr(i + 2 + len);
        i += 2 + len;
    }
    return jpeg;
}

TEST(DCTDecode, FatalErrorsRaiseWithLibjpegsText) {
    const std::string jpeg = Encode(kLayouts[0], kW, kH, Pixels(kW, kH, 1));
    // The frame header claims 3 bytes: too short for its own fields.
    std::string bad_length = jpeg;
    const size_t sof = bad_length.find("\xFF\xC0");
    ASSERT_NE(sof, std::string::npos);
    bad_length[sof + 2] = 0;
    bad_length[sof + 3] = 3;
    const struct Case {
        const char* what;
        std::string data;
        const char* message_start;
    } cases[] = {
        {"no JPEG at all", "plain text, no image", "Not a JPEG file"},
        {"empty", "", ""},
        {"no quantisation table", WithoutSegment(jpeg, 0xDB), "Quantization table"},
        {"wrong segment length", bad_length, "Bogus marker length"},
    };
    for (const auto& c : cases) {
        const auto e = Raised([&] { Decode(c.data); });
        EXPECT_EQ(e.GetMessage().rfind(c.message_start, 0), 0u) << c.what << ": " << e.GetMessage();
        EXPECT_EQ(e.GetCondition(), "false") << c.what;
        EXPECT_EQ(e.GetFunction(), "lum::Filters::DCTDecode::Initialize") << c.what;
    }
}

}  // namespace
