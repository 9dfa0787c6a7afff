#pragma once
// The blocks of the layout, which live only during one Begin: a run (the text of one element,
// or part of it), a line of runs, a paragraph of lines. Geometry decisions compare their boxes
// in the layout frame; their quads are in the page frame.
#include <algorithm>
#include <cmath>
#include <deque>
#include <memory>
#include <vector>

#include "Common/Types.h"
#include "PDF/Text/GlyphArena.h"
#include "PDF/Text/TextGeometry.h"

namespace lum::SDF { class Obj; }

namespace lum::PDF {

class BlockPool;
struct EmitContext;

class Block {
public:
    enum Kind : UInt8 { e_run, e_line, e_para };

    explicit Block(Kind kind) : m_kind(kind) {}
    virtual ~Block() = default;
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    // How far below its box a block may reach for a line or a paragraph that follows.
    virtual double LineReach() const { return m_box.y1 - 0.5 * m_font_height; }
    virtual double ParaReach() const { return m_box.y1 - 1.5 * m_font_height; }
    // The block that now holds this one and `other`, or null when they don't join.
    virtual Block* MergeLine(Block& other, BlockPool& pool) = 0;
    virtual Block* MergePara(Block& other, BlockPool& pool) = 0;
    // Writes the block into the store.
    virtual void Emit(EmitContext& ctx) = 0;

    double CenterX() const { return (m_box.x1 + m_box.x2) * 0.5; }
    double CenterY() const { return (m_box.y1 + m_box.y2) * 0.5; }
    double Width() const { return m_box.x2 - m_box.x1; }
    Kind GetKind() const { return m_kind; }

    Rect m_box;  // layout frame
    double m_font_height = 0;
    UInt8 m_axis_aligned = 0;
    Quad m_quad;  // page frame

private:
    Kind m_kind;
};

// A stretch of the text of one element: a list of fragments, kept as a range of the arena's
// fragment table.
class TRun final : public Block {
public:
    TRun() : Block(e_run) {}
    void Reset(GlyphArena* arena);

    Block* MergeLine(Block& other, BlockPool& pool) override;
    Block* MergePara(Block& other, BlockPool& pool) override;
    void Emit(EmitContext& ctx) override;

    UInt32 FragCount() const { return m_frag_count; }
    WordFrag& Frag(UInt32 i) { return mp_arena->Frag(m_first_frag + i); }
    const WordFrag& Frag(UInt32 i) const { return mp_arena->Frag(m_first_frag + i); }
    GlyphArena& Arena() const { return *mp_arena; }

    // Adds the committed fragment at index `frag` of the arena, which must follow the run's
    // last fragment (the first one starts the range).
    void AddFrag(UInt32 frag);

    GlyphArena* mp_arena = nullptr;
    UInt32 m_first_frag = 0;
    UInt32 m_frag_count = 0;
    SDF::Obj* mp_font = nullptr;     // the font key; null without a font
    const TRun* mp_prev = nullptr;   // the run that arrived before this one; not owned
    Int64 m_order = 0;               // element counter when the run was made
    UInt8 m_red = 0, m_green = 0, m_blue = 0;
    UInt32 m_glyph_count = 0;
    double m_baseline = 0;  // y in the layout frame, of the last fragment added
    UInt32 m_twin_mark = 0;  // DuplicateFinder's mark of a run that has a twin
};

class TLine final : public Block {
public:
    TLine() : Block(e_line) {}
    void Reset();

    Block* MergeLine(Block& other, BlockPool& pool) override;
    Block* MergePara(Block& other, BlockPool& pool) override;
    void Emit(EmitContext& ctx) override;

    // Adds a run at the back when it starts right of the line's x1, else at the front.
    void AddRun(TRun* run);
    // Puts `run` in front of the run at `place` without touching the box and quad.
    void InsertRun(size_t place, TRun* run);

    // Calls f(run) for each run, in list order, whose box overlaps or touches `box`.
    template <class F>
    void ForRunsNear(const Rect& box, F f) const;

    std::deque<TRun*> m_runs;
    // Whether the runs stand in order of their x1, and the widest run: together they find the
    // runs near a box by binary search.
    bool m_x_sorted = true;
    double m_max_run_width = 0;
};

class TPara final : public Block {
public:
    TPara() : Block(e_para) {}
    void Reset();

    double LineReach() const override { return 0; }
    Block* MergeLine(Block&, BlockPool&) override { return nullptr; }
    Block* MergePara(Block& other, BlockPool& pool) override;
    void Emit(EmitContext& ctx) override;

    void AddLine(TLine* line);

    std::vector<TLine*> m_lines;
    double m_line_spacing = 0;
};

// Blocks of one page. Nothing is freed before the page ends: a block taken apart or dropped
// stays in the pool, so that a link to it (a run's previous run) stays valid, and all blocks
// are reused by the next page.
class BlockPool {
public:
    BlockPool();
    ~BlockPool();
    BlockPool(const BlockPool&) = delete;
    BlockPool& operator=(const BlockPool&) = delete;

    TRun* NewRun(GlyphArena* arena);
    TLine* NewLine();
    TPara* NewPara();
    // Makes every block available again.
    void Reset();

    // A new line holding `run`.
    TLine* WrapRun(TRun* run) {
        TLine* line = NewLine();
        line->AddRun(run);
        return line;
    }

private:
    template <class T>
    struct Chunks {
        static constexpr size_t kChunk = 256;
        std::vector<std::unique_ptr<T[]>> chunks;
        size_t used = 0;
        T* Next();
    };
    Chunks<TRun> m_runs;
    Chunks<TLine> m_lines;
    Chunks<TPara> m_paras;
};

inline bool Touches(const Rect& a, const Rect& b) {
    return a.x1 <= b.x2 && b.x1 <= a.x2 && a.y1 <= b.y2 && b.y1 <= a.y2;
}

template <class F>
void TLine::ForRunsNear(const Rect& box, F f) const {
    size_t begin = 0, end = m_runs.size();
    if (m_x_sorted) {
        // Runs that reach box.x1 start at most the widest run's width before it.
        const double lo = box.x1 - m_max_run_width;
        begin = size_t(std::partition_point(m_runs.begin(), m_runs.end(),
                                            [&](const TRun* r) { return r->m_box.x1 < lo; }) -
                       m_runs.begin());
        end = size_t(std::partition_point(m_runs.begin() + std::ptrdiff_t(begin), m_runs.end(),
                                          [&](const TRun* r) { return r->m_box.x1 <= box.x2; }) -
                     m_runs.begin());
    }
    for (size_t i = begin; i < end; ++i)
        if (Touches(m_runs[i]->m_box, box)) f(m_runs[i]);
}

// Calls f(run) for the block itself when it is a run, else for the runs of its lines in order.
template <class F>
void ForEachRun(Block& b, F f) {
    switch (b.GetKind()) {
        case Block::e_run:
            f(static_cast<TRun&>(b));
            break;
        case Block::e_line:
            for (TRun* r : static_cast<TLine&>(b).m_runs) f(*r);
            break;
        case Block::e_para:
            for (const TLine* line : static_cast<TPara&>(b).m_lines)
                for (TRun* r : line->m_runs) f(*r);
            break;
    }
}

// The larger x1 less the smaller x2 of two boxes: a gap when positive, minus the overlap when
// negative. SepY likewise.
inline double SepX(const Block& a, const Block& b) {
    return std::max(a.m_box.x1, b.m_box.x1) - std::min(a.m_box.x2, b.m_box.x2);
}
inline double SepY(const Block& a, const Block& b) {
    return std::max(a.m_box.y1, b.m_box.y1) - std::min(a.m_box.y2, b.m_box.y2);
}

// The mean width of a run's characters, at least 0.3 of its font height.
inline double CharWidth(const TRun& r) {
    const double n = r.m_glyph_count > 0 ? r.m_glyph_count : 1;
    return std::max(0.3 * r.m_font_height, std::fabs(r.m_box.x2 - r.m_box.x1) / n);
}

// Two runs overlapping by more than this (x the font height of the first) never join a line:
// up to it, the overlap is kerning.
constexpr double kKerningOverlap = 0.3;
// The least step from line to line in a paragraph, x the font height of the line above.
constexpr double kMinParaStep = 0.5;

// Negative when two runs belong on one line; lower is better.
double JoinScore(const TRun& a, const TRun& b);

// Whether the new run `b` continues the line of the run `a` before it while runs arrive.
bool IsSameLine(const TRun& a, const TRun& b, double adjustment, bool mirror_mode);

// Whether `b` may be added to `a` as the next line of one paragraph.
bool IsParaLine(const Block& a, const Block& b);

}  // namespace lum::PDF
