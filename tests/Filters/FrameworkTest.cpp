#include <gtest/gtest.h>

#include "Common/Exception.h"
#include "FilterTestUtil.h"
#include "Filters/ASCIIHexDecode.h"
#include "Filters/ChainedFilter.h"
#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "Filters/FilterWriter.h"
#include "Filters/FlateDecode.h"
#include "Filters/MemoryFilter.h"
#include "Filters/PNGPredictorDecode.h"

using namespace lum;
using namespace lum::Filters;
using namespace lum::test;

namespace {

const UInt8* Bytes(const std::string& s) { return reinterpret_cast<const UInt8*>(s.data()); }

TEST(FilterReader, GetPeekReadAtTheEnd) {
    auto src = Source("abc", 2);
    FilterReader r(src.get());
    EXPECT_EQ(r.Peek(), 'a');
    EXPECT_EQ(r.Get(), 'a');
    UInt8 buf[8];
    EXPECT_EQ(r.Read(buf, 8), 2u);
    EXPECT_EQ(r.Count(), 3u);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(r.Get(), -1);
        EXPECT_EQ(r.Peek(), -1);
        EXPECT_EQ(r.Read(buf, 8), 0u);
    }
    FilterReader none;
    EXPECT_EQ(none.Get(), -1);
}

TEST(FilterReader, FlushReaderLeavesUnreadBytesWithTheFilter) {
    std::string data = "0123456789";
    ExtBufInputFilter f(Bytes(data), data.size());
    FilterReader a(&f);
    EXPECT_EQ(a.Get(), '0');
    EXPECT_EQ(a.Get(), '1');
    a.FlushReader();
    EXPECT_EQ(f.Count(), 2u);
    FilterReader b(&f);
    EXPECT_EQ(b.Get(), '2');
    EXPECT_EQ(b.Skip(100), 7u);
    EXPECT_EQ(b.Tell(), 10);
    b.Seek(4);
    EXPECT_EQ(b.Get(), '4');
}

TEST(ExtBufInputFilter, SeekBoundsAndStreamLength) {
    std::string data = "hello world";
    ExtBufInputFilter f(Bytes(data), data.size());
    f.Seek(0, Filter::e_end);  // exactly the end is allowed
    EXPECT_EQ(f.Size(), 0u);
    for (auto [offset, from] : {std::pair{Int64(1), Filter::e_end}, {Int64(-1), Filter::e_begin}, {INT64_MIN, Filter::e_end}})
        EXPECT_THROW(f.Seek(offset, from), lum::Common::Exception) << offset;
    f.Seek(6, Filter::e_begin);
    f.SetStreamLength(3);
    EXPECT_EQ(ReadAll(f), "wor");
    auto it = f.CreateInputIterator();
    EXPECT_EQ(ReadAll(*it), data);
}

TEST(MemoryFilter, SizeAndGrowth) {
    MemoryFilter small(10, false);
    EXPECT_EQ(small.GetBufferSize(), 64u);

    MemoryFilter out(64, false);
    FilterWriter w(&out);
    std::string data = lum::test::TextLike(10000);
    w.WriteString(data);
    w.Flush();
    EXPECT_EQ(out.Count(), data.size());
    EXPECT_EQ(out.GetBufferSize(), 16384u);  // doubled from 64 while written in order
    auto it = out.CreateInputIterator();
    EXPECT_EQ(ReadAll(*it), data);
    out.SetAsInputFilter();
    EXPECT_TRUE(out.IsInputFilter());
    EXPECT_EQ(ReadAll(out), data);
}

TEST(MemoryFilter, SeekOutputClampsInputRaises) {
    MemoryFilter out(64, false);
    FilterWriter w(&out);
    w.WriteString("abcdef");
    w.Seek(2);
    w.WriteString("XY");
    w.Seek(1000);  // clamps to the end of the buffer
    EXPECT_EQ(out.Tell(), 64);
    EXPECT_THROW(w.Seek(-1), lum::Common::Exception);
    w.Flush();
    out.SetAsInputFilter();
    EXPECT_EQ(ReadAll(out), "abXYef");

    MemoryFilter in(100, true);
    EXPECT_EQ(ReadAll(in).size(), 100u);
    in.Seek(100, Filter::e_begin);
    EXPECT_EQ(in.Size(), 0u);
    EXPECT_THROW(in.Seek(101, Filter::e_begin), lum::Common::Exception);
}

// An output filter with a fixed buffer that never makes room: the writer must raise.
class FullSink : public BufFilter {
public:
    FullSink() : BufFilter(nullptr, 4, false) {}
    const char* GetName() const override { return "FullSink"; }
    std::string Written() const { return std::string(reinterpret_cast<const char*>(m_buf_begin), 4); }

protected:
    size_t Process() override { return 0; }
};

TEST(FilterWriter, NumbersHexAndOverflow) {
    MemoryFilter out(64, false);
    FilterWriter w(&out);
    w.WriteInt32(INT32_MIN);
    w.WriteUChar(' ');
    w.WriteUInt64(UINT64_MAX);
    w.WriteUChar(' ');
    const UInt8 bytes[] = {0x00, 0x0F, 0xA5, 0xFF};
    w.WriteHexBuffer(bytes, 4);
    w.Flush();
    out.SetAsInputFilter();
    EXPECT_EQ(ReadAll(out), "-2147483648 18446744073709551615 000FA5FF");

    FullSink sink;
    FilterWriter full(&sink);
    full.WriteBuffer("abcd", 4);
    EXPECT_THROW(full.WriteUChar('e'), lum::Common::Exception);
    EXPECT_EQ(sink.Written(), "abcd");
}

TEST(Filter, ChainOwnershipAndReattach) {
    auto flate = std::make_unique<FlateDecode>(Source(lum::test::Deflate("one")));
    Filter* leaf = flate->GetAttachedFilter();
    EXPECT_EQ(flate->GetSourceFilter(), leaf);

    // A reader-based decoder follows a new attached filter.
    ASCIIHexDecode hex(Source("41"));
    hex.AttachFilter(Source("4243>"));
    EXPECT_EQ(ReadAll(hex), "BC");
    auto released = hex.ReleaseAttachedFilter();
    EXPECT_EQ(hex.GetAttachedFilter(), nullptr);
    EXPECT_EQ(ReadAll(*released), "");

    // A very long chain is destroyed without exhausting the stack.
    std::unique_ptr<Filter> chain = Source("");
    for (int i = 0; i < 100000; ++i) chain = std::make_unique<ASCIIHexDecode>(std::move(chain));
    chain.reset();
}

TEST(ChainedFilter, ReadsItsInputsInOrderAndCopiesThroughAWriter) {
    std::vector<std::unique_ptr<Filter>> parts;
    std::string a = lum::test::TextLike(3000, 1), b = lum::test::TextLike(5, 2);
    parts.push_back(Source(a, 7));
    parts.push_back(Source(""));
    parts.push_back(Source(b));
    ChainedFilter chain(std::move(parts));

    MemoryFilter out(64, false);
    FilterWriter w(&out);
    FilterReader r(&chain);
    w.WriteFilter(r);
    w.Flush();
    out.SetAsInputFilter();
    EXPECT_EQ(ReadAll(out), a + b);
}

// Three stages (hex, flate, PNG predictor) read through one reader, with windows of one byte
// at the source and with one huge window, and with odd read sizes on top.
TEST(FilterChain, ThreeStagesAtTinyAndHugeWindows) {
    const unsigned columns = 5;
    std::string data = lum::test::TextLike(columns * 2000, 11);
    std::string png = lum::test::PngEncode(data, columns, 1, {0, 1, 2, 3, 4});
    std::string z = lum::test::Deflate(png);
    std::string hex;
    for (unsigned char c : z) {
        static const char* d = "0123456789abcdef";
        hex += d[c >> 4];
        hex += d[c & 15];
        if (hex.size() % 61 == 0) hex += '\n';
    }
    hex += '>';
    for (size_t window : {size_t(1), size_t(3), size_t(1) << 24}) {
        for (size_t chunk : {size_t(1), size_t(4093), size_t(1) << 22}) {
            std::unique_ptr<Filter> f = Source(hex, window);
            f = std::make_unique<ASCIIHexDecode>(std::move(f));
            f = std::make_unique<FlateDecode>(std::move(f));
            f = std::make_unique<PNGPredictorDecode>(std::move(f), columns, 1, 8);
            EXPECT_EQ(ReadAll(*f, chunk), data) << window << " " << chunk;
        }
    }
}

}  // namespace
