// The build-time table of the standard fonts' glyph boxes against the programs it was measured
// from: every glyph of every font, and the names no font has. A table out of step with the
// resource file would change the text's geometry silently.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "PDF/Ferrox.h"
#include "PDF/Font/StandardFontFaces.h"
#include "PDF/Font/StandardFonts.h"
#include "PDF/Font/StandardGlyphBoxes.h"

using namespace lum::PDF::Fnt;
namespace FS = lum::FontSupport;

namespace {

struct Answer {
    bool found = false;
    bool has_points = false;
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0, advance = 0;
};

Answer Ask(int font, const char* name, bool boxes_only) {
    Answer a;
    FS::GlyphOutline out;
    if (boxes_only) {
        StandardBoxesOnly scope;
        a.found = GetStandardGlyphPath(font, name, true, out, a.advance);
    } else {
        a.found = GetStandardGlyphPath(font, name, true, out, a.advance);
    }
    a.has_points = !out.operators.empty() && out.points.size() >= 2;
    if (!a.has_points) return a;
    a.x1 = a.x2 = out.points[0];
    a.y1 = a.y2 = out.points[1];
    for (size_t i = 2; i + 1 < out.points.size(); i += 2) {
        a.x1 = std::min(a.x1, out.points[i]);
        a.x2 = std::max(a.x2, out.points[i]);
        a.y1 = std::min(a.y1, out.points[i + 1]);
        a.y2 = std::max(a.y2, out.points[i + 1]);
    }
    return a;
}

void ExpectSame(const Answer& table, const Answer& program, const std::string& what) {
    EXPECT_EQ(table.found, program.found) << what;
    EXPECT_EQ(table.has_points, program.has_points) << what;
    // Exact: the table holds the very doubles the outline gives.
    EXPECT_EQ(table.x1, program.x1) << what;
    EXPECT_EQ(table.y1, program.y1) << what;
    EXPECT_EQ(table.x2, program.x2) << what;
    EXPECT_EQ(table.y2, program.y2) << what;
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
            ExpectSame(Ask(font, name, true), Ask(font, name, false),
                       std::to_string(font) + " " + name);
        }
        // Names the font lacks, .notdef (glyph 0 counts as absent) and no name at all.
        for (const char* name : {"a1", "no-such-glyph", ".notdef", "", "A\x80"})
            ExpectSame(Ask(font, name, true), Ask(font, name, false), std::to_string(font) + " " + name);
    }
    lum::PDF::Ferrox::Terminate();
}

}  // namespace
