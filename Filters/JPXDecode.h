#pragma once
// Decodes JPEG 2000 data (a JP2 file or a raw codestream) through OpenJPEG, one band of rows
// per window: a row of tiles, or the whole image when it is one tile (a tile too large for
// Limits::kMaxImageDecoderMemory goes in strips). Two shapes of samples:
//   - the stripe shape, for images with a stripe flag or one component: the stream's own
//     samples (palette indexes stay indexes), at the given bits per sample;
//   - the composing shape otherwise: RGB, 3 bytes a pixel.
// A stream that can't be decoded, whatever the reason, is an empty stream: nothing raises.
//
// Stream parameters: /JPXDecode; the shape comes from the image (see JPXParamsFromImage).
#include <memory>

#include "Filters/Filter.h"

namespace lum::Filters {

// The shape in which an image wants its samples.
struct JPXParams {
    int components = -1;  // of the image's colour space; -1 when unknown (inline data)
    int bits = 8;         // per sample of the stripe shape
    bool stripe = false;  // keep the stream's samples rather than compose RGB
    // The image names no colour space: the codestream's own colours stand, with as many
    // components as they have (an alpha channel beside them is left out).
    bool own_colors = false;
};

class JP2Decoder;

class JPXDecode : public BufFilter {
public:
    JPXDecode(std::unique_ptr<Filter> input, const JPXParams& params);
    ~JPXDecode() override;

    const char* GetName() const override { return "JPXDecode"; }
    void Reset() override;

    // The decoded layout, known after the first window (0 before, and for a broken stream).
    size_t GetWidth() const;
    size_t GetHeight() const;
    int GetComponents() const;
    int GetBits() const;

    // Reads `coded` to its end and the image header in it. False on any failure.
    static bool ReadHeader(Filter& coded, UInt32& width, UInt32& height, int& components,
                           int& bits);

protected:
    size_t Process() override;

private:
    JPXParams m_params;
    std::unique_ptr<JP2Decoder> mp_decoder;
    bool m_end = false;
};

}  // namespace lum::Filters
