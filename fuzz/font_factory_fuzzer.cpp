// Bytes in as the body of a font dictionary (object 4 of a small document that also holds a
// descriptor, a font program, a ToUnicode stream and a descendant font to refer to): the
// factory, then every question the text road asks of a font, for every byte code. A line
// "%descendant" splits the input: what follows it is the body of the descendant (object 8),
// so a composite font's W, W2, DW2, CIDToGIDMap and nesting are fuzzed as well.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "tests/PDF/PdfBuilder.h"
#include "Common/Exception.h"
#include "Filters/ExtBufInputFilter.h"
#include "PDF/Ferrox.h"
#include "PDF/Font/Font.h"
#include "PDF/PDFDoc.h"
#include "SDF/Obj.h"

namespace {

using namespace lum;

std::string Stream(const std::string& dict, const std::string& data) {
    return "<< " + dict + " /Length " + std::to_string(data.size()) + " >>\nstream\n" + data +
           "\nendstream";
}

std::string FontPdf(const std::string& font_body, const std::string& descendant) {
    const std::string objects[] = {
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] >>",
        font_body,
        "<< /Type /FontDescriptor /FontName /F /Flags 4 /Ascent 700 /Descent -200 "
        "/FontBBox [0 -200 1000 700] /MissingWidth 250 /FontFile2 7 0 R >>",
        Stream("", "/CIDInit /ProcSet findresource begin 12 dict begin begincmap "
                   "1 begincodespacerange <00> <FF> endcodespacerange 2 beginbfchar <41> <0042> "
                   "<42> <00660069> endbfchar 1 beginbfrange <61> <7A> <0061> endbfrange endcmap"),
        Stream("/Length1 16", "\x00\x01\x00\x00\x00\x00\x00\x00garbage!"),
        descendant.empty()
            ? "<< /Type /Font /Subtype /CIDFontType2 /BaseFont /D /CIDSystemInfo << /Registry (Adobe) "
              "/Ordering (Japan1) /Supplement 0 >> /FontDescriptor 5 0 R /W [1 [500 600] 3 5 700] "
              "/DW2 [880 -1000] /W2 [1 1 -900 250 880] >>"
            : descendant,
        Stream("", "100 0 d0 0 0 100 100 re f"),
    };
    return test::BuildPdf({std::begin(objects), std::end(objects)});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool started = (PDF::Ferrox::Initialize(), true);
    (void)started;
    std::string body(reinterpret_cast<const char*>(data), size), descendant_body;
    if (const size_t at = body.find("\n%descendant\n"); at != std::string::npos) {
        descendant_body = body.substr(at + 13);
        body.resize(at);
    }
    const std::string pdf = FontPdf(body, descendant_body);
    try {
        PDF::PDFDoc doc(std::make_unique<Filters::ExtBufInputFilter>(
            reinterpret_cast<const UInt8*>(pdf.data()), pdf.size()));
        const PDF::Font font(doc.GetObj(4));
        font.GetName();
        font.GetAscent();
        font.GetDescent();
        font.GetBBox();
        font.HasSubsetTag();
        font.IsSymbolic();
        Unicode units[10];
        for (UInt32 code = 0; code < 257; ++code) {
            UInt32 count = 0;
            font.GetWidth(code);
            font.MapToUnicode(code, units, 10, count, code % 2 == 0);
        }
        if (font.GetType() == PDF::Font::e_Type3) {
            font.GetType3FontMatrix();
            for (UInt32 code = 0; code < 256; ++code) font.GetType3GlyphStream(code);
        }
        if (font.GetType() == PDF::Font::e_Type0) {
            const PDF::Font descendant = font.GetDescendant();
            font.IsHorizontalMode();
            descendant.GetMaxWidth();
            const UInt8 bytes[] = {0, 1, 0, 2, 0x20, 0xFF, 0xFF, 0xFF, 0x81, 0x40, 0x30, 0x42};
            for (UInt32 at = 0; at < sizeof bytes;) {
                UInt32 code = 0, cid = 0;
                const int n = font.MapToCID(bytes + at, UInt32(sizeof bytes - at), code, cid);
                double vx, vy;
                descendant.GetWidth(cid);
                descendant.GetVerticalAdvance(cid, vx, vy);
                font.GetVerticalAdvance(code, vx, vy);
                UInt32 index = 0;
                descendant.GetGlyphIndex(cid, index);
                at += n > 0 ? UInt32(n) : 1;
            }
        }
    } catch (const Common::Exception&) {
        // A dictionary that can't become a font fails alone.
    }
    return 0;
}
