#pragma once
// Decodes JPEG 2000 data (JP2 files and raw codestreams).
#include "Common/Types.h"

namespace lum::Filters {

// The shape in which an image wants its samples; see JPXParamsFromImage (SDF).
struct JPXParams {
    int components = -1;  // of the image's colour space; -1 when unknown
    int bits = 8;         // per sample of the stripe shape
    bool stripe = false;  // keep the stream's samples rather than compose RGB
};

}  // namespace lum::Filters
