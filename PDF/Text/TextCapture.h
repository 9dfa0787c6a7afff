#pragma once
// What happens to one character once the page walk has measured it: the frames tie its glyph
// box to the page and the layout, the clip box keeps or drops it, and it goes into the open
// fragment as a glyph or ends the fragment as white space. Fragments gather in runs, which
// go to the LayoutBuilder at the end of each text element. The walk of the page's elements
// and every font question stay with the caller, so the capture works from geometry alone.
#include "Common/Types.h"
#include "PDF/Text/GlyphArena.h"
#include "PDF/Text/TextBlocks.h"

namespace lum::SDF { class Obj; }

namespace lum::PDF {

class LayoutBuilder;

// The frames and style of one text element, as the text context fixes them.
struct CaptureElement {
    Matrix2D page;    // T: text frame to page frame
    Matrix2D layout;  // D: text frame to layout frame
    Matrix2D glyph;   // S: glyph units to the text frame, before a character's own origin
    double font_height = 0;
    int direction = 0;
    double adjustment = 0;  // the TJ number in front of the element
    SDF::Obj* font = nullptr;
    UInt8 red = 0, green = 0, blue = 0;
    Int64 order = 0;      // the element counter
    const Rect* clip = nullptr;  // the current clip box; never null during an element
};

// Fills page, layout, font height and direction of `e` from the page matrix `t` (text matrix
// then CTM) and the font size. False, leaving `e` alone, for a degenerate matrix (a² + b² = 0,
// or not finite), whose element gives no glyphs.
bool SetElementFrames(const Matrix2D& t, double font_size, CaptureElement& e);

// SetElementFrames that keeps what the linear part of the matrix and the font size give
// (the rotation, the direction, the font height) from the call before: the elements of a line
// differ in their translation only.
class ElementFrames {
public:
    bool Set(const Matrix2D& t, double font_size, CaptureElement& e);

private:
    UInt64 m_key[5] = {};  // a, b, c, d, font size as bits: -0 and NaN keys stay apart
    bool m_valid = false;
    bool m_degenerate = false;
    bool m_upright = false;
    double m_s = 0, m_cos = 0, m_sin = 0, m_dp = 0, m_shear = 0;
    int m_direction = 0;
    double m_font_height = 0;
};

// One character of the element, measured.
struct CaptureChar {
    double x = 0, y = 0;  // origin in the text frame
    UInt32 bytes = 1;     // size of its code
    bool has_outline = false;
    // The glyph's box in glyph units, or with `use_advance` (invisible text of a font without
    // outlines) the advance box in the text frame, which then stands for the glyph.
    Rect glyph_box;
    bool use_advance = false;
    // The advance box in the text frame; read for a character without an outline.
    Rect advance_box;
    const Unicode* units = nullptr;
    int unit_count = 0;
    bool last = false;  // the element's last character
};

// A developer's view of the capture: each character that passed the clip test, and each run
// as it goes to the layout.
class CaptureTrace {
public:
    virtual ~CaptureTrace() = default;
    // The character's units, its origin and glyph box in the page frame, and whether it is blank.
    virtual void Char(const Unicode* units, int count, double x, double y, const Rect& box,
                      bool blank) = 0;
    virtual void Run(const TRun& run, int direction) = 0;
};

class TextCapture {
public:
    TextCapture(GlyphArena& arena, BlockPool& pool, LayoutBuilder& builder)
        : m_arena(arena), m_pool(pool), m_builder(builder) {}

    // A new page: counters to 0, nothing pending.
    void Reset(UInt32 flags, bool mirror_mode, double mirror_width);

    // Steps of one text element. A degenerate page matrix must be refused by the caller.
    void BeginElement(const CaptureElement& e);
    void AddChar(const CaptureChar& c);
    // The last fragment into the run, and the run to the builder.
    void EndElement();
    // An exception ended the text object: the run being built and the open fragment go.
    void AbortElement();

    // Moves the offset counter over the code of a character that isn't captured at all.
    void SkipCode(UInt32 bytes) { m_offset_counter += bytes; }

    // A blank at the end of one element marks the first fragment of the next. A form's
    // walk starts without it.
    bool PendingSpace() const { return m_pending_space; }
    void SetPendingSpace(bool on) { m_pending_space = on; }

    void SetTrace(CaptureTrace* trace) { mp_trace = trace; }

    const Matrix2D& Mirror() const { return m_mirror; }
    const Matrix2D& MirrorInverse() const { return m_mirror_inverse; }

private:
    void WhiteSpace(const CaptureChar& c, const Rect& box, const Rect& layout_box,
                    const Quad& page_quad, const Quad& text_quad, Int32 offset, double baseline);
    void Glyph(const CaptureChar& c, const Rect& box, const Rect& layout_box,
               const Quad& page_quad, const Quad& text_quad, Int32 offset, double baseline);
    void AddUnits(const CaptureChar& c, const Rect& box, const Rect& layout_box,
                  const Quad& page_quad, const Quad& text_quad, Int32 offset, double baseline);
    void EndFragment();
    void SetRunBox();
    void PassRun();
    void ClearFrag() { m_frag = WordFrag(); }

    GlyphArena& m_arena;
    BlockPool& m_pool;
    LayoutBuilder& m_builder;
    UInt32 m_flags = 0;
    bool m_mirror_mode = false;
    double m_mirror_width = 0;
    Matrix2D m_mirror, m_mirror_inverse;
    UInt32 m_offset_counter = 0;
    bool m_pending_space = false;

    // The element now being captured.
    CaptureElement m_el;
    Matrix2D m_m;  // M: the page matrix, mirrored in mirror mode
    bool m_identity = false;
    bool m_axis = false;
    bool m_layout_is_page = false;  // D = T: upright text needs one box, not two
    UInt32 m_matrices = 0;
    // The element matrices that m_m, m_identity, m_axis, m_layout_is_page and m_matrices
    // were made from.
    bool m_frames_known = false;
    Matrix2D m_known_page, m_known_glyph, m_known_layout;
    bool m_no_glyph_yet = true;
    bool m_box_empty = true;
    Rect m_element_box;  // text frame
    WordFrag m_frag;
    TRun* mp_run = nullptr;
    CaptureTrace* mp_trace = nullptr;
};

}  // namespace lum::PDF
