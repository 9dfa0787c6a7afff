#pragma once
// Base of the decoders that pull their input byte by byte: a BufFilter with a FilterReader on
// the attached filter, kept pointing at whatever filter is attached.
#include "Filters/FilterReader.h"

namespace lum::Filters {

class ReaderBufFilter : public BufFilter {
public:
    ReaderBufFilter(std::unique_ptr<Filter> input, size_t buf_size);
    ~ReaderBufFilter() override;

    // Also moves the reader to the new filter.
    void AttachFilter(std::unique_ptr<Filter> filter) override;
    std::unique_ptr<Filter> ReleaseAttachedFilter() override;
    // Hands the bytes the reader took to the attached filter, clears the reader and flushes
    // the attached filter.
    void Flush() override;

protected:
    FilterReader m_reader;
};

}  // namespace lum::Filters
