#include "Apps/Bindery/misc/ParsePages.h"

#include <cstdlib>
#include <cstring>

#include <boost/tokenizer.hpp>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "PDF/Rect.h"

namespace lum::Bindery {

namespace {

using Tokens = boost::tokenizer<boost::char_separator<char>>;

// Adds first..last in steps of `step`; 64-bit so that a range ending at INT32_MAX terminates.
// Numbers above the document's pages are only reported as missing, one line each: a range
// such as "2147483647-" keeps the first of them and records how far it reached.
struct RangeAdder {
    std::set<Int32>& pages;
    Int64 keep_up_to;
    Int32* left_out;

    void operator()(Int64 first, Int64 last, Int64 step) const {
        for (Int64 i = first; i <= last && i <= keep_up_to; i += step)
            pages.insert(static_cast<Int32>(i));
        if (last > keep_up_to && left_out && last > *left_out) *left_out = static_cast<Int32>(last);
    }
};

Int64 FirstOfParity(Int64 from, bool even) {
    return ((from % 2 == 0) == even) ? from : from + 1;
}

}  // namespace

void ParsePages(const std::string& text, std::set<Int32>& pages, Int32 page_count,
                Int32* left_out) {
    pages.clear();
    const Int32 n = page_count;
    const RangeAdder AddRange{pages, Int64(n) + Limits::kMaxMissingPageReports, left_out};
    boost::char_separator<char> sep(",");
    for (const std::string& token : Tokens(text, sep)) {
        const std::string::size_type minus = token.find('-');
        if (minus != std::string::npos) {
            if (token == "-") {
                AddRange(1, n, 1);
                continue;
            }
            const std::string a = token.substr(0, minus);
            const std::string b = token.substr(minus + 1);
            Int32 r1 = a.empty() ? 1 : std::atoi(a.c_str());
            Int32 r2 = n;
            if (!b.empty()) {
                r2 = std::atoi(b.c_str());
                if (r2 > n) {
                    if (r1 > n) continue;  // wholly beyond the end: dropped without a word
                    r2 = n;
                }
            }
            LUM_CHECK((r1>0 && r2>0), "%s", ("Incorrect Syntax for Pagelist " + token).c_str());
            if (r1 > r2) std::swap(r1, r2);
            if (b.find_first_of("eE") != std::string::npos) {
                AddRange(FirstOfParity(r1, true), r2, 2);
            } else if (b.find_first_of("oO") != std::string::npos) {
                AddRange(FirstOfParity(r1, false), r2, 2);
            } else {
                AddRange(r1, r2, 1);
            }
            continue;
        }
        if (token == "e" || token == "E" || token == "even") {
            AddRange(2, n, 2);
        } else if (token == "o" || token == "O" || token == "odd") {
            AddRange(1, n, 2);
        } else {
            const Int32 page_num = std::atoi(token.c_str());
            LUM_CHECK((page_num>0), "%s", ("Incorrect Syntax for Pagelist " + token).c_str());
            pages.insert(page_num);
        }
    }
}

bool ParseClipBox(const std::string& text, PDF::Rect& box) {
    boost::char_separator<char> sep(",");
    Tokens tokens(text, sep);
    double v[4];
    int count = 0;
    for (auto it = tokens.begin(); it != tokens.end() && count < 4; ++it) {
        v[count++] = std::atof(it->c_str());
    }
    if (count < 4) return false;
    box = PDF::Rect(v[0], v[1], v[2], v[3]);
    box.Normalize();
    return true;
}

}  // namespace lum::Bindery
