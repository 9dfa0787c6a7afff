#include "SDF/XRefUtil.h"

namespace lum::SDF::XRefUtil {

KeywordScanner::KeywordScanner(const char* keyword)
    : m_keyword(keyword, keyword + std::strlen(keyword)), m_fallback(m_keyword.size(), 0) {
    for (size_t i = 1, k = 0; i < m_keyword.size(); ++i) {
        while (k > 0 && m_keyword[i] != m_keyword[k]) k = m_fallback[k - 1];
        if (m_keyword[i] == m_keyword[k]) ++k;
        m_fallback[i] = k;
    }
}

bool KeywordScanner::SkipPast(Filters::FilterReader& reader) {
    for (;;) {
        if (reader.WindowSize() == 0 && !reader.Refill()) return false;
        const UInt8* begin = reader.WindowBegin();
        const size_t size = reader.WindowSize();
        size_t i = 0;
        while (i < size) {
            if (m_matched == 0) {
                const void* hit = std::memchr(begin + i, m_keyword[0], size - i);
                if (!hit) {
                    i = size;
                    break;
                }
                i = static_cast<size_t>(static_cast<const UInt8*>(hit) - begin);
            }
            if (Feed(begin[i++])) {
                reader.Skip(i);
                return true;
            }
        }
        reader.Skip(size);
    }
}

}  // namespace lum::SDF::XRefUtil
