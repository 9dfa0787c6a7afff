// Lookups in the resource document through the library's start and stop.
#include <gtest/gtest.h>

#include <chrono>

#include "Common/Exception.h"
#include "PDF/Ferrox.h"
#include "PDF/FerroxResources.h"
#include "PDF/Font/Font.h"
#include "PDF/Font/StandardFonts.h"
#include "SDF/Obj.h"

using lum::PDF::Ferrox;
namespace Resource = lum::PDF::Resource;

namespace {

TEST(FerroxResources, LookupsByName) {
    Ferrox::Initialize();
    const struct Case {
        const char* name;
        bool cmap;
        bool font;
    } cases[] = {
        {"H", true, false},          {"Identity-H", true, false},
        {"Identity-V", true, false}, {"Adobe-Japan1-UCS2", true, false},
        {"UniGB-UTF16-V", true, false}, {"Made-Up-H", false, false},
        {"Helvetica", false, true},  {"ZapfDingbats", false, true},
        {"Arial", false, false},     {"", false, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Resource::IsRecognizedCMap(c.name), c.cmap) << c.name;
        EXPECT_EQ(Resource::GetCMapStream(c.name) != nullptr, c.cmap) << c.name;
        lum::SDF::Obj* font = Resource::GetBase14FontDict(c.name);
        EXPECT_EQ(font != nullptr, c.font) << c.name;
        if (font) {
            EXPECT_STREQ(font->FindObj("BaseFont")->GetName(), c.name);
        }
    }
    EXPECT_FALSE(Resource::IsRecognizedCMap(nullptr));
    const lum::PDF::Font courier = Resource::GetBase14Font("Courier");
    ASSERT_TRUE(courier);
    EXPECT_TRUE(courier.IsEmbedded());
    EXPECT_EQ(courier.GetWidth('W'), 600);
    EXPECT_FALSE(Resource::GetBase14Font("Arial"));
    Ferrox::Terminate();
}

TEST(FerroxResources, StopTakesTheTablesAwayAndLookupsReopen) {
    Ferrox::Initialize();
    EXPECT_TRUE(lum::PDF::Fnt::GetStandardFontWidths(0));
    EXPECT_TRUE(Resource::GetResourceDoc());
    Ferrox::Terminate();
    EXPECT_FALSE(lum::PDF::Fnt::GetStandardFontWidths(0));
    EXPECT_FALSE(Resource::GetResourceDoc());
    // A CMap stream is only found in a document that a start opened ...
    EXPECT_EQ(Resource::GetCMapStream("H"), nullptr);
    // ... the other lookups open it on their own.
    EXPECT_TRUE(Resource::IsRecognizedCMap("H"));
    EXPECT_TRUE(Resource::GetCMapStream("H"));
    Resource::UnloadResources();
}

// Opening the resources must not slow the start of every run: the cross-reference table is
// read, nothing is unpacked.
TEST(FerroxResources, StartIsFast) {
    double best = 1e9;
    for (int i = 0; i < 5; ++i) {
        const auto t0 = std::chrono::steady_clock::now();
        Ferrox::Initialize();
        const auto t1 = std::chrono::steady_clock::now();
        Ferrox::Terminate();
        best = std::min(best, std::chrono::duration<double, std::milli>(t1 - t0).count());
    }
    RecordProperty("initialize_ms", std::to_string(best));
    EXPECT_LT(best, 20.0);
}

}  // namespace
