#pragma once
// The two small option parsers of the tool: the page list of one document and the clip box.
#include <set>
#include <string>

#include "Common/Types.h"

namespace lum::PDF { struct Rect; }

namespace lum::Bindery {

// Fills `pages` (emptied first) with the page numbers that `text` selects in a document of
// `page_count` pages. Raises on a bad token; what the earlier tokens selected stays in `pages`.
// Single numbers are kept even above the count, so the driver can report them as not found.
// A range reaching far above the count keeps only its first numbers there; the greatest
// number it left out goes to `left_out` (kept at 0 when nothing was), and every number left
// out lies above `page_count` + Limits::kMaxMissingPageReports.
void ParsePages(const std::string& text, std::set<Int32>& pages, Int32 page_count,
                Int32* left_out = nullptr);

// Reads "x1,y1,x2,y2" into `box`, ordered. False when fewer than four values are given;
// values that are no numbers read as 0.
bool ParseClipBox(const std::string& text, PDF::Rect& box);

}  // namespace lum::Bindery
