#pragma once
// The page report of --pageinfo: the geometry of one page on one line.
#include <string>

namespace lum::PDF { class Page; }

namespace lum::Bindery {

struct Options;

// "width, height, media box x1, y1, x2, y2, crop box x1, y1, x2, y2, rotation in degrees" and
// a newline; the media box is given as stored in the file. Raises what the page raises.
std::string FormatPageInfo(const PDF::Page& page);

// Writes the report line, with a header line before it at verbosity 3 and above.
void WritePageInfo(Options& opt, const PDF::Page& page);

}  // namespace lum::Bindery
