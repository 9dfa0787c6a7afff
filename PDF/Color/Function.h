#pragma once
// PDF functions, as tint transforms need them: sampled (type 0), exponential (2), stitching
// (3) and PostScript calculator (4). A function is read once and evaluated many times; every
// evaluation is bounded, whatever the dictionary says.
#include <memory>
#include <vector>

#include "Common/Types.h"

namespace lum::SDF { class Obj; }

namespace lum::PDF::Color {

class Function {
public:
    virtual ~Function() = default;

    // Reads the function of `obj`; raises for a dictionary or stream that isn't a function of
    // the four types, or that breaks a bound. `depth` counts the functions it stands in.
    static std::unique_ptr<Function> Create(SDF::Obj* obj, int depth = 0);

    int InputCount() const { return int(m_domain.size() / 2); }
    int OutputCount() const { return m_range.empty() ? m_outputs : int(m_range.size() / 2); }

    // Inputs are clipped to the domain, outputs to the range when there is one. `out` takes
    // OutputCount() values; missing inputs count as 0.
    void Eval(const double* in, int in_count, double* out) const;

protected:
    virtual void Compute(const double* in, double* out) const = 0;

    std::vector<double> m_domain;  // 2 per input
    std::vector<double> m_range;   // 2 per output; may be empty for types 2 and 3
    int m_outputs = 0;             // the output count when there is no Range
};

// The numbers of an array (a reference is followed); an entry that is no number reads as 0.
// Empty for anything that isn't an array. At most `max` entries are read.
std::vector<double> ReadNumbers(SDF::Obj* arr, size_t max = 1024);

}  // namespace lum::PDF::Color
