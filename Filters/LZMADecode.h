#pragma once
// Decodes raw LZMA1 data behind a five-byte header (the properties byte and the dictionary
// size, little-endian): the private filter `_lumLZMA` of the resource file. The data has no
// length field; it ends at LZMA's end marker or, without one, where the input ends.
//
// Unlike the text-stream decoders it raises on bad data: "Not enough data to get lzma
// properties" for a stream shorter than the header, "error in lzma decoding process" for
// anything liblzma refuses. Output produced before the failure is delivered first.
#include "Filters/Filter.h"

namespace lum::Filters {

class LZMADecode : public BufFilter {
public:
    static constexpr size_t kBufferSize = 16384;
    static constexpr size_t kHeaderSize = 5;

    explicit LZMADecode(std::unique_ptr<Filter> input);
    ~LZMADecode() override;

    const char* GetName() const override { return "LZMADecode"; }
    const char* GetDecodeName() const override { return "_lumLZMA"; }
    void Reset() override;

protected:
    size_t Process() override;

private:
    struct State;
    // Reads the header from the input and starts liblzma on it.
    void Start();
    void End();

    std::unique_ptr<State> mp_state;
    bool m_started = false;
    bool m_end = false;
    bool m_failed = false;  // raise at the next Process, after the output before the failure
};

}  // namespace lum::Filters
