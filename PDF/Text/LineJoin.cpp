// Runs into lines: the test while runs arrive, the score of the page-wide joining, and the
// merging of runs and lines. Tolerances are fractions of the font height.
#include <algorithm>
#include <cmath>

#include "PDF/Text/TextBlocks.h"

namespace lum::PDF {

namespace {

// Baselines further apart than this (x the font height) are on different lines.
constexpr double kSameLineBaseline = 0.55;
constexpr double kJoinBaseline = 0.5;
// Font heights differing by more than this fraction don't share a line.
constexpr double kHeightRatio = 0.6;
// A gap below this is no gap: the boxes touch.
constexpr double kTouch = 0.03;
// Gaps allowed while runs arrive, in character widths, by the sign of the TJ number between
// the runs: none, one that moved the text forward, one that moved it back.
constexpr double kGapPlain = 3.0;
constexpr double kGapForward = 5.0;
constexpr double kGapBack = 1.5;
constexpr double kGapMirror = 0.75;
// Runs with baselines apart must overlap by this share of their joint height.
constexpr double kVerticalOverlap = 0.2;
// The gap JoinScore allows, in character widths.
constexpr double kJoinGap = 1.5;

// Scores of JoinScore: fixed points of one scale, the "no" ones positive.
constexpr double kScoreOffBaseline = 1e6;
constexpr double kScoreOtherHeight = 100000;
constexpr double kScoreOverlapBase = 1000;
constexpr double kScoreOverlapFactor = 10000;
constexpr double kScoreTooFarFactor = 10;
constexpr double kScoreTouching = 1e6;
constexpr double kScoreGap = 100000;
// The product of two candidate scores that a place inside a line must beat.
constexpr double kBestPlaceStart = 1e10;

bool Neighbours(const TRun& a, const TRun& b) { return a.mp_prev == &b || b.mp_prev == &a; }

}  // namespace

double JoinScore(const TRun& a, const TRun& b) {
    const double h = a.m_font_height;
    if (std::fabs(a.m_baseline - b.m_baseline) > kJoinBaseline * h) return kScoreOffBaseline;
    if (std::fabs(h - b.m_font_height) > kHeightRatio * h) return kScoreOtherHeight;
    const double d = SepX(a, b);
    if (d < kTouch * h) {
        if (-d > kKerningOverlap * h)
            return (-d - kKerningOverlap * h) * kScoreOverlapFactor + kScoreOverlapBase;
        return d - kScoreTouching;
    }
    const double limit = kJoinGap * std::max(CharWidth(a), CharWidth(b));
    if (d > limit) return std::fabs(limit - d) * kScoreTooFarFactor;
    const double score = d - kScoreGap;
    return Neighbours(a, b) ? score * 2 : score;
}

bool IsSameLine(const TRun& a, const TRun& b, double adjustment, bool mirror_mode) {
    const double h = a.m_font_height;
    if (std::fabs(a.m_baseline - b.m_baseline) >
        kSameLineBaseline * std::max(h, b.m_font_height))
        return false;
    if (std::fabs(h - b.m_font_height) > kHeightRatio * h) return false;
    const double d = SepX(a, b);
    if (d < kTouch * h) {
        if (mirror_mode || d >= 0) return true;
        if (-d <= kKerningOverlap * h) return true;
        if (!(a.CenterX() > b.CenterX()) && a.CenterX() < b.m_box.x1) return true;
        if (a.m_glyph_count < 2 || b.m_glyph_count < 2) return true;
        // Two longer runs on top of each other.
        return false;
    }
    const double wa = CharWidth(a), wb = CharWidth(b);
    double limit;
    if (mirror_mode) {
        limit = kGapMirror * std::min(wa, wb);
    } else {
        const double factor = adjustment == 0 ? kGapPlain : adjustment < 0 ? kGapForward : kGapBack;
        limit = factor * std::max(wa, wb);
    }
    if (d > limit) return false;
    if (a.m_baseline == b.m_baseline) return true;
    const double overlap = -SepY(a, b);
    const double joint = std::max(a.m_box.y2, b.m_box.y2) - std::min(a.m_box.y1, b.m_box.y1);
    if (overlap / joint >= kVerticalOverlap) return true;
    return d <= std::max(wa, wb);
}

Block* TRun::MergeLine(Block& other, BlockPool& pool) {
    if (other.GetKind() != e_run) return other.MergeLine(*this, pool);
    TRun& r = static_cast<TRun&>(other);
    if (!(JoinScore(*this, r) < 0)) return nullptr;
    TLine* line = pool.NewLine();
    line->AddRun(this);
    line->AddRun(&r);
    return line;
}

Block* TLine::MergeLine(Block& other, BlockPool&) {
    if (other.GetKind() == e_run) {
        TRun* r = &static_cast<TRun&>(other);
        if (-SepX(*this, *r) == r->Width()) {
            // The run lies within the line's span: it goes between the two neighbours that
            // it joins best, if they join it better than each other.
            double best = kBestPlaceStart;
            size_t place = 0;
            for (size_t i = 0; i + 1 < m_runs.size(); ++i) {
                const TRun& p = *m_runs[i];
                const TRun& q = *m_runs[i + 1];
                const double s = JoinScore(p, q), sp = JoinScore(p, *r), sq = JoinScore(q, *r);
                if (s > sp && s > sq && sp * sq > best) {
                    best = sp * sq;
                    place = i + 1;
                }
            }
            if (place == 0) return nullptr;
            InsertRun(place, r);
            return this;
        }
        const TRun& end = r->m_box.x1 > m_box.x1 ? *m_runs.back() : *m_runs.front();
        if (!(JoinScore(end, *r) < 0)) return nullptr;
        AddRun(r);
        return this;
    }
    if (other.GetKind() == e_line) {
        TLine& o = static_cast<TLine&>(other);
        const double runs = double(m_runs.size()), other_runs = double(o.m_runs.size());
        if (o.m_box.x1 > m_box.x1) {
            if (!(JoinScore(*m_runs.back(), *o.m_runs.front()) < 0)) return nullptr;
            m_x_sorted = m_x_sorted && o.m_x_sorted &&
                         m_runs.back()->m_box.x1 <= o.m_runs.front()->m_box.x1;
            m_runs.insert(m_runs.end(), o.m_runs.begin(), o.m_runs.end());
        } else {
            if (!(JoinScore(*m_runs.front(), *o.m_runs.back()) < 0)) return nullptr;
            m_x_sorted = m_x_sorted && o.m_x_sorted &&
                         o.m_runs.back()->m_box.x1 <= m_runs.front()->m_box.x1;
            m_runs.insert(m_runs.begin(), o.m_runs.begin(), o.m_runs.end());
        }
        m_max_run_width = std::max(m_max_run_width, o.m_max_run_width);
        o.m_runs.clear();
        ExtendBox(m_box, o.m_box);
        MergeQuads(m_quad, o.m_quad);
        m_font_height = (m_font_height * runs + o.m_font_height * other_runs) / (runs + other_runs);
        return this;
    }
    return nullptr;
}

}  // namespace lum::PDF
