#pragma once
// Building a decoder chain from a stream's Filter and DecodeParms entries. Inline images use
// the same two functions, without a stream.
#include <memory>

#include "Filters/Filter.h"

namespace lum::SDF {

class Obj;

// Adds the stage that `filter_name` names, configured from `params` (a dictionary, or anything
// else for no parameters), on top of `chain`. `stream` gives image attributes and may be null.
std::unique_ptr<Filters::Filter> StreamCreateDecodeFilter(Obj* filter_name, Obj* params,
                                                          std::unique_ptr<Filters::Filter> chain,
                                                          Obj* stream);

// Adds a predictor stage on top of `chain` when `params` asks for one.
std::unique_ptr<Filters::Filter> StreamCreatePredictorFilter(Obj* params,
                                                             std::unique_ptr<Filters::Filter> chain);

}  // namespace lum::SDF
