#include <gtest/gtest.h>

#include "PDF/Text/TextFeeder.h"
#include "PDF/Text/TextFlags.h"

using lum::test::FeedElement;
using lum::test::TextFeeder;

TEST(TextSmoke, OneLine) {
    TextFeeder f;
    f.Show("Hello world", 72, 700);
    f.Finish();
    EXPECT_EQ(f.Text(), "Hello world\n");
    EXPECT_EQ(f.store.GetWordCount(), 2u);
}
