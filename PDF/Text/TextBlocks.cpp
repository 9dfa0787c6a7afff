#include "PDF/Text/TextBlocks.h"

namespace lum::PDF {

void TRun::Reset(GlyphArena* arena) {
    m_box = Rect();
    m_font_height = 0;
    m_axis_aligned = 0;
    m_quad = Quad();
    mp_arena = arena;
    m_first_frag = 0;
    m_frag_count = 0;
    mp_font = nullptr;
    mp_prev = nullptr;
    m_order = 0;
    m_red = m_green = m_blue = 0;
    m_glyph_count = 0;
    m_baseline = 0;
    m_twin_mark = 0;
}

void TRun::AddFrag(UInt32 frag) {
    const WordFrag& f = mp_arena->Frag(frag);
    if (m_frag_count == 0) {
        m_first_frag = frag;
        m_box = f.box;
        m_quad = f.quad;
    } else {
        ExtendBox(m_box, f.box);
        MergeQuads(m_quad, f.quad);
    }
    ++m_frag_count;
    m_glyph_count += f.count;
    m_baseline = f.baseline;
}

void TLine::Reset() {
    m_box = Rect();
    m_font_height = 0;
    m_axis_aligned = 0;
    m_quad = Quad();
    m_runs.clear();
    m_x_sorted = true;
    m_max_run_width = 0;
}

void TLine::AddRun(TRun* run) {
    m_max_run_width = std::max(m_max_run_width, run->Width());
    if (m_runs.empty()) {
        m_box = run->m_box;
        m_font_height = run->m_font_height;
        m_quad = run->m_quad;
        m_runs.push_back(run);
        m_x_sorted = true;
        return;
    }
    if (run->m_box.x1 > m_box.x1) {
        m_x_sorted = m_x_sorted && run->m_box.x1 >= m_runs.back()->m_box.x1;
        m_runs.push_back(run);
    } else {
        m_x_sorted = m_x_sorted && run->m_box.x1 <= m_runs.front()->m_box.x1;
        m_runs.push_front(run);
    }
    ExtendBox(m_box, run->m_box);
    MergeQuads(m_quad, run->m_quad);
    const double n = double(m_runs.size());
    m_font_height = (m_font_height * (n - 1) + run->m_font_height) / n;
}

void TLine::InsertRun(size_t place, TRun* run) {
    m_max_run_width = std::max(m_max_run_width, run->Width());
    m_x_sorted = m_x_sorted && m_runs[place - 1]->m_box.x1 <= run->m_box.x1 &&
                 run->m_box.x1 <= m_runs[place]->m_box.x1;
    m_runs.insert(m_runs.begin() + std::ptrdiff_t(place), run);
    const double n = double(m_runs.size());
    m_font_height = (m_font_height * (n - 1) + run->m_font_height) / n;
}

void TPara::Reset() {
    m_box = Rect();
    m_font_height = 0;
    m_axis_aligned = 0;
    m_quad = Quad();
    m_lines.clear();
    m_line_spacing = 0;
}

void TPara::AddLine(TLine* line) {
    if (m_lines.empty()) {
        m_box = line->m_box;
        m_font_height = line->m_font_height;
        m_quad = line->m_quad;
        m_lines.push_back(line);
        return;
    }
    const double step = m_lines.back()->m_box.y1 - line->m_box.y1;
    m_lines.push_back(line);
    ExtendBox(m_box, line->m_box);
    MergeQuads(m_quad, line->m_quad);
    const double n = double(m_lines.size());
    m_font_height = ((n - 1) * m_font_height + line->m_font_height) / n;
    m_line_spacing = m_line_spacing == 0 ? step : ((n - 1) * m_line_spacing + step) / n;
}

template <class T>
T* BlockPool::Chunks<T>::Next() {
    const size_t chunk = used / kChunk;
    if (chunk == chunks.size()) chunks.push_back(std::make_unique<T[]>(kChunk));
    return &chunks[chunk][used++ % kChunk];
}

BlockPool::BlockPool() = default;
BlockPool::~BlockPool() = default;

TRun* BlockPool::NewRun(GlyphArena* arena) {
    TRun* r = m_runs.Next();
    r->Reset(arena);
    return r;
}

TLine* BlockPool::NewLine() {
    TLine* l = m_lines.Next();
    l->Reset();
    return l;
}

TPara* BlockPool::NewPara() {
    TPara* p = m_paras.Next();
    p->Reset();
    return p;
}

void BlockPool::Reset() {
    m_runs.used = 0;
    m_lines.used = 0;
    m_paras.used = 0;
}

}  // namespace lum::PDF
