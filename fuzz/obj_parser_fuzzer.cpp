// Bytes in, objects out: the tokeniser and value reader over arbitrary input, with every
// question asked of every value it gives. References resolve to a small pool of entries.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Filters/ExtBufInputFilter.h"
#include "ObjQuestions.h"
#include "SDF/Parser.h"

namespace {

using namespace lum;

// A parser whose "R" inside containers resolves into a fixed pool, as the object parser does
// into the document's table.
class PoolParser : public SDF::Parser {
public:
    PoolParser(Filters::Filter* f) : Parser(nullptr, f) {
        for (UInt32 i = 0; i < 4; ++i) m_pool.push_back(std::make_unique<SDF::Indirect>(nullptr, i, 0, 0, 1));
        m_pool[1]->SetTarget(new SDF::Number(1));
        m_pool[2]->SetTarget(new SDF::Dict());
        m_pool[3]->SetTarget(new SDF::Null());
        // Entry 0 stays unloaded: every question to it fails as a load failure would.
    }
    // Values on the stack may point into the pool, so they go first.
    ~PoolParser() override { ClearStack(); }

protected:
    bool ContainerOperator(const char* word) override {
        if (word[0] != 'R' || word[1] != 0) return false;
        auto& st = GetOperandStack();
        if (st.size() < 2) return false;
        const UInt32 num = ToObjNum(st[st.size() - 2]);
        PopObj();
        PopObj();
        Push(m_pool[num % m_pool.size()].get());
        return true;
    }

private:
    std::vector<std::unique_ptr<SDF::Indirect>> m_pool;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Filters::ExtBufInputFilter input(data, size);
    {
        PoolParser parser(&input);
        // Each top-level read consumes at least one byte or ends, so this ends; the cap keeps
        // slow inputs short.
        for (int round = 0; round < 100000; ++round) {
            parser.ClearStack();
            parser.ResetNesting();
            bool value = false;
            try {
                value = parser.GetObj();
            } catch (const Common::Exception&) {
                continue;
            }
            for (SDF::Obj* v : parser.GetOperandStack()) fuzz::AskEverything(v);
            if (!value && parser.GetTokenSize() == 0) break;
        }
    }
    // The header search over the same bytes.
    Filters::ExtBufInputFilter again(data, size);
    SDF::Parser header(nullptr, &again);
    fuzz::Try([&] { (void)header.SkipHeader(); });
    (void)SDF::ParseNumberToken(reinterpret_cast<const char*>(data), size);
    return 0;
}
