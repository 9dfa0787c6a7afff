#pragma once
// PDF functions, as tint transforms need them: sampled (type 0), exponential (2), stitching
// (3) and PostScript calculator (4). A function is read once, shared through the document's
// table like the colour spaces that use it (so a stitching tree that names one function many
// times reads it once), and evaluated many times; every evaluation is bounded, whatever the
// dictionary says.
#include <vector>

#include "Common/Types.h"
#include "SDF/SharedResource.h"

namespace lum::SDF {
class Obj;
}

namespace lum::PDF::Color {

class FunctionRef;

class Function : public SDF::SharedResource {
public:
    // Inputs and outputs of any function: a tint transform's ends are colour components.
    static constexpr int kMaxValues = 32;

    // The function of `obj` through the document's table, or made now; raises for a value that
    // isn't a function of the four types or breaks a bound. `depth` counts the functions it
    // stands in; they nest at most Limits::kMaxColorNesting deep.
    static FunctionRef Open(SDF::Obj* obj, int depth = 0);
    // A new function of `obj`, outside any table.
    static Function* Create(SDF::Obj* obj, int depth = 0);

    int InputCount() const { return int(m_domain.size() / 2); }
    int OutputCount() const { return m_range.empty() ? m_outputs : int(m_range.size() / 2); }

    // Inputs are clipped to the domain (a missing or non-finite one counts as 0), outputs to
    // the range when there is one. `out` has room for kMaxValues; OutputCount() are written.
    void Eval(const double* in, int in_count, double* out) const;

protected:
    // `in` holds InputCount() values in the domain; writes OutputCount() values.
    virtual void Compute(const double* in, double* out) const = 0;

    std::vector<double> m_domain;  // 2 per input
    std::vector<double> m_range;   // 2 per output; may be empty for types 2 and 3
    int m_outputs = 0;             // the output count when there is no Range
};

// A counted reference on a function.
class FunctionRef {
public:
    FunctionRef() = default;
    // Takes over one reference that the caller holds.
    explicit FunctionRef(Function* f) noexcept : mp_f(f) {}
    FunctionRef(const FunctionRef& o) noexcept : mp_f(o.mp_f) {
        if (mp_f) mp_f->AddRef();
    }
    FunctionRef(FunctionRef&& o) noexcept : mp_f(o.mp_f) { o.mp_f = nullptr; }
    FunctionRef& operator=(FunctionRef o) noexcept {
        std::swap(mp_f, o.mp_f);
        return *this;
    }
    ~FunctionRef() {
        if (mp_f) mp_f->Release();
    }
    const Function* get() const noexcept { return mp_f; }
    const Function* operator->() const noexcept { return mp_f; }
    explicit operator bool() const noexcept { return mp_f != nullptr; }

private:
    Function* mp_f = nullptr;
};

// The numbers of an array (a reference is followed); an entry that is no number or isn't
// finite reads as 0. Empty for anything that isn't an array. At most `max` entries are read.
std::vector<double> ReadNumbers(SDF::Obj* arr, size_t max = 1024);

}  // namespace lum::PDF::Color
