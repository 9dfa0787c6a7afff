// The table's two parts: the main vector read without a lock, the pending part appended to
// under the mutex, and the order of destruction.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "SDF/XRefTestSupport.h"

using namespace lum;
using namespace lum::test;
using SDF::Indirect;

namespace {

std::string SmallFile() {
    PdfBuilder b;
    b.PageTree();
    return b.WithTable();
}

TEST(XRefTable, PendingEntriesMoveToMainOnGrowth) {
    MemDoc doc(SmallFile());
    SDF::XRefTable table;
    table.Grow(4);
    auto* a = new Indirect(&doc.Impl(), 0, 0, 0, 0);
    auto* b = new Indirect(&doc.Impl(), 0, 0, 0, 0);
    EXPECT_EQ(table.AppendPending(a), 4u);
    EXPECT_EQ(table.AppendPending(b), 5u);
    EXPECT_EQ(a->GetObjNum(), 4u);
    EXPECT_EQ(table.size(), 4u);  // pending slots are not counted
    EXPECT_EQ(table[5], b);
    EXPECT_EQ(table[6], nullptr);

    table.Grow(8);
    EXPECT_EQ(table.size(), 8u);
    EXPECT_EQ(table[4], a);
    EXPECT_EQ(table[5], b);
    EXPECT_EQ(table[6], nullptr);
    // The next object goes behind the grown table.
    auto* c = new Indirect(&doc.Impl(), 0, 0, 0, 0);
    EXPECT_EQ(table.AppendPending(c), 8u);
}

TEST(XRefTable, SealedAfterOpening) {
    // The table the document opened with is what every number refers to from then on; the
    // program's own objects go behind it.
    MemDoc doc(SmallFile());
    for (UInt32 n = 1; n < 4; ++n) doc.Get(n)->GetDirect(true);
    SDF::XRefTable& table = const_cast<SDF::XRefTable&>(doc.Impl().Table());
    EXPECT_THROW(table.Grow(8), Common::Exception);
    EXPECT_THROW(table.Set(1, nullptr), Common::Exception);
    EXPECT_THROW(table.Clear(), Common::Exception);
    EXPECT_EQ(4u, doc.Impl().CreateIndirect(new SDF::Dict())->GetObjNum());
}

TEST(XRefTable, AppendsWhileOthersRead) {
    MemDoc doc(SmallFile());
    SDF::DocImpl& impl = doc.Impl();
    std::atomic<bool> stop{false};
    std::atomic<long> reads{0};
    std::vector<std::thread> readers;
    for (int t = 0; t < 2; ++t) {
        readers.emplace_back([&] {
            while (!stop) {
                for (UInt32 n = 0; n < 4; ++n)
                    if (impl.GetEntry(n) == nullptr) ADD_FAILURE() << n;
                impl.GetEntry(4 + (reads % 64));  // into the pending part
                ++reads;
            }
        });
    }
    std::vector<Indirect*> made;
    for (int i = 0; i < 200; ++i) made.push_back(impl.CreateIndirect(new SDF::Dict()));
    stop = true;
    for (auto& th : readers) th.join();
    for (size_t i = 0; i < made.size(); ++i) {
        EXPECT_EQ(made[i]->GetObjNum(), 4 + i);
        EXPECT_EQ(impl.GetEntry(4 + i), made[i]);
    }
}

}  // namespace
