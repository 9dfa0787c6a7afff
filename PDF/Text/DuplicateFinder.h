#pragma once
// Text drawn twice for effect (fake bold, drop shadows): the test whether a block repeats runs
// of another. The first copy survives and takes over the character offsets of the later one.
#include <vector>

#include "PDF/Text/TextBlocks.h"

namespace lum::PDF {

class DuplicateFinder {
public:
    // True when at least one run of `b` repeats a run of `a`; those runs of b are then marked
    // (InSet) until the next test.
    bool IsDuplicate(Block& a, Block& b);
    bool InSet(const TRun& r) const { return r.m_twin_mark == m_mark; }

private:
    // Runs of `block` near the common box: a run stands for itself.
    void Collect(Block& block, std::vector<TRun*>& out) const;

    std::vector<TRun*> m_first;
    std::vector<TRun*> m_second;
    Rect m_common;
    UInt32 m_mark = 0;
};

// Copies may lie this far apart, in font heights of the first: twice as far vertically.
constexpr double kTwinHorizontalTolerance = 0.1;
constexpr double kTwinVerticalTolerance = 0.2;

// Whether `s` repeats `r`: the same fragments and letters, at nearly the same place.
bool SameRun(const TRun& r, const TRun& s);

}  // namespace lum::PDF
