#pragma once
// The one search for keywords in raw bytes: the end of a stream's data, for a stream whose
// Length can't be used and for the rebuild's scan alike.
#include <cstring>
#include <vector>

#include "Common/Types.h"
#include "Filters/FilterReader.h"

namespace lum::SDF {

// Finds a keyword in a byte stream, taking every byte as a possible start of it, so a partial
// match loses nothing ("endstrendstream" holds "endstream"). Scans whole reader windows with
// memchr while nothing is matched, so a long stream's data costs about what reading it costs.
class KeywordScanner {
public:
    explicit KeywordScanner(const char* keyword);

    // Feeds one byte; answers true when it completes the keyword.
    bool Feed(UInt8 c) noexcept {
        while (m_matched > 0 && c != m_keyword[m_matched]) m_matched = m_fallback[m_matched - 1];
        if (c == m_keyword[m_matched]) ++m_matched;
        if (m_matched == m_keyword.size()) {
            m_matched = 0;
            return true;
        }
        return false;
    }
    void ResetMatch() noexcept { m_matched = 0; }

    // Reads until the keyword has been read; false at the end of the data.
    bool SkipPast(Filters::FilterReader& reader);

private:
    std::vector<UInt8> m_keyword;
    std::vector<size_t> m_fallback;  // longest proper prefix that is also a suffix, per length
    size_t m_matched = 0;
};

// Where a stream's data ends: the first "endstream" that "endobj" follows, with only white
// space and comments between. An "endstream" followed by anything else is data, and the search
// goes on behind it.
struct StreamEnd {
    UInt64 behind_endstream;  // reader position right behind the keyword
    UInt64 at_endobj;         // reader position of the "endobj" behind it
};

// Reads past that "endobj"; false at the end of the data.
bool SkipPastStreamEnd(Filters::FilterReader& reader, StreamEnd& out);

}  // namespace lum::SDF
