#pragma once
// Undoes TIFF predictor 2: each sample is stored as the difference to the sample of the same
// colour one pixel to the left, at any sample width from 1 to 32 bits.
#include <vector>

#include "Filters/ReaderBufFilter.h"

namespace lum::Filters {

class TIFFPredictorDecode : public ReaderBufFilter {
public:
    // Row size is (columns x colors x bits_per_component + 7) / 8 bytes; the buffer is one row.
    // Raises when the row is above Limits::kMaxPredictorRowBytes or colors/bits are out of
    // range (see Predictor.h).
    TIFFPredictorDecode(std::unique_ptr<Filter> input, UInt32 columns, UInt32 colors,
                        UInt32 bits_per_component);
    ~TIFFPredictorDecode() override;

    const char* GetName() const override { return "TIFFPredictorDecode"; }
    void Reset() override;

protected:
    size_t Process() override;

private:
    void DecodeRow();

    UInt32 m_bits;
    UInt32 m_colors;
    UInt32 m_columns;
    size_t m_row_size;
    std::vector<UInt32> m_running;  // one running value per colour
    std::vector<UInt32> m_samples;  // the samples of the current pixel
    bool m_end = false;
};

}  // namespace lum::Filters
