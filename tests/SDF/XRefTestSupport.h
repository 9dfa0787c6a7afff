#pragma once
// A small builder that writes PDFs with right offsets, for the tests of the document store.
#include <cstdio>
#include <map>
#include <string>

#include "SDF/ObjTestSupport.h"

namespace lum::test {

// Writes a PDF piece by piece, remembering where each object starts.
class PdfBuilder {
public:
    explicit PdfBuilder(std::string start = "%PDF-1.7\n") : m_out(std::move(start)) {}

    // "num gen obj", the body, "endobj".
    PdfBuilder& Object(UInt32 num, const std::string& body, UInt16 gen = 0) {
        m_offsets[num] = m_out.size();
        m_out += std::to_string(num) + " " + std::to_string(gen) + " obj\n" + body + "\nendobj\n";
        return *this;
    }
    PdfBuilder& Raw(const std::string& bytes) {
        m_out += bytes;
        return *this;
    }
    // The catalog, page tree and one page as objects 1 to 3.
    PdfBuilder& PageTree() {
        Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
        Object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
        return Object(3, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] >>");
    }
    size_t Pos() const { return m_out.size(); }
    size_t OffsetOf(UInt32 num) const { return m_offsets.at(num); }

    // A 20-byte table row.
    static std::string Row(size_t offset, UInt32 gen, char type) {
        char row[32];
        std::snprintf(row, sizeof row, "%010zu %05u %c\r\n", offset, gen, type);
        return row;
    }
    // The trailer with `dict` inside its brackets, startxref naming `at`, and the end marker.
    static std::string Trailer(const std::string& dict, size_t at) {
        return "trailer\n<< " + dict + " >>\nstartxref\n" + std::to_string(at) + "\n%%EOF\n";
    }
    // "xref" and one subsection over 0..max of the objects written (missing ones free).
    std::string Table(size_t shift = 0) const {
        const UInt32 size = m_offsets.empty() ? 1 : m_offsets.rbegin()->first + 1;
        std::string t = "xref\n0 " + std::to_string(size) + "\n" + Row(0, 65535, 'f');
        for (UInt32 n = 1; n < size; ++n) {
            auto it = m_offsets.find(n);
            t += it == m_offsets.end() ? Row(0, 65535, 'f') : Row(it->second + shift, 0, 'n');
        }
        return t;
    }
    // The table, its trailer and startxref: a complete file.
    std::string WithTable(const std::string& trailer_extra = "/Root 1 0 R") {
        const size_t at = m_out.size();
        const UInt32 size = m_offsets.empty() ? 1 : m_offsets.rbegin()->first + 1;
        m_out += Table() + Trailer("/Size " + std::to_string(size) + " " + trailer_extra, at);
        return m_out;
    }
    const std::string& Bytes() const { return m_out; }

private:
    std::string m_out;
    std::map<UInt32, size_t> m_offsets;
};

// The text of a string object, or "" for anything else.
inline std::string StrText(SDF::Obj* obj) {
    if (!obj || !obj->IsString()) return "";
    const UInt8* b = obj->GetBuffer();
    return b ? std::string(reinterpret_cast<const char*>(b), obj->Size()) : std::string();
}

}  // namespace lum::test
