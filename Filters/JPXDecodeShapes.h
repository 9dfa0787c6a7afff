#pragma once
// The two shapes in which JPXDecode delivers a JPEG 2000 image, band by band:
//   JP2StripeImpl keeps the stream's samples (its components, at a given bits per sample),
//   JP2CompImpl composes RGB, 3 bytes a pixel (gray, sYCC and CMYK converted).
#include <memory>
#include <vector>

#include "Filters/JPXDecodeCodec.h"

namespace lum::Filters {

class JP2Decoder {
public:
    virtual ~JP2Decoder();

    // Decodes the next band of rows into Band(); false when none is left.
    bool NextBand();
    const UInt8* Band() const { return m_band.data(); }
    size_t BandBytes() const { return m_band_bytes; }
    bool IsLastBand() const { return m_next == m_codec.BandCount(); }

    UInt32 Width() const { return m_codec.Width(); }
    UInt32 Height() const { return m_codec.Height(); }
    // The row layout, known after the first band.
    int Components() const { return m_out_components; }
    int Bits() const { return m_out_bits; }
    size_t RowSize() const { return m_row_size; }
    UInt32 RowsPerWindow() const { return m_codec.BandRows(); }

protected:
    JP2Decoder(std::vector<UInt8> data, bool keep_palette, size_t budget);

    // Sets m_out_components, m_out_bits and m_row_size from the first decoded samples.
    virtual void Layout(const opj_image_t* img) = 0;
    // Writes the pixels [x0, x1) x [y0, y1) of the reference grid into the band, whose first
    // row is `band_y0`.
    virtual void Convert(const opj_image_t* img, UInt32 x0, UInt32 x1, UInt32 y0, UInt32 y1,
                         UInt32 band_y0) = 0;

    JP2Codec m_codec;
    std::vector<UInt8> m_band;
    size_t m_band_bytes = 0;
    int m_out_components = 0;
    int m_out_bits = 8;
    size_t m_row_size = 0;
    int m_next = 0;
};

class JP2StripeImpl : public JP2Decoder {
public:
    // `components`: of the image's colour space; a codestream with more (alpha) keeps the
    // first ones, and a JP2 palette is not applied (the image's colour space has its own).
    // With `own_colors` the JP2 header decides instead: its palette applies, its alpha channel
    // is left out. `bits`: per delivered sample; 8 scales every precision to 8 bits, other
    // values keep sample values (palette indexes) as they are.
    // `budget`: bytes of decoded samples one band may take (see JP2Codec).
    JP2StripeImpl(std::vector<UInt8> data, int components, int bits, bool own_colors,
                  size_t budget = Limits::kMaxImageDecoderMemory);

private:
    void Layout(const opj_image_t* img) override;
    void Convert(const opj_image_t* img, UInt32 x0, UInt32 x1, UInt32 y0, UInt32 y1,
                 UInt32 band_y0) override;
    int m_components;
    bool m_own_colors;
};

class JP2CompImpl : public JP2Decoder {
public:
    // `components`: of the image's colour space (4 reads a codestream of unknown colours as
    // CMYK), or -1.
    JP2CompImpl(std::vector<UInt8> data, int components,
                size_t budget = Limits::kMaxImageDecoderMemory);

private:
    void Layout(const opj_image_t* img) override;
    void Convert(const opj_image_t* img, UInt32 x0, UInt32 x1, UInt32 y0, UInt32 y1,
                 UInt32 band_y0) override;
    int m_components;
};

}  // namespace lum::Filters
