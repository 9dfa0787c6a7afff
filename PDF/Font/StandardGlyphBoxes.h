#pragma once
// The control boxes of the standard fonts' glyphs, measured at build time from the programs of
// the resource file (tools/gen-resources/glyphboxes.cpp). The programs are LZMA-packed Type 1
// fonts whose encrypted bytes don't compress: unpacking one for a single glyph box cost half of
// a short run. A run that only measures glyphs now never unpacks a program; one that needs the
// outlines themselves still does.
#include "Common/Types.h"

namespace lum::PDF::Fnt {

struct StandardGlyphBox {
    UInt32 name;            // offset of the name in the table's names
    double x1, y1, x2, y2;  // the control points' box, 1000 units per em, y downwards
    double advance;
    bool outline;           // false: the glyph has no points (the box is zero)
};

// Names as offsets into one block, so that the table needs no relocation when the program
// starts: its pages stay untouched until a glyph is looked up.
struct StandardGlyphBoxTable {
    const char* names;              // NUL-terminated names, one after the other
    const StandardGlyphBox* boxes;  // sorted by name (strcmp)
    size_t count;
};

// The tables of the fourteen fonts. Defined by the generated source that every program of the
// library links; the generator, which makes that source, links tools/gen-resources/NoGlyphBoxTable.cpp
// instead, which answers null: then glyphs are measured from the programs.
const StandardGlyphBoxTable* GetStandardGlyphBoxTables();

// The box of glyph `name` of standard font `index` (its name is `table.names + box.name`); null when the font has no such glyph, and
// `known` false when there are no tables to ask.
const StandardGlyphBox* FindStandardGlyphBox(int index, const char* name, bool& known);

}  // namespace lum::PDF::Fnt
