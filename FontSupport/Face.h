#pragma once
// A FreeType face with the program it was opened from, and the few things the text road asks
// of it: outlines as path operators, and metrics. Every call takes the FreeType lock.
#include <memory>
#include <string>
#include <vector>

#include "Common/Types.h"

typedef struct FT_FaceRec_* FT_Face;

namespace lum::FontSupport {

// Operators of a glyph path, one byte each; a point is two doubles, y growing downwards.
enum PathOperator : UInt8 {
    e_moveto = 1,    // one point
    e_lineto = 2,    // one point
    e_cubicto = 3,   // three points
    e_conicto = 4,   // two points
    e_closepath = 6  // none
};

struct GlyphOutline {
    std::vector<UInt8> operators;
    std::vector<double> points;  // x, y, x, y, ...
    void Clear() {
        operators.clear();
        points.clear();
    }
};

class Face {
public:
    // FreeType's load flags as the font road uses them.
    static constexpr Int32 kLoadNoScale = 11;       // no scale, no hinting, no bitmap
    static constexpr Int32 kLoadScaled = 8;         // no bitmap
    static constexpr Int32 kLoadMetrics = 523;      // as kLoadNoScale, and ignore global advance

    // Opens a program held in memory, which the face keeps. `sized`: the face is scaled so
    // that one font unit is 256 outline units (26.6 pixels at 72 dpi). Raises "FreeType
    // error" (lum::FT::FreeTypeException) when FreeType can't open or size it.
    static std::unique_ptr<Face> OpenMemory(std::vector<UInt8> program, bool sized = false,
                                            long face_index = 0);
    // Opens a font file (a system font); raises as OpenMemory.
    static std::unique_ptr<Face> OpenFile(const std::string& path, long face_index = 0);
    ~Face();
    Face(const Face&) = delete;
    Face& operator=(const Face&) = delete;

    // The FreeType face, for callers that hold the FreeType lock.
    FT_Face Get() const { return m_face; }
    // Units per em; a face that says 0 takes ascender minus descender, 1000 when those agree.
    int GetUnitsPerEm() const { return m_units_per_em; }
    UInt32 GetNumGlyphs() const;
    bool IsSized() const { return m_sized; }

    // Loads glyph `gid` with `load_flags` and decomposes its outline into `out` (cleared
    // first): a move closes the path before it, a last closepath ends it; y is negated.
    // Conics become cubics when asked. Answers FreeType's error (0 when it loaded); a glyph
    // that isn't an outline raises under "glyf->format == FT_GLYPH_FORMAT_OUTLINE".
    int LoadOutline(UInt32 gid, Int32 load_flags, bool conics_to_cubics, GlyphOutline& out);

    // The descender is the glyph's: its lowest point, below the baseline negative.
    enum Metric { e_horz_advance, e_vert_advance, e_descender };
    // A metric of glyph `gid` in 1/1000 of the em, loaded with kLoadMetrics; -1 when the glyph
    // can't be loaded.
    double GetGlyphMetric(UInt32 gid, Metric which);

    // Faces opened in this process so far (tests count them).
    static UInt64 GetOpenCount();

private:
    Face() = default;
    void Setup(bool sized);

    FT_Face m_face = nullptr;
    std::vector<UInt8> m_program;
    int m_units_per_em = 1000;
    bool m_sized = false;
    UInt64 m_generation = 0;  // of the library that made the face
};

}  // namespace lum::FontSupport
