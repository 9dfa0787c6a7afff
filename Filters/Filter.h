#pragma once
// The pull pipeline that every byte of the program moves through. A stage exposes a window on
// its buffer (Begin/Size); whoever reads it marks bytes used (Consume) and the stage refills
// (Process) only when the window is empty, so a byte costs no call per stage.
//
// Ownership: a filter owns the next filter toward the source (its attached filter). Chains are
// handed on by move as std::unique_ptr<Filter>; destroying the reader's end destroys the chain.
#include <memory>

#include "Common/Types.h"

namespace lum {
class UString;
}

namespace lum::Filters {

class Filter {
public:
    // Origins of Seek.
    enum ReferencePos { e_begin = 0, e_cur = 1, e_end = 2 };

    Filter() = default;
    explicit Filter(std::unique_ptr<Filter> attached);
    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;

    // The virtual operations keep this order; subclasses override, never reorder.
    virtual ~Filter();

    // Replaces the attached filter, destroying the old one.
    virtual void AttachFilter(std::unique_ptr<Filter> filter);
    // Hands the attached filter out; this filter is left without one.
    virtual std::unique_ptr<Filter> ReleaseAttachedFilter();
    virtual Filter* GetAttachedFilter();
    // The last filter of the chain (the source), or this one when nothing is attached.
    virtual Filter* GetSourceFilter();

    virtual const char* GetName() const = 0;
    // The name under which the filter stands in a stream's /Filter entry.
    virtual const char* GetDecodeName() const;

    // Pointer to the first byte of the window; refills when the window is empty.
    virtual UInt8* Begin() = 0;
    // Bytes in the window, refilling when it is empty. For input filters 0 means the end;
    // for output filters it is the free space.
    virtual size_t Size() = 0;
    // Marks n bytes of the window as used (read, or written for an output filter).
    virtual void Consume(size_t n) = 0;
    // Bytes consumed since the last reset.
    virtual size_t Count() = 0;
    // Sets that count and answers the old one.
    virtual size_t SetCount(size_t new_count) = 0;
    // Limits the bytes this filter delivers from its current position on.
    virtual void SetStreamLength(size_t bytes);
    // Writes out what an output filter holds; input filters ignore it.
    virtual void Flush();
    virtual bool IsInputFilter() = 0;
    virtual bool CanSeek();
    virtual void Seek(Int64 offset, ReferencePos origin);
    virtual Int64 Tell();
    // A new filter on the same data with its own position.
    virtual std::unique_ptr<Filter> CreateInputIterator();
    // The file behind the filter; empty for filters that are not files.
    virtual UString GetFilePath() const;

protected:
    // The stage's work. An input filter fills its buffer from the attached filter and answers
    // the bytes made available (0 at the end of the data); an output filter pushes its buffer
    // toward the target and answers the free space. Called by the window logic only.
    virtual size_t Process() = 0;

public:
    // Starts over: count 0 and an empty window (input) or the whole buffer (output).
    virtual void Reset() = 0;

protected:
    std::unique_ptr<Filter> m_attached;
};

// The window logic, written once. Every concrete filter derives from this.
//
// The window is [m_cur, m_cur + m_avail). After Process the window starts at m_buf_begin; a
// Process may point m_buf_begin/m_buf_end at memory it does not own (a mapped file region)
// for that one window. The buffer the filter owns, if any, stays in m_storage.
class BufFilter : public Filter {
public:
    // Without `ext_buf` the filter allocates a buffer of `buf_size` bytes and owns it; with one,
    // the caller keeps ownership and the buffer must outlive the filter.
    BufFilter(std::unique_ptr<Filter> attached, size_t buf_size, bool is_input,
              UInt8* ext_buf = nullptr);
    ~BufFilter() override;

    UInt8* Begin() override;
    size_t Size() override;
    void Consume(size_t n) override;
    size_t Count() override;
    size_t SetCount(size_t new_count) override;
    bool IsInputFilter() override;
    void Reset() override;

protected:
    // Process, then the window starts at m_buf_begin.
    void Refill();
    // Replaces the owned buffer by a new one of `size` bytes (content not kept) and empties
    // the window.
    void AllocateBuffer(size_t size);
    // An empty window for an input filter, the whole buffer for an output filter.
    void StartWindow();
    // For SetStreamLength: cuts the window to `bytes` and answers how many bytes may follow it.
    Int64 LimitWindow(size_t bytes);
    // base + offset for Seek, saturated so that hostile offsets can't overflow.
    static Int64 SeekTarget(Int64 base, Int64 offset);

    bool m_is_input;
    bool m_owns_buffer;
    UInt8* m_buf_begin;
    UInt8* m_buf_end;
    size_t m_buf_size;
    UInt8* m_cur;
    size_t m_avail;
    size_t m_count;
    std::unique_ptr<UInt8[]> m_storage;
};

}  // namespace lum::Filters
