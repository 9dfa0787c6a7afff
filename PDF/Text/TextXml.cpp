#include "PDF/Text/TextXml.h"

#include <cmath>
#include <cstdio>

#include "Common/NumberFormat.h"
#include "Common/UString.h"
#include "PDF/Text/TextExtractorImpl.h"
#include "PDF/Text/TextFlags.h"
#include "PDF/TextExtractor.h"

namespace lum::PDF {

namespace {

bool IsHighSurrogate(Unicode u) { return u >= 0xD800 && u <= 0xDBFF; }
bool IsLowSurrogate(Unicode u) { return u >= 0xDC00 && u <= 0xDFFF; }

// The markup characters; false for any other unit.
bool AppendEntity(std::string& out, Unicode u) {
    switch (u) {
        case '"': out += "&quot;"; return true;
        case '&': out += "&amp;"; return true;
        case '<': out += "&lt;"; return true;
        case '>': out += "&gt;"; return true;
        default: return false;
    }
}

void AppendUtf8(std::string& out, UInt32 cp) {
    if (cp < 0x80) {
        out += char(cp);
    } else if (cp < 0x800) {
        out += char(0xC0 | (cp >> 6));
        out += char(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += char(0xE0 | (cp >> 12));
        out += char(0x80 | ((cp >> 6) & 0x3F));
        out += char(0x80 | (cp & 0x3F));
    } else {
        out += char(0xF0 | (cp >> 18));
        out += char(0x80 | ((cp >> 12) & 0x3F));
        out += char(0x80 | ((cp >> 6) & 0x3F));
        out += char(0x80 | (cp & 0x3F));
    }
}

void AppendReference(std::string& out, const char* format, UInt32 value) {
    char buf[16];
    const int n = std::snprintf(buf, sizeof buf, format, value);
    out.append(buf, size_t(n));
}

void AppendAttribute(std::string& out, const char* name, const std::string& value) {
    out += ' ';
    out += name;
    out += "=\"";
    out += value;
    out += '"';
}

// x1, y1, width, height; with `absolute` the two differences lose their sign.
std::string BoxValue(const Rect& r, bool absolute) {
    std::string v;
    Common::AppendNumber(v, r.x1);
    v += ", ";
    Common::AppendNumber(v, r.y1);
    v += ", ";
    Common::AppendNumber(v, absolute ? std::fabs(r.x2 - r.x1) : r.x2 - r.x1);
    v += ", ";
    Common::AppendNumber(v, absolute ? std::fabs(r.y2 - r.y1) : r.y2 - r.y1);
    return v;
}

// The style attribute: family, size, serif or not, colour.
void AppendStyle(std::string& out, const TextExtractor::Style& style) {
    std::string v = "font-family:";
    const UString name = style.GetFontName();
    AppendXmlText(v, name.GetBuffer(), name.GetLength(), false);
    v += "; font-size:";
    Common::AppendNumber(v, style.GetFontSize());
    v += ';';
    v += style.IsSerif() ? " " : " sans-serif; ";
    UInt8 rgb[3];
    style.GetColor(rgb);
    char color[16];
    std::snprintf(color, sizeof color, "%02X%02X%02X;", rgb[0], rgb[1], rgb[2]);
    v += "color: #";
    v += color;
    AppendAttribute(out, "style", v);
}

}  // namespace

void AppendXmlText(std::string& out, const Unicode* units, Int32 count, bool ascii) {
    for (Int32 i = 0; i < count; ++i) {
        const Unicode u = units[i];
        if (IsHighSurrogate(u) && i + 1 < count && IsLowSurrogate(units[i + 1])) {
            const UInt32 cp = 0x10000 + ((UInt32(u) - 0xD800) << 10) + (units[i + 1] - 0xDC00);
            ++i;
            if (ascii) {
                AppendReference(out, "&#x%X;", cp);
            } else {
                AppendUtf8(out, cp);
            }
            continue;
        }
        if (AppendEntity(out, u)) continue;
        if (ascii) {
            if (u == 0xFFFF) {
                AppendReference(out, "&#x%06X;", u);
            } else if (u >= 0xFF) {
                AppendReference(out, "&#x%04X;", u);
            } else if (u >= 0x20 && u <= 0x7E) {
                out += char(u);
            } else {
                AppendReference(out, "&#x%02X;", u);
            }
            continue;
        }
        if (u == 0xFFFE || u == 0xFFFF || (u < 0x20 && u != 0x09 && u != 0x0A && u != 0x0D)) {
            out += '\t';
        } else if (IsHighSurrogate(u) || IsLowSurrogate(u)) {
            // A lone surrogate has no UTF-8 form; the replacement character keeps the XML
            // well-formed.
            AppendUtf8(out, 0xFFFD);
        } else {
            AppendUtf8(out, u);
        }
    }
}

void WriteXml(const TextExtractorImpl& store, const XmlPageInfo& page, UInt32 flags,
              UString& out) {
    const bool utf16 = flags & e_xml_utf16;
    const bool words_as_elements = flags & e_xml_words_as_elements;
    const bool bbox = flags & e_xml_output_bbox;
    const bool styles = flags & e_xml_output_styles;
    std::string x;
    x.reserve(store.Text().size() * 2 + 256);
    x += utf16 ? "<?xml version=\"1.0\" encoding=\"utf-16\" ?>\n"
               : "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n";
    x += "<Page";
    AppendAttribute(x, "num", std::to_string(page.number));
    AppendAttribute(x, "crop_box", BoxValue(page.crop_box, true));
    AppendAttribute(x, "media_box", BoxValue(page.media_box, true));
    AppendAttribute(x, "rotate", std::to_string(page.rotate));
    x += ">\n";

    Int32 flow = -1, para = -1;
    for (TextExtractor::Line line = FirstLine(store); line.IsValid(); line = line.GetNextLine()) {
        if (line.GetNumWords() < 1) continue;
        if (line.GetFlowID() != flow) {
            if (flow != -1) {
                if (para != -1) x += "</Para>\n";
                para = -1;
                x += "</Flow>\n";
            }
            flow = line.GetFlowID();
            x += "<Flow";
            AppendAttribute(x, "id", std::to_string(flow));
            x += ">\n";
        }
        if (line.GetParagraphID() != para) {
            if (para != -1) x += "</Para>\n";
            para = line.GetParagraphID();
            x += "<Para";
            AppendAttribute(x, "id", std::to_string(para));
            x += ">\n";
        }
        x += "<Line";
        if (bbox) AppendAttribute(x, "box", BoxValue(line.GetBBox(), false));
        TextExtractor::Style line_style;
        if (styles) {
            line_style = line.GetStyle();
            AppendStyle(x, line_style);
        }
        x += ">\n";
        bool first = true;
        for (TextExtractor::Word w = line.GetFirstWord(); w.IsValid(); w = w.GetNextWord()) {
            if (words_as_elements) {
                x += "<Word";
                if (bbox) AppendAttribute(x, "box", BoxValue(w.GetBBox(), false));
                if (styles) {
                    const TextExtractor::Style word_style = w.GetStyle();
                    if (word_style != line_style) AppendStyle(x, word_style);
                }
                x += '>';
                AppendXmlText(x, w.GetString(), w.GetStringLen(), utf16);
                x += "</Word>\n";
            } else {
                if (!first) x += ' ';
                AppendXmlText(x, w.GetString(), w.GetStringLen(), utf16);
            }
            first = false;
        }
        x += "</Line>\n";
    }
    if (flow != -1) {
        if (para != -1) x += "</Para>\n";
        x += "</Flow>\n";
    }
    x += "</Page>\n";

    if (utf16) {
        out = UString(x.data(), static_cast<int>(x.size()), enc_ascii);
    } else {
        out = UString(x);
    }
}

}  // namespace lum::PDF
