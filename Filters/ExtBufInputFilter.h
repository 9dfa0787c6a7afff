#pragma once
// An input filter over a buffer that its caller owns and keeps alive for the filter's life.
#include "Filters/Filter.h"

namespace lum::Filters {

class ExtBufInputFilter : public BufFilter {
public:
    ExtBufInputFilter(const UInt8* buf, size_t size);
    ~ExtBufInputFilter() override;

    const char* GetName() const override { return "ExtBufFlt"; }
    void SetStreamLength(size_t bytes) override;
    bool CanSeek() override { return true; }
    void Seek(Int64 offset, ReferencePos origin) override;
    Int64 Tell() override;
    std::unique_ptr<Filter> CreateInputIterator() override;
    void Reset() override;

protected:
    size_t Process() override { return 0; }
};

}  // namespace lum::Filters
