#include "Apps/Bindery/TextRuns.h"

#include <cmath>
#include <string>

#include "Apps/Bindery/Options.h"
#include "Apps/Bindery/WriteText.h"
#include "Common/UString.h"
#include "PDF/ElementReader.h"
#include "PDF/Font/Font.h"
#include "PDF/Page.h"

namespace lum::Bindery {

namespace {

// The 8-bit text in front of the string, widened byte by byte.
void AppendWidened(UString& out, const std::string& bytes) {
    for (unsigned char c : bytes) out.Append(Unicode(c));
}

void WriteRun(Options& opt, PDF::Element& e) {
    PDF::CharData it, end;
    e.GetCharIterator(it);
    e.GetCharIteratorEnd(end);
    if (it == end) return;
    const PDF::Font& font = e.GetGState().GetFont();
    const char* name = font.GetName();
    PDF::Rect box;
    e.GetBBox(box);
    const UString text = e.GetTextString();

    std::string head;
    AppendNumber(head, box.x1);
    head += ", ";
    AppendNumber(head, box.y1);
    head += ", ";
    AppendNumber(head, std::fabs(box.x2 - box.x1));
    head += ", ";
    AppendNumber(head, std::fabs(box.y2 - box.y1));
    head += ", \"";
    head += name;
    head += "\", , ";
    head += std::to_string(text.GetLength());
    head += ", \"";

    UString line;
    AppendWidened(line, head);
    line.Append(text);
    AppendWidened(line, "\"\n");
    WriteText(opt, line);
}

void WalkLevel(Options& opt, PDF::ElementReader& reader);

// The elements of one text object, up to its e_text_end.
void WalkTextObject(Options& opt, PDF::ElementReader& reader) {
    while (PDF::Element* e = reader.Next()) {
        const PDF::Element::Type type = e->GetType();
        if (type == PDF::Element::e_text_end) return;
        if (type == PDF::Element::e_text) WriteRun(opt, *e);
    }
}

void WalkLevel(Options& opt, PDF::ElementReader& reader) {
    while (PDF::Element* e = reader.Next()) {
        switch (e->GetType()) {
            case PDF::Element::e_text_begin:
                WalkTextObject(opt, reader);
                break;
            case PDF::Element::e_form:
                reader.FormBegin();
                WalkLevel(opt, reader);
                reader.End();
                break;
            default:
                break;
        }
    }
}

}  // namespace

void WriteTextRuns(Options& opt, const PDF::Page& page) {
    PDF::ElementReader reader;
    reader.Begin(page);
    WalkLevel(opt, reader);
    reader.End();
}

}  // namespace lum::Bindery
