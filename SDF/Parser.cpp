// The tokeniser and the value reader. One pass over the filter's windows: runs of plain bytes
// are found by a class-table scan and copied as a block, so a byte costs a table lookup and
// no call. The token buffer and the operand stack are reused; the only allocations are the
// values themselves (and the text of a name that the static table does not hold).
#include "SDF/Parser.h"

#include <algorithm>
#include <cstring>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Common/NumberConversions.h"

namespace lum::SDF {

namespace {

constexpr int gl_max_levels = Limits::kMaxNestingLevels;
constexpr size_t kInitialStack = 256;
constexpr size_t kInitialToken = 1024;
// Buffers that grew past this for one huge token are given back afterwards.
constexpr size_t kKeepBuffer = size_t(1) << 20;
// Bytes searched for the header at the start of a damaged file.
constexpr size_t kHeaderWindow = 4096;
constexpr size_t kMaxHeaderLength = 20;

constexpr UInt8 kStringSpecial = 16;
// Bytes of a word that the tokeniser copies in one fixed-size move.
constexpr size_t kShortWord = 16;
// Bytes of the longest number read straight from the reader's window; longer ones, rare and
// bounded by the token's limit, go through the token.
constexpr size_t kShortNumber = 64;
// A stop byte for AppendWordBytes that no byte and not the end (-1) can be.
constexpr int kNoStopByte = -2;  // bytes a literal string can't copy as they stand

struct ClassTable {
    UInt8 t[256] = {};
    constexpr ClassTable() {
        for (int c : {0x00, 0x09, 0x0A, 0x0C, 0x0D, 0x20}) t[c] |= Parser::e_white | Parser::e_word_end;
        for (int c : {'(', ')', '/', '<', '>', '[', ']', '{', '}'})
            t[c] |= Parser::e_delimiter | Parser::e_word_end;
        t[int('%')] |= Parser::e_word_end;
        for (int c = 0x21; c <= 0x7E; ++c) {
            const bool plain = c != 0x23 && c != 0x25 && c != '(' && c != ')' && c != '/' &&
                               c != '<' && c != '>' && c != '[' && c != ']' && c != '{' &&
                               c != '}';
            if (plain) t[c] |= Parser::e_name_plain;
        }
        for (int c : {'(', ')', '\\', '\r'}) t[c] |= kStringSpecial;
    }
};
constexpr ClassTable kClasses;

inline int HexValue(int c) noexcept {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

inline bool IsDigit(UInt8 c) noexcept { return c >= '0' && c <= '9'; }

}  // namespace

const UInt8 Parser::gl_char_class[256] = {
#define LUM_ROW(i)                                                                             \
    kClasses.t[i + 0], kClasses.t[i + 1], kClasses.t[i + 2], kClasses.t[i + 3],                \
        kClasses.t[i + 4], kClasses.t[i + 5], kClasses.t[i + 6], kClasses.t[i + 7],            \
        kClasses.t[i + 8], kClasses.t[i + 9], kClasses.t[i + 10], kClasses.t[i + 11],          \
        kClasses.t[i + 12], kClasses.t[i + 13], kClasses.t[i + 14], kClasses.t[i + 15]
    LUM_ROW(0),   LUM_ROW(16),  LUM_ROW(32),  LUM_ROW(48),  LUM_ROW(64),  LUM_ROW(80),
    LUM_ROW(96),  LUM_ROW(112), LUM_ROW(128), LUM_ROW(144), LUM_ROW(160), LUM_ROW(176),
    LUM_ROW(192), LUM_ROW(208), LUM_ROW(224), LUM_ROW(240),
#undef LUM_ROW
};

// --- Numbers ---

namespace {

// The number of most content operands (an optional minus, at most nine digits, an optional
// fraction) read in one pass where it stands: the end of its word, with `value` as
// ParseNumberToken gives it, or null for any other form, or a word that does not end inside
// the window within kShortNumber bytes.
inline const UInt8* ParsePlainNumber(const UInt8* p, const UInt8* e, double& value) noexcept {
    const UInt8* const lim = p + std::min<size_t>(size_t(e - p), kShortNumber);
    const UInt8* q = p;
    const bool negative = *q == '-';
    q += negative;
    UInt32 small = 0;
    const UInt8* const digits_end = q + std::min<size_t>(size_t(lim - q), 9);
    for (; q < digits_end && IsDigit(*q); ++q) small = small * 10 + UInt32(*q - '0');
    double v = small;
    if (q < lim && *q == '.') {
        ++q;
        double place = 0.1;
        for (; q < lim && IsDigit(*q); ++q) {
            v += (*q - '0') * place;
            place *= 0.1;
        }
    }
    if (q >= lim || !(Parser::gl_char_class[*q] & Parser::e_word_end)) return nullptr;
    value = negative ? -v : v;
    return q;
}

}  // namespace

double ParseNumberToken(const char* s, size_t n) noexcept {
    size_t i = 0;
    bool negative = false;
    if (i < n && s[i] == '-') {
        negative = true;
        ++i;
    }
    // Further signs change nothing: only a leading minus counts.
    while (i < n && (s[i] == '+' || s[i] == '-')) ++i;
    // Nine digits always fit 32 bits; longer integers go on in the double.
    UInt32 small = 0;
    int digits = 0;
    for (; i < n && digits < 9 && IsDigit(UInt8(s[i])); ++i, ++digits)
        small = small * 10 + UInt32(s[i] - '0');
    double value = small;
    for (; i < n && IsDigit(UInt8(s[i])); ++i) {
        if (++digits >= 39) return 0;
        value = value * 10 + (s[i] - '0');
    }
    if (i < n && s[i] == '.') {
        ++i;
        if (i < n && (s[i] == '+' || s[i] == '-')) ++i;
        double place = 0.1;
        while (i < n && IsDigit(UInt8(s[i]))) {
            value += (s[i] - '0') * place;
            place *= 0.1;
            ++i;
        }
    }
    if (i != n) return 0;  // a bad number is dropped whole, not cut at the bad byte
    return negative ? -value : value;
}

UInt32 Parser::ToObjNum(const Obj* number) {
    return Common::TruncateToUInt32Or(number->GetNumber(), 0xFFFFFFFFu);
}

// --- Construction, stack, stream ---

Parser::Parser(DocImpl* doc) : Parser(doc, nullptr) {}

Parser::Parser(DocImpl* doc, Filters::Filter* stream) : m_stream(stream), mp_doc(doc) {
    m_operand_stack.reserve(kInitialStack);
    m_spare_numbers.reserve(Limits::kMaxSpareOperands);
    m_spare_strings.reserve(Limits::kMaxSpareOperands);
    m_spare_arrays.reserve(Limits::kMaxSpareOperands);
    m_token.resize(kInitialToken);
    m_token[0] = 0;
}

Parser::~Parser() {
    ClearStack();
    for (Number* n : m_spare_numbers) delete n;
    for (Str* s : m_spare_strings) delete s;
    for (Array* a : m_spare_arrays) delete a;
}

void Parser::AttachStream(Filters::Filter* stream) { m_stream.AttachFilter(stream); }

void Parser::ClearStack() noexcept {
    for (Obj* obj : m_operand_stack) Recycle(obj);
    m_operand_stack.clear();
}

void Parser::PopObj() noexcept {
    if (m_operand_stack.empty()) return;
    Recycle(m_operand_stack.back());
    m_operand_stack.pop_back();
}

// --- Spent operands ---

bool Parser::KeepSpare(Obj* obj) noexcept {
    if (obj->GetOwner()) return false;
    switch (obj->GetType()) {
        case Obj::e_number:
            if (m_spare_numbers.size() == Limits::kMaxSpareOperands) return false;
            m_spare_numbers.push_back(static_cast<Number*>(obj));
            return true;
        case Obj::e_string: {
            auto* str = static_cast<Str*>(obj);
            if (m_spare_strings.size() == Limits::kMaxSpareOperands ||
                str->ParsedCapacity() > Limits::kMaxSpareStringBytes)
                return false;
            m_spare_strings.push_back(str);
            return true;
        }
        default:
            return false;
    }
}

void Parser::Recycle(Obj* obj) noexcept {
    if (!obj || obj->IsIndirect()) return;
    // KeepSpare's tests, with the one type question that every operand costs asked once.
    if (!obj->GetOwner()) {
        switch (obj->GetType()) {
            case Obj::e_number:
                if (m_spare_numbers.size() == Limits::kMaxSpareOperands) break;
                m_spare_numbers.push_back(static_cast<Number*>(obj));
                return;
            case Obj::e_string: {
                auto* str = static_cast<Str*>(obj);
                if (m_spare_strings.size() == Limits::kMaxSpareOperands ||
                    str->ParsedCapacity() > Limits::kMaxSpareStringBytes)
                    break;
                m_spare_strings.push_back(str);
                return;
            }
            case Obj::e_array: {
                auto* array = static_cast<Array*>(obj);
                if (m_spare_arrays.size() == Limits::kMaxSpareOperands ||
                    array->ParsedCapacity() > Limits::kMaxSpareArrayItems)
                    break;
                // One level only: values nested deeper go the usual way, so that this stays flat.
                array->ReleaseParsed([this](Obj* item) {
                    if (item && !item->IsIndirect() && !KeepSpare(item)) delete item;
                });
                m_spare_arrays.push_back(array);
                return;
            }
            default:
                break;
        }
    }
    delete obj;
}

Number* Parser::MakeNumber(double value) {
    if (m_spare_numbers.empty()) return new Number(value);
    Number* n = m_spare_numbers.back();
    m_spare_numbers.pop_back();
    n->AssignParsed(value);
    return n;
}

Str* Parser::MakeString(const std::vector<UInt8>& bytes) {
    if (m_spare_strings.empty()) return new Str(bytes.data(), bytes.size());
    Str* s = m_spare_strings.back();
    s->AssignParsed(bytes.data(), bytes.size());  // may throw: the spare stays in the list
    m_spare_strings.pop_back();
    return s;
}

Array* Parser::MakeArray() {
    if (m_spare_arrays.empty()) return new Array();
    Array* a = m_spare_arrays.back();
    m_spare_arrays.pop_back();
    return a;
}

Obj* Parser::PopObjNoDelete() noexcept {
    if (m_operand_stack.empty()) return nullptr;
    Obj* obj = m_operand_stack.back();
    m_operand_stack.pop_back();
    return obj;
}

void Parser::PushFailed(Obj* obj) {
    DeleteDirect(obj);
    LUM_FAIL("Too many values on the operand stack");
}

void Parser::Reset() {
    m_token_size = 0;
    m_token[0] = 0;
    ClearStack();
    m_max_nesting = 0;
    m_stream.FlushReader();
    if (Filters::Filter* f = m_stream.GetAttachedFilter()) {
        if (f->CanSeek())
            f->Seek(0, Filters::Filter::e_begin);
        else
            f->Reset();
    }
}

bool Parser::ContainerOperator(const char*) { return false; }

void Parser::OnString(std::vector<UInt8>&) {}

// --- Token buffer ---

void Parser::GrowToken(size_t need) {
    LUM_CHECK(need <= Limits::kMaxTokenBytes, "Token exceeds the maximum length");
    m_token.resize(std::max(need, m_token.size() * 2));
}

inline void Parser::AppendToken(const UInt8* bytes, size_t n) {
    if (m_token_size + n + 1 > m_token.size()) GrowToken(m_token_size + n + 1);
    std::memcpy(m_token.data() + m_token_size, bytes, n);
    m_token_size += n;
}

// --- Tokens ---

// Both scans walk the reader's window with local pointers and move the reader once per
// window: byte by byte through Peek and Get, every byte stored into the token made the
// compiler reload the reader's pointers (a byte store may alias anything).
void Parser::SkipWhiteSpaceAndComments(Filters::FilterReader& reader) {
    bool in_comment = false;  // a comment runs through the next LF or CR
    for (;;) {
        const UInt8* p = reader.WindowBegin();
        const UInt8* const e = p + reader.WindowSize();
        if (p == e) {
            if (!reader.Refill()) return;
            continue;
        }
        const UInt8* q = p;
        for (; q < e; ++q) {
            const UInt8 c = *q;
            if (in_comment) {
                if (c == '\n' || c == '\r') in_comment = false;
            } else if (c == '%') {
                in_comment = true;
            } else if (!(gl_char_class[c] & e_white)) {
                break;
            }
        }
        reader.Advance(size_t(q - p));
        if (q < e) return;
    }
}

template <int kAlsoStopAt>
inline int Parser::AppendWordBytes() {
    for (;;) {
        const UInt8* p = m_stream.WindowBegin();
        const UInt8* const e = p + m_stream.WindowSize();
        if (p == e) {
            if (!m_stream.Refill()) return -1;
            continue;
        }
        const UInt8* q = p;
        while (q < e && int(*q) != kAlsoStopAt && !(gl_char_class[*q] & e_word_end)) ++q;
        if (q > p) {
            const size_t n = size_t(q - p);
            if (m_token_size + n + 1 > m_token.size()) GrowToken(m_token_size + n + 1);
            UInt8* out = m_token.data() + m_token_size;
            // Most words are short: a copy of fixed size is a few moves, a call to copy n
            // bytes costs more than the word. Bytes copied past the word are never read.
            if (n <= kShortWord && size_t(e - p) >= kShortWord &&
                m_token.size() - m_token_size >= kShortWord)
                std::memcpy(out, p, kShortWord);
            else
                std::memcpy(out, p, n);
            m_token_size += n;
            m_stream.Advance(n);
        }
        if (q < e) return *q;
    }
}

void Parser::ReadWord() {
    m_token_size = 0;
    int c = m_stream.Peek();
    if (c < 0) {
        m_token[0] = 0;
        return;
    }
    if (gl_char_class[c] & e_delimiter) {
        m_stream.Get();
        m_token[0] = UInt8(c);
        m_token[1] = 0;
        m_token_size = 1;
        return;
    }
    // A word: everything up to the next white space, delimiter or percent.
    AppendWordBytes<kNoStopByte>();
    m_token[m_token_size] = 0;
}

bool Parser::GetObj() {
    SkipWhiteSpaceAndComments();
    // Numbers are most of a content stream's words: one that ends inside the window is read
    // where it stands, without a copy into the token. The token is then empty, as nobody
    // reads the word of a value.
    const UInt8* p = m_stream.WindowBegin();
    const UInt8* const e = p + m_stream.WindowSize();
    if (p < e && (IsDigit(*p) || *p == '-' || *p == '.' || *p == '+')) {
        double value = 0;
        const UInt8* end = ParsePlainNumber(p, e, value);
        if (!end) {
            const UInt8* q = p + 1;
            const UInt8* const stop = p + std::min<size_t>(size_t(e - p), kShortNumber + 1);
            while (q < stop && !(gl_char_class[*q] & e_word_end)) ++q;
            if (q < stop) {
                value = ParseNumberToken(reinterpret_cast<const char*>(p), size_t(q - p));
                end = q;
            }
        }
        if (end) {
            m_stream.Advance(size_t(end - p));
            m_token_size = 0;
            m_token[0] = 0;
            Push(MakeNumber(value));
            return true;
        }
    }
    ReadWord();
    const UInt8 c = m_token[0];
    if (c < 0x28 || c > 0x7D) return false;
    switch (c) {
        case '(':
            LexLiteralString();
            return true;
        case ')':
            LUM_FAIL("')' is not matched");
        case '+':
        case '-':
        case '.':
        case '0':
        case '1':
        case '2':
        case '3':
        case '4':
        case '5':
        case '6':
        case '7':
        case '8':
        case '9':
            LexNumber();
            return true;
        case '/':
            LexName();
            return true;
        case '<':
            if (m_stream.Peek() == '<')
                LexDict();
            else
                LexHexString();
            return true;
        case '[':
            return LexArray();
        case 'f':
            if (m_token_size == 5 && std::memcmp(m_token.data(), "false", 5) == 0) {
                Push(new Bool(false));
                return true;
            }
            return false;
        case 'n':
            if (m_token_size == 4 && std::memcmp(m_token.data(), "null", 4) == 0) {
                Push(new Null());
                return true;
            }
            return false;
        case 't':
            if (m_token_size == 4 && std::memcmp(m_token.data(), "true", 4) == 0) {
                Push(new Bool(true));
                return true;
            }
            return false;
        default:
            return false;
    }
}

void Parser::LexNumber() {
    Push(MakeNumber(ParseNumberToken(reinterpret_cast<const char*>(m_token.data()), m_token_size)));
}

void Parser::LexName() {
    m_token_size = 0;
    for (;;) {
        if (AppendWordBytes<'#'>() != '#') break;
        // A number sign that does not begin two hex digits stands for itself; the byte that
        // broke the escape is then read afresh.
        m_stream.Get();
        const int h1 = HexValue(m_stream.Peek());
        if (h1 < 0) {
            const UInt8 sign = '#';
            AppendToken(&sign, 1);
            continue;
        }
        const UInt8 d1 = UInt8(m_stream.Get());
        const int h2 = HexValue(m_stream.Peek());
        if (h2 < 0) {
            const UInt8 both[2] = {'#', d1};
            AppendToken(both, 2);
            continue;
        }
        m_stream.Get();
        const UInt8 byte = UInt8(h1 * 16 + h2);
        AppendToken(&byte, 1);
    }
    m_token[m_token_size] = 0;
    Push(new Name(reinterpret_cast<const char*>(m_token.data()), m_token_size));
}

void Parser::LexLiteralString() {
    m_string.clear();
    int depth = 1;
    auto append = [this](UInt8 byte) {
        if (m_string.size() >= Limits::kMaxTokenBytes) [[unlikely]]
            LUM_FAIL("Token exceeds the maximum length");
        m_string.push_back(byte);
    };
    while (depth > 0) {
        // Copy the run of ordinary bytes in one step.
        const UInt8* p = m_stream.WindowBegin();
        const UInt8* e = p + m_stream.WindowSize();
        const UInt8* q = p;
        while (q < e && !(kClasses.t[*q] & kStringSpecial)) ++q;
        if (q > p) {
            if (m_string.size() + size_t(q - p) > Limits::kMaxTokenBytes) [[unlikely]]
                LUM_FAIL("Token exceeds the maximum length");
            m_string.insert(m_string.end(), p, q);
            m_stream.Skip(size_t(q - p));
        }
        const int c = m_stream.Get();
        switch (c) {
            case -1:
                LUM_FAIL("Corrupt string");
            case '\r':
                // CR LF and a lone CR are one line end, kept as LF. A lone LF is ordinary.
                if (m_stream.Peek() == '\n') m_stream.Get();
                append('\n');
                break;
            case '(':
                ++depth;
                append('(');
                break;
            case ')':
                if (--depth > 0) append(')');
                break;
            case '\\': {
                const int e2 = m_stream.Get();
                switch (e2) {
                    case -1:
                        append(0xFF);  // the next pass meets the end and fails
                        break;
                    case '\n':
                        break;
                    case '\r':
                        if (m_stream.Peek() == '\n') m_stream.Get();
                        break;
                    case 'b':
                        append(8);
                        break;
                    case 'f':
                        append(12);
                        break;
                    case 'n':
                        append(10);
                        break;
                    case 'r':
                        append(13);
                        break;
                    case 't':
                        append(9);
                        break;
                    default:
                        if (e2 >= '0' && e2 <= '7') {
                            int value = e2 - '0';
                            for (int k = 0; k < 2; ++k) {
                                const int d = m_stream.Peek();
                                if (d < '0' || d > '7') break;
                                value = value * 8 + (m_stream.Get() - '0');
                            }
                            append(UInt8(value & 0xFF));
                        } else {
                            append(UInt8(e2));
                        }
                }
                break;
            }
            default:
                append(UInt8(c));
        }
    }
    OnString(m_string);
    Push(MakeString(m_string));
    if (m_string.capacity() > kKeepBuffer) std::vector<UInt8>().swap(m_string);
}

void Parser::LexHexString() {
    m_string.clear();
    for (;;) {
        // Pairs of adjacent digits are the common case.
        const UInt8* p = m_stream.WindowBegin();
        const UInt8* e = p + m_stream.WindowSize();
        while (e - p >= 2) {
            const int hi = HexValue(p[0]), lo = HexValue(p[1]);
            if ((hi | lo) < 0) break;
            m_string.push_back(UInt8(hi * 16 + lo));
            p += 2;
        }
        m_stream.Skip(size_t(p - m_stream.WindowBegin()));
        if (m_string.size() > Limits::kMaxTokenBytes) [[unlikely]]
            LUM_FAIL("Token exceeds the maximum length");

        SkipWhiteSpaceAndComments();
        int c = m_stream.Get();
        if (c == '>') break;
        const int hi = HexValue(c);
        if (hi < 0) LUM_FAIL("Bad String");
        SkipWhiteSpaceAndComments();
        c = m_stream.Get();
        const int lo = HexValue(c);
        if (lo >= 0) {
            m_string.push_back(UInt8(hi * 16 + lo));
        } else if (c == '>') {
            m_string.push_back(UInt8(hi * 16));  // an odd last digit is a high nibble
            break;
        } else {
            LUM_FAIL("Bad String");
        }
    }
    OnString(m_string);
    Push(MakeString(m_string));
    if (m_string.capacity() > kKeepBuffer) std::vector<UInt8>().swap(m_string);
}

bool Parser::LexDict() {
    LUM_CHECK(++m_max_nesting < gl_max_levels, "Exceeds maximum nesting level");
    m_stream.Get();  // the second '<'
    const size_t start = m_operand_stack.size();
    for (;;) {
        while (GetObj()) {
        }
        if (m_token_size == 1 && m_token[0] == '>') {
            LUM_CHECK(m_stream.Get() == '>', "'<<' is not matched");
            break;
        }
        if (!ContainerOperator(GetToken())) break;
    }
    const Int64 count = Int64(m_operand_stack.size()) - Int64(start);
    LUM_CHECK_AS(count >= 0 && count % 2 == 0, "num_elements>=0 && (num_elements % 2 == 0)",
                 "the number of key-value elements should be even");
    const size_t top = m_operand_stack.size();
    const size_t pairs = size_t(count) / 2;
    // Check every key before any value moves, so that a failure leaves the stack intact. The
    // value of a pair is at i, its key at i-1.
    for (size_t k = 0, i = top - 1; k < pairs; ++k, i -= 2)
        LUM_CHECK(!m_operand_stack[i-1]->IsIndirect() && m_operand_stack[i-1]->IsName(),
                  "Bad key");
    auto* dict = new Dict();
    // From the end backwards, so that of a key given twice the last one in the file stays.
    for (size_t k = 0, i = top - 1; k < pairs; ++k, i -= 2) {
        Name* key = static_cast<Name*>(m_operand_stack[i - 1]);
        Obj* value = m_operand_stack[i];
        if (!dict->InsertParsed(key, value)) {
            delete key;
            DeleteDirect(value);
        }
    }
    m_operand_stack.resize(start);
    Push(dict);
    --m_max_nesting;
    return true;
}

bool Parser::LexArray() {
    LUM_CHECK(++m_max_nesting < gl_max_levels, "Exceeds maximum nesting level");
    size_t start = m_operand_stack.size();
    bool closed;
    for (;;) {
        while (GetObj()) {
        }
        if (m_token_size == 1 && m_token[0] == ']') {
            closed = true;
            break;
        }
        const bool goes_on = ContainerOperator(GetToken());
        // The operator may have taken operands from below the array's start (the two
        // numbers of "R" are simply the top two); the array then begins where the stack is.
        start = std::min(start, m_operand_stack.size());
        if (!goes_on) {
            closed = false;
            break;
        }
    }
    Array* array = MakeArray();
    array->AdoptParsed(m_operand_stack.data() + start, m_operand_stack.size() - start);
    m_operand_stack.resize(start);
    Push(array);
    --m_max_nesting;
    return closed;
}

// --- Header ---

bool Parser::FindHeader(const UInt8* buf, size_t n, size_t max_length, size_t& start,
                        size_t& end) noexcept {
    auto letter = [](UInt8 c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    size_t i = 0;
    while (i < n) {
        if (buf[i] != '%') {
            ++i;
            continue;
        }
        size_t j = i + 1;
        while (j < n && letter(buf[j])) ++j;
        if (j == i + 1) {
            i += 2;  // a percent without letters
            continue;
        }
        if (j >= n || buf[j] != '-') {
            i = j;
            continue;
        }
        size_t k = ++j;
        while (k < n && IsDigit(buf[k])) ++k;
        if (k == j || k >= n || buf[k] != '.') {
            i = k;
            continue;
        }
        size_t m = ++k;
        while (m < n && IsDigit(buf[m])) ++m;
        if (m == k) {
            i = m;
            continue;
        }
        // A match that runs to the end of what was read may go on; a long one is no header.
        if (m >= n || m - i > max_length) return false;
        start = i;
        end = m;
        return true;
    }
    return false;
}

std::string Parser::SkipHeader() {
    const Int64 at = m_stream.Tell();
    UInt8 buf[kHeaderWindow];
    const size_t n = m_stream.Read(buf, kHeaderWindow);
    size_t start = 0, end = 0;
    if (!FindHeader(buf, n, kMaxHeaderLength, start, end)) LUM_FAIL("Header not found");
    m_stream.Seek(at + Int64(end));
    return std::string(reinterpret_cast<const char*>(buf + start), end - start);
}

}  // namespace lum::SDF
