#pragma once
// Helpers shared by the object, parser and stream tests: catching a failure with its texts,
// and parsing bytes from memory.
#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/TestSupport.h"
#include "support/TrickleFilter.h"
#include "Filters/ExtBufInputFilter.h"
#include "Filters/Filter.h"
#include "Filters/FilterReader.h"
#include "SDF/DocImpl.h"
#include "SDF/Obj.h"
#include "SDF/Parser.h"
#include "SDF/SDFDoc.h"

namespace lum::test {

// A parser over a copy of `bytes`, with the default container operator.
class MemParser {
public:
    explicit MemParser(std::string bytes)
        : m_bytes(std::move(bytes)),
          m_filter(reinterpret_cast<const UInt8*>(m_bytes.data()), m_bytes.size()),
          m_parser(nullptr, &m_filter) {}

    SDF::Parser& operator*() { return m_parser; }
    SDF::Parser* operator->() { return &m_parser; }

    // Reads one top-level value, as a caller of GetObj does; null when a word came instead.
    SDF::Obj* One() {
        m_parser.ClearStack();
        m_parser.ResetNesting();
        if (!m_parser.GetObj()) return nullptr;
        return m_parser.GetOperandStack().back();
    }

private:
    std::string m_bytes;
    Filters::ExtBufInputFilter m_filter;
    SDF::Parser m_parser;
};

// `s` compressed by zlib, as a FlateDecode stream holds it.
inline std::string Deflate(const std::string& s) {
    uLongf n = compressBound(uLong(s.size()));
    std::string out(n, '\0');
    compress(reinterpret_cast<Bytef*>(out.data()), &n, reinterpret_cast<const Bytef*>(s.data()), uLong(s.size()));
    out.resize(n);
    return out;
}

// One value parsed from `text`, owned by the caller.
inline std::unique_ptr<SDF::Obj> ParseValue(const std::string& text) {
    MemParser p(text);
    p.One();
    return std::unique_ptr<SDF::Obj>(p->PopObjNoDelete());
}

// A memory stream whose dictionary is written in PDF syntax.
inline std::unique_ptr<SDF::FileStream> MakeStream(const std::string& dict, const std::string& data) {
    return std::make_unique<SDF::FileStream>(static_cast<SDF::Dict*>(ParseValue(dict).release()),
                                             std::vector<UInt8>(data.begin(), data.end()));
}

// A compact text of a value, for comparing structures: numbers with %g, strings with
// non-printing bytes as \xNN, references as R<num>.
inline std::string Dump(SDF::Obj* v) {
    if (!v) return "<nullptr>";
    if (v->IsIndirect()) return "R" + std::to_string(v->GetObjNum());
    std::string out;
    switch (v->GetType()) {
        case SDF::Obj::e_null:
            return "null";
        case SDF::Obj::e_bool:
            return v->GetBool() ? "true" : "false";
        case SDF::Obj::e_number: {
            char buf[40];
            std::snprintf(buf, sizeof buf, "%g", v->GetNumber());
            return buf;
        }
        case SDF::Obj::e_name:
            return std::string("/") + v->GetName();
        case SDF::Obj::e_string: {
            out = "(";
            const UInt8* b = v->GetBuffer();
            for (UInt64 i = 0; i < v->Size(); ++i) {
                if (b[i] >= 0x20 && b[i] < 0x7F) {
                    out += char(b[i]);
                } else {
                    char buf[8];
                    std::snprintf(buf, sizeof buf, "\\x%02X", b[i]);
                    out += buf;
                }
            }
            return out + ")";
        }
        case SDF::Obj::e_array:
            out = "[";
            for (UInt32 i = 0; i < v->Size(); ++i) out += (i ? " " : "") + Dump(v->GetAt(i));
            return out + "]";
        case SDF::Obj::e_dict:
        case SDF::Obj::e_stream:
            out = v->IsStream() ? "stream<<" : "<<";
            for (auto it = v->DictBegin(); it != v->DictEnd(); ++it)
                out += std::string("/") + it->first->GetName() + " " + Dump(it->second) + " ";
            return out + ">>";
    }
    return "?";
}

// One object of a hand-made file: its whole text, header included, so that a test can break
// the header as well as the body.
struct PdfObject {
    UInt32 num;
    std::string text;
};

// A file with a classic table: objects in order, rows for the numbers given (others free),
// and a trailer with Size and Root 1 0 R.
inline std::string BuildPdf(const std::vector<PdfObject>& objects, UInt32 size = 0) {
    std::string out = "%PDF-1.7\n";
    std::map<UInt32, size_t> offsets;
    UInt32 top = 1;
    for (const auto& o : objects) {
        offsets[o.num] = out.size();
        out += o.text + "\n";
        top = std::max(top, o.num + 1);
    }
    const UInt32 n = size ? size : top;
    const size_t xref = out.size();
    out += "xref\n0 " + std::to_string(n) + "\n0000000000 65535 f \n";
    char row[32];
    for (UInt32 i = 1; i < n; ++i) {
        auto it = offsets.find(i);
        std::snprintf(row, sizeof row, "%010zu 00000 %c \n", it == offsets.end() ? 0 : it->second,
                      it == offsets.end() ? 'f' : 'n');
        out += row;
    }
    out += "trailer\n<</Size " + std::to_string(n) + " /Root 1 0 R>>\nstartxref\n" +
           std::to_string(xref) + "\n%%EOF\n";
    return out;
}

// The catalog and an empty page tree, which every opened file needs.
inline std::vector<PdfObject> BaseObjects() {
    return {{1, "1 0 obj <</Type /Catalog /Pages 2 0 R>> endobj"},
            {2, "2 0 obj <</Type /Pages /Kids [] /Count 0>> endobj"}};
}

// A document opened on bytes that it keeps.
class MemDoc {
public:
    explicit MemDoc(std::string bytes, bool check_root = true) : m_bytes(std::move(bytes)) {
        m_doc = std::make_unique<SDF::SDFDoc>(
            std::make_unique<Filters::ExtBufInputFilter>(
                reinterpret_cast<const UInt8*>(m_bytes.data()), m_bytes.size()),
            check_root);
    }
    SDF::SDFDoc& operator*() { return *m_doc; }
    SDF::SDFDoc* operator->() { return m_doc.get(); }
    SDF::SDFDoc& Doc() { return *m_doc; }
    SDF::DocImpl& Impl() { return *m_doc->GetImpl(); }
    SDF::Indirect* Entry(UInt32 num) { return Impl().GetEntry(num); }
    SDF::Indirect* Get(UInt32 num) { return Impl().GetObj(num); }
    // The trailer's dictionary (of a cross-reference stream: the stream, which answers the
    // dictionary's questions).
    SDF::Obj* Trailer() { return Impl().GetTrailer()->GetTarget(); }
    const std::string& Bytes() const { return m_bytes; }

private:
    std::string m_bytes;
    std::unique_ptr<SDF::SDFDoc> m_doc;
};

// Everything a filter chain delivers.
inline std::string ReadAll(std::unique_ptr<Filters::Filter> f) {
    Filters::FilterReader r(f.get());
    std::string out;
    for (int c; (c = r.Get()) >= 0;) out += char(c);
    return out;
}

// A file of the base objects and `extra`.
inline std::string WithObjects(std::vector<PdfObject> extra, UInt32 size = 0) {
    auto objs = BaseObjects();
    objs.insert(objs.end(), extra.begin(), extra.end());
    return BuildPdf(objs, size);
}

}  // namespace lum::test
