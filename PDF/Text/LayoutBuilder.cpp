#include "PDF/Text/LayoutBuilder.h"

#include <cmath>

#include "PDF/Text/TextFlags.h"

namespace lum::PDF {

namespace {

// Font heights differing by more than this share of the last block's don't gather.
constexpr double kHeightRatio = 0.6;
// The next line must overlap the block above by this share of its own width.
constexpr double kNextLineOverlap = 0.7;
// Line steps allowed, in font heights.
constexpr double kMinStep = 0.5;
constexpr double kMaxStep = 4.0;
// Against the mean step of the block: a step below the low share starts a new block with the
// last line; one above the high share closes the block.
constexpr double kStepLow = 0.7;
constexpr double kStepHigh = 1.45;

}  // namespace

void LayoutBuilder::Reset(UInt32 flags, bool mirror_mode) {
    m_flags = flags;
    m_mirror_mode = mirror_mode;
    for (TextLayout* l : m_layouts) l->Reset(flags);
    m_layouts.clear();
    m_slots.fill(nullptr);
    m_last_direction = 0;
    m_last_run = nullptr;
    m_pending.clear();
    m_mean_height = 0;
    m_mean_step = 0;
    m_hold_last = false;
}

TextLayout& LayoutBuilder::Slot(int direction) {
    TextLayout*& slot = m_slots[size_t(direction)];
    if (!slot) {
        slot = &m_store[size_t(direction)];
        slot->Reset(m_flags);
        m_layouts.push_back(slot);
    }
    return *slot;
}

void LayoutBuilder::AddRun(TRun* run, int direction, double adjustment) {
    if (!run) return;
    if (direction < 0 || direction >= kDirectionSlots) direction = 0;
    Slot(direction);
    run->mp_prev = m_last_run;

    auto close_block = [&] {
        Block* held = nullptr;
        if (m_hold_last && !m_pending.empty()) {
            held = m_pending.back();
            m_pending.pop_back();
        }
        FlushPending();
        if (held) m_pending.push_back(held);
        m_hold_last = false;
        m_pending.push_back(run);
        m_mean_height = run->m_font_height;
        m_mean_step = 0;
    };

    if (!m_last_run) {
        m_pending.push_back(run);
        m_hold_last = false;
        m_mean_height = run->m_font_height;
        m_mean_step = 0;
    } else if (m_pending.empty() || m_last_direction != direction) {
        close_block();
    } else {
        Block* back = m_pending.back();
        if (!(m_flags & e_no_dup_remove) && m_finder.IsDuplicate(*back, *run)) {
            // As if the run had never come.
            return;
        }
        if (back->GetKind() == Block::e_run) {
            TRun* prev = static_cast<TRun*>(back);
            if (IsSameLine(*prev, *run, adjustment, m_mirror_mode)) {
                TLine* line = m_pool.NewLine();
                line->AddRun(prev);
                line->AddRun(run);
                m_pending.back() = line;
                m_mean_height = line->m_font_height;
            } else if (IsNextLine(*run)) {
                m_pending.push_back(run);
            } else {
                close_block();
            }
        } else if (back->GetKind() == Block::e_line) {
            TLine* line = static_cast<TLine*>(back);
            const TRun& t =
                run->m_box.x1 <= line->m_box.x1 ? *line->m_runs.front() : *line->m_runs.back();
            if (IsSameLine(t, *run, adjustment, m_mirror_mode)) {
                line->AddRun(run);
                m_mean_height = line->m_font_height;
            } else if (IsNextLine(*run)) {
                m_pending.push_back(run);
            } else {
                close_block();
            }
        } else {
            close_block();
        }
    }
    m_last_run = run;
    m_last_direction = direction;
}

bool LayoutBuilder::IsNextLine(const TRun& run) {
    const Block& back = *m_pending.back();
    const double h = back.m_font_height;
    if (!(std::fabs(m_mean_height - run.m_font_height) <= kHeightRatio * h)) return false;
    const double d = SepX(back, run);
    if (!(d < 0)) return false;
    if (-d < kNextLineOverlap * run.Width()) return false;
    const double s = back.m_box.y1 - run.m_box.y1;
    if (!(std::fabs(s) >= kMinStep * h && std::fabs(s) <= kMaxStep * h)) return false;
    const double m = m_mean_step;
    if (m != 0) {
        if ((s < 0) != (m < 0)) return false;
        if (std::fabs(s) < kStepLow * std::fabs(m)) {
            // Too close: the last line goes with this run into the next block.
            m_hold_last = true;
            return false;
        }
        if (std::fabs(s) > kStepHigh * std::fabs(m)) return false;
    }
    const double n = double(m_pending.size());
    m_mean_height = (n * m_mean_height + run.m_font_height) / (n + 1);
    m_mean_step = m == 0 ? s : (n * m + s) / (n + 1);
    return true;
}

void LayoutBuilder::FlushPending() {
    if (m_pending.empty()) return;
    if (m_pending.size() > 1) {
        TPara* para = m_pool.NewPara();
        const size_t count = m_pending.size();
        m_pending.push_back(para);
        for (size_t k = 0; k < count; ++k) {
            Block* front = m_pending.front();
            m_pending.pop_front();
            para->AddLine(front->GetKind() == Block::e_line ? static_cast<TLine*>(front)
                                                            : m_pool.WrapRun(static_cast<TRun*>(front)));
        }
    }
    Slot(m_last_direction).Add(m_pending.back());
    m_pending.pop_back();
}

void LayoutBuilder::Finish(std::vector<Flow>& flows) {
    FlushPending();
    for (TextLayout* layout : m_layouts) {
        layout->Reflow(m_pool, m_finder);
        layout->BuildFlows(flows);
    }
}

}  // namespace lum::PDF
