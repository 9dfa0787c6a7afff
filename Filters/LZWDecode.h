#pragma once
// Decodes LZW data, codes read most significant bit first. A corrupt code or an early end ends
// the stream quietly; a full table starts over as after a clear code.
//
// Stream parameters: /LZWDecode and /LZW make `LZWDecode(std::move(chain), early_change)` with
// /EarlyChange (default 1); a /Predictor adds a predictor stage on top (see Predictor.h).
#include "Filters/ReaderBufFilter.h"

namespace lum::Filters {

class LZWDecode : public ReaderBufFilter {
public:
    static constexpr size_t kBufferSize = 4096;

    // `early_change` 1 widens the codes one code early, as most encoders do; 0 does not.
    // Any value other than 0 counts as 1.
    explicit LZWDecode(std::unique_ptr<Filter> input, int early_change = 1);
    ~LZWDecode() override;

    const char* GetName() const override { return "LZWDecode"; }
    void Reset() override;

protected:
    size_t Process() override;

private:
    static constexpr int kTableSize = 4097;
    int ReadCode();
    void ClearTable();
    // Builds the string of the next code into m_str; false for a corrupt code.
    bool DecodeCode(int code);

    struct Entry {
        UInt16 length;
        UInt16 prefix;
        UInt8 last;
    };
    Entry m_table[kTableSize];
    int m_early;
    int m_next_code = 258;
    int m_width = 9;
    int m_prev_code = -1;
    UInt32 m_bit_buf = 0;
    int m_bit_count = 0;
    UInt8 m_str[kTableSize] = {};
    size_t m_str_len = 0;
    size_t m_str_pos = 0;
    bool m_first = true;
    bool m_end = false;
};

}  // namespace lum::Filters
