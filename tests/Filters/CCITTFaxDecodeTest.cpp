// The fax decoder against libtiff's encoders (tools/gen-fax-fixtures.py made the coded data),
// and hand-assembled bit strings for the rules on damaged data and the end of the data.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "Common/Limits.h"
#include "FilterTestUtil.h"
#include "Filters/CCITTFaxDecode.h"
#include "support/TestSupport.h"

using namespace lum;
using namespace lum::Filters;
using namespace lum::test;

namespace {

std::string Decode(const std::string& data, const CCITTFaxParams& p, size_t window = 1 << 20) {
    return ReadAll(std::make_unique<CCITTFaxDecode>(Source(data, window), p));
}

std::string Invert(std::string s) {
    for (char& c : s) c = static_cast<char>(~c);
    return s;
}

// Bytes from a string of '0' and '1', spaces ignored, the last byte filled with zeros.
std::string Bits(const std::string& bits) {
    std::string out;
    int n = 0, acc = 0;
    for (char c : bits) {
        if (c != '0' && c != '1') continue;
        acc = (acc << 1) | (c == '1');
        if (++n == 8) {
            out += static_cast<char>(acc);
            n = acc = 0;
        }
    }
    if (n) out += static_cast<char>(acc << (8 - n));
    return out;
}

std::string Rows(std::initializer_list<int> bytes) {
    std::string s;
    for (int b : bytes) s += static_cast<char>(b);
    return s;
}

struct KnownAnswer {
    std::string image, coding;
    CCITTFaxParams params;
};

std::vector<KnownAnswer> KnownAnswers() {
    std::ifstream in(lum::test::DataPath("fax/cases.tsv"));
    std::string line;
    std::getline(in, line);  // header
    std::vector<KnownAnswer> cases;
    while (std::getline(in, line)) {
        std::istringstream row(line);
        KnownAnswer c;
        int eol;
        row >> c.image >> c.coding >> c.params.k >> eol >> c.params.columns >> c.params.rows;
        c.params.end_of_line = eol != 0;
        cases.push_back(c);
    }
    return cases;
}

// The pixels of a P4 file.
std::string PbmPixels(const std::string& pbm) {
    std::istringstream in(pbm);
    std::string magic;
    int w, h;
    in >> magic >> w >> h;
    in.get();
    return pbm.substr(size_t(in.tellg()));
}

TEST(CCITTFaxDecode, MatchesLibtiffEncoders) {
    const auto cases = KnownAnswers();
    ASSERT_EQ(cases.size(), 16u);
    for (const auto& c : cases) {
        const std::string coded = lum::test::ReadFile(lum::test::DataPath("fax/" + c.image + "-" +
                                                                          c.coding + ".fax"));
        const std::string pixels =
            PbmPixels(lum::test::ReadFile(lum::test::DataPath("fax/" + c.image + ".pbm")));
        for (bool black_is_1 : {true, false}) {
            for (bool rows_known : {true, false}) {
                CCITTFaxParams p = c.params;
                p.black_is_1 = black_is_1;
                // Without Rows the data must end on its own (RTC or EOFB).
                if (!rows_known) p.rows = 0;
                const std::string want = black_is_1 ? pixels : Invert(pixels);
                for (size_t window : {size_t(1) << 20, size_t(1)}) {
                    EXPECT_TRUE(Decode(coded, p, window) == want)
                        << c.image << " " << c.coding << " BlackIs1 " << black_is_1
                        << " Rows " << p.rows << " window " << window;
                }
            }
        }
    }
}

// Codes used below (T.4): white 8 "10011", white 2 "0111", white 1 "000111", black 4 "011",
// black 7 "00011", EOL "000000000001"; modes: V0 "1", H "001", VL3 "0000010". Eight columns,
// black as 0: w8 is FF, w2 b4 w2 is C3, w1 b7 is 80.
const char* const kEol = "000000000001 ";

TEST(CCITTFaxDecode, EndOfDataRowCountsAndDamage) {
    struct Case {
        const char* what;
        std::string bits;
        Int64 k;
        bool eol;
        Int64 rows;
        std::string want;
        Int64 damaged_before_error = 0;
    };
    // A row that stops on an invalid code (nine zeros and a one), then the EOL of the next.
    const std::string bad = std::string(kEol) + "0000000001 1011 ";
    const std::string good = std::string(kEol) + "0111 011 0111 ";
    const std::string three_rows = "10011  0111 011 0111  000111 00011";
    const Case cases[] = {
        {"data ending after 3 of 10 rows: the last row repeats", three_rows, 0, false, 10,
         Rows({0xFF, 0xC3, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80})},
        {"Rows 0 ends with the data", three_rows, 0, false, 0, Rows({0xFF, 0xC3, 0x80})},
        {"Rows reached: the rest is not read", three_rows, 0, false, 2, Rows({0xFF, 0xC3})},
        {"no data, Rows 0", "", 0, false, 0, ""},
        {"no data, Rows 2: white rows", "", 0, false, 2, Rows({0xFF, 0xFF})},
        {"K < 0: EOFB ends the data", "1  001 0111 011 1  " + std::string(kEol) + kEol + "11111111",
         -1, false, 0, Rows({0xFF, 0xC3})},
        {"K 0: an EOL ahead of a row is passed, two end the data",
         std::string(kEol) + "10011 " + kEol + "0111 011 0111 " + kEol + kEol + "10011", 0, true, 0,
         Rows({0xFF, 0xC3})},
        {"K > 0: tag bits follow the EOLs; RTC ends", std::string(kEol) + "1 10011 " + kEol +
                                                          "0 001 0111 011 1 " + kEol + "1" + kEol +
                                                          "1",
         2, true, 0, Rows({0xFF, 0xC3})},
        {"K > 0 starting with a two-dimensional row: nothing", std::string(kEol) + "0 1", 2, true,
         0, ""},
        // Damaged rows.
        {"the third damaged row ends the data and is delivered", good + bad + bad + bad + good, 0,
         true, 0, Rows({0xC3, 0xFF, 0xFF, 0xFF}), 2},
        {"without EndOfLine the first damage ends the data", good + bad + bad + good, 0, false, 0,
         Rows({0xC3, 0xFF}), 2},
        {"after a damaged row the decoder finds the next EOL", good + bad + good, 0, true, 0,
         Rows({0xC3, 0xFF, 0xC3}), 5},
        {"an EOL inside a row stops it; a row stopping in black ends white",
         std::string(kEol) + "0111 011 " + good, 0, true, 0, Rows({0xC3, 0xC3}), 5},
        {"a row stopping in white stays white", std::string(kEol) + "0111 " + good, 0, true, 0,
         Rows({0xFF, 0xC3}), 5},
        {"a short row at the end of the data", "0111 011", 0, false, 0, Rows({0xC3})},
        {"a two-dimensional row overshooting Columns drops its last run", "001 0111 011  0000011",
         -1, false, 0, Rows({0xC3})},
    };
    for (const auto& c : cases) {
        const CCITTFaxParams p{.k = c.k, .end_of_line = c.eol, .columns = 8, .rows = c.rows,
                               .damaged_rows_before_error = c.damaged_before_error};
        EXPECT_EQ(Hex(Decode(Bits(c.bits), p)), Hex(c.want)) << c.what;
    }
}

TEST(CCITTFaxDecode, ParametersShapeTheRow) {
    CCITTFaxParams p{.columns = 8};
    EXPECT_EQ(Hex(Decode(Bits("10011"), p)), "FF");
    p.black_is_1 = true;
    EXPECT_EQ(Hex(Decode(Bits("10011"), p)), "00");
    // Byte-aligned rows without EOLs: the fill behind each row is skipped.
    p = CCITTFaxParams{.encoded_byte_align = true, .columns = 8};
    EXPECT_EQ(Hex(Decode(Bits("10011 000  0111 011 0111 00000"), p)), "FFC3");
    // Odd widths: the bits behind the last column are white.
    p = CCITTFaxParams{.columns = 5};
    EXPECT_EQ(Hex(Decode(Bits("0111 10"), p)), "C7");
    p.columns = 0;
    EXPECT_EQ(Decode(Bits("10011"), p), "");
}

TEST(CCITTFaxDecode, ImpossibleRunsAndColumnsRaise) {
    // The row above is C3; VL3 at the start puts a1 at 2 - 3, left of the row.
    CCITTFaxParams p{.k = -1, .columns = 8};
    const auto e = lum::test::Raised([&] { Decode(Bits("001 0111 011 1  0000010"), p); });
    EXPECT_EQ(e.GetMessage(), "Bad stream");
    EXPECT_EQ(e.GetCondition(), "int(b1 - a0 - tab_entry->Param)>=0");

    for (Int64 columns : {Int64(-1), lum::Limits::kMaxFaxColumns + 1, Int64(1) << 30}) {
        p.columns = columns;
        lum::test::Raised([&] { CCITTFaxDecode d(Source(""), p); });
    }
    p.columns = lum::Limits::kMaxFaxColumns;
    EXPECT_EQ(Decode("", p), "");
}

TEST(CCITTFaxDecode, BytesBehindTheDataStayWithTheInput) {
    // One two-dimensional row of 12 bits; its last code made the decoder look at 7 more bits,
    // into the byte behind the data. That byte goes back to the input (an inline image's end).
    const CCITTFaxParams p{.k = -1, .columns = 8, .rows = 1};
    for (size_t window : {size_t(1) << 20, size_t(1)}) {
        CCITTFaxDecode d(Source(Bits("001 0111 011 1") + " EI Q", window), p);
        EXPECT_EQ(Hex(ReadAll(d)), "C3");
        d.Flush();
        auto rest = d.ReleaseAttachedFilter();
        EXPECT_EQ(ReadAll(*rest), " EI Q") << window;
    }
}

TEST(CCITTFaxDecode, RepeatedRowsAreBounded) {
    const CCITTFaxParams p{.columns = lum::Limits::kMaxFaxColumns, .rows = Int64(1) << 40};
    CCITTFaxDecode d(Source(""), p);
    size_t total = 0;
    while (size_t n = d.Size()) {
        total += n;
        d.Consume(n);
    }
    const size_t row = (size_t(p.columns) + 7) / 8;
    EXPECT_GE(total, lum::Limits::kMaxFaxRepeatedBytes);
    EXPECT_LT(total, lum::Limits::kMaxFaxRepeatedBytes + row);
}

}  // namespace
