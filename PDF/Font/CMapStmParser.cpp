// ParseCMap: the reading of a CMap stream. The parser is narrow on purpose: it acts on the
// operators that carry mappings, usecmap and the WMode def, and lets every other word pass
// with its operands, so a ToUnicode stream of a careless producer still yields what it holds.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "Common/Limits.h"
#include "Filters/Filter.h"
#include "Filters/FilterReader.h"
#include "PDF/Font/CMapStm.h"
#include "SDF/Obj.h"
#include "SDF/Parser.h"

namespace lum::PDF::Fnt {

using SDF::Obj;

// A failure whose condition text is written out, for checks whose C++ form differs from it.
#define LUM_CMAP_CHECK(cond, condition_text, message)                                          \
    do {                                                                                       \
        if (!(cond)) [[unlikely]]                                                              \
            throw ::lum::Common::Exception(::lum::Common::Exception::Formatted{},              \
                                           condition_text, __LINE__, __FILE__, LUM_FUNCTION,   \
                                           message);                                           \
    } while (0)

class CMapStmParser : public SDF::Parser {
public:
    CMapStmParser(Filters::Filter* stream, CMapStm& cmap) : Parser(nullptr, stream), m_cmap(cmap) {
        m_ops.reserve(4096);
    }

    void ParseCMap();

private:
    // An operand of a mapping block. Blocks are the bulk of a CMap (tens of thousands of
    // strings in a predefined one), so they are read without making objects: strings and
    // array items live in one reused byte arena. Operands are made in place (emplace_back):
    // a copy built on the stack and passed on stalls on the narrow stores that wrote it.
    struct Operand {
        enum Kind : UInt8 { e_string, e_number, e_array, e_other };
        Operand(Kind k, UInt32 o, UInt32 s, double n) : kind(k), offset(o), size(s), number(n) {}
        Kind kind;
        UInt32 offset;  // string: into m_arena; array: first item in m_items
        UInt32 size;    // string: bytes; array: items
        double number;
    };

    // Reads values onto the operand stack up to the next word, which it answers.
    const char* ReadOperands() {
        ResetNesting();
        while (GetObj()) ResetNesting();
        return GetToken();
    }
    // The same for the body of a mapping block, into m_ops: answers whether the word that
    // ends it is `end_word`.
    bool ReadBlock(const char* end_word);
    // One value of a block: false at a word, whose text stays in m_word.
    bool ReadBlockValue(std::vector<Operand>& out, bool in_array);
    // The common values of a block (hex strings of digit pairs, whole numbers) that lie whole
    // in the reader's window, read in one pass up to the first that doesn't: the number read.
    // The reader stays behind the last of them.
    size_t ReadWindowValues(std::vector<Operand>& out);
    void ReadHexString();
    void ReadWord();
    void SkipWhite();
    // A value the fast path doesn't read (literal strings, names, dictionaries), through the
    // object parser; false at a word.
    bool ReadOtherValue(std::vector<Operand>& out);

    // A code string: its length (1 to 4) and its bytes read big-endian.
    int CodeOf(const Operand& str, UInt32& code) const;
    // A destination string as UTF-16 units, into m_units.
    void UnitsOf(const Operand& str);
    static UInt32 CIDOf(const Operand& number);

    void BfRange();
    void BfChar();
    void CidChar();
    void CidRange();
    void UseCMap();
    void Def();

    CMapStm& m_cmap;
    std::vector<Operand> m_ops;
    std::vector<Operand> m_items;
    // The bytes of a block's strings. It only grows, so that a string of a few bytes costs
    // no allocation and no clearing.
    struct Arena {
        std::vector<UInt8> buffer;
        size_t size = 0;
        UInt8* Grow(size_t n) {
            if (buffer.size() - size < n) buffer.resize(std::max(2 * buffer.size(), size + n + 4096));
            UInt8* p = buffer.data() + size;
            size += n;
            return p;
        }
        const UInt8* At(UInt32 offset) const { return buffer.data() + offset; }
    } m_arena;
    std::string m_word;
    std::vector<UInt32> m_units;
};

namespace {

struct HexTable {
    signed char value[256];
    constexpr HexTable() : value() {
        for (int c = 0; c < 256; ++c)
            value[c] = c >= '0' && c <= '9'   ? char(c - '0')
                       : c >= 'a' && c <= 'f' ? char(c - 'a' + 10)
                       : c >= 'A' && c <= 'F' ? char(c - 'A' + 10)
                                              : char(-1);
    }
};
constexpr HexTable kHex;

// The value of a hex digit, -1 for any other byte (and for -1, the end of the data).
inline int HexDigit(int c) { return c >= 0 && c < 256 ? kHex.value[c] : -1; }

}  // namespace

void CMapStmParser::ReadHexString() {
    Filters::FilterReader& in = GetReader();
    in.Get();  // '<'
    for (;;) {
        // Pairs of adjacent digits are the common case: take them straight from the window.
        const UInt8* p = in.WindowBegin();
        const UInt8* e = p + in.WindowSize();
        while (e - p >= 2) {
            const int hi = HexDigit(p[0]), lo = HexDigit(p[1]);
            if ((hi | lo) < 0) break;
            *m_arena.Grow(1) = UInt8(hi * 16 + lo);
            p += 2;
        }
        in.Skip(size_t(p - in.WindowBegin()));
        if (m_arena.size > Limits::kMaxTokenBytes) [[unlikely]]
            LUM_FAIL("Token exceeds the maximum length");
        SkipWhiteSpaceAndComments();
        int c = in.Get();
        if (c == '>') break;
        const int hi = HexDigit(c);
        if (hi < 0) LUM_FAIL("Bad String");
        SkipWhiteSpaceAndComments();
        c = in.Get();
        const int lo = HexDigit(c);
        if (lo >= 0) {
            *m_arena.Grow(1) = UInt8(hi * 16 + lo);
        } else if (c == '>') {
            *m_arena.Grow(1) = UInt8(hi * 16);  // an odd last digit is a high nibble
            break;
        } else {
            LUM_FAIL("Bad String");
        }
    }
}

void CMapStmParser::ReadWord() {
    Filters::FilterReader& in = GetReader();
    m_word.clear();
    for (;;) {
        const UInt8* p = in.WindowBegin();
        const UInt8* e = p + in.WindowSize();
        const UInt8* q = p;
        while (q < e && !IsWordEnd(*q)) ++q;
        if (m_word.size() + size_t(q - p) > Limits::kMaxTokenBytes) [[unlikely]]
            LUM_FAIL("Token exceeds the maximum length");
        m_word.append(reinterpret_cast<const char*>(p), size_t(q - p));
        in.Skip(size_t(q - p));
        if (q < e) return;            // stopped at a byte that ends the word
        if (in.Peek() < 0) return;    // the end of the data
    }
}

void CMapStmParser::SkipWhite() {
    // White space between the values of a block is mostly a byte or two in the window; the
    // object parser's skip handles comments and the ends of windows.
    Filters::FilterReader& in = GetReader();
    const UInt8* p = in.WindowBegin();
    const UInt8* e = p + in.WindowSize();
    const UInt8* q = p;
    while (q < e && IsWhite(*q)) ++q;
    in.Skip(size_t(q - p));
    if (q == e || *q == '%') SkipWhiteSpaceAndComments();
}

bool CMapStmParser::ReadOtherValue(std::vector<Operand>& out) {
    ResetNesting();
    if (!GetObj()) {
        m_word = GetToken();
        return false;
    }
    Obj* value = m_operand_stack.back();
    if (value->IsString()) {
        const UInt32 offset = UInt32(m_arena.size);
        const size_t n = size_t(value->Size());
        if (n > 0) std::memcpy(m_arena.Grow(n), value->GetBuffer(), n);
        out.emplace_back(Operand::e_string, offset, UInt32(value->Size()), 0.0);
    } else if (value->IsNumber()) {
        out.emplace_back(Operand::e_number, 0u, 0u, value->GetNumber());
    } else {
        out.emplace_back(Operand::e_other, 0u, 0u, 0.0);
    }
    PopObj();
    return true;
}

size_t CMapStmParser::ReadWindowValues(std::vector<Operand>& out) {
    Filters::FilterReader& in = GetReader();
    const UInt8* b = in.WindowBegin();
    const UInt8* e = b + in.WindowSize();
    const UInt8* done = b;  // the end of the last value read
    size_t count = 0;
    for (;;) {
        const UInt8* p = done;
        while (p < e && IsWhite(*p)) ++p;
        if (e - p < 2) break;
        if (p[0] == '<' && HexDigit(p[1]) >= 0) {
            const UInt8* q = p + 1;
            while (e - q >= 2 && (HexDigit(q[0]) | HexDigit(q[1])) >= 0) q += 2;
            if (q == e || *q != '>') break;
            const size_t n = size_t(q - p - 1) / 2;
            if (m_arena.size + n > Limits::kMaxTokenBytes) break;  // the slow road raises
            const UInt32 offset = UInt32(m_arena.size);
            UInt8* dst = m_arena.Grow(n);
            for (const UInt8* d = p + 1; d < q; d += 2) *dst++ = UInt8(HexDigit(d[0]) * 16 + HexDigit(d[1]));
            out.emplace_back(Operand::e_string, offset, UInt32(n), 0.0);
            done = q + 1;
        } else if (p[0] >= '0' && p[0] <= '9') {
            // Whole numbers of up to 15 digits, ended by white space or a delimiter.
            const UInt8* q = p;
            double v = 0;
            while (q < e && *q >= '0' && *q <= '9' && q - p < 15) v = v * 10 + (*q++ - '0');
            if (q == e || !IsWordEnd(*q)) break;
            out.emplace_back(Operand::e_number, 0u, 0u, v);
            done = q;
        } else {
            break;
        }
        ++count;
    }
    if (count > 0) in.Skip(size_t(done - b));
    return count;
}

bool CMapStmParser::ReadBlockValue(std::vector<Operand>& out, bool in_array) {
    if (ReadWindowValues(out) > 0) return true;
    SkipWhite();
    Filters::FilterReader& in = GetReader();
    const int c = in.Peek();
    if (c < 0) {
        m_word.clear();
        return false;
    }
    if (c == '<') {
        const UInt8* w = in.WindowBegin();
        const bool dict = in.WindowSize() >= 2 ? w[1] == '<' : false;
        if (!dict && in.WindowSize() >= 2) {
            const UInt32 offset = UInt32(m_arena.size);
            ReadHexString();
            out.emplace_back(Operand::e_string, offset, UInt32(m_arena.size - offset), 0.0);
            return true;
        }
        return ReadOtherValue(out);
    }
    if ((c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.') {
        ReadWord();
        out.emplace_back(Operand::e_number, 0u, 0u, SDF::ParseNumberToken(m_word.data(), m_word.size()));
        return true;
    }
    if (c == '[' && !in_array) {
        in.Get();
        const UInt32 first = UInt32(m_items.size());
        // The items up to the closing bracket; a word ends the array, as in the object parser.
        while (ReadBlockValue(m_items, true)) {
            if (m_items.size() >= Limits::kMaxOperandStack) [[unlikely]]
                LUM_FAIL("Operand stack exceeds its limit");
        }
        if (m_word == "]") {
            out.emplace_back(Operand::e_array, first, UInt32(m_items.size() - first), 0.0);
            return true;
        }
        return false;
    }
    if (c == ']' && in_array) {
        in.Get();
        m_word = "]";
        return false;
    }
    return ReadOtherValue(out);
}

bool CMapStmParser::ReadBlock(const char* end_word) {
    m_ops.clear();
    m_items.clear();
    m_arena.size = 0;
    while (ReadBlockValue(m_ops, false)) {
        if (m_ops.size() >= Limits::kMaxOperandStack) [[unlikely]]
            LUM_FAIL("Operand stack exceeds its limit");
    }
    const char* str = m_word.c_str();
    return strcmp(str, end_word) == 0;
}

int CMapStmParser::CodeOf(const Operand& str, UInt32& code) const {
    LUM_CHECK(str.kind == Operand::e_string, "Invalid CMap: string expected");
    const UInt64 code_len_idx = UInt64(str.size) - 1;  // an empty string wraps around
    LUM_CHECK(code_len_idx<4, "Invalid CMap: invalid code size");
    const UInt8* b = m_arena.At(str.offset);
    code = 0;
    for (UInt32 i = 0; i < str.size; ++i) code = (code << 8) | b[i];
    return static_cast<int>(str.size);
}

void CMapStmParser::UnitsOf(const Operand& str) {
    LUM_CHECK(str.kind == Operand::e_string, "Invalid CMap: string expected");
    const UInt64 size = str.size;
    const UInt64 uni_num = (size + 1) / 2;
    LUM_CHECK(uni_num > 0, "Bad CMap");
    const UInt8* b = m_arena.At(str.offset);
    const UInt64 kept = std::min<UInt64>(uni_num, Limits::kMaxCMapValueUnits);
    m_units.resize(kept);
    for (UInt64 k = 0; k < kept; ++k) {
        const UInt64 i = 2 * k;
        // A last odd byte is a unit of its own.
        m_units[k] = i + 1 < size ? (UInt32(b[i]) << 8) | b[i + 1] : b[i];
    }
}

UInt32 CMapStmParser::CIDOf(const Operand& number) {
    LUM_CHECK(number.kind == Operand::e_number, "Invalid CMap: number expected");
    const double v = number.number;
    return v >= 0 && v < 4294967296.0 ? static_cast<UInt32>(v) : 0;
}

void CMapStmParser::BfRange() {
    LUM_CHECK(m_operand_stack.size() >= 1, "Invalid CMap: beginbfrange operand");
    const bool ended = ReadBlock("endbfrange");
    LUM_CMAP_CHECK(ended, "strcmp(str, \"endbfrange\") == 0", "Invalid CMap");
    const size_t n = m_ops.size() / 3;
    for (size_t i = 0; i < n; ++i) {
        UInt32 low = 0, high = 0;
        const int len = CodeOf(m_ops[3 * i], low);
        CodeOf(m_ops[3 * i + 1], high);
        const Operand& dst = m_ops[3 * i + 2];
        if (dst.kind == Operand::e_array) {
            const UInt64 arr_sz = dst.size;
            LUM_CMAP_CHECK(Int64(high) - Int64(low) + 1 == Int64(arr_sz),
                           "int(high)-int(low)+1==arr_sz",
                           "Invalid CMap: the array size does not match beginbfrange");
            if (low > high) continue;
            for (UInt32 k = 0; k < arr_sz; ++k) {
                UnitsOf(m_items[dst.offset + k]);
                m_cmap.AddSingle(len, low + k, m_units.data(), UInt32(m_units.size()));
            }
            continue;
        }
        if (low > high) continue;
        UnitsOf(dst);
        if (low == high)
            m_cmap.AddSingle(len, low, m_units.data(), UInt32(m_units.size()));
        else
            m_cmap.AddRange(len, low, high, m_units.data(), UInt32(m_units.size()));
    }
}

void CMapStmParser::BfChar() {
    LUM_CHECK(m_operand_stack.size() >= 1, "Invalid CMap: beginbfchar operand");
    const bool ended = ReadBlock("endbfchar");
    LUM_CMAP_CHECK(ended, "strcmp(str, \"endbfchar\") == 0", "Invalid CMap: endbfchar expected");
    const size_t n = m_ops.size() / 2;
    for (size_t i = 0; i < n; ++i) {
        UInt32 code = 0;
        const int len = CodeOf(m_ops[2 * i], code);
        UnitsOf(m_ops[2 * i + 1]);
        m_cmap.AddSingle(len, code, m_units.data(), UInt32(m_units.size()));
    }
}

void CMapStmParser::CidChar() {
    LUM_CHECK(m_operand_stack.size() >= 1, "Invalid CMap: begincidchar operand");
    const bool ended = ReadBlock("endcidchar");
    LUM_CMAP_CHECK(ended, "strcmp(str, \"endcidchar\") == 0", "Invalid CMap: endcidchar expected");
    const size_t n = m_ops.size() / 2;
    for (size_t i = 0; i < n; ++i) {
        UInt32 code = 0;
        const int len = CodeOf(m_ops[2 * i], code);
        const UInt32 cid = CIDOf(m_ops[2 * i + 1]);
        m_cmap.AddSingle(len, code, &cid, 1);
    }
}

void CMapStmParser::CidRange() {
    LUM_CHECK(m_operand_stack.size() >= 1, "Invalid CMap: begincidrange operand");
    const bool ended = ReadBlock("endcidrange");
    LUM_CMAP_CHECK(ended, "strcmp(str, \"endcidrange\") == 0",
                   "Invalid CMap: endcidrange expected");
    const size_t n = m_ops.size() / 3;
    for (size_t i = 0; i < n; ++i) {
        UInt32 low = 0, high = 0;
        const int len = CodeOf(m_ops[3 * i], low);
        CodeOf(m_ops[3 * i + 1], high);
        const UInt32 cid = CIDOf(m_ops[3 * i + 2]);
        if (low > high) continue;
        if (low == high)
            m_cmap.AddSingle(len, low, &cid, 1);
        else
            m_cmap.AddRange(len, low, high, &cid, 1);
    }
}

void CMapStmParser::UseCMap() {
    LUM_CHECK(m_operand_stack.size() == 1, "Invalid CMap: usecmap operand");
    Obj* name = m_operand_stack[0];
    if (!name->IsName()) return;
    // A parent the resources don't have fails the whole CMap (CMapNotFoundExc goes up through
    // the parse): such a stream maps only part of its codes itself.
    m_cmap.mp_parent = CMap::Create(name);
}

void CMapStmParser::Def() {
    if (m_operand_stack.size() != 2) return;
    Obj* key = m_operand_stack[0];
    Obj* value = m_operand_stack[1];
    if (key->IsName() && value->IsNumber() && std::strcmp(key->GetName(), "WMode") == 0 &&
        value->GetNumber() == 1)
        m_cmap.m_horizontal = false;
}

void CMapStmParser::ParseCMap() {
    for (;;) {
        ClearStack();
        const char* word = ReadOperands();
        if (!*word || std::strcmp(word, "endcmap") == 0) break;
        switch (word[0]) {
            case 'b':
                if (std::strcmp(word, "beginbfrange") == 0) BfRange();
                else if (std::strcmp(word, "beginbfchar") == 0) BfChar();
                else if (std::strcmp(word, "begincidchar") == 0) CidChar();
                else if (std::strcmp(word, "begincidrange") == 0) CidRange();
                break;
            case 'u':
                if (std::strcmp(word, "usecmap") == 0) UseCMap();
                break;
            case 'd':
                if (std::strcmp(word, "def") == 0) Def();
                break;
            default:
                break;
        }
    }
    ClearStack();
}

void ParseCMapStream(CMapStm& cmap, Filters::Filter* data) {
    CMapStmParser parser(data, cmap);
    parser.ParseCMap();
}

}  // namespace lum::PDF::Fnt
