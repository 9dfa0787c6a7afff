// Page list and clip box parsing, through the parsers themselves.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "Apps/Bindery/misc/ParsePages.h"
#include "Common/Limits.h"
#include "PDF/Rect.h"
#include "support/TestSupport.h"

using lum::Bindery::ParseClipBox;
using lum::Bindery::ParsePages;

namespace {

std::vector<int> Range(int a, int b, int step = 1) {
    std::vector<int> v;
    for (int i = a; i <= b; i += step) v.push_back(i);
    return v;
}

struct PageListCase {
    const char* text;
    std::vector<int> pages;  // the set after the call (also after a bad token)
    const char* bad_token;   // null when the text parses
};

class PageListTable : public ::testing::TestWithParam<PageListCase> {};

TEST_P(PageListTable, SelectsPagesOfTenPageDocument) {
    const PageListCase& c = GetParam();
    std::set<int> pages = {99};  // emptied first
    const std::string message = lum::test::CatchFailure([&] { ParsePages(c.text, pages, 10); }).message;
    EXPECT_EQ(c.bad_token ? std::string("Incorrect Syntax for Pagelist ") + c.bad_token : "", message);
    EXPECT_EQ(std::vector<int>(pages.begin(), pages.end()), c.pages) << "text: " << c.text;
}

INSTANTIATE_TEST_SUITE_P(
    TenPages, PageListTable,
    ::testing::Values(
        PageListCase{"-", Range(1, 10), nullptr}, PageListCase{"3", {3}, nullptr},
        PageListCase{"12", {12}, nullptr}, PageListCase{"2-4,8", {2, 3, 4, 8}, nullptr},
        PageListCase{"4-2", {2, 3, 4}, nullptr}, PageListCase{"-3", {1, 2, 3}, nullptr},
        PageListCase{"8-", {8, 9, 10}, nullptr}, PageListCase{"1-20", Range(1, 10), nullptr},
        PageListCase{"11-20", {}, nullptr}, PageListCase{"12-", {10, 11, 12}, nullptr},
        PageListCase{"even", {2, 4, 6, 8, 10}, nullptr},
        PageListCase{"O", {1, 3, 5, 7, 9}, nullptr}, PageListCase{"2-7o", {3, 5, 7}, nullptr},
        PageListCase{"1-6even", {2, 4, 6}, nullptr}, PageListCase{"1,,3,", {1, 3}, nullptr},
        PageListCase{"", {}, nullptr}, PageListCase{"0", {}, "0"},
        PageListCase{"0-3", {}, "0-3"}, PageListCase{"-even", {}, "-even"},
        PageListCase{"1,x,3", {1}, "x"}, PageListCase{"1-5x", Range(1, 5), nullptr},
        PageListCase{"7abc", {7}, nullptr},
        // Order and repetition among tokens don't matter.
        PageListCase{"9,1,1,3-2", {1, 2, 3, 9}, nullptr},
        PageListCase{"e,o", Range(1, 10), nullptr}, PageListCase{"E", Range(2, 10, 2), nullptr},
        PageListCase{"odd", Range(1, 10, 2), nullptr},
        // The suffix is looked for behind the minus only, and "e" wins over "o".
        PageListCase{"3-9E", {4, 6, 8}, nullptr}, PageListCase{"2-9odd", {3, 5, 7, 9}, nullptr},
        PageListCase{"9-2e", {2, 4, 6, 8}, nullptr}, PageListCase{"2-9oe", {2, 4, 6, 8}, nullptr},
        PageListCase{"o-5", {}, "o-5"},
        // A second minus is part of B, which atoi reads up to it.
        PageListCase{"2-4-6", {2, 3, 4}, nullptr}, PageListCase{"5--", {}, "5--"},
        // A range beyond the end with an explicit B is dropped without a word; the next token
        // still counts.
        PageListCase{"15-12,2", {2}, nullptr}, PageListCase{"-12", Range(1, 10), nullptr},
        PageListCase{"-1", {1}, nullptr},
        // A percent sign in a bad token stands in the message as it is.
        PageListCase{"%s%n", {}, "%s%n"}));

TEST(PageList, PageCountZeroSelectsNothingAndOpenRangesFail) {
    std::set<int> pages;
    ParsePages("-", pages, 0);
    EXPECT_TRUE(pages.empty());
    ParsePages("even,odd", pages, 0);
    EXPECT_TRUE(pages.empty());
    EXPECT_THROW(ParsePages("1-", pages, 0), lum::Common::Exception);
    ParsePages("1-3", pages, 0);  // r1 and r2 above a count of 0: dropped
    EXPECT_TRUE(pages.empty());
}

TEST(PageList, NumbersFarAboveTheCountAreLeftOutAndCounted) {
    const int bound = static_cast<int>(lum::Limits::kMaxMissingPageReports);
    std::set<int> pages;
    int left_out = 0;
    // Page 10 and the first numbers above it; the rest are only counted.
    ParsePages("2147483647-", pages, 10, &left_out);
    EXPECT_EQ(10, *pages.begin());
    EXPECT_EQ(10 + bound, *pages.rbegin());
    EXPECT_EQ(static_cast<size_t>(bound + 1), pages.size());
    EXPECT_EQ(2147483647, left_out);
    // Single numbers are kept whatever their size.
    left_out = 0;
    ParsePages("2147483647", pages, 10, &left_out);
    EXPECT_EQ(std::set<int>{2147483647}, pages);
    EXPECT_EQ(0, left_out);
}

struct ClipCase {
    const char* text;
    bool ok;
    lum::PDF::Rect box;
};

class ClipTable : public ::testing::TestWithParam<ClipCase> {};

TEST_P(ClipTable, Parses) {
    const ClipCase& c = GetParam();
    lum::PDF::Rect r(-1, -1, -1, -1);
    EXPECT_EQ(c.ok, ParseClipBox(c.text, r)) << c.text;
    if (c.ok) {
        EXPECT_EQ(c.box, r) << c.text;
        EXPECT_EQ(nullptr, r.mp_rect);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ClipTable,
    ::testing::Values(ClipCase{"0,0,100,200", true, {0, 0, 100, 200}},
                      ClipCase{"100,200,0,0", true, {0, 0, 100, 200}},
                      ClipCase{"10.5,-3,2,7e1", true, {2, -3, 10.5, 70}},
                      ClipCase{"a,b,c,d", true, {0, 0, 0, 0}},
                      ClipCase{"1,2,3,4,5", true, {1, 2, 3, 4}},
                      ClipCase{",1,,2,3,4,", true, {1, 2, 3, 4}},
                      ClipCase{"0,0,100", false, {}}, ClipCase{"", false, {}},
                      ClipCase{",,,,", false, {}}));

}  // namespace
