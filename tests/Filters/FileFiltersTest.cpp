#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "FilterTestUtil.h"
#include "Filters/FilterReader.h"
#include "Filters/FilterWriter.h"
#include "Filters/MappedFile.h"
#include "Filters/MappingManager.h"
#include "Filters/StdFile.h"
#include "Filters/ThreadSafeFilter.h"
#include "support/TestSupport.h"

using namespace lum;
using namespace lum::Filters;
using namespace lum::test;

namespace {

TEST(StdFile, WriteFlushAppendReadWrite) {
    TempDir dir;
    std::string path = (dir / "out.txt").string();
    {
        StdFile f(path, StdFile::e_write_mode, 16);
        EXPECT_FALSE(f.IsInputFilter());
        FilterWriter w(&f);
        w.WriteString("first line of forty bytes, more or less\n");
        w.FlushAll();
    }
    {
        StdFile f(path, StdFile::e_append_mode);
        FilterWriter w(&f);
        w.WriteString("appended");
        EXPECT_EQ(w.Tell(), 48);
        w.Flush();
    }
    {
        StdFile f(path, StdFile::e_read_write_mode);
        FilterWriter w(&f);
        w.WriteString("FIRST");
        w.Flush();
    }
    EXPECT_EQ(ReadFile(path), "FIRST line of forty bytes, more or less\nappended");
    StdFile in(path, StdFile::e_read_mode, 7);
    EXPECT_TRUE(in.IsInputFilter());
    EXPECT_EQ(ReadAll(in, 5), "FIRST line of forty bytes, more or less\nappended");
    EXPECT_EQ(in.GetFilePath().ConvertToUtf8(), path);
}

TEST(StdFile, SeekWithinAndBeyondTheWindowAndIterators) {
    TempDir dir;
    std::string path = (dir / "in.bin").string();
    std::string data = lum::test::Noise(1000);
    WriteFile(path, data);
    StdFile f(path, StdFile::e_read_mode, 64);
    FilterReader r(&f);
    UInt8 buf[10];
    r.Read(buf, 10);
    r.Seek(3);  // inside the window
    EXPECT_EQ(r.Get(), static_cast<UInt8>(data[3]));
    r.Seek(-10, Filter::e_end);  // outside
    EXPECT_EQ(r.Get(), static_cast<UInt8>(data[990]));
    EXPECT_EQ(r.Tell(), 991);
    r.Seek(0, Filter::e_end);
    EXPECT_EQ(r.Get(), -1);

    auto it = f.CreateInputIterator();
    it->SetStreamLength(100);
    std::string head = ReadAll(*it);
    EXPECT_EQ(head, data.substr(0, 100));
    r.Seek(500);
    EXPECT_EQ(r.Get(), static_cast<UInt8>(data[500]));

    StdFile w((dir / "w").string(), StdFile::e_write_mode);
    EXPECT_THROW(w.CreateInputIterator(), lum::Common::Exception);
}

TEST(StdFile, OpenFailures) {
    TempDir dir;
    for (const std::string& name : {(dir / "missing").string(), std::string(), std::string(9000, 'a')})
        EXPECT_THROW(StdFile(name, StdFile::e_read_mode), lum::Common::Exception) << name.size();
}

TEST(MappedFile, EmptyFileAndMissingFile) {
    TempDir dir;
    WriteFile(dir / "empty", "");
    MappedFile f((dir / "empty").string());
    EXPECT_EQ(f.GetManager().GetChunkCount(), 0u);
    EXPECT_EQ(f.Size(), 0u);
    f.Seek(0, Filter::e_end);
    EXPECT_EQ(f.Size(), 0u);

    EXPECT_THROW(MappedFile((dir / "nope").string()), lum::Common::Exception);
    EXPECT_THROW(MappedFile(dir.path().string()), lum::Common::Exception);
}

TEST(MappedFile, SeekLimitsAndWindows) {
    TempDir dir;
    std::string data = lum::test::Noise(5000);
    WriteFile(dir / "f", data);
    MappedFile f((dir / "f").string());
    EXPECT_EQ(f.Size(), 1024u);  // windows are at most 1024 bytes
    f.Seek(0, Filter::e_end);
    EXPECT_EQ(f.Size(), 0u);
    EXPECT_THROW(f.Seek(1, Filter::e_end), lum::Common::Exception);
    EXPECT_THROW(f.Seek(-1, Filter::e_begin), lum::Common::Exception);

    f.Seek(100, Filter::e_begin);
    f.SetStreamLength(0);
    EXPECT_EQ(f.Size(), 0u);
    f.Seek(1000, Filter::e_begin);
    f.SetStreamLength(2000);
    EXPECT_EQ(ReadAll(f, 7), data.substr(1000, 2000));
    EXPECT_EQ(f.Tell(), 3000);

    auto it = f.CreateInputIterator();
    EXPECT_EQ(ReadAll(*it), data);
    EXPECT_EQ(it->GetFilePath().ConvertToUtf8(), (dir / "f").string());
}

TEST(MappedFile, IteratorFailsAfterTheFirstObjectClosedTheFile) {
    TempDir dir;
    WriteFile(dir / "f", "abc");
    auto first = std::make_unique<MappedFile>((dir / "f").string());
    auto it = first->CreateInputIterator();
    first.reset();
    EXPECT_THROW(it->Size(), lum::Common::Exception);
}

TEST(MappedFile, ChunkBoundaryAtTheRealChunkSize) {
    TempDir dir;
    const size_t chunk = MappingManager::kChunkSize;
    std::string data = lum::test::Noise(chunk + 1, 3);
    WriteFile(dir / "exact", data.substr(0, chunk));
    WriteFile(dir / "plus", data);
    {
        MappedFile f((dir / "exact").string());
        EXPECT_EQ(f.GetManager().GetChunkCount(), 1u);
    }
    MappedFile f((dir / "plus").string());
    EXPECT_EQ(f.GetManager().GetChunkCount(), 2u);
    f.Seek(chunk - 3, Filter::e_begin);
    EXPECT_EQ(ReadAll(f), data.substr(chunk - 3));
    EXPECT_EQ(f.GetManager().GetMappedBytes(), chunk + 1);
}

// With small chunks and cap, a file many times the cap reads to its end with the mapped total
// never above the cap; a window that can't stay mapped is copied.
TEST(MappedFile, MappedTotalStaysWithinTheCap) {
    TempDir dir;
    std::string data = lum::test::Noise(100000, 5);
    WriteFile(dir / "big", data);
    const lum::UInt64 page = 4096;  // chunks must sit on mapping granularity
    auto mgr = std::make_shared<MappingManager>(page, 10 * page);
    MappedFile f(mgr, (dir / "big").string());
    EXPECT_EQ(mgr->GetChunkCount(), 25u);
    FilterReader r(&f);
    std::string got;
    lum::UInt64 peak = 0;
    for (int c; (c = r.Get()) >= 0;) {
        got += static_cast<char>(c);
        peak = std::max(peak, mgr->GetMappedBytes());
    }
    EXPECT_EQ(got, data);
    EXPECT_LE(peak, 10 * page);
    EXPECT_GT(peak, 5 * page);

    // Ten readers each holding a different chunk: the eleventh chunk can't be kept and is
    // copied, so reading goes on.
    std::vector<std::unique_ptr<Filter>> holders;
    for (int i = 0; i < 11; ++i) {
        holders.push_back(f.CreateInputIterator());
        holders.back()->Seek(i * page, Filter::e_begin);
        ASSERT_GT(holders.back()->Size(), 0u);
        EXPECT_EQ(holders.back()->Begin()[0], static_cast<UInt8>(data[i * page]));
    }
    EXPECT_EQ(mgr->GetMappedBytes(), 10 * page);
    std::string tail = ReadAll(*holders.back());
    EXPECT_EQ(tail, data.substr(10 * page));
}

TEST(ThreadSafeFilter, IteratorsReadAlternatelyEachInOrder) {
    TempDir dir;
    std::string data = lum::test::Noise(10000, 7);
    WriteFile(dir / "f", data);
    ThreadSafeFilter base(std::make_unique<MappedFile>((dir / "f").string()));
    EXPECT_EQ(base.GetBaseSize(), data.size());
    auto a = base.CreateInputIterator();
    auto b = base.CreateInputIterator();
    b->Seek(5000, Filter::e_begin);
    FilterReader ra(a.get()), rb(b.get());
    std::string ga, gb;
    for (int i = 0; i < 5000; ++i) {
        ga += static_cast<char>(ra.Get());
        gb += static_cast<char>(rb.Get());
    }
    EXPECT_EQ(ga, data.substr(0, 5000));
    EXPECT_EQ(gb, data.substr(5000));
    EXPECT_EQ(rb.Get(), -1);
    EXPECT_EQ(rb.Tell(), 10000);

    b->Seek(10000, Filter::e_begin);
    EXPECT_EQ(b->Size(), 0u);
    EXPECT_THROW(b->Seek(10001, Filter::e_begin), lum::Common::Exception);
    b->Seek(10, Filter::e_begin);
    b->SetStreamLength(5);
    EXPECT_EQ(ReadAll(*b), data.substr(10, 5));
    EXPECT_EQ(base.GetFilePath().ConvertToUtf8(), (dir / "f").string());
}

TEST(ThreadSafeFilter, ThreadsReadOneFileThroughTheirOwnIterators) {
    TempDir dir;
    std::string data = lum::test::Noise(300000, 8);
    WriteFile(dir / "f", data);
    ThreadSafeFilter base(std::make_unique<StdFile>((dir / "f").string(), StdFile::e_read_mode));
    std::atomic<int> good{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            auto it = base.CreateInputIterator();
            it->Seek(t * 1000, Filter::e_begin);
            if (ReadAll(*it, 333) == data.substr(t * 1000)) ++good;
        });
    }
    for (auto& th : threads) th.join();
    EXPECT_EQ(good, 4);
}

TEST(ThreadSafeFilter, NeedsASeekableInputBase) {
    EXPECT_THROW(ThreadSafeFilter(lum::test::Source("abc")), lum::Common::Exception);
}

}  // namespace
