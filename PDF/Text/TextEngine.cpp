#include "PDF/Text/TextEngine.h"

#include "PDF/Text/TextFlags.h"

namespace lum::PDF {

void TextEngine::Reset(UInt32 flags, bool mirror_mode, double mirror_width) {
    m_flags = flags;
    m_mirror_mode = mirror_mode;
    m_arena.Clear();
    m_pool.Reset();
    m_builder.Reset(flags, mirror_mode);
    m_capture.Reset(flags, mirror_mode, mirror_width);
    m_flows.clear();
    m_occluders.Clear();
}

void TextEngine::Finish(TextExtractorImpl& store, FontExtents* extents) {
    m_builder.Finish(m_flows);
    m_occluders.Seal();
    EmitContext ctx{store, m_occluders, extents, m_mirror_mode,
                    (m_flags & e_remove_hidden_text) != 0};
    WriteFlows(m_flows, ctx);
    m_flows.clear();
}

}  // namespace lum::PDF
