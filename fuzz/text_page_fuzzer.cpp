// Bytes in, the text of each page out: a document is opened, and the first pages go through
// the text engine (content, fonts, capture, layout) into plain text, XML and the word list.
#include <cstddef>
#include <cstdint>
#include <algorithm>
#include <memory>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "Filters/ExtBufInputFilter.h"
#include "PDF/Ferrox.h"
#include "PDF/PDFDoc.h"
#include "PDF/TextExtractor.h"

namespace {

using namespace lum;

// Pages of one input that are extracted: enough to reach the page tree's odd corners.
constexpr int kPages = 4;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    PDF::Ferrox::Initialize();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (!PDF::Ferrox::IsInitialized()) PDF::Ferrox::Initialize();
    try {
        PDF::PDFDoc doc(std::make_unique<Filters::ExtBufInputFilter>(data, size));
        if (!doc.InitSecurityHandler(nullptr)) return 0;
        PDF::TextExtractor extractor;
        const int pages = std::min(doc.GetPageCount(), kPages);
        for (int n = 1; n <= pages; ++n) {
            try {
                PDF::PageIterator it = doc.GetPageIterator(n);
                if (it == doc.GetPageIteratorEnd()) continue;
                const PDF::Rect clip(0, 0, 300, 400);
                extractor.Begin(*it, n == 2 ? &clip : nullptr, n == 3 ? 31u : 0u);
                UString text;
                extractor.GetAsText(text, true);
                extractor.GetAsXML(text, n == 1 ? 15u : 3u);
                for (auto line = extractor.GetFirstLine(); line.IsValid(); line = line.GetNextLine())
                    for (auto w = line.GetFirstWord(); w.IsValid(); w = w.GetNextWord())
                        text.Append(w.GetString(), w.GetStringLen());
            } catch (const Common::Exception&) {
                // A page fails alone.
            }
        }
    } catch (const Common::Exception&) {
        // Not a document.
    }
    return 0;
}
