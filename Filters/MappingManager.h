#pragma once
// Maps a file read-only in chunks, so that a file larger than the address space can be read,
// and keeps at most a fixed number of bytes mapped at once. Shared by a MappedFile and all its
// iterators; every operation takes the manager's lock.
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Common/Types.h"

namespace boost::interprocess {
class file_mapping;
class mapped_region;
}  // namespace boost::interprocess

namespace lum::Filters {

class MappingManager {
public:
    static constexpr UInt64 kChunkSize = 26214400;      // 25 MiB per mapped chunk
    static constexpr UInt64 kMaxMappedBytes = 262144000;  // 250 MiB mapped at once

    // The sizes can be made smaller for tests; the behaviour does not change with them.
    explicit MappingManager(UInt64 chunk_size = kChunkSize, UInt64 max_mapped = kMaxMappedBytes);
    ~MappingManager();
    MappingManager(const MappingManager&) = delete;
    MappingManager& operator=(const MappingManager&) = delete;

    // Opens the file (UTF-8 path). Raises "File does not exist." for a missing path or a folder.
    void Init(const std::string& path);
    void Close();
    bool IsOpen();

    // What a read at an offset answers: a pointer to the bytes and how many there are. With
    // `keep` set the bytes lie in the mapped chunk and the caller holds a reference to chunk
    // `chunk` until it calls Release; otherwise they were copied to the caller's buffer and
    // nothing is held.
    struct Window {
        const UInt8* data = nullptr;
        size_t size = 0;
        bool keep = false;
        size_t chunk = 0;
    };
    // Reads at `offset`; `buf` (of `buf_size` bytes) receives the copy when the chunk can't be
    // kept mapped. Offsets at or behind the end answer an empty window.
    Window Read(UInt64 offset, UInt8* buf, size_t buf_size);
    // Gives back the reference of a kept window.
    void Release(size_t chunk);

    UInt64 GetFileSize() const { return m_file_size; }
    const std::string& GetPath() const { return m_path; }
    size_t GetChunkCount();
    UInt64 GetMappedBytes();
    UInt64 GetChunkSize() const { return m_chunk_size; }

private:
    struct Chunk {
        UInt64 size = 0;
        const UInt8* address = nullptr;
        UInt32 refs = 0;
        std::unique_ptr<boost::interprocess::mapped_region> region;
    };
    // Maps chunk `index` if needed and takes a reference; answers whether the mapped total stays
    // within the cap (the caller may then keep the chunk).
    bool GetMapping(size_t index);
    void Unmap(Chunk& c);

    const UInt64 m_chunk_size;
    const UInt64 m_max_mapped;
    std::mutex m_lock;
    bool m_is_open = false;
    std::string m_path;
    std::unique_ptr<boost::interprocess::file_mapping> mp_mapping;
    UInt64 m_file_size = 0;
    std::vector<Chunk> m_map_chunk_vector;
    UInt64 m_mapped_total = 0;
    std::FILE* m_stream = nullptr;
};

}  // namespace lum::Filters
