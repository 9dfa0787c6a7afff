#include "PDF/Color/FunctionCalculator.h"

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Common/NumberConversions.h"
#include "Filters/FilterReader.h"
#include "PDF/Color/Function.h"
#include "SDF/Obj.h"

namespace lum::PDF::Color {

namespace {

// The integer operators work on 64-bit values, saturated (a double beyond them is no UB).
Int64 Int(double v) { return Common::TruncateSaturated(v); }

enum class Op : UInt8 {
    e_number, e_proc,
    e_abs, e_add, e_atan, e_ceiling, e_cos, e_cvi, e_cvr, e_div, e_exp, e_floor, e_idiv, e_ln,
    e_log, e_mod, e_mul, e_neg, e_round, e_sin, e_sqrt, e_sub, e_truncate,
    e_and, e_bitshift, e_eq, e_false, e_ge, e_gt, e_le, e_lt, e_ne, e_not, e_or, e_true, e_xor,
    e_copy, e_dup, e_exch, e_index, e_pop, e_roll,
    e_if, e_ifelse,
};

struct OpName {
    const char* name;
    Op op;
};

constexpr OpName kOps[] = {
    {"abs", Op::e_abs},       {"add", Op::e_add},     {"atan", Op::e_atan},
    {"ceiling", Op::e_ceiling}, {"cos", Op::e_cos},   {"cvi", Op::e_cvi},
    {"cvr", Op::e_cvr},       {"div", Op::e_div},     {"exp", Op::e_exp},
    {"floor", Op::e_floor},   {"idiv", Op::e_idiv},   {"ln", Op::e_ln},
    {"log", Op::e_log},       {"mod", Op::e_mod},     {"mul", Op::e_mul},
    {"neg", Op::e_neg},       {"round", Op::e_round}, {"sin", Op::e_sin},
    {"sqrt", Op::e_sqrt},     {"sub", Op::e_sub},     {"truncate", Op::e_truncate},
    {"and", Op::e_and},       {"bitshift", Op::e_bitshift}, {"eq", Op::e_eq},
    {"false", Op::e_false},   {"ge", Op::e_ge},       {"gt", Op::e_gt},
    {"le", Op::e_le},         {"lt", Op::e_lt},       {"ne", Op::e_ne},
    {"not", Op::e_not},       {"or", Op::e_or},       {"true", Op::e_true},
    {"xor", Op::e_xor},       {"copy", Op::e_copy},   {"dup", Op::e_dup},
    {"exch", Op::e_exch},     {"index", Op::e_index}, {"pop", Op::e_pop},
    {"roll", Op::e_roll},     {"if", Op::e_if},       {"ifelse", Op::e_ifelse},
};

// A program is a flat list: a procedure literal holds the index just past its end, so that
// `if` and `ifelse` find the code of the procedures in front of them.
struct Instr {
    Op op;
    double value = 0;   // a number
    UInt32 end = 0;     // a procedure: one past its last instruction
};

class Calculator final : public Function {
public:
    explicit Calculator(SDF::Obj* stream) {
        LUM_CHECK(stream->IsStream(), "A calculator function must be a stream");
        m_domain = ReadNumbers(stream->FindObj(SDF::e_Domain), 2 * kMaxValues + 1);
        m_range = ReadNumbers(stream->FindObj(SDF::e_Range), 2 * kMaxValues + 1);
        LUM_CHECK(InputCount() > 0 && OutputCount() > 0 && InputCount() <= kMaxValues &&
                      OutputCount() <= kMaxValues,
                  "Calculator function needs a Domain and a Range of 1 to %d values", kMaxValues);
        m_domain.resize(m_domain.size() / 2 * 2);
        m_range.resize(m_range.size() / 2 * 2);
        Parse(stream);
    }

protected:
    void Compute(const double* in, double* out) const override {
        Stack st;
        for (int i = 0; i < InputCount(); ++i) st.Push(in[i]);
        // The outer braces are a procedure of their own: its code starts behind it.
        if (!m_code.empty()) Run(1, m_code[0].end, st);
        // The results are the top of the stack, in order.
        const int n = OutputCount();
        for (int j = n - 1; j >= 0; --j) out[j] = st.Pop();
    }

private:
    class Stack {
    public:
        void Push(double v) {
            if (m_n < Limits::kMaxCalculatorStack) m_v[m_n++] = v;
        }
        double Pop() { return m_n ? m_v[--m_n] : 0.0; }
        size_t Size() const { return m_n; }
        double& At(size_t from_top) { return m_v[m_n - 1 - from_top]; }

    private:
        double m_v[Limits::kMaxCalculatorStack] = {};
        size_t m_n = 0;
    };

    void Parse(SDF::Obj* stream) {
        auto filter = stream->GetDecodedStream();
        Filters::FilterReader reader(filter.get());
        std::vector<UInt32> open;  // indexes of procedures not yet closed
        std::string word;
        size_t read = 0;
        int c = reader.Get();
        while (c >= 0) {
            LUM_CHECK(++read <= Limits::kMaxCalculatorBytes, "Calculator program too long");
            if (c == '%') {
                while (c >= 0 && c != '\n' && c != '\r' && read <= Limits::kMaxCalculatorBytes) {
                    c = reader.Get();
                    ++read;
                }
                continue;
            }
            if (c == '{' || c == '}' || std::strchr(" \t\r\n\f", c) || c == 0) {
                if (!word.empty()) AddWord(word);
                word.clear();
                if (c == '{') {
                    // Procedures run by recursion: their nesting is bounded like the stack.
                    LUM_CHECK(open.size() < Limits::kMaxCalculatorStack, "Calculator program nested too deep");
                    open.push_back(UInt32(m_code.size()));
                    m_code.push_back({Op::e_proc});
                } else if (c == '}') {
                    LUM_CHECK(!open.empty(), "Unbalanced calculator program");
                    m_code[open.back()].end = UInt32(m_code.size());
                    open.pop_back();
                }
            } else {
                word += char(c);
                LUM_CHECK(word.size() < 64, "Bad calculator token");
            }
            LUM_CHECK(m_code.size() <= Limits::kMaxCalculatorTokens, "Calculator program too long");
            c = reader.Get();
        }
        if (!word.empty()) AddWord(word);
        LUM_CHECK(open.empty() && !m_code.empty() && m_code[0].op == Op::e_proc &&
                      m_code[0].end == m_code.size(),
                  "Bad calculator program");
    }

    void AddWord(const std::string& w) {
        for (const OpName& o : kOps) {
            if (w == o.name) {
                m_code.push_back({o.op});
                return;
            }
        }
        char* end = nullptr;
        const double v = std::strtod(w.c_str(), &end);
        LUM_CHECK(end && *end == 0 && std::isfinite(v), "Unknown calculator operator");
        m_code.push_back({Op::e_number, v});
    }

    // Runs the instructions from `from` to `to`; procedures only run through if and ifelse.
    void Run(UInt32 from, UInt32 to, Stack& st) const {
        for (UInt32 i = from; i < to; ++i) {
            const Instr& in = m_code[i];
            if (in.op == Op::e_proc) {
                // `{a} if` or `{a} {b} ifelse`: the procedures stand right before the operator.
                const UInt32 a_begin = i + 1, a_end = in.end;
                if (a_end < to && m_code[a_end].op == Op::e_if) {
                    if (st.Pop() != 0) Run(a_begin, a_end, st);
                    i = a_end;
                } else if (a_end < to && m_code[a_end].op == Op::e_proc) {
                    const UInt32 b_end = m_code[a_end].end;
                    const bool cond = st.Pop() != 0;
                    if (b_end < to && m_code[b_end].op == Op::e_ifelse) {
                        if (cond) {
                            Run(a_begin, a_end, st);
                        } else {
                            Run(a_end + 1, b_end, st);
                        }
                    }
                    i = b_end;
                } else {
                    i = a_end - 1;  // a procedure standing alone is passed
                }
                continue;
            }
            Apply(in, st);
        }
    }

    static void Apply(const Instr& in, Stack& st) {
        double a, b;
        switch (in.op) {
            case Op::e_number: st.Push(in.value); break;
            case Op::e_abs: st.Push(std::fabs(st.Pop())); break;
            case Op::e_add: b = st.Pop(); a = st.Pop(); st.Push(a + b); break;
            case Op::e_atan: {
                b = st.Pop();
                a = st.Pop();
                double d = std::atan2(a, b) * 180.0 / M_PI;
                if (d < 0) d += 360;
                st.Push(d);
                break;
            }
            case Op::e_ceiling: st.Push(std::ceil(st.Pop())); break;
            case Op::e_cos: st.Push(std::cos(st.Pop() * M_PI / 180.0)); break;
            case Op::e_cvi: case Op::e_truncate: st.Push(std::trunc(st.Pop())); break;
            case Op::e_cvr: break;
            case Op::e_div: b = st.Pop(); a = st.Pop(); st.Push(b == 0 ? 0 : a / b); break;
            case Op::e_exp: b = st.Pop(); a = st.Pop(); st.Push(std::pow(a, b)); break;
            case Op::e_floor: st.Push(std::floor(st.Pop())); break;
            case Op::e_idiv: {
                b = std::trunc(st.Pop());
                a = std::trunc(st.Pop());
                st.Push(b == 0 ? 0 : std::trunc(a / b));
                break;
            }
            case Op::e_ln: a = st.Pop(); st.Push(a > 0 ? std::log(a) : 0); break;
            case Op::e_log: a = st.Pop(); st.Push(a > 0 ? std::log10(a) : 0); break;
            case Op::e_mod: {
                b = std::trunc(st.Pop());
                a = std::trunc(st.Pop());
                st.Push(b == 0 ? 0 : std::fmod(a, b));
                break;
            }
            case Op::e_mul: b = st.Pop(); a = st.Pop(); st.Push(a * b); break;
            case Op::e_neg: st.Push(-st.Pop()); break;
            case Op::e_round: st.Push(std::floor(st.Pop() + 0.5)); break;
            case Op::e_sin: st.Push(std::sin(st.Pop() * M_PI / 180.0)); break;
            case Op::e_sqrt: a = st.Pop(); st.Push(a >= 0 ? std::sqrt(a) : 0); break;
            case Op::e_sub: b = st.Pop(); a = st.Pop(); st.Push(a - b); break;
            case Op::e_and: b = st.Pop(); a = st.Pop(); st.Push(double(Int(a) & Int(b))); break;
            case Op::e_or: b = st.Pop(); a = st.Pop(); st.Push(double(Int(a) | Int(b))); break;
            case Op::e_xor: b = st.Pop(); a = st.Pop(); st.Push(double(Int(a) ^ Int(b))); break;
            case Op::e_not: {
                a = st.Pop();
                // Booleans are 1 and 0 here; for them `not` is logical.
                st.Push(a == 0 ? 1 : a == 1 ? 0 : double(~Int(a)));
                break;
            }
            case Op::e_bitshift: {
                b = st.Pop();
                const Int64 v = Int(st.Pop()), s = Int(b);
                st.Push(s >= 63 || s <= -63 ? 0 : double(s >= 0 ? (v << s) : (v >> -s)));
                break;
            }
            case Op::e_eq: b = st.Pop(); a = st.Pop(); st.Push(a == b); break;
            case Op::e_ne: b = st.Pop(); a = st.Pop(); st.Push(a != b); break;
            case Op::e_ge: b = st.Pop(); a = st.Pop(); st.Push(a >= b); break;
            case Op::e_gt: b = st.Pop(); a = st.Pop(); st.Push(a > b); break;
            case Op::e_le: b = st.Pop(); a = st.Pop(); st.Push(a <= b); break;
            case Op::e_lt: b = st.Pop(); a = st.Pop(); st.Push(a < b); break;
            case Op::e_true: st.Push(1); break;
            case Op::e_false: st.Push(0); break;
            case Op::e_dup: a = st.Pop(); st.Push(a); st.Push(a); break;
            case Op::e_exch: b = st.Pop(); a = st.Pop(); st.Push(b); st.Push(a); break;
            case Op::e_pop: st.Pop(); break;
            case Op::e_copy: {
                const double n = st.Pop();
                if (!(n >= 0 && n <= double(st.Size()))) break;
                const size_t k = size_t(n);
                for (size_t i = 0; i < k; ++i) st.Push(st.At(k - 1));
                break;
            }
            case Op::e_index: {
                const double n = st.Pop();
                st.Push(n >= 0 && n < double(st.Size()) ? st.At(size_t(n)) : 0.0);
                break;
            }
            case Op::e_roll: {
                const double jd = st.Pop(), nd = st.Pop();
                if (!(nd > 0 && nd <= double(st.Size())) || !std::isfinite(jd)) break;
                const size_t n = size_t(nd);
                Int64 j = Int64(std::fmod(jd, double(n)));
                if (j < 0) j += Int64(n);
                double v[Limits::kMaxCalculatorStack];
                for (size_t i = 0; i < n; ++i) v[i] = st.At(n - 1 - i);
                for (size_t i = 0; i < n; ++i) st.At(n - 1 - (i + size_t(j)) % n) = v[i];
                break;
            }
            case Op::e_if: case Op::e_ifelse: case Op::e_proc: break;
        }
    }

    std::vector<Instr> m_code;
};

}  // namespace

Function* CreateCalculator(SDF::Obj* stream) { return new Calculator(stream); }

}  // namespace lum::PDF::Color
