// The build-time table of the standard fonts' glyph boxes against the programs it was measured
// from: every glyph of every font, and the names no font has. A table out of step with the
// resource file would change the text's geometry silently.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "PDF/Ferrox.h"
#include "PDF/Font/GlyphControlBox.h"
#include "PDF/Font/StandardFontFaces.h"
#include "PDF/Font/StandardFonts.h"
#include "PDF/Font/StandardGlyphBoxes.h"

using namespace lum::PDF::Fnt;
namespace FS = lum::FontSupport;

namespace {

struct Answer {
    bool found = false;
    bool has_points = false;
    lum::PDF::Rect box;
    double advance = 0;
};

Answer FromProgram(int font, const char* name) {
    Answer a;
    FS::GlyphOutline out;
    a.found = GetStandardGlyphPath(font, name, true, out, a.advance);
    a.has_points = !out.operators.empty() && ControlBox(out.points, a.box);
    return a;
}

Answer FromTable(int font, const char* name) {
    Answer a;
    bool known = false;
    const StandardGlyphBox* b = FindStandardGlyphBox(font, name, known);
    EXPECT_TRUE(known);
    a.found = b != nullptr;
    a.has_points = b && b->outline;
    if (a.has_points) a.box = lum::PDF::Rect(b->x1, b->y1, b->x2, b->y2);
    if (b) a.advance = b->advance;
    return a;
}

void ExpectSame(const Answer& table, const Answer& program, const std::string& what) {
    EXPECT_EQ(table.found, program.found) << what;
    EXPECT_EQ(table.has_points, program.has_points) << what;
    // Exact: the table holds the very doubles the outline gives.
    EXPECT_TRUE(table.box == program.box) << what;
    if (program.found) {
        EXPECT_EQ(table.advance, program.advance) << what;
    }
}

TEST(StandardGlyphBoxes, TableAnswersAsThePrograms) {
    const StandardGlyphBoxTable* tables = GetStandardGlyphBoxTables();
    ASSERT_NE(tables, nullptr) << "the suite links the generated table";
    lum::PDF::Ferrox::Initialize();
    for (int font = 0; font < kStandardFontCount; ++font) {
        const StandardGlyphBoxTable& t = tables[font];
        ASSERT_GT(t.count, 100u) << font;
        for (size_t i = 0; i < t.count; ++i) {
            const char* name = t.names + t.boxes[i].name;
            ExpectSame(FromTable(font, name), FromProgram(font, name),
                       std::to_string(font) + " " + name);
        }
        // Names the font lacks, .notdef (glyph 0 counts as absent) and no name at all.
        for (const char* name : {"a1", "no-such-glyph", ".notdef", "", "A\x80"})
            ExpectSame(FromTable(font, name), FromProgram(font, name), std::to_string(font) + " " + name);
    }
    lum::PDF::Ferrox::Terminate();
}

}  // namespace
