#pragma once
// Decodes runs: a length byte n below 128 copies n+1 bytes, above 128 repeats the next byte
// 257-n times, 128 or the end of the input ends the data. A run cut by the end of the input is
// completed with bytes of 255.
//
// Stream parameters: /RunLengthDecode and /RL, none read.
#include "Filters/ReaderBufFilter.h"

namespace lum::Filters {

class RunLengthDecode : public ReaderBufFilter {
public:
    static constexpr size_t kBufferSize = 256;

    explicit RunLengthDecode(std::unique_ptr<Filter> input);
    ~RunLengthDecode() override;

    const char* GetName() const override { return "RunLengthDecode"; }
    void Reset() override;

protected:
    size_t Process() override;

private:
    UInt8 m_byte = 0;      // the repeated byte
    size_t m_left = 0;     // bytes left in the run
    bool m_repeat = false;
    bool m_end = false;
};

}  // namespace lum::Filters
