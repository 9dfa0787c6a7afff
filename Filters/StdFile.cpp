#include "Filters/StdFile.h"

#include <algorithm>
#include <filesystem>

#include "Common/Exception.h"
#include "Common/UString.h"

namespace lum::Filters {

namespace {

constexpr size_t kMaxPathLength = 8192;  // characters of the expanded path

std::string FullPath(const std::string& path) {
    std::error_code ec;
    std::filesystem::path p;
    if (!path.empty()) p = std::filesystem::absolute(std::filesystem::path(path), ec);
    std::string full = p.lexically_normal().string();
    if (path.empty() || ec || full.empty() || full.size() >= kMaxPathLength)
        LUM_FAIL("Invalid filename");
    return full;
}

const char* OpenModeText(StdFile::OpenMode mode) {
    switch (mode) {
        case StdFile::e_read_mode: return "rb";
        case StdFile::e_write_mode: return "w+b";
        case StdFile::e_append_mode: return "a+b";
        case StdFile::e_read_write_mode: return "r+b";
    }
    return "rb";
}

}  // namespace

StdFile::StdFile(const std::string& path, OpenMode mode, size_t buf_size)
    : BufFilter(nullptr, buf_size ? buf_size : kDefaultBufferSize, mode == e_read_mode),
      m_path(FullPath(path)),
      m_mode(mode) {
    std::FILE* stream = std::fopen(m_path.c_str(), OpenModeText(mode));
    if (!stream)
        throw Common::Exception("m_stream != NULL", __LINE__, __FILE__, LUM_FUNCTION,
                                "Unable to open the file", 0);
    mp_stream.reset(stream, [](std::FILE* f) { std::fclose(f); });
    if (mode == e_append_mode) {
        Int64 end = -1;
        if (fseeko(stream, 0, SEEK_END) == 0) end = ftello(stream);
        if (end < 0) LUM_FAIL("Seek operation failed in append mode");
        m_write_pos = static_cast<UInt64>(end);
    }
}

StdFile::StdFile(Iterator, const StdFile& from)
    : BufFilter(nullptr, from.m_buf_size, true),
      mp_stream(from.mp_stream),
      m_path(from.m_path),
      m_mode(e_read_mode) {}

StdFile::~StdFile() = default;

void StdFile::SeekStream(Int64 pos, const char* what) {
    std::FILE* f = mp_stream.get();
    if (ftello(f) == pos) return;
    if (pos < 0 || fseeko(f, pos, SEEK_SET) != 0) LUM_FAIL("%s", what);
}

size_t StdFile::Process() {
    if (!m_is_input) {
        WriteOut();
        return m_buf_size;
    }
    if (m_limit == 0) return 0;
    SeekStream(static_cast<Int64>(m_pos), "Operation file seek failed");
    size_t want = m_buf_size;
    if (m_limit > 0) want = std::min(want, static_cast<size_t>(m_limit));
    size_t got = std::fread(m_buf_begin, 1, want, mp_stream.get());
    if (m_limit > 0) m_limit -= static_cast<Int64>(got);
    return got;
}

void StdFile::WriteOut() {
    size_t n = static_cast<size_t>(m_cur - m_buf_begin);
    if (n == 0) return;
    std::FILE* f = mp_stream.get();
    if (m_mode == e_append_mode) {
        if (fseeko(f, 0, SEEK_END) != 0) LUM_FAIL("Operation file seek failed");
    } else {
        SeekStream(static_cast<Int64>(m_write_pos), "Operation file seek failed");
    }
    size_t written = std::fwrite(m_buf_begin, 1, n, f);
    if (written != n) LUM_FAIL("Error writing to the file");
    m_write_pos += n;
    m_cur = m_buf_begin;
}

void StdFile::Consume(size_t n) {
    BufFilter::Consume(n);
    if (m_is_input) m_pos += n;
}

void StdFile::SetStreamLength(size_t bytes) {
    if (m_is_input) m_limit = LimitWindow(bytes);
}

void StdFile::Flush() {
    if (m_is_input) return;
    WriteOut();
    if (std::fflush(mp_stream.get()) != 0) LUM_FAIL("Error writing to the file");
    m_cur = m_buf_begin;
    m_avail = m_buf_size;
}

void StdFile::Seek(Int64 offset, ReferencePos origin) {
    std::FILE* f = mp_stream.get();
    Int64 base = 0;
    if (origin == e_cur) {
        base = Tell();
    } else if (origin == e_end) {
        if (!m_is_input) WriteOut();
        if (fseeko(f, 0, SEEK_END) != 0) LUM_FAIL("File seek failed");
        base = ftello(f);
    }
    Int64 target = SeekTarget(base, offset);
    if (target < 0) LUM_FAIL("File seek failed");

    if (m_is_input) {
        // Within the current window only the window moves.
        Int64 win_start = static_cast<Int64>(m_pos) - static_cast<Int64>(m_cur - m_buf_begin);
        Int64 win_end = static_cast<Int64>(m_pos + m_avail);
        if (m_cur != m_buf_end && target >= win_start && target <= win_end) {
            m_cur = m_buf_begin + (target - win_start);
            m_avail = static_cast<size_t>(win_end - target);
            m_pos = static_cast<UInt64>(target);
            return;
        }
        if (fseeko(f, target, SEEK_SET) != 0) LUM_FAIL("File seek failed");
        m_pos = static_cast<UInt64>(target);
        m_cur = m_buf_end;
        m_avail = 0;
        return;
    }
    WriteOut();
    if (fseeko(f, target, SEEK_SET) != 0) LUM_FAIL("File seek failed");
    m_write_pos = static_cast<UInt64>(target);
    m_cur = m_buf_begin;
    m_avail = m_buf_size;
}

Int64 StdFile::Tell() {
    if (m_is_input) return static_cast<Int64>(m_pos);
    return static_cast<Int64>(m_write_pos) + (m_cur - m_buf_begin);
}

std::unique_ptr<Filter> StdFile::CreateInputIterator() {
    LUM_CHECK(CanSeek() && IsInputFilter(), "CreateInputIterator() needs a seekable input filter");
    return std::unique_ptr<Filter>(new StdFile(Iterator{}, *this));
}

UString StdFile::GetFilePath() const { return UString(m_path); }

void StdFile::Reset() {
    if (!m_is_input) {
        BufFilter::Reset();
        return;
    }
    // The unread rest of the window is read again from the stream.
    m_count = 0;
    m_cur = m_buf_end;
    m_avail = 0;
}

}  // namespace lum::Filters
