#pragma once
// Lets many readers, each with its own ThreadSafeFilter, share one seekable input filter: only
// the refill of a reader's buffer touches the shared base, under a shared mutex.
#include <memory>
#include <mutex>
#include <string>

#include "Filters/Filter.h"

namespace lum::Filters {

class ThreadSafeFilter : public BufFilter {
public:
    static constexpr size_t kBufferSize = 1024;

    // The base must be a seekable input filter.
    explicit ThreadSafeFilter(std::unique_ptr<Filter> base);
    ~ThreadSafeFilter() override;

    const char* GetName() const override;
    void Consume(size_t n) override;
    void SetStreamLength(size_t bytes) override;
    bool CanSeek() override { return true; }
    void Seek(Int64 offset, ReferencePos origin) override;
    Int64 Tell() override;
    // A new filter on the same base and mutex, at position 0 and with no limit.
    std::unique_ptr<Filter> CreateInputIterator() override;
    UString GetFilePath() const override;
    void Reset() override;

    // The shared filter underneath.
    Filter* GetBaseFilter() const;
    UInt64 GetBaseSize() const;

protected:
    size_t Process() override;

private:
    struct Shared;
    explicit ThreadSafeFilter(std::shared_ptr<Shared> shared);

    std::shared_ptr<Shared> mp_shared;
    UInt64 m_pos = 0;       // file position behind the current window
    Int64 m_limit = -1;     // bytes still to deliver, -1 for none
    size_t m_fill = 0;      // bytes in the buffer
    size_t m_read = 0;      // bytes of the buffer handed to windows
};

}  // namespace lum::Filters
