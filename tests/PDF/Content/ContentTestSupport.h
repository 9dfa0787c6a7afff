#pragma once
// One-page documents built in memory for tests of the content reader, and a walk that records
// what the reader hands out.
//
// Object layout: 1 catalog, 2 page tree, 3 the page, 4 the font /F1 (a Type 1 font whose 256
// codes are all 500 units wide, ascent 800, descent -200), 5 its descriptor, 6 onward the
// caller's extra objects, then the page's content streams.
#include <memory>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Common/Matrix2D.h"
#include "Filters/ExtBufInputFilter.h"
#include "PDF/ElementReader.h"
#include "PDF/Ferrox.h"
#include "PDF/PDFDoc.h"
#include "PDF/Page.h"
#include "PDF/PdfBuilder.h"

namespace lum::test {

inline std::string StreamObj(const std::string& data, const std::string& dict_entries = "") {
    return "<< /Length " + std::to_string(data.size()) + " " + dict_entries + " >>\nstream\n" +
           data + "\nendstream";
}

struct PageRecipe {
    std::vector<std::string> contents;  // each becomes a stream; one stream is /Contents N 0 R
    std::string resources = "/Font << /F1 4 0 R >>";
    std::vector<std::string> extra;     // objects 6, 7, ...
    std::string contents_override;      // when set, the page's /Contents value as written
    std::string font_extra;             // more entries of font 4
};

inline std::string BuildPagePdf(const PageRecipe& recipe) {
    std::string widths;
    for (int i = 0; i < 256; ++i) widths += "500 ";
    std::vector<std::string> objects = {
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "",  // the page, below
        "<< /Type /Font /Subtype /Type1 /BaseFont /TestSans /FirstChar 0 /LastChar 255 /Widths [" +
            widths + "] /FontDescriptor 5 0 R " + recipe.font_extra + " >>",
        "<< /Type /FontDescriptor /FontName /TestSans /Flags 32 /Ascent 800 /Descent -200 "
        "/FontBBox [0 -200 1000 800] >>",
    };
    for (const std::string& e : recipe.extra) objects.push_back(e);
    std::string contents;
    for (const std::string& c : recipe.contents) {
        objects.push_back(StreamObj(c));
        contents += std::to_string(objects.size()) + " 0 R ";
    }
    if (!recipe.contents_override.empty())
        contents = recipe.contents_override;
    else if (recipe.contents.size() > 1)
        contents = "[" + contents + "]";
    objects[2] = "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Resources << " +
                 recipe.resources + " >>" + (contents.empty() ? "" : " /Contents " + contents) + " >>";
    return BuildPdf(objects);
}

// A document held in memory with the bytes it reads.
class MemoryDoc {
public:
    explicit MemoryDoc(std::string bytes) : m_bytes(std::move(bytes)) {
        PDF::Ferrox::Initialize();  // the standard fonts' widths
        m_doc = std::make_unique<PDF::PDFDoc>(std::make_unique<Filters::ExtBufInputFilter>(
            reinterpret_cast<const UInt8*>(m_bytes.data()), m_bytes.size()));
    }
    PDF::PDFDoc& Doc() { return *m_doc; }
    PDF::Page FirstPage() { return *m_doc->GetPageIterator(1); }

private:
    std::string m_bytes;
    std::unique_ptr<PDF::PDFDoc> m_doc;
};

// What a walk saw of one element.
struct Seen {
    PDF::Element::Type type = PDF::Element::e_null;
    int level = 0;
    std::string text;              // the shown bytes
    std::vector<double> positions; // x, y of each character
    double adjustment = 0;
    double end_x = 0, end_y = 0;
    double font_size = 0;
    Common::Matrix2D ctm;
};

struct Walked {
    std::vector<Seen> seen;
    std::string error;  // the message of what ended the page, or empty
};

inline void WalkLevel(PDF::ElementReader& reader, Walked& out, int level) {
    while (PDF::Element* e = reader.Next()) {
        Seen s;
        s.type = e->GetType();
        s.level = level;
        s.ctm = e->GetCTM();
        if (s.type == PDF::Element::e_text) {
            if (e->GetTextData())
                s.text.assign(reinterpret_cast<const char*>(e->GetTextData()), size_t(e->GetTextDataSize()));
            PDF::CharData it, end;
            e->GetCharIterator(it);
            e->GetCharIteratorEnd(end);
            for (; it != end; ++it) {
                s.positions.push_back(it.x);
                s.positions.push_back(it.y);
            }
            s.adjustment = e->GetPosAdjustment();
            e->GetEndPosition(s.end_x, s.end_y);
            s.font_size = e->GetGState().GetFontSize();
        }
        out.seen.push_back(s);
        if (s.type == PDF::Element::e_form) {
            reader.FormBegin();
            WalkLevel(reader, out, level + 1);
            reader.End();
        }
    }
}

inline Walked WalkPage(const PageRecipe& recipe) {
    MemoryDoc doc(BuildPagePdf(recipe));
    Walked out;
    PDF::ElementReader reader;
    try {
        reader.Begin(doc.FirstPage());
        WalkLevel(reader, out, 1);
        reader.End();
    } catch (const Common::Exception& e) {
        out.error = e.GetMessage();
    }
    return out;
}

// The kinds seen, as a compact string: one letter per element.
inline std::string Kinds(const Walked& w) {
    static const char kLetters[] = "0PbTntIiSFgGmep";
    std::string out;
    for (const Seen& s : w.seen) out += kLetters[s.type];
    return out;
}

inline std::vector<const Seen*> Texts(const Walked& w) {
    std::vector<const Seen*> out;
    for (const Seen& s : w.seen)
        if (s.type == PDF::Element::e_text) out.push_back(&s);
    return out;
}

}  // namespace lum::test
