#pragma once
// Shared by the content fuzz targets: a one-page document around a fuzzed content stream,
// with resources that reach every path of the reader (a simple font, a Type 3 font whose
// glyph shows its own font, a form that paints itself, an image, a pattern, a shading,
// properties, graphics states), and a walk that asks every element everything a client asks.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Filters/ExtBufInputFilter.h"
#include "PDF/ElementReader.h"
#include "PDF/Ferrox.h"
#include "PDF/Font/Font.h"
#include "PDF/PDFDoc.h"
#include "tests/PDF/PdfBuilder.h"

namespace lum::fuzz {

inline std::string Stream(const std::string& dict, const std::string& data) {
    return "<< " + dict + " /Length " + std::to_string(data.size()) + " >>\nstream\n" + data +
           "\nendstream";
}

// The document bytes: objects 1 to 12, the content stream last.
inline std::string ContentPdf(const std::string& content) {
    std::string widths;
    for (int i = 0; i < 256; ++i) widths += "500 ";
    const std::vector<std::string> objects = {
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Contents 12 0 R /Resources << "
        "/Font << /F1 4 0 R /T3 6 0 R >> /XObject << /Fm 8 0 R /Im 9 0 R >> "
        "/ExtGState << /G << /LW 2 /Font [4 0 R 9] /SMask << /G 8 0 R >> /BM /Multiply >> >> "
        "/Pattern << /P 10 0 R >> /Shading << /Sh 11 0 R >> "
        "/Properties << /Pr << /MCID 1 >> >> /ColorSpace << /CS [/ICCBased 9 0 R] >> >> >>",
        "<< /Type /Font /Subtype /Type1 /BaseFont /Fuzz /FirstChar 0 /LastChar 255 /Widths [" +
            widths + "] /FontDescriptor 5 0 R >>",
        "<< /Type /FontDescriptor /Ascent 700 /Descent -200 /FontBBox [0 -200 1000 700] >>",
        "<< /Type /Font /Subtype /Type3 /FontMatrix [0.001 0 0 0.001 0 0] /FontBBox [0 0 1000 1000] "
        "/CharProcs << /a 7 0 R /b 7 0 R >> /Encoding << /Differences [97 /a /b] >> /FirstChar 97 "
        "/LastChar 98 /Widths [1000 500] /Resources << /Font << /T3 6 0 R >> >> >>",
        Stream("", "1000 0 d0 0 0 1000 1000 re f BT /T3 1 Tf (ab) Tj ET"),
        Stream("/Type /XObject /Subtype /Form /BBox [0 0 100 100] /Matrix [1 0 0 1 5 5]",
               "BT /F1 12 Tf (form) Tj ET /Fm Do q 0 0 10 10 re f Q"),
        Stream("/Type /XObject /Subtype /Image /Width 1 /Height 1 /BitsPerComponent 8 "
               "/ColorSpace /DeviceGray /N 3",
               "x"),
        Stream("/PatternType 1 /PaintType 1 /TilingType 1 /BBox [0 0 10 10] /XStep 10 /YStep 10 "
               "/Resources << /Pattern << /P 10 0 R >> >>",
               "/Pattern cs /P scn 0 0 10 10 re f"),
        "<< /ShadingType 2 /ColorSpace /DeviceRGB /Coords [0 0 1 1] /BBox [0 0 5 5] >>",
        Stream("", content),
    };
    return test::BuildPdf(objects);
}

// Everything a client asks of an element; Type 3 glyphs are entered for the first character.
inline void Touch(PDF::ElementReader& reader, PDF::Element& e) {
    PDF::Rect box;
    e.GetBBox(box);
    e.GetCTM();
    e.GetGState().GetFillColor();
    if (e.GetType() == PDF::Element::e_image || e.GetType() == PDF::Element::e_inline_image) {
        e.GetImageWidth();
        e.GetComponentNum();
        e.IsImageMask();
        e.GetMask();
    }
    if (e.GetType() == PDF::Element::e_marked_content_begin) e.GetStructMCID();
    if (e.GetType() != PDF::Element::e_text) return;
    e.GetTextString();
    PDF::CharData it, end;
    e.GetCharIterator(it);
    e.GetCharIteratorEnd(end);
    const PDF::Font& font = e.GetGState().GetFont();
    if (it != end && font.GetType() == PDF::Font::e_Type3) {
        reader.Type3FontBegin(it);
        while (PDF::Element* g = reader.Next()) g->GetBBox(box);
        reader.End();
    }
}

inline void Walk(PDF::ElementReader& reader, int depth) {
    while (PDF::Element* e = reader.Next()) {
        Touch(reader, *e);
        if (e->GetType() == PDF::Element::e_form && depth < 8) {
            reader.IsFormEmpty();
            reader.FormBegin();
            Walk(reader, depth + 1);
            reader.End();
        }
    }
}

// Reads the page around `content`; what ends the page is dropped, as the text engine does.
inline void ReadContent(const std::string& content) {
    static const bool started = (PDF::Ferrox::Initialize(), true);
    (void)started;
    const std::string pdf = ContentPdf(content);
    try {
        PDF::PDFDoc doc(std::make_unique<Filters::ExtBufInputFilter>(
            reinterpret_cast<const UInt8*>(pdf.data()), pdf.size()));
        PDF::ElementReader reader;
        reader.Begin(*doc.GetPageIterator(1));
        try {
            Walk(reader, 0);
        } catch (const Common::Exception&) {
        }
        reader.End();
    } catch (const Common::Exception&) {
    }
}

}  // namespace lum::fuzz
