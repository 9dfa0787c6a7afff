#include "Filters/JPXDecodeShapes.h"

#include <openjpeg.h>

#include <algorithm>
#include <cstring>

#include "Common/Exception.h"
#include "Common/Limits.h"

namespace lum::Filters {

namespace {

// The samples of one component for the pixels [x0, x1) of reference row y, made unsigned and
// kept within the component's precision. A component sampled more coarsely than the grid
// repeats its samples.
void SampleRow(const opj_image_comp_t& c, UInt32 x0, UInt32 x1, UInt32 y, int* out) {
    LUM_CHECK(c.data && c.w > 0 && c.h > 0 && c.dx > 0 && c.dy > 0 && c.prec >= 1 && c.prec <= 31,
              "JPXDecode: An error occurred reading the image");
    const int offset = c.sgnd ? 1 << (c.prec - 1) : 0;
    const int max = int((1u << c.prec) - 1);
    const UInt32 ry = std::min(std::max(y / c.dy, c.y0) - c.y0, c.h - 1);
    const OPJ_INT32* row = c.data + size_t(ry) * c.w;
    const UInt32 n = x1 - x0;
    if (c.dx == 1 && x0 >= c.x0 && x1 - c.x0 <= c.w) {
        row += x0 - c.x0;
        for (UInt32 i = 0; i < n; ++i) out[i] = std::clamp(row[i] + offset, 0, max);
        return;
    }
    for (UInt32 i = 0; i < n; ++i) {
        const UInt32 ix = std::min(std::max((x0 + i) / c.dx, c.x0) - c.x0, c.w - 1);
        out[i] = std::clamp(row[ix] + offset, 0, max);
    }
}

// A sample of `prec` bits as 8 bits.
inline int To8(int v, UInt32 prec) {
    if (prec == 8) return v;
    if (prec > 8) return v >> (prec - 8);
    return v * 255 / int((1u << prec) - 1);
}

UInt8 Clamp8(int v) { return static_cast<UInt8>(std::clamp(v, 0, 255)); }

}  // namespace

// --- JP2Decoder ---

JP2Decoder::JP2Decoder(std::vector<UInt8> data, bool keep_palette, size_t budget)
    : m_codec(std::move(data), keep_palette, budget) {}

JP2Decoder::~JP2Decoder() = default;

bool JP2Decoder::NextBand() {
    if (m_next >= m_codec.BandCount()) return false;
    const int b = m_next++;
    UInt32 band_y0 = 0, band_y1 = 0;
    bool first_piece = true;
    m_codec.DecodeBand(b, [&](const opj_image_t* img, UInt32 x0, UInt32 x1, UInt32 y0, UInt32 y1) {
        if (m_row_size == 0) {
            Layout(img);
            const UInt64 bytes = UInt64(m_row_size) * m_codec.BandRows();
            LUM_CHECK(m_row_size > 0 && bytes <= Limits::kMaxImageDecoderMemory,
                      "NULL composition buffer - could not render JPX image at requested scale.");
            m_band.assign(size_t(bytes), 0);
        }
        if (first_piece) {
            band_y0 = y0;
            band_y1 = y1;
            std::memset(m_band.data(), 0, m_band.size());
            first_piece = false;
        }
        Convert(img, x0, x1, y0, y1, band_y0);
    });
    m_band_bytes = size_t(band_y1 - band_y0) * m_row_size;
    return true;
}

// --- JP2StripeImpl ---

JP2StripeImpl::JP2StripeImpl(std::vector<UInt8> data, int components, int bits, bool own_colors,
                             size_t budget)
    : JP2Decoder(std::move(data), !own_colors, budget),
      m_components(components),
      m_own_colors(own_colors) {
    m_out_bits = bits == 1 || bits == 2 || bits == 4 || bits == 16 ? bits : 8;
}

void JP2StripeImpl::Layout(const opj_image_t* img) {
    const int n = int(img->numcomps);
    int colors = n;
    if (!m_own_colors) {
        if (m_components >= 1) colors = m_components;
    } else if (img->comps[n - 1].alpha && n > 1) {
        colors = n - 1;  // an alpha channel, as the JP2 header marks it
    } else if (img->color_space == OPJ_CLRSPC_GRAY) {
        colors = 1;
    } else if (img->color_space == OPJ_CLRSPC_SRGB || img->color_space == OPJ_CLRSPC_SYCC ||
               img->color_space == OPJ_CLRSPC_EYCC) {
        colors = 3;
    } else if (img->color_space == OPJ_CLRSPC_CMYK) {
        colors = 4;
    }
    m_out_components = std::min(colors, n);
    m_row_size = (size_t(Width()) * size_t(m_out_components) * size_t(m_out_bits) + 7) / 8;
}

void JP2StripeImpl::Convert(const opj_image_t* img, UInt32 x0, UInt32 x1, UInt32 y0, UInt32 y1,
                            UInt32 band_y0) {
    const int comps = std::min(m_out_components, int(img->numcomps));
    const UInt32 n = x1 - x0;
    std::vector<int> samples(n);
    const int bits = m_out_bits;
    const int max = (1 << bits) - 1;
    for (UInt32 y = y0; y < y1; ++y) {
        UInt8* row = m_band.data() + size_t(y - band_y0) * m_row_size;
        for (int c = 0; c < comps; ++c) {
            const opj_image_comp_t& comp = img->comps[c];
            SampleRow(comp, x0, x1, y, samples.data());
            // Index of the sample in the row: pixels from the image's left edge.
            size_t at = size_t(x0 - m_codec.X0()) * size_t(m_out_components) + size_t(c);
            for (UInt32 i = 0; i < n; ++i, at += size_t(m_out_components)) {
                int v = samples[i];
                if (bits == 8)
                    v = To8(v, comp.prec);
                else if (int(comp.prec) > bits)
                    v >>= int(comp.prec) - bits;
                v = std::min(v, max);
                if (bits == 8) {
                    row[at] = static_cast<UInt8>(v);
                } else if (bits == 16) {
                    row[2 * at] = static_cast<UInt8>(v >> 8);
                    row[2 * at + 1] = static_cast<UInt8>(v);
                } else {
                    const size_t bit = at * size_t(bits);
                    row[bit / 8] |= static_cast<UInt8>(v << (8 - bits - int(bit % 8)));
                }
            }
        }
    }
}

// --- JP2CompImpl ---

JP2CompImpl::JP2CompImpl(std::vector<UInt8> data, int components, size_t budget)
    : JP2Decoder(std::move(data), false, budget), m_components(components) {
    m_out_components = 3;
    m_out_bits = 8;
}

void JP2CompImpl::Layout(const opj_image_t*) { m_row_size = size_t(Width()) * 3; }

void JP2CompImpl::Convert(const opj_image_t* img, UInt32 x0, UInt32 x1, UInt32 y0, UInt32 y1,
                          UInt32 band_y0) {
    enum { e_gray, e_rgb, e_ycc, e_cmyk } kind = e_rgb;
    const int n = int(img->numcomps);
    if (n < 3)
        kind = e_gray;
    else if (img->color_space == OPJ_CLRSPC_SYCC || img->color_space == OPJ_CLRSPC_EYCC)
        kind = e_ycc;
    else if (n >= 4 && (img->color_space == OPJ_CLRSPC_CMYK ||
                        (m_components == 4 && img->color_space != OPJ_CLRSPC_SRGB)))
        kind = e_cmyk;
    const int used = kind == e_gray ? 1 : kind == e_cmyk ? 4 : 3;
    const UInt32 w = x1 - x0;
    std::vector<int> s(size_t(w) * size_t(used));
    for (UInt32 y = y0; y < y1; ++y) {
        for (int c = 0; c < used; ++c) {
            int* dst = s.data() + size_t(c) * w;
            SampleRow(img->comps[c], x0, x1, y, dst);
            const UInt32 prec = img->comps[c].prec;
            if (prec != 8)
                for (UInt32 i = 0; i < w; ++i) dst[i] = To8(dst[i], prec);
        }
        UInt8* out = m_band.data() + size_t(y - band_y0) * m_row_size + size_t(x0 - m_codec.X0()) * 3;
        const int* a = s.data();
        const int* b = kind == e_gray ? a : a + w;
        const int* c = kind == e_gray ? a : a + 2 * w;
        const int* k = kind == e_cmyk ? a + 3 * w : nullptr;
        for (UInt32 i = 0; i < w; ++i, out += 3) {
            switch (kind) {
                case e_gray:
                case e_rgb:
                    out[0] = static_cast<UInt8>(a[i]);
                    out[1] = static_cast<UInt8>(b[i]);
                    out[2] = static_cast<UInt8>(c[i]);
                    break;
                case e_ycc: {
                    // ITU-R BT.601 full range, as sYCC defines it; fixed point, 16 bits.
                    const int yy = a[i] << 16, cb = b[i] - 128, cr = c[i] - 128;
                    out[0] = Clamp8((yy + 91881 * cr + 32768) >> 16);
                    out[1] = Clamp8((yy - 22554 * cb - 46802 * cr + 32768) >> 16);
                    out[2] = Clamp8((yy + 116130 * cb + 32768) >> 16);
                    break;
                }
                case e_cmyk:
                    out[0] = Clamp8(255 - a[i] - k[i]);
                    out[1] = Clamp8(255 - b[i] - k[i]);
                    out[2] = Clamp8(255 - c[i] - k[i]);
                    break;
            }
        }
    }
}

}  // namespace lum::Filters
