#include "SDF/SecurityTestPdf.h"

#include <cstring>
#include <stdexcept>

#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "Filters/FlateDecode.h"
#include "SDF/ObjTestSupport.h"
#include "SDF/Parser.h"

namespace lum::test {

using SDF::Obj;

namespace {

// "N G R" inside a container leaves N: there is no table to point into.
class RefAsNumberParser final : public SDF::Parser {
public:
    explicit RefAsNumberParser(Filters::Filter* input) : Parser(nullptr, input) {}

    // The next top-level value, or null when a word came (GetToken names it).
    std::unique_ptr<Obj> Value() {
        ClearStack();
        ResetNesting();
        if (!GetObj()) return nullptr;
        return std::unique_ptr<Obj>(PopObjNoDelete());
    }

protected:
    bool ContainerOperator(const char* word) override {
        if (std::strcmp(word, "R") != 0 || m_operand_stack.size() < 2) return false;
        PopObj();  // the generation
        return true;
    }
};

bool IsXRefStream(Obj& value) {
    Obj* type = value.IsDict() ? value.FindObj(SDF::Name("Type")) : nullptr;
    return type && type->IsName() && std::strcmp(type->GetName(), "XRef") == 0;
}

}  // namespace

TestPdf::TestPdf(const std::string& bytes) {
    Filters::ExtBufInputFilter input(reinterpret_cast<const UInt8*>(bytes.data()), bytes.size());
    RefAsNumberParser p(&input);
    double numbers[2] = {0, 0};  // the last two numbers read: an object header's
    for (;;) {
        if (std::unique_ptr<Obj> v = p.Value()) {
            numbers[0] = numbers[1];
            numbers[1] = v->IsNumber() ? v->GetNumber() : -1;
            continue;
        }
        const std::string word = p.GetToken();
        if (word.empty()) break;
        if (word == "trailer") m_trailer = p.Value();
        if (word != "obj") continue;
        TestObject obj;
        obj.num = UInt32(numbers[0]);
        obj.gen = UInt32(numbers[1]);
        obj.value = p.Value();
        if (!obj.value) throw std::runtime_error("object " + std::to_string(obj.num) + " has no value");
        if (!p.Value() && std::strcmp(p.GetToken(), "stream") == 0) {
            Filters::FilterReader& r = p.GetReader();
            if (r.Peek() == '\r') r.Get();
            if (r.Peek() == '\n') r.Get();
            const size_t length = size_t(obj.value->FindObj(SDF::Name("Length"))->GetNumber());
            obj.data.resize(length);
            if (r.Read(reinterpret_cast<UInt8*>(obj.data.data()), length) != length)
                throw std::runtime_error("stream cut short");
            obj.is_stream = true;
        }
        m_objects[obj.num] = std::move(obj);
    }
    for (const auto& [num, obj] : m_objects)
        if (!m_trailer && IsXRefStream(*obj.value)) m_trailer.reset(obj.value->Clone());
    if (!m_trailer) throw std::runtime_error("no trailer");
    if (Obj* enc = m_trailer->FindObj(SDF::Name("Encrypt")); enc && enc->IsNumber()) {
        auto target = m_objects.find(UInt32(enc->GetNumber()));
        if (target == m_objects.end()) throw std::runtime_error("Encrypt object missing");
        m_trailer->Put(SDF::Name("Encrypt"), target->second.value->Clone());
    }
}

std::string DecryptStream(SDF::SecurityHandler& h, const TestObject& o, bool inflate) {
    auto chain = h.CreateDecryptFilter(std::make_unique<Filters::ExtBufInputFilter>(
                                           reinterpret_cast<const UInt8*>(o.data.data()), o.data.size()),
                                       o.num, o.gen);
    if (inflate) chain = std::make_unique<Filters::FlateDecode>(std::move(chain));
    return ReadAll(std::move(chain));
}

const TestObject* TestPdf::FindWithKey(const char* key) const {
    for (const auto& [num, obj] : m_objects)
        if (obj.value->IsDict() && obj.value->FindObj(SDF::Name(key))) return &obj;
    return nullptr;
}

}  // namespace lum::test
