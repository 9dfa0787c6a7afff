// Lines into paragraphs: the test and the merging of the finished layout's blocks.
#include <cmath>

#include "PDF/Text/TextBlocks.h"

namespace lum::PDF {

namespace {

// Font heights differing by more than this fraction of the reference's don't share a paragraph.
constexpr double kHeightRatio = 0.6;
// The next line must overlap the reference by this share of its own width.
constexpr double kParaOverlap = 0.85;
// The largest line step, in font heights.
constexpr double kMaxStep = 4.0;
// A paragraph with a known spacing takes lines within this band around it.
constexpr double kSpacingLow = 0.9;
constexpr double kSpacingHigh = 1.1;

}  // namespace

bool IsParaLine(const Block& a, const Block& b) {
    const Block* ref = &a;
    const TPara* para = a.GetKind() == Block::e_para ? static_cast<const TPara*>(&a) : nullptr;
    if (para) {
        if (para->m_lines.empty()) return false;
        if (a.m_box.y1 > b.m_box.y2) {
            ref = para->m_lines.back();
        } else if (b.m_box.y1 > a.m_box.y2) {
            ref = para->m_lines.front();
        } else {
            return false;
        }
    }
    const double h = ref->m_font_height;
    if (std::fabs(a.m_font_height - b.m_font_height) > kHeightRatio * h) return false;
    const double d = SepX(*ref, b);
    if (!(d < 0)) return false;
    if (-d < kParaOverlap * b.Width()) return false;
    const double s = std::fabs(ref->m_box.y1 - b.m_box.y1);
    if (s > kMaxStep * h || s < kMinParaStep * h) return false;
    if (para && para->m_line_spacing != 0) {
        const double m = std::fabs(para->m_line_spacing);
        if (s < kSpacingLow * m || s > kSpacingHigh * m) return false;
    }
    return true;
}

namespace {

// The line that `b` stands for in a paragraph: itself, or a new line of the run.
TLine* AsLine(Block& b, BlockPool& pool) {
    if (b.GetKind() == Block::e_line) return static_cast<TLine*>(&b);
    return pool.WrapRun(static_cast<TRun*>(&b));
}

// A new paragraph of `first` and `second`, each a run or a line.
Block* NewPara(Block& first, Block& second, BlockPool& pool) {
    if (second.GetKind() == Block::e_para || !IsParaLine(first, second)) return nullptr;
    TPara* para = pool.NewPara();
    para->AddLine(AsLine(first, pool));
    para->AddLine(AsLine(second, pool));
    return para;
}

}  // namespace

Block* TRun::MergePara(Block& other, BlockPool& pool) { return NewPara(*this, other, pool); }

Block* TLine::MergePara(Block& other, BlockPool& pool) { return NewPara(*this, other, pool); }

Block* TPara::MergePara(Block& other, BlockPool& pool) {
    if (other.GetKind() == e_para || !IsParaLine(*this, other)) return nullptr;
    AddLine(AsLine(other, pool));
    return this;
}

}  // namespace lum::PDF
