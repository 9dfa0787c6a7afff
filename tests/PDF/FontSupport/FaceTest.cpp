// FreeType faces: opening programs from memory (plain and sized), outlines as path operators,
// metrics, refusal of garbage, and the memory that a face holds coming back when it goes.
#include <gtest/gtest.h>

#include <ft2build.h>
#include FT_FREETYPE_H

#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Filters/FilterReader.h"
#include "FontSupport/Face.h"
#include "FontSupport/FreeTypeLibrary.h"
#include "PDF/Ferrox.h"
#include "PDF/FerroxResources.h"
#include "SDF/Obj.h"

using namespace lum::FontSupport;

namespace {

// The program of a standard font of the resource file.
std::vector<lum::UInt8> StandardProgram(const char* name) {
    lum::SDF::Obj* font = lum::PDF::Resource::GetBase14FontDict(name);
    auto chain = font->FindObj("FontDescriptor")->FindObj("FontFile")->GetDecodedStream();
    lum::Filters::FilterReader r(chain.get());
    std::vector<lum::UInt8> out;
    lum::UInt8 buf[65536];
    for (size_t n; (n = r.Read(buf, sizeof buf)) > 0;) out.insert(out.end(), buf, buf + n);
    return out;
}

class FaceTest : public ::testing::Test {
protected:
    void SetUp() override { lum::PDF::Ferrox::Initialize(); }
    void TearDown() override { lum::PDF::Ferrox::Terminate(); }
};

lum::UInt32 GlyphOf(Face& face, const char* name) {
    std::lock_guard<std::mutex> lock(FreeTypeLibrary::GetLock());
    return FT_Get_Name_Index(face.Get(), name);
}

TEST_F(FaceTest, OutlinesAndMetrics) {
    const lum::UInt64 opened = Face::GetOpenCount();
    auto face = Face::OpenMemory(StandardProgram("Times-Roman"));
    EXPECT_EQ(Face::GetOpenCount(), opened + 1);
    EXPECT_EQ(face->GetUnitsPerEm(), 1000);
    const lum::UInt32 a = GlyphOf(*face, "A"), space = GlyphOf(*face, "space");
    ASSERT_NE(a, 0u);
    EXPECT_DOUBLE_EQ(face->GetGlyphMetric(a, Face::e_horz_advance), 722);

    GlyphOutline out;
    ASSERT_EQ(face->LoadOutline(a, Face::kLoadNoScale, true, out), 0);
    // A Type 1 `A`: two contours, each opened by a move and ended by a closepath.
    ASSERT_GE(out.operators.size(), 6u);
    EXPECT_EQ(out.operators.front(), e_moveto);
    EXPECT_EQ(out.operators.back(), e_closepath);
    int moves = 0, closes = 0;
    size_t points = 0;
    for (auto op : out.operators) {
        moves += op == e_moveto;
        closes += op == e_closepath;
        points += op == e_cubicto ? 3 : op == e_conicto ? 2 : op == e_closepath ? 0 : 1;
        EXPECT_NE(op, e_conicto);  // conics become cubics, and Type 1 has none anyway
    }
    EXPECT_EQ(moves, closes);
    EXPECT_EQ(out.points.size(), 2 * points);
    // y grows downwards: the apex of the A lies above the baseline, at a negative y.
    double min_y = 0, max_y = 0;
    for (size_t i = 1; i < out.points.size(); i += 2) {
        min_y = std::min(min_y, out.points[i]);
        max_y = std::max(max_y, out.points[i]);
    }
    EXPECT_LT(min_y, -600);
    EXPECT_LE(max_y, 1);

    // The space has no outline: loaded, empty.
    ASSERT_EQ(face->LoadOutline(space, Face::kLoadNoScale, true, out), 0);
    EXPECT_TRUE(out.operators.empty());
    // A glyph index past the face's glyphs is FreeType's error, not ours.
    EXPECT_NE(face->LoadOutline(face->GetNumGlyphs() + 5, Face::kLoadNoScale, true, out), 0);
    EXPECT_EQ(face->GetGlyphMetric(face->GetNumGlyphs() + 5, Face::e_horz_advance), -1.0);

    // Sized: one font unit is 256 outline units.
    auto sized = Face::OpenMemory(StandardProgram("Times-Roman"), true);
    GlyphOutline big;
    ASSERT_EQ(sized->LoadOutline(a, Face::kLoadScaled, true, big), 0);
    face->LoadOutline(a, Face::kLoadNoScale, true, out);
    ASSERT_EQ(big.points.size(), out.points.size());
    for (size_t i = 0; i < out.points.size(); ++i) EXPECT_NEAR(big.points[i] / 256, out.points[i], 1.0);
}

TEST_F(FaceTest, GarbageIsRefusedAndMemoryComesBack) {
    const lum::UInt64 before = FreeTypeLibrary::GetAllocatedBytes();
    const std::vector<std::vector<lum::UInt8>> bad = {
        {}, {0x80, 0x01, 0xFF, 0xFF, 0xFF, 0x7F}, std::vector<lum::UInt8>(5000, 0x41),
        {0, 1, 0, 0, 0, 9, 0, 0}};
    for (const auto& program : bad) {
        try {
            Face::OpenMemory(program);
            ADD_FAILURE() << "opened " << program.size() << " bytes of garbage";
        } catch (const lum::FT::FreeTypeException& e) {
            EXPECT_EQ(e.GetMessage(), "FreeType error");
        }
    }
    {
        auto face = Face::OpenMemory(StandardProgram("Helvetica"));
        GlyphOutline out;
        face->LoadOutline(GlyphOf(*face, "B"), Face::kLoadNoScale, false, out);
        EXPECT_GT(FreeTypeLibrary::GetAllocatedBytes(), before);
    }
    EXPECT_EQ(FreeTypeLibrary::GetAllocatedBytes(), before);
}

TEST(FreeTypeLibrary, FaceOutlivingTheLibraryIsNoFault) {
    lum::PDF::Ferrox::Initialize();
    auto face = Face::OpenMemory(StandardProgram("Courier"));
    lum::PDF::Ferrox::Terminate();
    EXPECT_FALSE(FreeTypeLibrary::IsInitialized());
    EXPECT_THROW(FreeTypeLibrary::Get(), lum::FT::FreeTypeException);
    face.reset();  // freed with the library already: nothing to do, nothing to crash
}

}  // namespace
