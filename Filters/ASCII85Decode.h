#pragma once
// Decodes base-85 groups. "~" or the end of the input ends the data; a final partial group of k
// bytes gives k-1 bytes; bytes outside "!".."u" enter the sum as they are.
//
// Stream parameters: /ASCII85Decode and /A85, none read.
#include "Filters/ReaderBufFilter.h"

namespace lum::Filters {

class ASCII85Decode : public ReaderBufFilter {
public:
    static constexpr size_t kBufferSize = 256;

    explicit ASCII85Decode(std::unique_ptr<Filter> input);
    ~ASCII85Decode() override;

    const char* GetName() const override { return "ASCII85Decode"; }
    void Reset() override;

protected:
    size_t Process() override;

private:
    // Decodes the next group into m_out; false at the end of the data.
    bool NextGroup();
    int NextNonSpace();

    UInt8 m_out[4] = {};
    int m_out_count = 0;
    int m_out_index = 0;
    bool m_end = false;
};

}  // namespace lum::Filters
