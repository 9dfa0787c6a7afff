#include "SDF/SecurityTestPdf.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "Filters/FlateDecode.h"

namespace lum::test {

using SDF::Obj;

namespace {

bool IsWhite(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\f' || c == 0; }
bool IsDelim(char c) { return std::strchr("()<>[]{}/%", c) != nullptr; }

void SkipWhite(const std::string& s, size_t& pos) {
    while (pos < s.size()) {
        if (IsWhite(s[pos])) {
            ++pos;
        } else if (s[pos] == '%') {
            while (pos < s.size() && s[pos] != '\n' && s[pos] != '\r') ++pos;
        } else {
            break;
        }
    }
}

std::string Word(const std::string& s, size_t& pos) {
    const size_t start = pos;
    while (pos < s.size() && !IsWhite(s[pos]) && !IsDelim(s[pos])) ++pos;
    return s.substr(start, pos - start);
}

int Hex(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string LiteralString(const std::string& s, size_t& pos) {
    std::string out;
    int depth = 1;
    ++pos;  // '('
    while (pos < s.size()) {
        char c = s[pos++];
        if (c == '\\' && pos < s.size()) {
            char e = s[pos++];
            switch (e) {
                case 'n': out += '\n'; break;
                case 'r': out += '\r'; break;
                case 't': out += '\t'; break;
                case 'b': out += '\b'; break;
                case 'f': out += '\f'; break;
                case '\r': if (pos < s.size() && s[pos] == '\n') ++pos; break;
                case '\n': break;
                default:
                    if (e >= '0' && e <= '7') {
                        int v = e - '0';
                        for (int i = 0; i < 2 && pos < s.size() && s[pos] >= '0' && s[pos] <= '7'; ++i)
                            v = v * 8 + (s[pos++] - '0');
                        out += char(v);
                    } else {
                        out += e;
                    }
            }
        } else if (c == '(') {
            ++depth;
            out += c;
        } else if (c == ')') {
            if (--depth == 0) break;
            out += c;
        } else {
            out += c;
        }
    }
    return out;
}

std::string HexString(const std::string& s, size_t& pos) {
    std::string out;
    int hi = -1;
    ++pos;  // '<'
    while (pos < s.size() && s[pos] != '>') {
        const int v = Hex(s[pos++]);
        if (v < 0) continue;
        if (hi < 0) {
            hi = v;
        } else {
            out += char(hi * 16 + v);
            hi = -1;
        }
    }
    if (hi >= 0) out += char(hi * 16);
    ++pos;  // '>'
    return out;
}

std::string NameText(const std::string& s, size_t& pos) {
    ++pos;  // '/'
    std::string out;
    while (pos < s.size() && !IsWhite(s[pos]) && !IsDelim(s[pos])) {
        if (s[pos] == '#' && pos + 2 < s.size() && Hex(s[pos + 1]) >= 0 && Hex(s[pos + 2]) >= 0) {
            out += char(Hex(s[pos + 1]) * 16 + Hex(s[pos + 2]));
            pos += 3;
        } else {
            out += s[pos++];
        }
    }
    return out;
}

Obj* MakeStr(const std::string& bytes) {
    return new SDF::Str(reinterpret_cast<const UInt8*>(bytes.data()), bytes.size());
}

// "N G R" after a number: answers the number of the reference and moves past it, else 0.
bool TryReference(const std::string& s, size_t& pos) {
    size_t p = pos;
    SkipWhite(s, p);
    const std::string gen = Word(s, p);
    if (gen.empty() || gen.find_first_not_of("0123456789") != std::string::npos) return false;
    SkipWhite(s, p);
    if (p < s.size() && s[p] == 'R' && (p + 1 == s.size() || IsWhite(s[p + 1]) || IsDelim(s[p + 1]))) {
        pos = p + 1;
        return true;
    }
    return false;
}

}  // namespace

Obj* ParseTestValue(const std::string& s, size_t& pos) {
    SkipWhite(s, pos);
    if (pos >= s.size()) throw std::runtime_error("value expected at end of data");
    const char c = s[pos];
    if (c == '(') return MakeStr(LiteralString(s, pos));
    if (c == '<' && pos + 1 < s.size() && s[pos + 1] == '<') {
        pos += 2;
        auto dict = std::make_unique<SDF::Dict>();
        for (;;) {
            SkipWhite(s, pos);
            if (pos + 1 < s.size() && s[pos] == '>' && s[pos + 1] == '>') {
                pos += 2;
                return dict.release();
            }
            if (pos >= s.size() || s[pos] != '/') throw std::runtime_error("name expected in dict");
            const std::string key = NameText(s, pos);
            dict->Put(SDF::Name(key.c_str()), ParseTestValue(s, pos));
        }
    }
    if (c == '<') return MakeStr(HexString(s, pos));
    if (c == '[') {
        ++pos;
        auto array = std::make_unique<SDF::Array>();
        for (;;) {
            SkipWhite(s, pos);
            if (pos < s.size() && s[pos] == ']') {
                ++pos;
                return array.release();
            }
            array->PushBack(ParseTestValue(s, pos));
        }
    }
    if (c == '/') return new SDF::Name(NameText(s, pos).c_str());
    const std::string word = Word(s, pos);
    if (word == "true") return new SDF::Bool(true);
    if (word == "false") return new SDF::Bool(false);
    if (word == "null") return new SDF::Null();
    if (word.empty()) throw std::runtime_error("unexpected byte in value");
    const double number = std::strtod(word.c_str(), nullptr);
    TryReference(s, pos);  // a reference stands as its object number
    return new SDF::Number(number);
}

// "N G obj" at the start of a line: answers the numbers and the position behind "obj".
static bool ObjectHeader(const std::string& s, size_t obj_at, UInt32& num, UInt32& gen, size_t& end) {
    end = obj_at + 3;
    if (end < s.size() && !IsWhite(s[end]) && !IsDelim(s[end])) return false;
    size_t p = obj_at;
    auto digits_before = [&](UInt32& value) {
        if (p == 0 || s[p - 1] != ' ') return false;
        size_t q = --p;
        while (q > 0 && s[q - 1] >= '0' && s[q - 1] <= '9') --q;
        if (q == p) return false;
        value = UInt32(std::stoul(s.substr(q, p - q)));
        p = q;
        return true;
    };
    if (!digits_before(gen) || !digits_before(num)) return false;
    return p == 0 || s[p - 1] == '\n' || s[p - 1] == '\r';
}

TestPdf::TestPdf(const std::string& bytes) {
    for (size_t at = bytes.find("obj"); at != std::string::npos; at = bytes.find("obj", at + 3)) {
        TestObject obj;
        size_t pos = 0;
        if (!ObjectHeader(bytes, at, obj.num, obj.gen, pos)) continue;
        obj.value.reset(ParseTestValue(bytes, pos));
        SkipWhite(bytes, pos);
        if (bytes.compare(pos, 6, "stream") == 0) {
            pos += 6;
            if (bytes[pos] == '\r') ++pos;
            if (bytes[pos] == '\n') ++pos;
            const size_t len = size_t(obj.value->FindObj(SDF::Name("Length"))->GetNumber());
            obj.is_stream = true;
            obj.data = bytes.substr(pos, len);
        }
        m_objects[obj.num] = std::move(obj);
    }
    // The last trailer, or the cross-reference stream's dictionary.
    const size_t t = bytes.rfind("trailer");
    if (t != std::string::npos) {
        size_t pos = t + 7;
        m_trailer.reset(ParseTestValue(bytes, pos));
    } else {
        for (auto& [num, obj] : m_objects) {
            Obj* type = obj.value->IsDict() ? obj.value->FindObj(SDF::Name("Type")) : nullptr;
            if (type && type->IsName() && std::strcmp(type->GetName(), "XRef") == 0)
                m_trailer.reset(obj.value->Clone());
        }
    }
    if (!m_trailer) throw std::runtime_error("no trailer");
    if (Obj* enc = m_trailer->FindObj(SDF::Name("Encrypt")); enc && enc->IsNumber()) {
        const TestObject* target = Find(UInt32(enc->GetNumber()));
        if (!target) throw std::runtime_error("Encrypt object missing");
        m_trailer->Put(SDF::Name("Encrypt"), target->value->Clone());
    }
}

std::string DecryptStream(SDF::SecurityHandler& h, const TestObject& o, bool inflate) {
    auto chain = h.CreateDecryptFilter(std::make_unique<Filters::ExtBufInputFilter>(
                                           reinterpret_cast<const UInt8*>(o.data.data()), o.data.size()),
                                       o.num, o.gen);
    if (inflate) chain = std::make_unique<Filters::FlateDecode>(std::move(chain));
    Filters::FilterReader reader(chain.get());
    std::string out;
    for (int c; (c = reader.Get()) >= 0;) out += char(c);
    return out;
}

SDF::Obj* TestPdf::Encrypt() const { return m_trailer->FindObj(SDF::Name("Encrypt")); }

const TestObject* TestPdf::Find(UInt32 num) const {
    auto it = m_objects.find(num);
    return it == m_objects.end() ? nullptr : &it->second;
}

const TestObject* TestPdf::FindWithKey(const char* key) const {
    for (const auto& [num, obj] : m_objects)
        if (obj.value->IsDict() && obj.value->FindObj(SDF::Name(key))) return &obj;
    return nullptr;
}

}  // namespace lum::test
