#pragma once
// The JPEG 2000 decoder behind JPXDecode: OpenJPEG on the coded data held in memory, decoding
// the image in bands of rows. A band is a row of tiles, or the whole image when it is one tile;
// a single tile too large to decode at once is decoded in strips of rows instead. Every
// failure raises "JPXDecode: An error occurred reading the image".
#include <vector>

#include "Common/Limits.h"
#include "Common/Types.h"

typedef struct opj_image opj_image_t;

namespace lum::Filters {

class JP2Codec {
public:
    // `data`: the whole coded stream, a JP2 file or a raw codestream. `keep_palette`: leave
    // palette indexes as they are (no colour lookup through a JP2 palette box). `budget`:
    // bytes of decoded samples one band may take.
    JP2Codec(std::vector<UInt8> data, bool keep_palette,
             size_t budget = Limits::kMaxImageDecoderMemory);
    ~JP2Codec();
    JP2Codec(const JP2Codec&) = delete;
    JP2Codec& operator=(const JP2Codec&) = delete;

    // The image area on the reference grid.
    UInt32 X0() const { return m_x0; }
    UInt32 Y0() const { return m_y0; }
    UInt32 Width() const { return m_x1 - m_x0; }
    UInt32 Height() const { return m_y1 - m_y0; }
    // Rows of the tallest band.
    UInt32 BandRows() const { return m_band_rows; }
    int BandCount() const { return m_bands; }

    // Decodes band `b` (in order), calling `take` with the decoded samples of each rectangle
    // [x0, x1) x [y0, y1) of the reference grid that make up the band.
    template <typename Take>
    void DecodeBand(int b, Take&& take) {
        ForEachPiece(b, [](void* t, const opj_image_t* img, UInt32 x0, UInt32 x1, UInt32 y0,
                           UInt32 y1) { (*static_cast<Take*>(t))(img, x0, x1, y0, y1); },
                     &take);
    }

    // Only the header: size, component count and the precision of the first component.
    static bool ReadHeader(const std::vector<UInt8>& data, UInt32& width, UInt32& height,
                           int& components, int& bits);

private:
    using PieceFn = void (*)(void*, const opj_image_t*, UInt32, UInt32, UInt32, UInt32);
    void ForEachPiece(int b, PieceFn fn, void* ctx);
    void Check(bool ok);
    void PlanBands();

    struct Impl;
    Impl* mp_impl;
    UInt32 m_x0 = 0, m_y0 = 0, m_x1 = 0, m_y1 = 0;
    size_t m_budget;
    UInt32 m_band_rows = 0;
    int m_bands = 0;
    bool m_strips = false;  // one tile decoded in strips of m_band_rows
};

// The shape of the codestream's SIZ marker, read before OpenJPEG sees the data, so that a
// hostile header is refused before anything is allocated for it. False when there is none.
struct JP2Size {
    UInt32 x0, y0, x1, y1;     // image area
    UInt32 tx0, ty0, tdx, tdy;  // tiling
    UInt32 components;
};
bool FindJP2Size(const std::vector<UInt8>& data, JP2Size& size);

}  // namespace lum::Filters
