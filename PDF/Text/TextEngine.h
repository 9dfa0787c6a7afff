#pragma once
// The stages of one Begin, kept by the extractor so that their tables are reused from page to
// page: glyph capture, layout, flows, and the writing of the flows into the store.
#include <vector>

#include "Common/Types.h"
#include "PDF/Text/GlyphArena.h"
#include "PDF/Text/LayoutBuilder.h"
#include "PDF/Text/TextBlocks.h"
#include "PDF/Text/TextCapture.h"
#include "PDF/Text/TextEmit.h"
#include "PDF/Text/TextLayout.h"

namespace lum::PDF {

class TextExtractorImpl;

class TextEngine {
public:
    TextEngine() : m_builder(m_pool), m_capture(m_arena, m_pool, m_builder) {}
    TextEngine(const TextEngine&) = delete;
    TextEngine& operator=(const TextEngine&) = delete;

    // A new page: everything of the last one is forgotten.
    void Reset(UInt32 flags, bool mirror_mode, double mirror_width);

    TextCapture& Capture() { return m_capture; }
    LayoutBuilder& Builder() { return m_builder; }
    OccluderSet& Occluders() { return m_occluders; }

    // The end of the page: layout, flows, and the flows written into `store`. The blocks are
    // gone afterwards; the store keeps the page.
    void Finish(TextExtractorImpl& store, FontExtents* extents);

private:
    GlyphArena m_arena;
    BlockPool m_pool;
    LayoutBuilder m_builder;
    TextCapture m_capture;
    std::vector<Flow> m_flows;
    OccluderSet m_occluders;
    UInt32 m_flags = 0;
    bool m_mirror_mode = false;
};

}  // namespace lum::PDF
