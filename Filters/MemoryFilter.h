#pragma once
// A filter on a block of memory. As an output filter it grows as it is written; as an input
// filter it is a window on its whole buffer.
#include "Filters/Filter.h"

namespace lum::Filters {

class MemoryFilter : public BufFilter {
public:
    // A size below 64 becomes 64. An input filter starts with a zero-filled buffer of that size
    // (fill it through GetBuffer); an output filter starts empty and grows.
    MemoryFilter(size_t buf_size, bool is_input);
    ~MemoryFilter() override;

    const char* GetName() const override { return "MemoryFilter"; }
    UInt8* Begin() override;
    size_t Size() override;
    void Consume(size_t n) override;
    size_t Count() override;
    void SetStreamLength(size_t bytes) override;
    bool CanSeek() override { return true; }
    void Seek(Int64 offset, ReferencePos origin) override;
    Int64 Tell() override;
    // A filter on the same buffer, with its own position; it must not outlive this filter, and
    // an output filter must not grow while it is read.
    std::unique_ptr<Filter> CreateInputIterator() override;
    void Reset() override;

    // The whole buffer and its size.
    UInt8* GetBuffer() { return m_buf_begin; }
    size_t GetBufferSize() const { return m_buf_size; }
    // Turns an output filter into an input filter over the bytes written so far (Count bytes),
    // positioned at the start.
    void SetAsInputFilter();

protected:
    size_t Process() override;

private:
    void Grow(size_t new_size);
    void ShowWholeBuffer();

    size_t m_high = 0;  // highest position written (output)
};

}  // namespace lum::Filters
