#pragma once
// Inflates zlib (or raw deflate) data. Forgiving: a truncated or corrupt stream delivers what
// zlib could decode and then ends; a bad checksum changes nothing.
//
// Stream parameters: /FlateDecode and /Fl make `FlateDecode(std::move(chain))`; a /Predictor in
// /DecodeParms adds a predictor stage on top (see Predictor.h).
#include "Filters/Filter.h"

typedef struct z_stream_s z_stream;

namespace lum::Filters {

class FlateDecode : public BufFilter {
public:
    // Output window size. zlib decodes the last 258 bytes before a full output buffer on its
    // slow path, so a small buffer costs: at 4096 bytes the chain ran at ~85% of a bare inflate
    // loop, at 32 KiB within a few percent of it (inputs come in 1 KiB mapped-file windows).
    static constexpr size_t kBufferSize = 32768;

    // `raw`: deflate data without the zlib header and checksum.
    explicit FlateDecode(std::unique_ptr<Filter> input, bool raw = false);
    ~FlateDecode() override;

    const char* GetName() const override { return "FlateDecode"; }
    void Reset() override;

protected:
    size_t Process() override;

private:
    // The zlib header is read here and zlib inflates raw data: its checksum of every output
    // byte would be computed only to be ignored. False: the header is bad or the input ended
    // in it, and the data ends.
    bool ReadHeader();
    // Consumes up to `n` input bytes, as zlib does with a checksum or dictionary id it reads.
    void SkipInput(size_t n);

    std::unique_ptr<z_stream> mp_zs;
    bool m_ok = false;   // inflateInit2 succeeded
    bool m_end = false;
    bool m_zlib = true;  // a zlib header comes first
    UInt8 m_head[2] = {};
    int m_head_have = 0;  // bytes of the header read so far
};

}  // namespace lum::Filters
