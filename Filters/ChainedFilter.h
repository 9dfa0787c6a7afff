#pragma once
// Reads several input filters one after the other as one stream. Used when a document is
// written (content streams joined); the tool itself does not need it.
#include <memory>
#include <vector>

#include "Filters/Filter.h"

namespace lum::Filters {

class ChainedFilter : public BufFilter {
public:
    static constexpr size_t kBufferSize = 2048;

    ChainedFilter();
    explicit ChainedFilter(std::vector<std::unique_ptr<Filter>> inputs);
    ~ChainedFilter() override;

    const char* GetName() const override { return "ChainedFilter"; }
    // Appends one more input behind those already there.
    void AddFilter(std::unique_ptr<Filter> input);

protected:
    size_t Process() override;

private:
    std::vector<std::unique_ptr<Filter>> m_inputs;
    size_t m_current = 0;
};

}  // namespace lum::Filters
