#pragma once
// Takes the runs of a page in content order and builds blocks as they come: a run that
// continues the last one joins its line, lines with steady spacing gather in a pending block,
// and a closed block goes to the layout of its text direction. At the page's end each layout
// is reflowed and cut into flows.
#include <array>
#include <deque>
#include <memory>
#include <vector>

#include "Common/Types.h"
#include "PDF/Text/DuplicateFinder.h"
#include "PDF/Text/TextLayout.h"

namespace lum::PDF {

// Slots of text directions: acos of the rotation's cosine in hundredths of a turn reaches 49;
// the table is wider, as the direction is a signed byte elsewhere.
inline constexpr int kDirectionSlots = 90;

class LayoutBuilder {
public:
    explicit LayoutBuilder(BlockPool& pool) : m_pool(pool) {}

    // Forgets the last page.
    void Reset(UInt32 flags, bool mirror_mode);

    // Takes `run` (which may be null) of text direction `direction`; `adjustment` is the TJ
    // number in front of its element.
    void AddRun(TRun* run, int direction, double adjustment);

    // Closes the gathered block into the layout of the last direction.
    void FlushPending();

    // The end of the page: every layout reflowed and cut into flows, in the order in which
    // the directions first appeared. Appends to `flows`.
    void Finish(std::vector<Flow>& flows);

    bool IsNextLine(const TRun& run);

private:
    TextLayout& Slot(int direction);

    BlockPool& m_pool;
    std::vector<TextLayout*> m_layouts;  // in order of first use
    std::array<TextLayout*, kDirectionSlots> m_slots{};
    std::array<TextLayout, kDirectionSlots> m_store;
    int m_last_direction = 0;
    TRun* m_last_run = nullptr;
    std::deque<Block*> m_pending;
    double m_mean_height = 0;
    double m_mean_step = 0;
    bool m_hold_last = false;
    UInt32 m_flags = 0;
    DuplicateFinder m_finder;
    bool m_mirror_mode = false;
};

}  // namespace lum::PDF
