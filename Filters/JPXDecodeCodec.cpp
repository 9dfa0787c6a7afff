#include "Filters/JPXDecodeCodec.h"

#include <openjpeg.h>

#include <algorithm>
#include <cstring>

#include "Common/Exception.h"
#include "Common/Limits.h"

namespace lum::Filters {

namespace {

constexpr const char* kReadError = "JPXDecode: An error occurred reading the image";

UInt32 Be32(const UInt8* p) { return UInt32(p[0]) << 24 | UInt32(p[1]) << 16 | UInt32(p[2]) << 8 | p[3]; }

UInt64 CeilDiv(UInt64 a, UInt64 b) { return (a + b - 1) / b; }

// A JP2 file has its signature box first; very short data count as one too (and fail there).
bool IsJP2File(const std::vector<UInt8>& data) {
    return data.size() < 8 || std::memcmp(data.data() + 4, "jP  ", 4) == 0;
}

// The stream OpenJPEG reads: the coded data in memory, seekable.
struct MemoryStream {
    const std::vector<UInt8>* data;
    size_t pos = 0;

    static OPJ_SIZE_T Read(void* buf, OPJ_SIZE_T n, void* user) {
        auto& s = *static_cast<MemoryStream*>(user);
        const size_t left = s.data->size() - s.pos;
        if (left == 0) return OPJ_SIZE_T(-1);
        n = std::min<size_t>(n, left);
        std::memcpy(buf, s.data->data() + s.pos, n);
        s.pos += n;
        return n;
    }
    static OPJ_OFF_T Skip(OPJ_OFF_T n, void* user) {
        auto& s = *static_cast<MemoryStream*>(user);
        if (n < 0 ? size_t(-n) > s.pos : size_t(n) > s.data->size() - s.pos) {
            s.pos = n < 0 ? 0 : s.data->size();
            return -1;
        }
        s.pos = size_t(OPJ_OFF_T(s.pos) + n);
        return n;
    }
    static OPJ_BOOL Seek(OPJ_OFF_T to, void* user) {
        auto& s = *static_cast<MemoryStream*>(user);
        if (to < 0 || size_t(to) > s.data->size()) return OPJ_FALSE;
        s.pos = size_t(to);
        return OPJ_TRUE;
    }
};

void OnError(const char*, void* user) { *static_cast<bool*>(user) = true; }
void OnMessage(const char*, void*) {}

// Refuses what OpenJPEG would allocate too much for: a hostile SIZ claims thousands of
// components or tiles (each tile has per-component state) or an image far beyond any page.
void CheckSize(const std::vector<UInt8>& data) {
    JP2Size s;
    if (!FindJP2Size(data, s)) return;  // OpenJPEG finds nothing either and fails
    LUM_CHECK(s.components >= 1 && s.components <= UInt32(Limits::kMaxJPXComponents), kReadError);
    LUM_CHECK(s.x1 > s.x0 && s.y1 > s.y0 && s.tdx > 0 && s.tdy > 0 && s.tx0 <= s.x0 && s.ty0 <= s.y0,
              kReadError);
    const UInt64 tiles = CeilDiv(s.x1 - s.tx0, s.tdx) * CeilDiv(s.y1 - s.ty0, s.tdy);
    LUM_CHECK(tiles <= 65535 && tiles * s.components <= UInt64(Limits::kMaxJPXTileComponents), kReadError);
    LUM_CHECK(UInt64(s.x1 - s.x0) * (s.y1 - s.y0) <= Limits::kMaxJPXPixels, kReadError);
}

}  // namespace

bool FindJP2Size(const std::vector<UInt8>& data, JP2Size& s) {
    static const UInt8 kSocSiz[4] = {0xFF, 0x4F, 0xFF, 0x51};
    auto at = std::search(data.begin(), data.end(), kSocSiz, kSocSiz + 4);
    if (at == data.end()) return false;
    const size_t p = size_t(at - data.begin()) + 2;  // the SIZ marker
    if (data.size() < p + 40) return false;
    const UInt8* d = data.data() + p;
    s.x1 = Be32(d + 6);
    s.y1 = Be32(d + 10);
    s.x0 = Be32(d + 14);
    s.y0 = Be32(d + 18);
    s.tdx = Be32(d + 22);
    s.tdy = Be32(d + 26);
    s.tx0 = Be32(d + 30);
    s.ty0 = Be32(d + 34);
    s.components = UInt32(d[38]) << 8 | d[39];
    return true;
}

struct JP2Codec::Impl {
    std::vector<UInt8> data;
    MemoryStream source;
    opj_codec_t* codec = nullptr;
    opj_stream_t* stream = nullptr;
    opj_image_t* image = nullptr;
    bool error = false;
    UInt32 tx0 = 0, ty0 = 0, tdx = 0, tdy = 0, tw = 0, th = 0;

    ~Impl() {
        if (image) opj_image_destroy(image);
        if (stream) opj_stream_destroy(stream);
        if (codec) opj_destroy_codec(codec);
    }

    // Codec and stream on the data; true when the header was read.
    bool Open(bool keep_palette) {
        source.data = &data;
        codec = opj_create_decompress(IsJP2File(data) ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K);
        if (!codec) return false;
        opj_set_error_handler(codec, &OnError, &error);
        opj_set_warning_handler(codec, &OnMessage, nullptr);
        opj_set_info_handler(codec, &OnMessage, nullptr);
        opj_dparameters_t params;
        opj_set_default_decoder_parameters(&params);
        if (keep_palette) params.flags |= OPJ_DPARAMETERS_IGNORE_PCLR_CMAP_CDEF_FLAG;
        if (!opj_setup_decoder(codec, &params)) return false;
        stream = opj_stream_create(OPJ_J2K_STREAM_CHUNK_SIZE, OPJ_TRUE);
        if (!stream) return false;
        opj_stream_set_user_data(stream, &source, nullptr);
        opj_stream_set_user_data_length(stream, data.size());
        opj_stream_set_read_function(stream, &MemoryStream::Read);
        opj_stream_set_skip_function(stream, &MemoryStream::Skip);
        opj_stream_set_seek_function(stream, &MemoryStream::Seek);
        return opj_read_header(stream, codec, &image) && image && !error;
    }
};

JP2Codec::JP2Codec(std::vector<UInt8> data, bool keep_palette, size_t budget)
    : mp_impl(new Impl), m_budget(budget) {
    try {
        CheckSize(data);
        mp_impl->data = std::move(data);
        Check(mp_impl->Open(keep_palette));
        const opj_image_t* img = mp_impl->image;
        Check(img->x1 > img->x0 && img->y1 > img->y0 && img->numcomps >= 1);
        m_x0 = img->x0;
        m_y0 = img->y0;
        m_x1 = img->x1;
        m_y1 = img->y1;
        opj_codestream_info_v2_t* info = opj_get_cstr_info(mp_impl->codec);
        Check(info != nullptr);
        mp_impl->tx0 = info->tx0;
        mp_impl->ty0 = info->ty0;
        mp_impl->tdx = info->tdx;
        mp_impl->tdy = info->tdy;
        mp_impl->tw = info->tw;
        mp_impl->th = info->th;
        opj_destroy_cstr_info(&info);
        PlanBands();
    } catch (...) {
        delete mp_impl;
        throw;
    }
}

JP2Codec::~JP2Codec() { delete mp_impl; }

void JP2Codec::Check(bool ok) {
    if (!ok || mp_impl->error) LUM_FAIL("%s", kReadError);
}

void JP2Codec::PlanBands() {
    const Impl& d = *mp_impl;
    Check(d.tdx > 0 && d.tdy > 0 && d.tw > 0 && d.th > 0);
    const UInt64 sample_row = UInt64(Width()) * d.image->numcomps * sizeof(OPJ_INT32);
    if (UInt64(d.tw) * d.th == 1) {
        if (sample_row * Height() <= m_budget) {
            m_band_rows = Height();
            m_bands = 1;
            return;
        }
        // Too large to hold at once: strips of rows, each decoded as an area of the tile.
        // The codec keeps the coded data and a strip's samples with their filter margins
        // (counted as much again).
        const UInt64 rows = m_budget / 2 / sample_row;
        Check(rows >= 16);
        m_strips = true;
        m_band_rows = UInt32(std::min<UInt64>(rows, Height()));
        m_bands = int(CeilDiv(Height(), m_band_rows));
        return;
    }
    // A row of tiles at a time; the first and the last may be cut by the image area.
    Check(sample_row * d.tdy <= m_budget);
    const UInt32 first_row = (m_y0 - d.ty0) / d.tdy;
    m_bands = int(d.th - first_row);
    m_band_rows = std::min(d.tdy, Height());
}

void JP2Codec::ForEachPiece(int b, PieceFn fn, void* ctx) {
    Impl& d = *mp_impl;
    Check(b >= 0 && b < m_bands);
    if (m_bands == 1 && !m_strips) {
        Check(opj_decode(d.codec, d.stream, d.image) && opj_end_decompress(d.codec, d.stream));
        fn(ctx, d.image, m_x0, m_x1, m_y0, m_y1);
        return;
    }
    if (m_strips) {
        const UInt32 y0 = m_y0 + UInt32(b) * m_band_rows;
        const UInt32 y1 = std::min(m_y1, y0 + m_band_rows);
        Check(opj_set_decode_area(d.codec, d.image, OPJ_INT32(m_x0), OPJ_INT32(y0), OPJ_INT32(m_x1),
                                  OPJ_INT32(y1)));
        Check(opj_decode(d.codec, d.stream, d.image));
        fn(ctx, d.image, m_x0, m_x1, y0, y1);
        return;
    }
    const UInt32 row = (m_y0 - d.ty0) / d.tdy + UInt32(b);
    const UInt32 y0 = std::max(m_y0, d.ty0 + row * d.tdy);
    const UInt32 y1 = UInt32(std::min<UInt64>(m_y1, UInt64(d.ty0) + UInt64(row + 1) * d.tdy));
    for (UInt32 col = 0; col < d.tw; ++col) {
        const UInt64 tile_x0 = UInt64(d.tx0) + UInt64(col) * d.tdx;
        const UInt32 x0 = UInt32(std::max<UInt64>(m_x0, tile_x0));
        const UInt32 x1 = UInt32(std::min<UInt64>(m_x1, tile_x0 + d.tdx));
        if (x0 >= x1) continue;
        Check(opj_get_decoded_tile(d.codec, d.stream, d.image, row * d.tw + col));
        fn(ctx, d.image, x0, x1, y0, y1);
    }
}

bool JP2Codec::ReadHeader(const std::vector<UInt8>& data, UInt32& width, UInt32& height,
                          int& components, int& bits) {
    try {
        CheckSize(data);
        Impl impl;
        impl.data = data;
        if (!impl.Open(false)) return false;
        width = impl.image->x1 - impl.image->x0;
        height = impl.image->y1 - impl.image->y0;
        components = int(impl.image->numcomps);
        bits = int(impl.image->comps[0].prec);
        return true;
    } catch (...) {
        return false;
    }
}

}  // namespace lum::Filters
