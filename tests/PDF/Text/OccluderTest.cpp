// The hidden-text search: which image covers a run, whether a glyph lies under an image, and
// that the early stops give the answers of a plain search while pages of many images stay quick.
#include <gtest/gtest.h>

#include <ctime>
#include <random>

#include "Common/Limits.h"
#include "PDF/Text/Occluder.h"
#include "support/TestSupport.h"

namespace PDF = lum::PDF;
using PDF::Occluder;
using PDF::OccluderSet;
using PDF::Rect;

using lum::test::CpuSecondsSince;
using lum::test::kSecondsScale;

namespace {

bool Inside(const Rect& inner, const Rect& outer) {
    return outer.x1 <= inner.x1 && inner.x2 <= outer.x2 && outer.y1 <= inner.y1 &&
           inner.y2 <= outer.y2;
}

}  // namespace

TEST(Occluders, CoverOfARun) {
    const Rect run(100, 100, 200, 120);
    const Rect around(50, 50, 250, 150);
    const struct {
        const char* name;
        std::vector<Occluder> images;
        size_t cover;  // 9: none
    } cases[] = {
        {"no image", {}, 9},
        {"drawn before the run", {{5, around, false}}, 9},
        {"drawn after the run", {{11, around, false}}, 0},
        {"same order as the run", {{10, around, false}}, 9},
        {"not opaque", {{11, around, true}}, 9},
        {"edges on the run's edges", {{11, run, false}}, 0},
        {"a part of the run outside", {{11, Rect(101, 50, 250, 150), false}}, 9},
        {"first that covers", {{5, around, false}, {11, Rect(0, 0, 10, 10), false},
                               {12, around, true}, {13, around, false}, {14, around, false}}, 3},
    };
    for (const auto& t : cases) {
        SCOPED_TRACE(t.name);
        OccluderSet set;
        for (const Occluder& o : t.images) set.Add(o);
        set.Seal();
        const size_t got = set.FindCover(10, run);
        EXPECT_EQ(got == set.Size() ? 9 : got, t.cover);
    }
}

TEST(Occluders, GlyphsUnderAnyImageFromTheCoverOn) {
    OccluderSet set;
    set.Add({1, Rect(0, 0, 50, 50), false});     // before the cover: not looked at
    set.Add({2, Rect(100, 0, 300, 50), false});  // the cover
    set.Add({3, Rect(400, 0, 450, 50), true});   // not opaque: hides glyphs all the same
    set.Seal();
    const struct {
        Rect glyph;
        bool hidden;
    } cases[] = {
        {Rect(110, 10, 120, 20), true},  {Rect(410, 10, 420, 20), true},
        {Rect(10, 10, 20, 20), false},   {Rect(295, 10, 305, 20), false},
        {Rect(500, 10, 510, 20), false},
    };
    for (const auto& t : cases) EXPECT_EQ(set.Hides(1, t.glyph), t.hidden) << t.glyph.x1;
}

TEST(Occluders, EarlyStopsAnswerAsThePlainSearch) {
    // Few images (searched one by one) and many (through the grid of cells), on a lattice of
    // whole numbers so that boxes share edges with each other and with the cells.
    std::mt19937 rng(7);
    std::uniform_int_distribution<int> pos(0, 60), size(0, 30), small(0, 3), order_of(0, 420);
    for (const int count : {10, 40, 200}) {
        for (int round = 0; round < 10; ++round) {
            OccluderSet set;
            std::vector<Occluder> plain;
            for (int i = 0; i < count; ++i) {
                const double x = 10 * pos(rng), y = 10 * pos(rng);
                const Occluder o{2 * i + 1, Rect(x, y, x + 10 * size(rng), y + 10 * size(rng)), i % 3 == 0};
                set.Add(o);
                plain.push_back(o);
            }
            set.Seal();
            for (int q = 0; q < 300; ++q) {
                const double x = 10 * pos(rng), y = 10 * pos(rng);
                const Rect box(x, y, x + 10 * small(rng), y + 10 * small(rng));
                const lum::Int64 order = order_of(rng);
                size_t want = plain.size();
                for (size_t k = 0; k < plain.size() && want == plain.size(); ++k)
                    if (plain[k].order > order && !plain[k].not_opaque && Inside(box, plain[k].box)) want = k;
                ASSERT_EQ(set.FindCover(order, box), want) << count;
                const size_t from = size_t(q) % plain.size();
                bool hidden = false;
                for (size_t k = from; k < plain.size(); ++k) hidden = hidden || Inside(box, plain[k].box);
                ASSERT_EQ(set.Hides(from, box), hidden) << count;
            }
        }
    }
}

TEST(Occluders, ManyRunsAndManySmallImagesStayQuick) {
    // 50,000 one-point images spread among 50,000 runs: every run would look at every image.
    // The work is bounded; the runs the budget doesn't reach are kept whole.
    const int n = 50000;
    OccluderSet set;
    for (int i = 0; i < n; ++i) {
        const double x = (i % 100) * 11 + 6, y = (i / 100) * 2;
        set.Add({n + i, Rect(x, y, x + 1, y + 1), false});
    }
    set.Seal();
    const std::clock_t start = std::clock();
    size_t covered = 0;
    for (int i = 0; i < n; ++i) {
        const double x = (i % 100) * 11, y = (i / 100) * 2;
        covered += set.FindCover(i, Rect(x, y, x + 4.5, y + 2.5)) < set.Size();
    }
    EXPECT_EQ(covered, 0u);
    EXPECT_LT(CpuSecondsSince(start), 1.0 * kSecondsScale);
}
