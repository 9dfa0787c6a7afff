#include "SDF/KeywordScanner.h"

#include "SDF/Parser.h"

namespace lum::SDF {

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

bool SkipPastStreamEnd(Filters::FilterReader& reader, StreamEnd& out) {
    static const char kEndObj[] = "endobj";
    KeywordScanner end_stream("endstream");
    for (;;) {
        if (!end_stream.SkipPast(reader)) return false;
        out.behind_endstream = static_cast<UInt64>(reader.Tell());
        Parser::SkipWhiteSpaceAndComments(reader);
        out.at_endobj = static_cast<UInt64>(reader.Tell());
        size_t matched = 0;
        while (kEndObj[matched] && reader.Peek() == UInt8(kEndObj[matched])) {
            reader.Get();
            ++matched;
        }
        if (!kEndObj[matched]) return true;
        // What matched of "endobj" ("end") may begin the next "endstream".
        for (size_t i = 0; i < matched; ++i) end_stream.Feed(UInt8(kEndObj[i]));
    }
}

}  // namespace lum::SDF
