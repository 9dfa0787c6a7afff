#pragma once
// The text-runs form of a page: one line for each shown string, in content order, straight
// from the element reader and not through the layout engine.
namespace lum::PDF {
class Page;
}

namespace lum::Bindery {

struct Options;

// Writes, for each string shown inside a text object of the page or of a form it paints,
//   x1, y1, width, height, "font name", , length, "text"
// and a newline, through WriteText. What ends the page (a bad font, a missing resource) is
// raised after the lines written so far.
void WriteTextRuns(Options& opt, const PDF::Page& page);

}  // namespace lum::Bindery
