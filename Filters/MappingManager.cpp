#include "Filters/MappingManager.h"

#include <algorithm>
#include <boost/filesystem.hpp>
#include <boost/interprocess/file_mapping.hpp>
#include <boost/interprocess/mapped_region.hpp>
#include <cstring>

#include "Common/Exception.h"

namespace lum::Filters {

namespace fs = boost::filesystem;
namespace ip = boost::interprocess;

MappingManager::MappingManager(UInt64 chunk_size, UInt64 max_mapped)
    : m_chunk_size(std::max<UInt64>(chunk_size, 1)), m_max_mapped(max_mapped) {}

MappingManager::~MappingManager() { Close(); }

void MappingManager::Init(const std::string& path) {
    std::lock_guard<std::mutex> lock(m_lock);
    fs::path some_path(path);
    boost::system::error_code ec1, ec2;
    bool exists = fs::exists(some_path, ec1);
    bool is_dir = fs::is_directory(some_path, ec2);
    if (!exists || is_dir)
        throw Common::Exception("fs::exists(some_path) && !fs::is_directory(some_path)", __LINE__,
                                __FILE__, LUM_FUNCTION, "File does not exist.", 0);
    try {
        boost::system::error_code ec;
        UInt64 size = fs::file_size(some_path, ec);
        if (ec) throw ip::interprocess_exception(ec.message().c_str());
        m_file_size = size;
        // An empty file has no chunks and nothing to map (a zero-length mapping is refused).
        if (size > 0) mp_mapping = std::make_unique<ip::file_mapping>(path.c_str(), ip::read_only);
    } catch (const std::exception&) {
        mp_mapping.reset();
        LUM_FAIL("Unknown Exception while trying to open file.");
    }
    size_t chunks = static_cast<size_t>((m_file_size + m_chunk_size - 1) / m_chunk_size);
    m_map_chunk_vector.clear();
    m_map_chunk_vector.resize(chunks);
    for (size_t i = 0; i < chunks; ++i) {
        UInt64 start = static_cast<UInt64>(i) * m_chunk_size;
        m_map_chunk_vector[i].size = std::min(m_chunk_size, m_file_size - start);
    }
    m_path = path;
    m_mapped_total = 0;
    m_is_open = true;
    m_stream = std::fopen(path.c_str(), "rb");
}

void MappingManager::Close() {
    std::lock_guard<std::mutex> lock(m_lock);
    for (Chunk& c : m_map_chunk_vector) Unmap(c);
    m_map_chunk_vector.clear();
    mp_mapping.reset();
    if (m_stream) std::fclose(m_stream);
    m_stream = nullptr;
    m_is_open = false;
}

bool MappingManager::IsOpen() {
    std::lock_guard<std::mutex> lock(m_lock);
    return m_is_open;
}

void MappingManager::Unmap(Chunk& c) {
    if (!c.region) return;
    c.region.reset();
    c.address = nullptr;
    m_mapped_total -= c.size;
}

bool MappingManager::GetMapping(size_t chunk_index) {
    LUM_CHECK(m_is_open, "File is closed, cannot access data");
    LUM_CHECK(chunk_index < m_map_chunk_vector.size(), "Cannot access file at this offset!");
    Chunk& chunk = m_map_chunk_vector[chunk_index];
    bool fits;
    if (!chunk.region) {
        // Make room by dropping chunks nobody holds, oldest offsets first.
        for (size_t i = 0; i < m_map_chunk_vector.size() && m_mapped_total + m_chunk_size > m_max_mapped;
             ++i) {
            Chunk& c = m_map_chunk_vector[i];
            if (c.region && c.refs == 0) Unmap(c);
        }
        fits = m_mapped_total + chunk.size <= m_max_mapped;
        try {
            chunk.region = std::make_unique<ip::mapped_region>(
                *mp_mapping, ip::read_only, static_cast<ip::offset_t>(chunk_index * m_chunk_size),
                static_cast<size_t>(chunk.size));
        } catch (const ip::interprocess_exception& e) {
            throw Common::Exception("ip::interprocess_exception", __LINE__, __FILE__, LUM_FUNCTION,
                                    e.what(), 0);
        }
        chunk.address = static_cast<const UInt8*>(chunk.region->get_address());
        m_mapped_total += chunk.size;
    } else {
        fits = m_mapped_total <= m_max_mapped;
    }
    ++chunk.refs;
    return fits;
}

MappingManager::Window MappingManager::Read(UInt64 offset, UInt8* buf, size_t buf_size) {
    std::lock_guard<std::mutex> lock(m_lock);
    Window w;
    LUM_CHECK(m_is_open, "File is closed, cannot access data");
    if (offset >= m_file_size) return w;
    size_t index = static_cast<size_t>(offset / m_chunk_size);
    bool keep = GetMapping(index);
    Chunk& c = m_map_chunk_vector[index];
    UInt64 within = offset - static_cast<UInt64>(index) * m_chunk_size;
    size_t avail = static_cast<size_t>(c.size - within);
    if (keep) {
        w.data = c.address + within;
        w.size = avail;
        w.keep = true;
        w.chunk = index;
    } else {
        w.size = std::min(avail, buf_size);
        std::memcpy(buf, c.address + within, w.size);
        w.data = buf;
        // Over the cap: give the chunk back at once, so the total drops as soon as it can.
        if (--c.refs == 0) Unmap(c);
    }
    return w;
}

void MappingManager::Release(size_t chunk) {
    std::lock_guard<std::mutex> lock(m_lock);
    if (chunk < m_map_chunk_vector.size() && m_map_chunk_vector[chunk].refs > 0)
        --m_map_chunk_vector[chunk].refs;
}

size_t MappingManager::GetChunkCount() {
    std::lock_guard<std::mutex> lock(m_lock);
    return m_map_chunk_vector.size();
}

UInt64 MappingManager::GetMappedBytes() {
    std::lock_guard<std::mutex> lock(m_lock);
    return m_mapped_total;
}

}  // namespace lum::Filters
