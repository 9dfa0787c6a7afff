#pragma once
// Reads a file through memory-mapped chunks (MappingManager). Windows are at most 1024 bytes
// and point straight into the mapping when the chunk can stay mapped. The input of a document.
#include <memory>
#include <string>

#include "Filters/Filter.h"

namespace lum::Filters {

class MappingManager;

class MappedFile : public BufFilter {
public:
    static constexpr size_t kWindowSize = 1024;

    // Opens `path` (UTF-8). Raises "File does not exist." for a missing file or a folder.
    explicit MappedFile(const std::string& path);
    // On a manager of the caller's (already initialised, or initialised here with `path`).
    MappedFile(std::shared_ptr<MappingManager> manager, const std::string& path);
    ~MappedFile() override;

    const char* GetName() const override { return "MappedFile"; }
    void Consume(size_t n) override;
    void SetStreamLength(size_t bytes) override;
    bool CanSeek() override { return true; }
    void Seek(Int64 offset, ReferencePos origin) override;
    Int64 Tell() override;
    // A new MappedFile on the same manager at position 0. Only the first object of a manager
    // closes the file; iterators that outlive it fail when they next read.
    std::unique_ptr<Filter> CreateInputIterator() override;
    UString GetFilePath() const override;
    void Reset() override;

    UInt64 GetFileSize() const;
    MappingManager& GetManager() { return *mp_manager; }

protected:
    size_t Process() override;

private:
    struct Iterator {};
    MappedFile(Iterator, std::shared_ptr<MappingManager> manager);
    void ReleaseHeld();

    std::shared_ptr<MappingManager> mp_manager;
    bool m_first;             // the object that opened the file, and closes it
    UInt64 m_pos = 0;         // position of m_cur in the file
    Int64 m_limit = -1;       // bytes still to deliver, -1 for none
    bool m_holding = false;   // a chunk reference is held for the current window
    size_t m_held_chunk = 0;
    UInt64 m_entire_file_size = 0;
};

}  // namespace lum::Filters
