#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Common/TextEncodingTables.h"
#include "Common/UString.h"

using namespace lum;

namespace {

std::vector<Unicode> Units(const UString& s) {
    return std::vector<Unicode>(s.GetBuffer(), s.GetBuffer() + s.GetLength());
}

UString FromUnits(const std::vector<Unicode>& u) {
    return UString(u.data(), static_cast<int>(u.size()));
}

}  // namespace

TEST(UStringDecode, ByEncoding) {
    struct Case {
        std::string bytes;
        TextEncoding enc;
        std::vector<Unicode> want;
    } cases[] = {
        {"AB", enc_ascii, {'A', 'B'}},
        {std::string("A\0B", 3), enc_ascii, {'A', 0, 0}},   // the stop keeps the length
        {"\xE9\xFF", enc_raw, {0xE9, 0xFF}},
        {"\x81", enc_winansi, {0xFFFD}},
        {"\x80\x18\xA0\xAD", enc_pdfdoc, {0x2022, 0x02D8, 0x20AC, 0xFFFD}},
        {"\x80\x9F\x05", enc_winansi, {0x20AC, 0x0178, 0x05}},
        {std::string("a\0b", 3), enc_pdfdoc, {'a', 0, 0}},
        {std::string("\xFE\xFF\0A", 4), enc_pdftext, {'A'}},
        {"\xFE\xFF", enc_pdftext, {}},
        {std::string("\xFF\xFE" "A\0", 4), enc_pdftext, {'A'}},
        {"\xFE", enc_pdftext, {0xFE}},
        {"\xFE\x41", enc_pdftext, {0xFE, 'A'}},
        {std::string("\xFE\xFF\0A\0", 5), enc_pdftext, {'A'}},          // an odd last byte
        {std::string("\xFE\xFF\0\0\0B", 6), enc_pdftext, {0, 0}},
        {std::string("\xFE\xFF\xD8\x3D\xDE\x00", 6), enc_pdftext, {0xD83D, 0xDE00}},
        {std::string("\0A\0B\0", 5), enc_utf16be, {'A', 'B'}},
        {std::string("\xFE\xFF\0A", 4), enc_utf16be, {'A'}},
        {std::string("\xFF\xFE\0A", 4), enc_utf16be, {0xFFFE, 'A'}},
        {"\xC3\xA9\xF0\x9F\x98\x80", enc_utf8, {0xE9, 0xD83D, 0xDE00}},
        {"", enc_pdftext, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "enc " << c.enc << " bytes " << testing::PrintToString(c.bytes));
        const UString s(c.bytes.data(), static_cast<int>(c.bytes.size()), c.enc);
        EXPECT_EQ(Units(s), c.want);
        EXPECT_EQ(s.GetBuffer()[s.GetLength()], 0);
    }
}

TEST(UStringDecode, SizeMinusOneReadsToTheNulForAsciiAndUtf8Only) {
    EXPECT_EQ(UString("ab\0c", -1, lum::enc_ascii).GetLength(), 2);
    EXPECT_EQ(UString("\xC3\xA9", -1, lum::enc_utf8).GetLength(), 1);
    for (TextEncoding enc : {lum::enc_pdfdoc, lum::enc_winansi, lum::enc_pdftext, lum::enc_utf16be, lum::enc_raw})
        EXPECT_THROW(UString("ab", -1, enc), lum::Common::Exception) << enc;
    EXPECT_THROW(UString(static_cast<const char*>(nullptr), 0, lum::enc_ascii), lum::Common::Exception);
}

TEST(UStringDecode, StringObjectIsUtf8WithInnerNuls) {
    const UString s(std::string("a\0\xC3\xA9", 4));
    EXPECT_EQ(Units(s), (std::vector<Unicode>{'a', 0, 0xE9}));
    EXPECT_THROW(UString(std::string("\xC3")), lum::Common::Exception);
}

TEST(UStringDecode, FailedDecodeLeavesAnEmptyString) {
    UString s(std::string("keep"));
    EXPECT_THROW(lum::IMPL_LUM_UStringAssignAscii(s, "\x80", 1, lum::enc_utf8), lum::Common::Exception);
    EXPECT_EQ(s.GetLength(), 0);
    // A failure after whole blocks were converted must not leave them behind.
    std::string long_bad(20000, 'a');
    long_bad += '\x80';
    EXPECT_THROW(lum::IMPL_LUM_UStringAssignAscii(s, long_bad.data(), static_cast<int>(long_bad.size()),
                                                  lum::enc_utf8),
                 lum::Common::Exception);
    EXPECT_EQ(s.GetLength(), 0);
    EXPECT_EQ(s.GetBuffer()[0], 0);
    s.Append(UString(Unicode('z')));
    EXPECT_EQ(s.ConvertToUtf8(), "z");
}

TEST(UStringConvert, AsciiForm) {
    struct Case {
        std::vector<Unicode> in;
        std::string want;
    } cases[] = {
        {{}, ""},
        {{'a', 0x7F}, "a\x7F"},
        {{0x80}, "\\U0080"},
        {{0xD83D, 0xDE00}, "\\UD83D\\UDE00"},
        {{0xDC00}, "\\UDC00"},
        {{'x', 0xABCD, 'y'}, "x\\UABCDy"},
    };
    for (const auto& c : cases) {
        const UString s = FromUnits(c.in);
        EXPECT_EQ(s.ConvertToAscii(), c.want);
        EXPECT_EQ(s.ConvertToAscii(nullptr, 0), static_cast<int>(c.want.size()));
        std::ostringstream os;
        os << s;
        EXPECT_EQ(os.str(), c.want);
    }
}

TEST(UStringConvert, AsciiIntoShortBufferKeepsWholeItems) {
    const UString s = FromUnits({'a', 0xE9, 'b'});  // "a\U00E9b", 8 bytes
    struct Case {
        int size;
        bool nul;
        std::string want;
    } cases[] = {
        {0, true, ""}, {1, true, ""}, {2, true, "a"}, {7, true, "a"}, {8, true, "a\\U00E9"},
        {9, true, "a\\U00E9b"}, {7, false, "a\\U00E9"}, {8, false, "a\\U00E9b"},
    };
    for (const auto& c : cases) {
        char buf[16];
        std::fill(std::begin(buf), std::end(buf), '#');
        const int n = s.ConvertToAscii(buf, c.size, c.nul);
        EXPECT_EQ(std::string(buf, static_cast<size_t>(n)), c.want) << c.size;
        if (c.nul && c.size > 0) {
            EXPECT_EQ(buf[n], '\0');
        }
        EXPECT_EQ(buf[c.size], '#') << "wrote past the buffer";
    }
}

TEST(UStringConvert, Utf8) {
    EXPECT_EQ(FromUnits({0xD83D, 0xDE00}).ConvertToUtf8(), "\xF0\x9F\x98\x80");
    EXPECT_EQ(UString().ConvertToUtf8(), "");
    EXPECT_THROW(FromUnits({0xDC00}).ConvertToUtf8(), lum::Common::Exception);
    std::string reused = "old content";
    FromUnits({'n'}).ConvertToUtf8(reused);
    EXPECT_EQ(reused, "n");
}

TEST(UStringConvert, Utf32) {
    struct Case {
        std::vector<Unicode> in;
        std::vector<UInt32> want;
    } cases[] = {
        {{'a', 0xD83D, 0xDE00}, {'a', 0x1F600}},
        {{0xDC00, 'a'}, {0xDC00, 'a'}},           // a lone low half passes
        {{0xD800, 'a', 'b'}, {129, 'b'}},         // a broken pair takes both units
        {{0xD800, 0xD800, 0xDC00}, {129, 0xDC00}},
        {{'a', 0xDBFF}, {'a', 129}},              // at the end it takes one unit
    };
    for (const auto& c : cases) {
        const UString s = FromUnits(c.in);
        const std::u32string got = s.ConvertToUtf32();
        EXPECT_EQ(std::vector<UInt32>(got.begin(), got.end()), c.want);
        UInt32 one[1] = {0};
        EXPECT_EQ(s.ConvertToUtf32(one, 1), static_cast<int>(c.want.size()));
        EXPECT_EQ(one[0], c.want[0]);
    }
}

TEST(UStringConvert, PDFText) {
    struct Case {
        std::vector<Unicode> in;
        std::string want;
    } cases[] = {
        {{}, ""},
        {{'A'}, "A"},
        {{0x20AC}, "\xA0"},
        {{0x2022, 0x02DC, 0xFB02, '\t', '\n', '\r'}, "\x80\x1F\x94\t\n\r"},
        {{0x3B1}, std::string("\xFE\xFF\x03\xB1", 4)},
        {{'a', 0xA0}, std::string("\xFE\xFF\0a\0\xA0", 6)},   // no byte for a no-break space
        {{0xAD}, std::string("\xFE\xFF\0\xAD", 4)},
        {{0x7F}, std::string("\xFE\xFF\0\x7F", 4)},
        {{0}, std::string("\xFE\xFF\0\0", 4)},
        {{0xFFFD}, std::string("\xFE\xFF\xFF\xFD", 4)},
    };
    for (const auto& c : cases) {
        const UString s = FromUnits(c.in);
        EXPECT_EQ(s.ConvertToPDFText(), c.want) << testing::PrintToString(c.in);
        EXPECT_EQ(s.ConvertToPDFText(nullptr, 0), static_cast<int>(c.want.size()));
        // The bytes decode back to the same text.
        EXPECT_EQ(UString(c.want.data(), static_cast<int>(c.want.size()), lum::enc_pdftext), s);
    }
    char buf[3];
    EXPECT_EQ(FromUnits({0x3B1, 0x3B2}).ConvertToPDFText(buf, 3), 3);
    EXPECT_EQ(std::string(buf, 3), "\xFE\xFF\x03");
}

TEST(UStringConvert, NativeWideString) {
    const UString s = FromUnits({'a', 0xD83D, 0xDE00, 0xDC00});
    EXPECT_EQ(s.ConvertToNativeWString(), (std::wstring{L'a', wchar_t(0x1F600), wchar_t(0xDC00)}));
    EXPECT_EQ(UString(s.ConvertToNativeWString()), s);
    EXPECT_EQ(UString(L"\u00e9").GetLength(), 1);
    EXPECT_THROW(UString(std::wstring(1, wchar_t(0x110000))), lum::Common::Exception);
}

TEST(UStringCompare, OrderAndEquality) {
    struct Case {
        std::vector<Unicode> a, b;
        int want;
    } cases[] = {
        {{'a', 'b'}, {'a', 'b', 'c'}, -1},
        {{'a', 'b', 'c'}, {'a', 'b'}, 1},
        {{}, {}, 0},
        {{}, {0}, -1},
        {{0xFFFF}, {0xFFFE}, 1},
        {{0xFFFF}, {0x8000, 'z'}, 1},
        {{'a', 0}, {'a', 0}, 0},
        {{'b'}, {'a', 'z'}, 1},
    };
    for (const auto& c : cases) {
        const UString a = FromUnits(c.a), b = FromUnits(c.b);
        EXPECT_EQ(a.Compare(b), c.want);
        EXPECT_EQ(b.Compare(a), -c.want);
        EXPECT_EQ(a == b, c.want == 0);
    }
}

TEST(UStringEdit, AssignAppendSubStr) {
    UString s(std::string("hello"));
    s.Assign(s.GetBuffer() + 1, 3);  // a source inside the string itself
    EXPECT_EQ(s.ConvertToUtf8(), "ell");
    s.Append(s);
    EXPECT_EQ(s.ConvertToUtf8(), "ellell");
    s.Append(s.GetBuffer() + 4, 2);
    EXPECT_EQ(s.ConvertToUtf8(), "ellellll");
    s.Assign(s.GetBuffer() + 2);  // NUL-terminated, inside
    EXPECT_EQ(s.ConvertToUtf8(), "lellll");

    const UString t(std::string("abcdef"));
    struct Case {
        int pos, count;
        std::string want;
    } cases[] = {{0, -1, "abcdef"}, {2, 3, "cde"}, {4, 10, "ef"}, {6, 1, ""}, {-1, 2, ""}, {1, 0, ""}, {9, 2, ""}};
    for (const auto& c : cases) EXPECT_EQ(t.SubStr(c.pos, c.count).ConvertToUtf8(), c.want) << c.pos;

    EXPECT_EQ((t + UString(Unicode('!'))).ConvertToUtf8(), "abcdef!");
    EXPECT_EQ(t.ConvertToUtf8(), "abcdef");
    EXPECT_EQ(UString(Unicode(0)).GetLength(), 1);
}
