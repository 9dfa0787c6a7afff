#include "PDF/Text/TextEngine.h"

#include "PDF/Text/TextFlags.h"

namespace lum::PDF {

namespace {

// Images on a page are few; room for this many is kept without growing.
constexpr size_t kOccluderReserve = 16;

}  // namespace

void TextEngine::Reset(UInt32 flags, bool mirror_mode, double mirror_width) {
    m_flags = flags;
    m_mirror_mode = mirror_mode;
    m_arena.Clear();
    m_pool.Reset();
    m_builder.Reset(flags, mirror_mode);
    m_capture.Reset(flags, mirror_mode, mirror_width);
    m_flows.clear();
    m_occluders.clear();
    m_occluders.reserve(kOccluderReserve);
}

void TextEngine::Finish(TextExtractorImpl& store, FontExtents* extents) {
    m_builder.Finish(m_flows);
    EmitContext ctx{store, m_occluders, extents, m_mirror_mode,
                    (m_flags & e_remove_hidden_text) != 0};
    WriteFlows(m_flows, ctx);
    m_flows.clear();
}

}  // namespace lum::PDF
