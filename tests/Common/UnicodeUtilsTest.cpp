#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Common/UnicodeUtils.h"
#include "support/TestSupport.h"

using namespace lum;

namespace {

using test::CatchFailure;

// The condition and message a failure must carry.
struct Want {
    std::string condition;
    std::string message;
};

std::vector<Unicode> Utf8ToUnits(const std::string& s) {
    std::vector<Unicode> out;
    Uni::ToUTF16Native(s.data(), s.size(), out);
    return out;
}

std::string UnitsToUtf8(const std::vector<Unicode>& u) {
    std::string out;
    Uni::FromUTF16Native(u.data(), u.size(), out);
    return out;
}

const Want kIncomplete{"writeCount>0", "Incomplete Unicode at end of string"};
const Want kBadLength{"!((bytesNeeded < 2) || (bytesNeeded > 4))", "Invalid UTF8 sequence length"};
const Want kBadData{"!( (inUnit & UInt8(0xC0)) != UInt8(0x80) )", "Invalid UTF8 data"};
const Want kSurrogate8{"!((0xD800 <= cp) && (cp <= 0xDFFF))", "Bad UTF8 code point"};
const Want kRange8{"cp <= 0x10FFFF", "UTF8 codepoint is out of range"};

void ExpectFailure(const test::Failure& got, const Want& want) {
    EXPECT_TRUE(got.thrown);
    EXPECT_EQ(got.condition, want.condition);
    EXPECT_EQ(got.message, want.message);
}

}  // namespace

TEST(Utf8ToUtf16, ValidInput) {
    struct Case {
        std::string in;
        std::vector<Unicode> out;
    } cases[] = {
        {"", {}},
        {"abc", {'a', 'b', 'c'}},
        {std::string("a\0b", 3), {'a', 0, 'b'}},
        {"\xE2\x82\xAC", {0x20AC}},
        {"\xEF\xBF\xBF", {0xFFFF}},
        {"\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
        {"x\xC3\xA9y\xF0\x9F\x98\x80z", {'x', 0xE9, 'y', 0xD83D, 0xDE00, 'z'}},
        {"\xC0\x80", {0}},            // overlong forms give their value
        {"\xE0\x81\x81", {0x41}},
    };
    for (const auto& c : cases) EXPECT_EQ(Utf8ToUnits(c.in), c.out) << c.in;
}

TEST(Utf8ToUtf16, InvalidInputRaises) {
    struct Case {
        std::string in;
        Want want;
    } cases[] = {
        {"\xC3", kIncomplete},
        {"\xF0\x9F\x98", kIncomplete},
        {"\x80", kBadLength},          // stray continuation byte
        {"\xFF", kBadLength},
        {"\xE2\x82\x41", kBadData},
        {"\xED\xA0\x80", kSurrogate8},
        {"\xED\xBF\xBF", kSurrogate8},
        {"\xF4\x90\x80\x80", kRange8},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.in);
        ExpectFailure(CatchFailure([&] { Utf8ToUnits(c.in); }), c.want);
    }
}

TEST(Utf8ToUtf16, LongTextCrossesBlocks) {
    // Sequences straddle the 8192-unit block edge, and a pair must not be split by it.
    for (size_t prefix : {8190u, 8191u, 8192u, 8193u, 20000u}) {
        std::string s(prefix, 'a');
        s += "\xF0\x9F\x98\x80\xC3\xA9";
        for (int i = 0; i < 6000; ++i) s += "\xE2\x82\xAC";  // fills output blocks unevenly
        const auto out = Utf8ToUnits(s);
        ASSERT_EQ(out.size(), prefix + 6003) << prefix;
        EXPECT_EQ(out[prefix], 0xD83D);
        EXPECT_EQ(out[prefix + 1], 0xDE00);
        EXPECT_EQ(out[prefix + 2], 0xE9);
        EXPECT_EQ(UnitsToUtf8(out), s);
    }
    std::string tail(30000, 'q');
    tail += "\xE2\x82";
    ExpectFailure(CatchFailure([&] { Utf8ToUnits(tail); }), kIncomplete);
}

TEST(Utf16ToUtf8, ValidInput) {
    struct Case {
        std::vector<Unicode> in;
        std::string out;
    } cases[] = {
        {{}, ""},
        {{0}, std::string(1, '\0')},
        {{0x7F, 0x80}, "\x7F\xC2\x80"},
        {{0x7FF, 0x800}, "\xDF\xBF\xE0\xA0\x80"},
        {{0xFFFD, 0xFFFF}, "\xEF\xBF\xBD\xEF\xBF\xBF"},
        {{0xD83D, 0xDE00}, "\xF0\x9F\x98\x80"},
        // The second half is taken by its low bits alone.
        {{0xD800, 0x0041}, "\xF0\x90\x81\x81"},
    };
    for (const auto& c : cases) EXPECT_EQ(UnitsToUtf8(c.in), c.out);
}

TEST(Utf16ToUtf8, InvalidInputRaises) {
    const Want kLowFirst{"hiUnit <= 0xDBFF", "Bad UTF16 - leading low surrogate"};
    struct Case {
        std::vector<Unicode> in;
        Want want;
    } cases[] = {
        {{0xDC00}, kLowFirst},
        {{0xD83D}, kIncomplete},
        {{'a', 'b', 0xDBFF}, kIncomplete},
    };
    for (const auto& c : cases) ExpectFailure(CatchFailure([&] { UnitsToUtf8(c.in); }), c.want);

    std::vector<Unicode> long_tail(40000, 0xE9);
    long_tail.push_back(0xD800);
    ExpectFailure(CatchFailure([&] { UnitsToUtf8(long_tail); }), kIncomplete);
}

TEST(CodePoints, EncodingRefusesSurrogatesAndOutOfRange) {
    UInt8 b[4];
    UInt16 u[2];
    ExpectFailure(CatchFailure([&] { Uni::CodePoint_to_UTF8_Multi(0x110000, b); }),
                  {"cpIn <= 0x10FFFF", "UTF32 codepoint is out of range"});
    ExpectFailure(CatchFailure([&] { Uni::CodePoint_to_UTF8_Multi(0xD800, b); }),
                  {"!((0xD800 <= cpIn) && (cpIn <= 0xDFFF))", "Bad UTF32 codepoint"});
    const std::function<void(UInt32)> to16[] = {
        [&](UInt32 cp) { Uni::CodePoint_to_UTF16Nat(cp, u); },
        [&](UInt32 cp) { Uni::CodePoint_to_UTF16Swp(cp, u); },
        [&](UInt32 cp) { Uni::CodePoint_to_UTF16Nat_Surrogate(cp, u); },
        [&](UInt32 cp) { Uni::CodePoint_to_UTF16Swp_Surrogate(cp, u); },
    };
    for (const auto& f : to16) {
        ExpectFailure(CatchFailure([&] { f(0x110000); }), {"cpIn <= 0x10FFFF", "Bad UTF32 - out of range"});
        ExpectFailure(CatchFailure([&] { f(0xDFFF); }),
                      {"!((0xD800 <= cpIn) && (cpIn <= 0xDFFF))", "Bad UTF32 - surrogate code point"});
    }
}

TEST(CodePoints, RoundTrips) {
    for (UInt32 cp : {0x80u, 0x7FFu, 0x800u, 0xD7FFu, 0xE000u, 0xFFFFu, 0x10000u, 0x1F600u, 0x10FFFFu}) {
        UInt8 b[4];
        const int n = Uni::CodePoint_to_UTF8_Multi(cp, b);
        EXPECT_EQ(n, Uni::UTF8SequenceLength(b[0]));
        EXPECT_EQ(Uni::CodePoint_from_UTF8_Multi(b, n), cp);

        UInt16 nat[2], swp[2];
        const int k = Uni::CodePoint_to_UTF16Nat(cp, nat);
        ASSERT_EQ(Uni::CodePoint_to_UTF16Swp(cp, swp), k);
        EXPECT_EQ(k, cp < 0x10000 ? 1 : 2);
        for (int i = 0; i < k; ++i) EXPECT_EQ(swp[i], UInt16((nat[i] >> 8) | (nat[i] << 8)));
        if (k == 2) {
            EXPECT_EQ(Uni::CodePoint_from_UTF16Nat_Surrogate(nat[0], nat[1]), cp);
            EXPECT_EQ(Uni::CodePoint_from_UTF16Swp_Surrogate(swp[0], swp[1]), cp);
        }
    }
}

TEST(CodePoints, OnlyTheSwappedDecoderChecksTheLowHalf) {
    EXPECT_EQ(Uni::CodePoint_from_UTF16Nat_Surrogate(0xD800, 0x0001), 0x10001u);
    ExpectFailure(CatchFailure([] { Uni::CodePoint_from_UTF16Swp_Surrogate(0x00D8, 0x0100); }),
                  {"!((loUnit < 0xDC00) || (0xDFFF < loUnit))", "Bad UTF16 - missing low surrogate"});
    ExpectFailure(CatchFailure([] { Uni::CodePoint_from_UTF16Swp_Surrogate(0x00D8, 0x00E0); }),
                  {"!((loUnit < 0xDC00) || (0xDFFF < loUnit))", "Bad UTF16 - missing low surrogate"});
}

TEST(ConverterTable, EveryPairRoundTrips) {
    Uni::InitConverterTable();
    const std::u32string text = U"A\u00E9\u20AC\U0001F600z";
    // Convert UTF-32 to each form and back again through every other form.
    for (int f = 0; f < Uni::e_form_count; ++f) {
        for (int t = 0; t < Uni::e_form_count; ++t) {
            const auto from = static_cast<Uni::UnicodeForm>(f);
            const auto to = static_cast<Uni::UnicodeForm>(t);
            SCOPED_TRACE(testing::Message() << f << "->" << t);
            UInt32 src32[16], back32[16];
            std::vector<UInt8> a(64), b(64);
            const size_t item_from = f == 0 ? 1 : f <= 2 ? 2 : 4;
            const size_t item_to = t == 0 ? 1 : t <= 2 ? 2 : 4;
            std::copy(text.begin(), text.end(), src32);
            auto r1 = Uni::GetConverter(Uni::e_utf32_native, from)(src32, text.size(), a.data(),
                                                                   a.size() / item_from);
            ASSERT_EQ(r1.consumed, text.size());
            auto r2 = Uni::GetConverter(from, to)(a.data(), r1.written, b.data(), b.size() / item_to);
            ASSERT_EQ(r2.consumed, r1.written);
            auto r3 = Uni::GetConverter(to, Uni::e_utf32_native)(b.data(), r2.written, back32, 16);
            ASSERT_EQ(r3.written, text.size());
            EXPECT_EQ(std::u32string(back32, back32 + r3.written), text);
        }
    }
}

TEST(ConverterTable, StopsWithoutFailure) {
    Uni::InitConverterTable();
    // Target full: never half a sequence.
    const UInt32 src[] = {'a', 0x1F600, 'b'};
    UInt16 dst16[4];
    auto r = Uni::GetConverter(Uni::e_utf32_native, Uni::e_utf16_native)(src, 3, dst16, 2);
    EXPECT_EQ(r.consumed, 1u);
    EXPECT_EQ(r.written, 1u);
    // Source ends inside a sequence.
    const char partial[] = "ab\xE2\x82";
    UInt16 out[8];
    r = Uni::GetConverter(Uni::e_utf8, Uni::e_utf16_native)(partial, 4, out, 8);
    EXPECT_EQ(r.consumed, 2u);
    EXPECT_EQ(r.written, 2u);
    const UInt16 lone_hi[] = {'x', 0xD83D};
    UInt8 out8[8];
    r = Uni::GetConverter(Uni::e_utf16_native, Uni::e_utf8)(lone_hi, 2, out8, 8);
    EXPECT_EQ(r.consumed, 1u);
    // Invalid data still raises.
    const char bad[] = "\x80";
    EXPECT_THROW(Uni::GetConverter(Uni::e_utf8, Uni::e_utf32_native)(bad, 1, out, 8), lum::Common::Exception);
    const UInt32 big[] = {0x110000};
    EXPECT_THROW(Uni::GetConverter(Uni::e_utf32_native, Uni::e_utf8)(big, 1, out8, 8),
                 lum::Common::Exception);
}
