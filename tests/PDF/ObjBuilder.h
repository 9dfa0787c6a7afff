#pragma once
// Builds small object graphs in memory for tests of the page layer: references are Indirect
// objects without a document, owned by the pool together with their targets.
#include <initializer_list>
#include <memory>
#include <vector>

#include "SDF/Obj.h"

namespace lum::test {

inline SDF::Obj* NumArray(std::initializer_list<double> values) {
    auto* a = new SDF::Array();
    for (double v : values) a->PushBack(new SDF::Number(v));
    return a;
}

class ObjPool {
public:
    ObjPool() = default;
    ObjPool(const ObjPool&) = delete;
    ObjPool& operator=(const ObjPool&) = delete;
    // Targets may point at each other's references: all targets go before any reference.
    ~ObjPool() {
        for (auto& ind : m_refs) SDF::DeleteDirect(ind->ReleaseTarget());
    }

    // A reference to a new dictionary.
    SDF::Indirect* NewDict() { return NewRef(new SDF::Dict()); }
    SDF::Indirect* NewRef(SDF::Obj* target) {
        m_refs.push_back(std::make_unique<SDF::Indirect>(
            nullptr, static_cast<UInt32>(m_refs.size() + 1), 0, 0, 1));
        m_refs.back()->SetTarget(target);
        return m_refs.back().get();
    }
    // A reference to a free entry.
    SDF::Indirect* NewFree() {
        m_refs.push_back(std::make_unique<SDF::Indirect>(
            nullptr, static_cast<UInt32>(m_refs.size() + 1), 65535, 0, 0));
        return m_refs.back().get();
    }

private:
    std::vector<std::unique_ptr<SDF::Indirect>> m_refs;
};

}  // namespace lum::test
