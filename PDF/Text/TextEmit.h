#pragma once
// The last stage of Begin: the flows are written into the flat store, with the word breaks
// between runs, the common glyph height of each font, and the hidden-glyph tests.
#include <vector>

#include "Common/Types.h"
#include "PDF/Text/Occluder.h"
#include "PDF/Text/TextGeometry.h"

namespace lum::SDF { class Obj; }

namespace lum::PDF {

class TextExtractorImpl;
struct Flow;

// The union of the boxes of all glyphs with an outline of a font, in glyph units; a zero box
// when the font has none. Glyphs of a font are written with this common height.
class FontExtents {
public:
    virtual ~FontExtents() = default;
    virtual Rect FontExtent(SDF::Obj* font) = 0;
};

struct EmitContext {
    TextExtractorImpl& store;
    OccluderSet& occluders;
    FontExtents* extents = nullptr;  // none: glyphs keep their own boxes
    bool mirror_mode = false;
    bool remove_hidden = false;
};

// Writes the chain of flows into the store: a number for each flow and paragraph, a record
// for each line and word.
void WriteFlows(const std::vector<Flow>& flows, EmitContext& ctx);

}  // namespace lum::PDF
