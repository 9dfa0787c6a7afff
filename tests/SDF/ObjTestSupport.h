#pragma once
// Helpers shared by the object, parser and stream tests: catching a failure with its texts,
// and parsing bytes from memory.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Filters/ExtBufInputFilter.h"
#include "SDF/Obj.h"
#include "SDF/Parser.h"

namespace lum::test {


struct Failure {
    bool thrown = false;
    std::string message;
    std::string condition;
    std::string function;
};

template <class F>
Failure CatchFailure(F&& f) {
    Failure r;
    try {
        f();
    } catch (const Common::Exception& e) {
        r.thrown = true;
        r.message = e.GetMessage();
        r.condition = e.GetCondition();
        r.function = e.GetFunction();
    }
    return r;
}

// Expects `stmt` to fail with exactly this message, condition text and function.
#define EXPECT_LUM_FAILURE(stmt, msg, cond, func)                                  \
    do {                                                                           \
        const ::lum::test::Failure f_ = ::lum::test::CatchFailure([&] { stmt; });  \
        EXPECT_TRUE(f_.thrown) << #stmt;                                           \
        EXPECT_EQ(f_.message, msg) << #stmt;                                       \
        EXPECT_EQ(f_.condition, cond) << #stmt;                                    \
        EXPECT_EQ(f_.function, func) << #stmt;                                     \
    } while (0)

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

}  // namespace lum::test

namespace lum::test {


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

}  // namespace lum::test
