#pragma once
// Decodes JBIG2 data (the embedded stream of a PDF, with its globals) through jbig2dec. The
// whole page is decoded at the first window and delivered as one window: 1 bit per pixel,
// rows padded to a byte, black as 0, at the size the image dictionary states. A page smaller
// than that is completed in white; a larger one is cut.
//
// Any failure raises "An error occurred while decoding JBIG2 stream": a width or height of 0
// (missing from the dictionary), data that make no page, an image beyond
// Limits::kMaxImageDecoderMemory.
//
// Stream parameters: /JBIG2Decode with /JBIG2Globals (a stream, decoded; anything else is
// ignored); /Width and /Height of the image.
#include "Filters/Filter.h"

namespace lum::Filters {

class JBIG2Decode : public BufFilter {
public:
    // Reads of the globals and of the data go in steps of this many bytes.
    static constexpr size_t kReadStep = 2000;

    // `globals`: the decoded globals stream, or null. `width`, `height`: the image's.
    JBIG2Decode(std::unique_ptr<Filter> input, std::unique_ptr<Filter> globals, Int64 width,
                Int64 height);
    ~JBIG2Decode() override;

    const char* GetName() const override { return "JBIG2Decode"; }
    // The decoded image is given again; the data are not read twice.
    void Reset() override;

protected:
    size_t Process() override;

private:
    std::unique_ptr<Filter> mp_globals;
    Int64 m_width;
    Int64 m_height;
    bool m_decoded = false;    // the data were read and decoded (or failed)
    bool m_delivered = false;  // the image went out as the one window
    bool m_dec_ok = false;
};

// Decodes the joined globals and page data of a JBIG2 stream into `out`: `height` rows of
// `row_size` bytes, 1 bit per pixel, black as 0. False when no page comes out of the data.
bool DecodeJBIG2Page(const UInt8* data, size_t size, UInt32 width, UInt32 height, UInt8* out,
                     size_t row_size);

}  // namespace lum::Filters
