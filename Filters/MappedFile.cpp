#include "Filters/MappedFile.h"

#include <algorithm>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "Filters/MappingManager.h"

namespace lum::Filters {

MappedFile::MappedFile(const std::string& path)
    : MappedFile(std::make_shared<MappingManager>(), path) {}

MappedFile::MappedFile(std::shared_ptr<MappingManager> manager, const std::string& path)
    : BufFilter(nullptr, kWindowSize, true), mp_manager(std::move(manager)), m_first(true) {
    if (!mp_manager->IsOpen()) mp_manager->Init(path);
    m_entire_file_size = mp_manager->GetFileSize();
}

MappedFile::MappedFile(Iterator, std::shared_ptr<MappingManager> manager)
    : BufFilter(nullptr, kWindowSize, true),
      mp_manager(std::move(manager)),
      m_first(false),
      m_entire_file_size(mp_manager->GetFileSize()) {}

MappedFile::~MappedFile() {
    try {
        ReleaseHeld();
        if (m_first) mp_manager->Close();
    } catch (...) {
    }
}

void MappedFile::ReleaseHeld() {
    if (!m_holding) return;
    m_holding = false;
    mp_manager->Release(m_held_chunk);
}

size_t MappedFile::Process() {
    if (m_limit == 0) return 0;
    ReleaseHeld();
    m_buf_begin = m_storage.get();
    m_buf_end = m_buf_begin + kWindowSize;
    MappingManager::Window w = mp_manager->Read(m_pos, m_storage.get(), kWindowSize);
    size_t n = std::min(w.size, kWindowSize);
    if (m_limit > 0) n = std::min(n, static_cast<size_t>(m_limit));
    if (w.keep) {
        m_holding = true;
        m_held_chunk = w.chunk;
        // The window lies in the mapped chunk, which stays mapped while we hold it.
        m_buf_begin = const_cast<UInt8*>(w.data);
        m_buf_end = m_buf_begin + n;
    }
    if (m_limit > 0) m_limit -= static_cast<Int64>(n);
    return n;
}

void MappedFile::Consume(size_t n) {
    BufFilter::Consume(n);
    m_pos += n;
}

void MappedFile::SetStreamLength(size_t bytes) { m_limit = LimitWindow(bytes); }

void MappedFile::Seek(Int64 offset, ReferencePos origin) {
    Int64 base = origin == e_begin ? 0
                 : origin == e_cur ? static_cast<Int64>(m_pos)
                                   : static_cast<Int64>(m_entire_file_size);
    const Int64 target = SeekTarget(base, offset);
    LUM_CHECK_AS(target >= 0 && UInt64(target) <= m_entire_file_size,
                 "tmp_offset >= 0 && tmp_offset <= m_entire_file_size", "File seek failed");
    m_pos = static_cast<UInt64>(target);
    m_cur = m_buf_end;
    m_avail = 0;
}

Int64 MappedFile::Tell() { return static_cast<Int64>(m_pos); }

std::unique_ptr<Filter> MappedFile::CreateInputIterator() {
    LUM_CHECK(CanSeek() && IsInputFilter(), "CreateInputIterator() needs a seekable input filter");
    return std::unique_ptr<Filter>(new MappedFile(Iterator{}, mp_manager));
}

UString MappedFile::GetFilePath() const { return UString(mp_manager->GetPath()); }

void MappedFile::Reset() {
    m_count = 0;
    m_cur = m_buf_end;
    m_avail = 0;
}

UInt64 MappedFile::GetFileSize() const { return m_entire_file_size; }

}  // namespace lum::Filters
