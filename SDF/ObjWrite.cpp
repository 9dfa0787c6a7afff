// Values as PDF syntax. Only document writing needs this; the reader never calls it.
#include <cmath>
#include <cstdio>
#include <cstring>

#include "Filters/FilterReader.h"
#include "Filters/FilterWriter.h"
#include "SDF/Obj.h"
#include "SDF/Parser.h"

namespace lum::SDF {

void Null::Write(Filters::FilterWriter& w) const { w.WriteString("null"); }

void Bool::Write(Filters::FilterWriter& w) const { w.WriteString(m_value ? "true" : "false"); }

void Number::Write(Filters::FilterWriter& w) const {
    char buf[64];
    // Numbers have no exponent form in PDF: integers plainly, reals in fixed notation with
    // trailing zeros dropped.
    if (std::isfinite(m_value) && m_value == std::trunc(m_value) && std::fabs(m_value) < 1e18) {
        std::snprintf(buf, sizeof buf, "%.0f", m_value);
    } else if (!std::isfinite(m_value)) {
        std::snprintf(buf, sizeof buf, "0");
    } else {
        std::snprintf(buf, sizeof buf, "%.6f", m_value);
        char* end = buf + std::strlen(buf);
        while (end > buf && end[-1] == '0') --end;
        if (end > buf && end[-1] == '.') --end;
        *end = 0;
    }
    w.WriteString(buf);
}

void Name::Write(Filters::FilterWriter& w) const {
    static const char kHex[] = "0123456789ABCDEF";
    w.WriteUChar('/');
    for (const char* p = m_text; *p; ++p) {
        const UInt8 c = UInt8(*p);
        if (Parser::gl_char_class[c] & Parser::e_name_plain) {
            w.WriteUChar(c);
        } else {
            w.WriteUChar('#');
            w.WriteUChar(UInt8(kHex[c >> 4]));
            w.WriteUChar(UInt8(kHex[c & 15]));
        }
    }
}

void Str::Write(Filters::FilterWriter& w) const {
    w.WriteUChar('(');
    for (UInt8 c : m_bytes) {
        if (c == '(' || c == ')' || c == '\\') {
            w.WriteUChar('\\');
            w.WriteUChar(c);
        } else if (c == '\r') {
            w.WriteString("\\r");  // a raw CR would come back as LF
        } else {
            w.WriteUChar(c);
        }
    }
    w.WriteUChar(')');
}

void Dict::Write(Filters::FilterWriter& w) const {
    w.WriteString("<<");
    for (const auto& [key, value] : m_map) {
        if (!value) continue;
        key->Write(w);
        w.WriteUChar(' ');
        value->Write(w);
    }
    w.WriteString(">>");
}

void Array::Write(Filters::FilterWriter& w) const {
    w.WriteUChar('[');
    bool first = true;
    for (const Obj* item : m_items) {
        if (!first) w.WriteUChar(' ');
        first = false;
        item->Write(w);
    }
    w.WriteUChar(']');
}

void FileStream::Write(Filters::FilterWriter& w) const {
    mp_dict->Write(w);
    w.WriteString("\nstream\n");
    std::unique_ptr<Filters::Filter> raw = const_cast<FileStream*>(this)->GetRawStream(true);
    Filters::FilterReader reader(raw.get());
    w.WriteFilter(reader);
    w.WriteString("\nendstream");
}

void Indirect::Write(Filters::FilterWriter& w) const {
    w.WriteUInt32(m_obj_num);
    w.WriteUChar(' ');
    w.WriteUInt32(GetGenNum());
    w.WriteString(" R");
}

}  // namespace lum::SDF
