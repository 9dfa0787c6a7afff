#include "FontSupport/Face.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <atomic>
#include <mutex>

#include "Common/Exception.h"
#include "FontSupport/FreeTypeLibrary.h"

namespace lum::FontSupport {

namespace {

std::atomic<UInt64> gl_open_count{0};

#define LUM_FT_CHECK(error)                                                                      \
    do {                                                                                       \
        const FT_Error ft_error_ = (error);                                                    \
        if (ft_error_ != 0) [[unlikely]]                                                       \
            throw FT::FreeTypeException("FT_Err_Ok == error", __LINE__, __FILE__, LUM_FUNCTION, \
                                        "FreeType error", UInt32(ft_error_));                  \
    } while (0)

struct Decomposer {
    GlyphOutline& out;
    bool conics_to_cubics;
    double x = 0, y = 0;  // the current point, in outline units

    void Point(double px, double py) {
        out.points.push_back(px);
        out.points.push_back(-py);
    }
};

int MoveTo(const FT_Vector* to, void* user) {
    auto& d = *static_cast<Decomposer*>(user);
    if (!d.out.operators.empty()) d.out.operators.push_back(e_closepath);
    d.out.operators.push_back(e_moveto);
    d.Point(to->x, to->y);
    d.x = to->x;
    d.y = to->y;
    return 0;
}

int LineTo(const FT_Vector* to, void* user) {
    auto& d = *static_cast<Decomposer*>(user);
    d.out.operators.push_back(e_lineto);
    d.Point(to->x, to->y);
    d.x = to->x;
    d.y = to->y;
    return 0;
}

int ConicTo(const FT_Vector* c, const FT_Vector* to, void* user) {
    auto& d = *static_cast<Decomposer*>(user);
    if (d.conics_to_cubics) {
        d.out.operators.push_back(e_cubicto);
        d.Point((2.0 * c->x + d.x) / 3, (2.0 * c->y + d.y) / 3);
        d.Point((2.0 * c->x + to->x) / 3, (2.0 * c->y + to->y) / 3);
    } else {
        d.out.operators.push_back(e_conicto);
        d.Point(c->x, c->y);
    }
    d.Point(to->x, to->y);
    d.x = to->x;
    d.y = to->y;
    return 0;
}

int CubicTo(const FT_Vector* c1, const FT_Vector* c2, const FT_Vector* to, void* user) {
    auto& d = *static_cast<Decomposer*>(user);
    d.out.operators.push_back(e_cubicto);
    d.Point(c1->x, c1->y);
    d.Point(c2->x, c2->y);
    d.Point(to->x, to->y);
    d.x = to->x;
    d.y = to->y;
    return 0;
}

}  // namespace

std::unique_ptr<Face> Face::OpenMemory(std::vector<UInt8> program, bool sized, long face_index) {
    std::unique_ptr<Face> face(new Face());
    face->m_program = std::move(program);
    std::lock_guard<std::mutex> lock(FreeTypeLibrary::GetLock());
    LUM_FT_CHECK(FT_New_Memory_Face(FreeTypeLibrary::Get(), face->m_program.data(),
                                    FT_Long(face->m_program.size()), face_index, &face->m_face));
    face->Setup(sized);
    return face;
}

std::unique_ptr<Face> Face::OpenFile(const std::string& path, long face_index) {
    std::unique_ptr<Face> face(new Face());
    std::lock_guard<std::mutex> lock(FreeTypeLibrary::GetLock());
    LUM_FT_CHECK(FT_New_Face(FreeTypeLibrary::Get(), path.c_str(), face_index, &face->m_face));
    face->Setup(false);
    return face;
}

void Face::Setup(bool sized) {
    ++gl_open_count;
    m_generation = FreeTypeLibrary::GetGeneration();
    int upem = m_face->units_per_EM;
    if (upem == 0) {
        upem = m_face->ascender - m_face->descender;
        if (upem == 0) upem = 1000;
    }
    m_units_per_em = upem < 0 ? -upem : upem;
    m_sized = sized;
    if (sized) {
        const FT_F26Dot6 size = FT_F26Dot6(m_units_per_em) << 8;
        LUM_FT_CHECK(FT_Set_Char_Size(m_face, size, size, 72, 72));
    }
}

Face::~Face() {
    if (!m_face) return;
    std::lock_guard<std::mutex> lock(FreeTypeLibrary::GetLock());
    // A library that was stopped while the face lived has freed it already.
    if (m_generation == FreeTypeLibrary::GetGeneration()) FT_Done_Face(m_face);
}

UInt32 Face::GetNumGlyphs() const { return m_face->num_glyphs > 0 ? UInt32(m_face->num_glyphs) : 0; }

int Face::LoadOutline(UInt32 gid, Int32 load_flags, bool conics_to_cubics, GlyphOutline& out) {
    out.Clear();
    std::lock_guard<std::mutex> lock(FreeTypeLibrary::GetLock());
    const FT_Error error = FT_Load_Glyph(m_face, gid, load_flags);
    if (error) return error;
    FT_GlyphSlot glyf = m_face->glyph;
    LUM_CHECK(glyf->format == FT_GLYPH_FORMAT_OUTLINE, "FreeType error");
    static const FT_Outline_Funcs kFuncs = {MoveTo, LineTo, ConicTo, CubicTo, 0, 0};
    Decomposer d{out, conics_to_cubics};
    if (FT_Outline_Decompose(&glyf->outline, &kFuncs, &d) != 0) {
        out.Clear();
        return FT_Err_Invalid_Outline;
    }
    if (!out.operators.empty()) out.operators.push_back(e_closepath);
    return 0;
}

double Face::GetGlyphMetric(UInt32 gid, Metric which) {
    std::lock_guard<std::mutex> lock(FreeTypeLibrary::GetLock());
    if (FT_Load_Glyph(m_face, gid, kLoadMetrics) != 0) return -1.0;
    const FT_Glyph_Metrics& m = m_face->glyph->metrics;
    double v = 0;
    switch (which) {
        case e_horz_advance: v = double(m.horiAdvance); break;
        case e_vert_advance: v = double(m.vertAdvance); break;
        case e_descender: v = double(m.horiBearingY - m.height); break;
    }
    return v * 1000.0 / m_units_per_em;
}

UInt64 Face::GetOpenCount() { return gl_open_count.load(); }

}  // namespace lum::FontSupport
