#include "Filters/ChainedFilter.h"

#include <algorithm>
#include <cstring>

namespace lum::Filters {

ChainedFilter::ChainedFilter() : BufFilter(nullptr, kBufferSize, true) {}

ChainedFilter::ChainedFilter(std::vector<std::unique_ptr<Filter>> inputs) : ChainedFilter() {
    for (auto& f : inputs) AddFilter(std::move(f));
}

ChainedFilter::~ChainedFilter() = default;

void ChainedFilter::AddFilter(std::unique_ptr<Filter> input) {
    if (input) m_inputs.push_back(std::move(input));
}

size_t ChainedFilter::Process() {
    size_t filled = 0;
    while (filled < m_buf_size && m_current < m_inputs.size()) {
        Filter& in = *m_inputs[m_current];
        size_t n = in.Size();
        if (n == 0) {
            ++m_current;
            continue;
        }
        size_t k = std::min(n, m_buf_size - filled);
        std::memcpy(m_buf_begin + filled, in.Begin(), k);
        in.Consume(k);
        filled += k;
    }
    return filled;
}

}  // namespace lum::Filters
