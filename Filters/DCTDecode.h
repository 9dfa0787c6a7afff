#pragma once
// Decodes baseline and progressive JPEG data through libjpeg, one scan line per window: gray,
// RGB or CMYK samples of 8 bits, as the image's components are.
//
// Bytes ahead of the start-of-image marker in the first window are skipped. A truncated stream
// ends as a short image: the source hands libjpeg a made-up end-of-image marker. What libjpeg
// can't decode at all (no image, missing tables, an unsupported format) raises with libjpeg's
// own message; its warnings don't stop the decoding.
//
// Stream parameters: /DCTDecode and /DCT with /ColorTransform (default -1: transform three
// components, not four). An Adobe marker in the data overrides it.
#include <memory>

#include "Filters/Filter.h"

namespace lum::Filters {

class DCTDecode : public BufFilter {
public:
    explicit DCTDecode(std::unique_ptr<Filter> input, Int64 color_transform = -1);
    ~DCTDecode() override;

    const char* GetName() const override { return "DCTDecode"; }
    void Reset() override;

    // The decoded image, known after the first window; 0 before.
    size_t GetWidth() const;
    size_t GetHeight() const;
    int GetComponents() const;

protected:
    size_t Process() override;

private:
    struct Codec;
    friend struct Codec;

    void Initialize();
    // Gives libjpeg's source back the bytes it has not read.
    void ReturnUnread();

    std::unique_ptr<Codec> mp_codec;
    Int64 m_color_transform;
    bool m_started = false;
    bool m_end = false;
};

}  // namespace lum::Filters
