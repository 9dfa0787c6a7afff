#pragma once
// Undoes PNG row filters. Each row starts with its own tag byte (0 None, 1 Sub, 2 Up,
// 3 Average, 4 Paeth); any other tag passes the row unchanged. A short last row is delivered
// as it is and ends the stream.
#include <vector>

#include "Filters/ReaderBufFilter.h"

namespace lum::Filters {

class PNGPredictorDecode : public ReaderBufFilter {
public:
    static constexpr size_t kBufferSize = 256;

    // Row size is (columns x colors x bits_per_component + 7) / 8 bytes. Raises when that is
    // above Limits::kMaxPredictorRowBytes or colors/bits are out of range (see Predictor.h).
    PNGPredictorDecode(std::unique_ptr<Filter> input, UInt32 columns, UInt32 colors,
                       UInt32 bits_per_component);
    ~PNGPredictorDecode() override;

    const char* GetName() const override { return "PNGPredictorDecode"; }
    void Reset() override;

protected:
    size_t Process() override;

private:
    void DecodeRow(int tag, size_t n);

    size_t m_pixel_size;
    size_t m_row_size;
    std::vector<UInt8> m_rows;  // two rows: current and previous, swapped per row
    UInt8* mp_cur_row;
    UInt8* mp_prev_row;
    const UInt8* m_range_begin = nullptr;  // decoded bytes not yet delivered
    const UInt8* m_range_end = nullptr;
    bool m_end = false;
};

}  // namespace lum::Filters
