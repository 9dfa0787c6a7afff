#include <gtest/gtest.h>
#include <sys/resource.h>
#include <zlib.h>

#include "FilterTestUtil.h"
#include "Filters/ASCII85Decode.h"
#include "Filters/ASCIIHexDecode.h"
#include "Filters/FilterReader.h"
#include "Filters/FlateDecode.h"
#include "Filters/LZWDecode.h"
#include "Filters/RunLengthDecode.h"

using namespace lum::Filters;
using namespace lum::test;

namespace {

template <typename D>
std::string Decode(const std::string& in, size_t window = 1 << 20) {
    return ReadAll(std::make_unique<D>(Source(in, window)));
}

using namespace std::string_literals;

struct Case {
    std::string in;
    std::string out;
};

TEST(ASCIIHexDecode, EndsAtAnyByteThatIsNeitherDigitNorSpace) {
    const Case cases[] = {
        {"4A4B>", "JK"},
        {"4A4>", "J@"},
        {"4A 4B", "JK"},
        {"4AxxFF", "J"},
        {"4a\b\t\n\v\f\r 4b>ff", "JK"},
        {">", ""},
        {"", ""},
        {"4", "@"},
        {"4A\0" "4B"s, "J"},
    };
    for (const auto& c : cases) EXPECT_EQ(Hex(Decode<ASCIIHexDecode>(c.in)), Hex(c.out)) << c.in;
}

TEST(ASCII85Decode, GroupsPartialGroupsAndEnds) {
    const Case cases[] = {
        {"87cURD]i,\"Ebo80~>", "Hello World!"},
        {"z~>", "\0\0\0\0"s},
        {"zz", std::string(8, '\0')},
        {"87cUR~>", "Hell"},
        {"87 c\nU\tR\r\fD\0]i,\"Ebo80~>"s, "Hello World!"},
        {"87cURD]~", "Hello"},
        {"87cURD]", "Hello"},
        {"87cURD~", "Hell"},
        {"8~>", ""},
        {"87~>", "H"},
        {"~>87cUR", ""},
        {"", ""},
        // Bytes outside the digit range enter the sum as they are and the sum wraps.
        {"uuuuu", "\x08\x78\x0E\xC4"},
    };
    for (const auto& c : cases) EXPECT_EQ(Hex(Decode<ASCII85Decode>(c.in)), Hex(c.out)) << c.in;
}

TEST(ASCII85Decode, TildeWithoutGreaterThanLeavesNextByteUnread) {
    auto src = Source("87cUR~x");
    Filter* raw = src.get();
    ASCII85Decode d(std::move(src));
    EXPECT_EQ(ReadAll(d), "Hell");
    d.Flush();  // hands the bytes taken back to the source
    FilterReader r(raw);
    EXPECT_EQ(r.Get(), 'x');
}

TEST(RunLengthDecode, RunsLiteralsAndTruncation) {
    const Case cases[] = {
        {"\x02" "abc\xFE" "d\x80", "abcddd"},
        {"\x05" "a", "a\xFF\xFF\xFF\xFF\xFF"},
        {"\x81z", std::string(128, 'z')},
        {"\xFF", "\xFF\xFF"},
        {"\x80" "\x00z"s, ""},
        {"", ""},
        {"\x00q"s, "q"},
    };
    for (const auto& c : cases) EXPECT_EQ(Hex(Decode<RunLengthDecode>(c.in)), Hex(c.out)) << Hex(c.in);
}

// Round trips through every decoder with reference encoders, cutting the input into windows of
// 1, 7 and many bytes and reading the output in odd chunk sizes.
TEST(Decoders, RoundTripsAtEveryWindowSize) {
    const std::string inputs[] = {"", "x", TextLike(5000), Noise(3000),
                                  std::string(1000, '\0'), std::string(777, 'a') + "bc"};
    for (const auto& data : inputs) {
        for (size_t window : {size_t(1), size_t(7), size_t(1) << 20}) {
            SCOPED_TRACE(testing::Message() << "size " << data.size() << " window " << window);
            EXPECT_EQ(Decode<ASCII85Decode>(Ascii85Encode(data), window), data);
            EXPECT_EQ(Decode<RunLengthDecode>(RunLengthEncode(data), window), data);
            EXPECT_EQ(Decode<FlateDecode>(Deflate(data), window), data);
            EXPECT_EQ(ReadAll(std::make_unique<FlateDecode>(Source(Deflate(data, 9, true), window), true), 333), data);
            EXPECT_EQ(ReadAll(std::make_unique<ASCIIHexDecode>(Source(Hex(data) + ">", window)), 5), data);
            for (int early : {0, 1})
                EXPECT_EQ(ReadAll(std::make_unique<LZWDecode>(Source(LzwEncode(data, early), window), early)), data)
                    << "early change " << early;
        }
    }
}

TEST(LZWDecode, LongInputPassesSeveralTableResets) {
    const std::string data = TextLike(200000, 3) + Noise(20000, 4);
    for (int early : {0, 1})
        EXPECT_EQ(ReadAll(std::make_unique<LZWDecode>(Source(LzwEncode(data, early)), early)), data);
}

TEST(LZWDecode, EarlyChangeDecidesWhereCodesWiden) {
    // Enough distinct pairs that the table passes 511 entries; decoding with the other setting
    // reads the codes at the wrong width from there on.
    std::string data = Noise(4000, 9);
    std::string e0 = LzwEncode(data, 0), e1 = LzwEncode(data, 1);
    EXPECT_NE(e0, e1);
    EXPECT_EQ(ReadAll(std::make_unique<LZWDecode>(Source(e0), 0)), data);
    EXPECT_EQ(ReadAll(std::make_unique<LZWDecode>(Source(e1), 1)), data);
    EXPECT_NE(ReadAll(std::make_unique<LZWDecode>(Source(e0), 1)), data);
    EXPECT_NE(ReadAll(std::make_unique<LZWDecode>(Source(e1), 0)), data);
}

// Packs 9-bit codes most significant bit first.
std::string Codes9(std::initializer_list<int> codes) {
    std::string out;
    unsigned bits = 0;
    int count = 0;
    for (int c : codes) {
        bits = (bits << 9) | static_cast<unsigned>(c);
        count += 9;
        while (count >= 8) {
            count -= 8;
            out += static_cast<char>((bits >> count) & 0xFF);
        }
    }
    if (count) out += static_cast<char>((bits << (8 - count)) & 0xFF);
    return out;
}

TEST(LZWDecode, CorruptAndSpecialCodes) {
    struct {
        std::string in;
        std::string out;
    } const cases[] = {
        // A code above the next code ends the data quietly.
        {Codes9({256, 'A', 'B', 300, 'C'}), "AB"},
        // The code equal to the next code is the old string plus its first byte.
        {Codes9({'A', 258, 257}), "AAA"},
        // Clear codes anywhere, even repeated, restart the table; no leading clear needed.
        {Codes9({'A', 'B', 256, 256, 'A', 'B', 257}), "ABAB"},
        // The end code stops before the bytes behind it.
        {Codes9({'A', 257, 'B'}), "A"},
        // An input that ends inside a code ends the data after the last whole code.
        {Codes9({'A', 'B'}).substr(0, 2), "A"},
    };
    for (const auto& c : cases) EXPECT_EQ(Decode<LZWDecode>(c.in), c.out) << c.out;
}

TEST(FlateDecode, DamagedDataDeliversWhatItCan) {
    std::string data = TextLike(100000, 5);
    std::string z = Deflate(data);

    // Cut in half: a prefix of the data, then the end.
    std::string half = Decode<FlateDecode>(z.substr(0, z.size() / 2));
    EXPECT_GT(half.size(), data.size() / 4);
    EXPECT_EQ(half, data.substr(0, half.size()));

    // Wrong or missing checksum: all the data all the same.
    std::string bad_sum = z;
    bad_sum[bad_sum.size() - 1] ^= 0x55;
    EXPECT_EQ(Decode<FlateDecode>(bad_sum), data);
    EXPECT_EQ(Decode<FlateDecode>(z.substr(0, z.size() - 4)), data);

    // Garbage in the middle: at least what the bytes ahead of it determine, then whatever
    // zlib made of the garbage until it gave up.
    std::string broken = z;
    for (size_t i = z.size() / 2; i < z.size() / 2 + 64; ++i) broken[i] = '\xFF';
    std::string got = Decode<FlateDecode>(broken);
    ASSERT_GE(got.size(), half.size());
    EXPECT_EQ(got.substr(0, half.size()), half);

    // The header and the checksum read a byte at a time.
    EXPECT_EQ(ReadAll(std::make_unique<FlateDecode>(Source(z, 1))), data);

    // Raw data without the raw flag fails at the header: nothing. So do a preset dictionary
    // and a window beyond 32 KiB, though their check bits are right.
    EXPECT_EQ(Decode<FlateDecode>(Deflate(data, 6, true)), "");
    EXPECT_EQ(Decode<FlateDecode>("\x78\xBB" + z.substr(2)), "");
    EXPECT_EQ(Decode<FlateDecode>("\x88\x1C" + z.substr(2)), "");
    EXPECT_EQ(Decode<FlateDecode>("not compressed at all"), "");
    EXPECT_EQ(Decode<FlateDecode>(""), "");
}

TEST(FlateDecode, EndsAtStreamEndAndLeavesTrailingBytes) {
    std::string z = Deflate("payload") + "TRAILER";
    auto src = Source(z);
    FlateDecode d(std::move(src));
    EXPECT_EQ(ReadAll(d), "payload");
    FilterReader r(d.GetAttachedFilter());
    EXPECT_EQ(r.Get(), 'T');
}

long MaxRssKiB() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss;
}

// A small stream that inflates to 1 GiB is read window by window: memory stays flat.
TEST(FlateDecode, BombReadsToTheEndInBoundedMemory) {
    const size_t kOut = size_t(1) << 30;
    z_stream zs{};
    ASSERT_EQ(deflateInit(&zs, 9), Z_OK);
    std::vector<unsigned char> zeros(1 << 20, 0), out(64 << 10);
    std::string z;
    for (size_t done = 0; done < kOut; done += zeros.size()) {
        zs.next_in = zeros.data();
        zs.avail_in = static_cast<uInt>(zeros.size());
        int flush = done + zeros.size() >= kOut ? Z_FINISH : Z_NO_FLUSH;
        do {
            zs.next_out = out.data();
            zs.avail_out = static_cast<uInt>(out.size());
            deflate(&zs, flush);
            z.append(reinterpret_cast<char*>(out.data()), out.size() - zs.avail_out);
        } while (zs.avail_out == 0);
    }
    deflateEnd(&zs);
    ASSERT_LT(z.size(), size_t(4) << 20);

    long before = MaxRssKiB();
    FlateDecode d(Source(z, 1024));
    FilterReader r(&d);
    std::vector<lum::UInt8> buf(1 << 16);
    size_t total = 0, n;
    while ((n = r.Read(buf.data(), buf.size())) > 0) total += n;
    EXPECT_EQ(total, kOut);
    EXPECT_LT(MaxRssKiB() - before, 64 * 1024) << "KiB grown while inflating";
}

}  // namespace
