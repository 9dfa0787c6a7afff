// The JPEG 2000 stage on images that OpenJPEG's encoder makes here, losslessly, in both
// shapes; and on broken or hostile data, which must give an empty stream.
#include <gtest/gtest.h>
#include <openjpeg.h>
#include <sys/resource.h>

#include <cstring>
#include <functional>

#include "FilterTestUtil.h"
#include "Filters/FilterReader.h"
#include "Filters/JPXDecode.h"
#include "Filters/JPXDecodeShapes.h"

using namespace lum;
using namespace lum::Filters;
using namespace lum::test;

namespace {

struct Picture {
    UInt32 w = 0, h = 0, prec = 8;
    int comps = 1;
    OPJ_COLOR_SPACE space = OPJ_CLRSPC_GRAY;
    bool alpha_last = false;  // the last component is an alpha channel (a cdef box)
    std::vector<std::vector<int>> samples = {};  // per component, row by row
};

Picture Make(UInt32 w, UInt32 h, int comps, UInt32 prec, OPJ_COLOR_SPACE space) {
    Picture p{.w = w, .h = h, .prec = prec, .comps = comps, .space = space};
    const int max = (1 << prec) - 1;
    p.samples.resize(size_t(comps));
    for (int c = 0; c < comps; ++c)
        for (UInt32 y = 0; y < h; ++y)
            for (UInt32 x = 0; x < w; ++x)
                p.samples[size_t(c)].push_back(int((x * 7 + y * 13 + UInt32(c) * 50) * 2654435761u >> 7) & max);
    return p;
}

// The written bytes, with the seeking the JP2 writer needs to fill in box lengths.
struct Sink {
    std::string bytes;
    size_t pos = 0;
    static OPJ_SIZE_T Write(void* buf, OPJ_SIZE_T n, void* user) {
        auto& s = *static_cast<Sink*>(user);
        if (s.bytes.size() < s.pos + n) s.bytes.resize(s.pos + n);
        std::memcpy(&s.bytes[s.pos], buf, n);
        s.pos += n;
        return n;
    }
    static OPJ_OFF_T Skip(OPJ_OFF_T n, void* user) {
        static_cast<Sink*>(user)->pos += size_t(n);
        return n;
    }
    static OPJ_BOOL Seek(OPJ_OFF_T to, void* user) {
        static_cast<Sink*>(user)->pos = size_t(to);
        return OPJ_TRUE;
    }
};

// Lossless (reversible wavelet), as a JP2 file or a raw codestream, tiled when asked.
std::string Encode(const Picture& p, bool jp2, UInt32 tile_w = 0, UInt32 tile_h = 0) {
    opj_cparameters_t params;
    opj_set_default_encoder_parameters(&params);
    params.tcp_numlayers = 1;
    params.tcp_rates[0] = 0;
    params.cp_disto_alloc = 1;
    params.numresolution = 3;
    if (tile_w) {
        params.tile_size_on = OPJ_TRUE;
        params.cp_tdx = int(tile_w);
        params.cp_tdy = int(tile_h);
    }
    std::vector<opj_image_cmptparm_t> cmpt(size_t(p.comps));
    for (auto& c : cmpt) {
        c = opj_image_cmptparm_t{};
        c.dx = c.dy = 1;
        c.w = p.w;
        c.h = p.h;
        c.prec = p.prec;
    }
    opj_image_t* img = opj_image_create(OPJ_UINT32(p.comps), cmpt.data(), p.space);
    img->x1 = p.w;
    img->y1 = p.h;
    for (int c = 0; c < p.comps; ++c)
        std::copy(p.samples[size_t(c)].begin(), p.samples[size_t(c)].end(), img->comps[c].data);
    if (p.alpha_last) img->comps[p.comps - 1].alpha = 1;
    opj_codec_t* enc = opj_create_compress(jp2 ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K);
    EXPECT_TRUE(opj_setup_encoder(enc, &params, img));
    Sink sink;
    opj_stream_t* out = opj_stream_create(1 << 16, OPJ_FALSE);
    opj_stream_set_user_data(out, &sink, nullptr);
    opj_stream_set_write_function(out, &Sink::Write);
    opj_stream_set_skip_function(out, &Sink::Skip);
    opj_stream_set_seek_function(out, &Sink::Seek);
    EXPECT_TRUE(opj_start_compress(enc, img, out) && opj_encode(enc, out) && opj_end_compress(enc, out));
    opj_stream_destroy(out);
    opj_destroy_codec(enc);
    opj_image_destroy(img);
    return sink.bytes;
}

JPXParams Params(int components, int bits, bool stripe, bool own_colors = false) {
    return {.components = components, .bits = bits, .stripe = stripe, .own_colors = own_colors};
}

// What a shape should deliver for pixel (x, y): the bytes of the row, pixel by pixel.
using Expect = std::function<std::string(const Picture&, size_t i)>;

std::string Expected(const Picture& p, const Expect& pixel) {
    std::string s;
    for (size_t i = 0; i < size_t(p.w) * p.h; ++i) s += pixel(p, i);
    return s;
}

std::string Samples(const Picture& p, size_t i, int n, int shift = 0) {
    std::string s;
    for (int c = 0; c < n; ++c) s += char(p.samples[size_t(c)][i] >> shift);
    return s;
}

TEST(JPXDecode, ShapesOfTheSamples) {
    struct Case {
        const char* what;
        Picture pic;
        bool jp2;
        JPXParams params;
        Expect pixel;
    };
    Picture rgba = Make(19, 11, 4, 8, OPJ_CLRSPC_SRGB);
    rgba.alpha_last = true;
    Picture gray_alpha = Make(19, 11, 2, 8, OPJ_CLRSPC_GRAY);
    gray_alpha.alpha_last = true;
    const Case cases[] = {
        {"gray, stripe", Make(19, 11, 1, 8, OPJ_CLRSPC_GRAY), true, Params(1, 8, false),
         [](const Picture& p, size_t i) { return Samples(p, i, 1); }},
        {"RGB composed", Make(19, 11, 3, 8, OPJ_CLRSPC_SRGB), true, Params(3, 8, false),
         [](const Picture& p, size_t i) { return Samples(p, i, 3); }},
        {"RGB codestream composed", Make(19, 11, 3, 8, OPJ_CLRSPC_UNSPECIFIED), false,
         Params(-1, 8, false), [](const Picture& p, size_t i) { return Samples(p, i, 3); }},
        {"RGB, own colours", Make(19, 11, 3, 8, OPJ_CLRSPC_SRGB), true, Params(1, 8, true, true),
         [](const Picture& p, size_t i) { return Samples(p, i, 3); }},
        {"RGB and alpha, own colours: no alpha", rgba, true, Params(1, 8, true, true),
         [](const Picture& p, size_t i) { return Samples(p, i, 3); }},
        {"RGB and alpha, stripe for an ICC space of 3", rgba, true, Params(3, 8, true),
         [](const Picture& p, size_t i) { return Samples(p, i, 3); }},
        {"gray and alpha for a gray image", gray_alpha, true, Params(1, 8, false),
         [](const Picture& p, size_t i) { return Samples(p, i, 1); }},
        {"gray composed", Make(19, 11, 1, 8, OPJ_CLRSPC_GRAY), true, Params(3, 8, false),
         [](const Picture& p, size_t i) { return std::string(3, char(p.samples[0][i])); }},
        {"16 bits to 8", Make(19, 11, 1, 16, OPJ_CLRSPC_GRAY), true, Params(1, 8, true),
         [](const Picture& p, size_t i) { return Samples(p, i, 1, 8); }},
        {"CMYK composed", Make(19, 11, 4, 8, OPJ_CLRSPC_CMYK), true, Params(4, 8, false),
         [](const Picture& p, size_t i) {
             std::string s;
             for (int c = 0; c < 3; ++c)
                 s += char(std::max(0, 255 - p.samples[size_t(c)][i] - p.samples[3][i]));
             return s;
         }},
    };
    for (const auto& c : cases) {
        const std::string coded = Encode(c.pic, c.jp2);
        EXPECT_TRUE(ReadAll(std::make_unique<JPXDecode>(Source(coded), c.params)) ==
                    Expected(c.pic, c.pixel))
            << c.what;
    }
}

TEST(JPXDecode, FourBitIndexesArePacked) {
    const Picture p = Make(9, 5, 1, 4, OPJ_CLRSPC_GRAY);
    std::string want;
    for (UInt32 y = 0; y < p.h; ++y) {
        std::string row(5, '\0');
        for (UInt32 x = 0; x < p.w; ++x)
            row[x / 2] = char(row[x / 2] | (p.samples[0][y * p.w + x] << (x % 2 ? 0 : 4)));
        want += row;
    }
    EXPECT_TRUE(ReadAll(std::make_unique<JPXDecode>(Source(Encode(p, true)), Params(1, 4, false))) == want);
}

TEST(JPXDecode, TilesGoOutRowOfTilesByRowOfTiles) {
    const Picture p = Make(37, 23, 3, 8, OPJ_CLRSPC_SRGB);
    JPXDecode d(Source(Encode(p, true, 16, 8)), Params(3, 8, false));
    std::vector<size_t> windows;
    while (size_t n = d.Size()) {
        windows.push_back(n);
        d.Consume(n);
    }
    EXPECT_EQ(windows, (std::vector<size_t>{37 * 3 * 8, 37 * 3 * 8, 37 * 3 * 7}));
    d.Reset();
    EXPECT_EQ(d.Size(), 0u);
    EXPECT_TRUE(ReadAll(std::make_unique<JPXDecode>(Source(Encode(p, true, 16, 8)), Params(3, 8, false))) ==
                Expected(p, [](const Picture& q, size_t i) { return Samples(q, i, 3); }));
}

TEST(JPXDecode, OneTileTooLargeGoesInStrips) {
    // 64 rows of 64 gray samples (256 bytes each as OpenJPEG holds them): a budget of 8 KiB
    // allows 16 rows at a time, margins counted.
    const Picture p = Make(64, 64, 1, 8, OPJ_CLRSPC_GRAY);
    const std::string coded = Encode(p, false);
    JP2StripeImpl d(std::vector<UInt8>(coded.begin(), coded.end()), 1, 8, false, 8192);
    std::string got;
    int bands = 0;
    while (d.NextBand()) {
        got.append(reinterpret_cast<const char*>(d.Band()), d.BandBytes());
        ++bands;
    }
    EXPECT_EQ(bands, 4);
    EXPECT_TRUE(got == Expected(p, [](const Picture& q, size_t i) { return Samples(q, i, 1); }));
}

long MaxRssKiB() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss;
}

// The SIZ marker's fields of a codestream, patched.
std::string PatchSiz(std::string coded, UInt32 x1, UInt32 y1, UInt32 tdx, UInt32 tdy) {
    const size_t siz = coded.find("\xFF\x51");
    auto put = [&](size_t at, UInt32 v) {
        for (int i = 0; i < 4; ++i) coded[at + size_t(i)] = char(v >> (24 - 8 * i));
    };
    put(siz + 6, x1);
    put(siz + 10, y1);
    put(siz + 22, tdx);
    put(siz + 26, tdy);
    return coded;
}

TEST(JPXDecode, BrokenAndHostileDataGiveAnEmptyStream) {
    const Picture p = Make(64, 64, 3, 8, OPJ_CLRSPC_SRGB);
    const std::string coded = Encode(p, false);
    std::string many_components = coded;
    const size_t siz = many_components.find("\xFF\x51");
    many_components[siz + 38] = 0x40;  // Csiz 16384
    many_components[siz + 39] = 0x00;
    const struct Case {
        const char* what;
        std::string data;
    } cases[] = {
        {"empty", ""},
        {"garbage", "this is no JPEG 2000 data at all, not even a header"},
        {"a JP2 signature and nothing more", std::string("\0\0\0\x0CjP  \r\n\x87\n", 12)},
        {"16,384 components", many_components},
        {"100,000 x 100,000 pixels", PatchSiz(coded, 100000, 100000, 100000, 100000)},
        {"a tile bomb: 1 x 1 tiles", PatchSiz(coded, 64, 64, 1, 1)},
        {"a tile row beyond the memory bound", PatchSiz(coded, 16384, 16384, 16384, 16383)},
    };
    const long before = MaxRssKiB();
    for (const auto& c : cases) {
        std::string got;
        EXPECT_NO_THROW(got = ReadAll(std::make_unique<JPXDecode>(Source(c.data), Params(3, 8, false))))
            << c.what;
        EXPECT_EQ(got, "") << c.what;
    }
    EXPECT_LT(MaxRssKiB() - before, 64 * 1024) << "KiB grown on hostile headers";
    // Cut short: whatever OpenJPEG makes of it, no failure leaves the stage.
    EXPECT_NO_THROW(ReadAll(std::make_unique<JPXDecode>(Source(coded.substr(0, coded.size() / 2)),
                                                        Params(3, 8, false))));
}

TEST(JPXDecode, HeaderReader) {
    const Picture p = Make(19, 11, 3, 12, OPJ_CLRSPC_SRGB);
    auto src = Source(Encode(p, true));
    UInt32 w = 0, h = 0;
    int comps = 0, bits = 0;
    ASSERT_TRUE(JPXDecode::ReadHeader(*src, w, h, comps, bits));
    EXPECT_EQ(w, 19u);
    EXPECT_EQ(h, 11u);
    EXPECT_EQ(comps, 3);
    EXPECT_EQ(bits, 12);
    auto bad = Source("nothing");
    EXPECT_FALSE(JPXDecode::ReadHeader(*bad, w, h, comps, bits));
}

}  // namespace
