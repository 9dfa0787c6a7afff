#pragma once
// Decodes pairs of hexadecimal digits. White space is passed over; ">" or any other byte ends
// the data, and a lone last digit counts as its high half.
//
// Stream parameters: /ASCIIHexDecode and /AHx, none read.
#include "Filters/ReaderBufFilter.h"

namespace lum::Filters {

class ASCIIHexDecode : public ReaderBufFilter {
public:
    static constexpr size_t kBufferSize = 256;

    explicit ASCIIHexDecode(std::unique_ptr<Filter> input);
    ~ASCIIHexDecode() override;

    const char* GetName() const override { return "ASCIIHexDecode"; }
    void Reset() override;

protected:
    size_t Process() override;

private:
    bool m_end = false;
};

}  // namespace lum::Filters
