#pragma once
// A buffered C stream as a filter: the reader of plain files and the writer of output files.
#include <cstdio>
#include <memory>
#include <string>

#include "Filters/Filter.h"

namespace lum::Filters {

class StdFile : public BufFilter {
public:
    enum OpenMode { e_read_mode = 0, e_write_mode = 1, e_append_mode = 2, e_read_write_mode = 3 };
    static constexpr size_t kDefaultBufferSize = 65536;

    // `path` is UTF-8 and made absolute first ("Invalid filename" when that fails). Raises
    // "Unable to open the file" when the file can't be opened in the mode.
    StdFile(const std::string& path, OpenMode mode, size_t buf_size = kDefaultBufferSize);
    // Does not write out the buffer: flush a writer first, or its last bytes are lost.
    ~StdFile() override;

    const char* GetName() const override { return "StdFile"; }
    void Consume(size_t n) override;
    void SetStreamLength(size_t bytes) override;
    void Flush() override;
    bool CanSeek() override { return true; }
    void Seek(Int64 offset, ReferencePos origin) override;
    Int64 Tell() override;
    // Requires a readable file; the new filter has its own buffer and position on the same
    // stream.
    std::unique_ptr<Filter> CreateInputIterator() override;
    UString GetFilePath() const override;
    void Reset() override;

    OpenMode GetMode() const { return m_mode; }

protected:
    size_t Process() override;

private:
    struct Iterator {};
    StdFile(Iterator, const StdFile& from);
    void WriteOut();
    void SeekStream(Int64 pos, const char* what);

    // The stream is closed when the last filter on it dies.
    std::shared_ptr<std::FILE> mp_stream;
    std::string m_path;
    OpenMode m_mode;
    UInt64 m_pos = 0;         // read position (of m_cur)
    UInt64 m_write_pos = 0;   // where the buffer's first byte goes
    Int64 m_limit = -1;       // bytes still to read, -1 for none
};

}  // namespace lum::Filters
