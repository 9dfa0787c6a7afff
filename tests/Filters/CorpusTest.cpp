// Real files from the shared corpus, read in place: the mapped file and the thread-safe reader
// must give every file's bytes exactly, and FlateDecode must give what a plain zlib loop gives
// for every stream that looks deflated, damaged ones included.
#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "FilterTestUtil.h"
#include "Filters/FlateDecode.h"
#include "Filters/MappedFile.h"
#include "Filters/ThreadSafeFilter.h"
#include "support/TestSupport.h"

using namespace lum::Filters;

namespace {

std::vector<std::filesystem::path> CorpusPdfs() {
    std::vector<std::filesystem::path> files;
    auto dir = lum::test::CorpusDir();
    if (!dir) return files;
    for (const auto& e : std::filesystem::recursive_directory_iterator(*dir))
        if (e.is_regular_file() && e.path().extension() == ".pdf") files.push_back(e.path());
    std::sort(files.begin(), files.end());
    return files;
}

// Inflates until zlib stops, as one call over the whole input: the reference.
std::string BareInflate(const std::string& in) {
    z_stream zs{};
    if (inflateInit(&zs) != Z_OK) return {};
    zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in.data()));
    zs.avail_in = static_cast<uInt>(in.size());
    std::string out;
    char buf[1 << 16];
    int rc;
    do {
        zs.next_out = reinterpret_cast<Bytef*>(buf);
        zs.avail_out = sizeof buf;
        rc = inflate(&zs, Z_NO_FLUSH);
        out.append(buf, sizeof buf - zs.avail_out);
    } while (rc == Z_OK && out.size() < (64u << 20));
    if (rc == Z_OK || rc == Z_BUF_ERROR) {
        // The input ended inside the stream: zlib hands over what it still holds.
        zs.next_out = reinterpret_cast<Bytef*>(buf);
        zs.avail_out = sizeof buf;
        inflate(&zs, Z_FINISH);
        out.append(buf, sizeof buf - zs.avail_out);
    }
    inflateEnd(&zs);
    return out;
}

TEST(Corpus, MappedAndThreadSafeReadersGiveTheFileBytes) {
    auto files = CorpusPdfs();
    if (files.empty()) GTEST_SKIP() << "shared corpus not found";
    for (const auto& p : files) {
        std::string bytes = lum::test::ReadFile(p);
        ThreadSafeFilter shared(std::make_unique<MappedFile>(p.string()));
        auto it = shared.CreateInputIterator();
        ASSERT_EQ(lum::test::ReadAll(*it, 1000), bytes) << p;
    }
}

TEST(Corpus, FlateStreamsDecodeAsPlainZlibDoes) {
    auto files = CorpusPdfs();
    if (files.empty()) GTEST_SKIP() << "shared corpus not found";
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(120);
    size_t streams = 0;
    for (const auto& p : files) {
        if (std::chrono::steady_clock::now() > deadline) break;
        std::string bytes = lum::test::ReadFile(p);
        for (size_t at = bytes.find("stream"); at != std::string::npos; at = bytes.find("stream", at + 6)) {
            size_t start = at + 6;
            if (start < bytes.size() && bytes[start] == '\r') ++start;
            if (start < bytes.size() && bytes[start] == '\n') ++start;
            if (start + 2 > bytes.size() || bytes[start] != '\x78') continue;
            size_t end = bytes.find("endstream", start);
            if (end == std::string::npos) end = bytes.size();
            std::string data = bytes.substr(start, end - start);
            std::string expected = BareInflate(data);
            if (expected.size() >= (64u << 20)) continue;
            // Whole input, and the input in 1 KiB windows as a mapped file gives it.
            for (size_t window : {data.size() + 1, size_t(1024)})
                ASSERT_EQ(lum::test::ReadAll(std::make_unique<FlateDecode>(lum::test::Source(data, window))), expected)
                    << p << " at " << start << " window " << window;
            ++streams;
        }
    }
    EXPECT_GT(streams, 0u);
    RecordProperty("streams", static_cast<int>(streams));
}

}  // namespace
