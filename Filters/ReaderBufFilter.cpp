#include "Filters/ReaderBufFilter.h"

namespace lum::Filters {

ReaderBufFilter::ReaderBufFilter(std::unique_ptr<Filter> input, size_t buf_size)
    : BufFilter(std::move(input), buf_size, true) {
    m_reader.AttachFilter(m_attached.get());
}

ReaderBufFilter::~ReaderBufFilter() = default;

void ReaderBufFilter::AttachFilter(std::unique_ptr<Filter> filter) {
    m_reader.AttachFilter(nullptr);
    m_attached = std::move(filter);
    m_reader.AttachFilter(m_attached.get());
}

std::unique_ptr<Filter> ReaderBufFilter::ReleaseAttachedFilter() {
    m_reader.AttachFilter(nullptr);
    return std::move(m_attached);
}

void ReaderBufFilter::Flush() {
    m_reader.FlushReader();
    if (m_attached) m_attached->Flush();
}

}  // namespace lum::Filters
