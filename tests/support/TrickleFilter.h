#pragma once
#include <algorithm>
#include <cstring>
#include <vector>

#include "Filters/Filter.h"

namespace lum::test {

// A source that hands out at most `step` bytes per window, as a file behind a small buffer.
class TrickleFilter final : public Filters::BufFilter {
public:
    TrickleFilter(std::vector<UInt8> data, size_t step)
        : BufFilter(nullptr, step, true), m_data(std::move(data)), m_step(step) {}
    const char* GetName() const override { return "Trickle"; }

protected:
    size_t Process() override {
        const size_t n = std::min(m_step, m_data.size() - m_pos);
        if (n > 0) std::memcpy(m_buf_begin, m_data.data() + m_pos, n);  // empty data: no pointer
        m_pos += n;
        return n;
    }

private:
    std::vector<UInt8> m_data;
    size_t m_step;
    size_t m_pos = 0;
};

}  // namespace lum::test
