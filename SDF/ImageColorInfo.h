#pragma once
// The colour space of an image as the decoders of image data see it: its family and its
// number of components, read straight from the image dictionary. Named colour spaces that
// live in a page's resources (inline images) are not resolved here.
#include "Filters/JPXDecode.h"

namespace lum::SDF {

class Obj;

enum class ImageColorFamily {
    e_none,  // no colour space (an image mask, or a JPEG 2000 image that brings its own)
    e_device_gray,
    e_device_rgb,
    e_device_cmyk,
    e_cal_gray,
    e_cal_rgb,
    e_lab,
    e_icc,
    e_indexed,
    e_separation,
    e_device_n,
    e_pattern,
    e_unknown,
};

struct ImageColorInfo {
    ImageColorFamily family = ImageColorFamily::e_none;
    int components = 1;
};

// From /ColorSpace (or /CS) of an image dictionary or stream: a family name, or an array
// whose first entry names the family. ICCBased counts the N of its stream, DeviceN its names.
ImageColorInfo ReadImageColorInfo(Obj* image);

// The shape of a JPEG 2000 image's samples, as the JPXDecode stage takes it from the image:
// component count and bits of its colour space, and the stripe flag for images with a Decode
// array or an ICC colour space. Without an image (inline data): -1 components, 8 bits.
Filters::JPXParams JPXParamsFromImage(Obj* image);

}  // namespace lum::SDF
