// How the page report writes numbers and lays out its line.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

#include "Apps/Bindery/PageInfo.h"
#include "Apps/Bindery/WriteText.h"
#include "PDF/Page.h"
#include "SDF/Obj.h"

namespace {

std::string Printf(double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%g", v);
    return buf;
}

std::string Ours(double v) {
    std::string s;
    lum::Bindery::AppendNumber(s, v);
    return s;
}

TEST(PageInfo, NumbersAreWrittenAsPrintfG) {
    const double values[] = {0,        -0.0,       1,           -1,
                             0.5,      595.28,     841.89,      612,
                             0.1,      0.0001,     0.00001,     1e-5,
                             123456,   999999.5,   1234567.891, 1e6,
                             -3.5e-7,  1e300,      1e-300,      2.5,
                             0.125,    100000,     99999.95,    1.0 / 3,
                             595.2755, 1e15 + 0.3, 4e-320,      std::numeric_limits<double>::max()};
    for (double v : values) EXPECT_EQ(Printf(v), Ours(v)) << v;
    EXPECT_EQ("inf", Ours(INFINITY));
    EXPECT_EQ("-inf", Ours(-INFINITY));
}

TEST(PageInfo, LineOrderAndRawMediaBox) {
    // A page turned by 270 degrees whose media box is stored upside down, with a crop box.
    lum::SDF::Dict page;
    lum::SDF::Obj* media = page.PutArray("MediaBox");
    for (double v : {600.0, 800.0, 0.0, 0.0}) media->PushBack(new lum::SDF::Number(v));
    lum::SDF::Obj* crop = page.PutArray("CropBox");
    for (double v : {10.0, 20.0, 110.0, 420.0}) crop->PushBack(new lum::SDF::Number(v));
    page.PutNumber("Rotate", 270);
    EXPECT_EQ("400, 100, 600, 800, 0, 0, 10, 20, 110, 420, 270\n",
              lum::Bindery::FormatPageInfo(lum::PDF::Page(&page)));
}

}  // namespace
