#pragma once
// The text forms of a page: the clip box and the engine's Begin, then a count, the XML, the
// word list or the plain text, by the priority of the modes. The page report, which comes
// before all of them, is the caller's.
namespace lum::PDF {
class Page;
class TextExtractor;
}  // namespace lum::PDF

namespace lum::Bindery {

struct Options;

// The Begin flags that the options set.
unsigned TextFlags(const Options& opt);
// The GetAsXML flags that the options set.
unsigned XmlFlags(const Options& opt);

// Runs the engine on `page` with the document's extractor and writes what the options ask.
// The engine's exceptions leave to the caller, which ends the page.
void WritePageText(Options& opt, const PDF::Page& page, PDF::TextExtractor& extractor);

}  // namespace lum::Bindery
