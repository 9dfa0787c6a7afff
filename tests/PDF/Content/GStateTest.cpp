// The graphics state as operators leave it, the ExtGState entries, colours, and the change
// list; and resource lookups through the levels.
#include <gtest/gtest.h>

#include <functional>

#include "PDF/Content/ContentTestSupport.h"
#include "PDF/ContentResources.h"
#include "PDF/GStateImpl.h"
#include "SDF/Obj.h"

namespace lum::test {
namespace {

// The state of the last element of a page (a "q" appended to the content).
struct StateCase {
    const char* name;
    std::string content;
    std::function<void(PDF::GState&, PDF::Element&)> check;
};

class StateAfter : public ::testing::TestWithParam<StateCase> {};

TEST_P(StateAfter, Operators) {
    const StateCase& c = GetParam();
    PageRecipe recipe;
    recipe.resources =
        "/Font << /F1 4 0 R >> /ExtGState << /G1 6 0 R /G2 7 0 R /Bad 8 0 R >> "
        "/ColorSpace << /CS0 [/ICCBased 9 0 R] /DefaultRGB [/CalRGB << /WhitePoint [1 1 1] >>] >>";
    recipe.extra = {
        "<< /LW 3 /LC 1 /LJ 2 /ML 4 /D [[2 1] 1] /CA 2 /ca -1 /BM [/Foo /Multiply] /TR2 /Default "
        "/TR /Identity /OP true /Font [4 0 R 7] /SMask /None >>",
        "<< /OP true /op false /BM /Bogus >>",
        "<< /LW (thick) >>",
        StreamObj("", "/N 3"),
    };
    recipe.contents = {c.content + " q"};
    MemoryDoc doc(BuildPagePdf(recipe));
    PDF::ElementReader reader;
    reader.Begin(doc.FirstPage());
    PDF::Element* last = nullptr;
    while (PDF::Element* e = reader.Next()) last = e;
    ASSERT_NE(last, nullptr);
    c.check(last->GetGState(), *last);
}

using GS = PDF::GState;
using CS = PDF::ColorSpace;

const StateCase kStates[] = {
    {"defaults", "",
     [](GS& g, PDF::Element& e) {
         EXPECT_EQ(g.GetLineWidth(), 1.0);
         EXPECT_EQ(g.GetMiterLimit(), 10.0);
         EXPECT_EQ(g.GetHorizontalScale(), 100.0);
         EXPECT_EQ(g.GetRenderingIntent(), GS::e_relative_colorimetric);
         EXPECT_EQ(g.GetBlendMode(), GS::e_bl_normal);
         EXPECT_TRUE(g.GetTextKnockout());
         EXPECT_FALSE(g.GetFont().IsValid());
         EXPECT_EQ(g.GetFillColorSpace().GetType(), CS::e_device_gray);
         EXPECT_EQ(e.GetCTM(), Common::Matrix2D());
     }},
    {"text_state", "2 Tc 3 Tw 80 Tz 14 TL 2.9 Tr -1 Ts /F1 9 Tf",
     [](GS& g, PDF::Element&) {
         EXPECT_EQ(g.GetCharSpacing(), 2);
         EXPECT_EQ(g.GetWordSpacing(), 3);
         EXPECT_EQ(g.GetHorizontalScale(), 80);
         EXPECT_EQ(g.GetLeading(), 14);
         EXPECT_EQ(g.GetTextRenderMode(), GS::e_fill_stroke_text);  // truncated
         EXPECT_EQ(g.GetTextRise(), -1);
         EXPECT_EQ(g.GetFontSize(), 9);
         EXPECT_STREQ(g.GetFont().GetName(), "TestSans");
     }},
    {"line_state", "2 w 1 J 1 j 3 M 0.5 i [3 2] 1 d /Perceptual ri",
     [](GS& g, PDF::Element&) {
         EXPECT_EQ(g.GetLineWidth(), 2);
         EXPECT_EQ(g.GetLineCap(), GS::e_round_cap);
         EXPECT_EQ(g.GetLineJoin(), GS::e_round_join);
         EXPECT_EQ(g.GetMiterLimit(), 3);
         EXPECT_EQ(g.GetFlatness(), 0.5);
         EXPECT_EQ(g.GetDashes(), (std::vector<double>{3, 2}));
         EXPECT_EQ(g.GetPhase(), 1);
         EXPECT_EQ(g.GetRenderingIntent(), GS::e_perceptual);
     }},
    {"cm_concatenates", "1 0 0 1 10 20 cm 2 0 0 2 0 0 cm",
     [](GS&, PDF::Element& e) { EXPECT_EQ(e.GetCTM(), Common::Matrix2D(2, 0, 0, 2, 10, 20)); }},
    {"q_Q_restore", "q 5 w 1 0 0 rg Q",
     [](GS& g, PDF::Element&) {
         EXPECT_EQ(g.GetLineWidth(), 1);
         EXPECT_EQ(g.GetFillColor().Get(0), 0);
     }},
    {"extgstate_entries", "/G1 gs",
     [](GS& g, PDF::Element&) {
         EXPECT_EQ(g.GetLineWidth(), 3);
         EXPECT_EQ(g.GetLineCap(), GS::e_round_cap);
         EXPECT_EQ(g.GetLineJoin(), GS::e_bevel_join);
         EXPECT_EQ(g.GetMiterLimit(), 4);
         EXPECT_EQ(g.GetDashes(), (std::vector<double>{2, 1}));
         EXPECT_EQ(g.GetStrokeOpacity(), 1);
         EXPECT_EQ(g.GetFillOpacity(), 0);
         EXPECT_EQ(g.GetBlendMode(), GS::e_bl_multiply);
         ASSERT_NE(g.GetTransferFunct(), nullptr);
         EXPECT_STREQ(g.GetTransferFunct()->GetName(), "Default");  // TR2 wins over TR
         EXPECT_TRUE(g.GetStrokeOverprint());
         EXPECT_TRUE(g.GetFillOverprint());  // OP without op sets both
         EXPECT_EQ(g.GetFontSize(), 7);
         EXPECT_EQ(g.GetSoftMask(), nullptr);
     }},
    {"extgstate_op_apart", "/G2 gs",
     [](GS& g, PDF::Element&) {
         EXPECT_TRUE(g.GetStrokeOverprint());
         EXPECT_FALSE(g.GetFillOverprint());
         EXPECT_EQ(g.GetBlendMode(), GS::e_bl_compatible);  // a name without a value gives 0
     }},
    {"extgstate_missing_name_skipped", "/Nope gs",
     [](GS& g, PDF::Element&) { EXPECT_EQ(g.GetLineWidth(), 1); }},
    {"device_colours_clamped", "2 0 0.5 rg -1 G 0 0 0 1 k",
     [](GS& g, PDF::Element&) {
         EXPECT_EQ(g.GetFillColorSpace().GetType(), CS::e_device_cmyk);
         EXPECT_EQ(g.GetFillColor(), PDF::ColorPt(0, 0, 0, 1, 4));
         EXPECT_EQ(g.GetStrokeColor(), PDF::ColorPt(0, 0, 0, 0, 1));
     }},
    {"sc_keeps_values", "/DeviceRGB cs 2 0 0 sc",
     [](GS& g, PDF::Element&) { EXPECT_EQ(g.GetFillColor(), PDF::ColorPt(2, 0, 0, 0, 3)); }},
    {"sc_odd_count_as_scn", "/DeviceRGB cs 0.5 0.5 sc",
     [](GS& g, PDF::Element&) { EXPECT_EQ(g.GetFillColor(), PDF::ColorPt(0.5, 0.5, 0, 0, 2)); }},
    {"cs_initial_colour", "/DeviceCMYK CS /CS0 cs",
     [](GS& g, PDF::Element&) {
         EXPECT_EQ(g.GetStrokeColor(), PDF::ColorPt(0, 0, 0, 1, 4));
         EXPECT_EQ(g.GetFillColorSpace().GetType(), CS::e_icc);
         EXPECT_EQ(g.GetFillColor(), PDF::ColorPt(0, 0, 0, 0, 3));
     }},
    {"cs_unknown_name_skipped", "/Nope cs",
     [](GS& g, PDF::Element&) { EXPECT_EQ(g.GetFillColorSpace().GetType(), CS::e_device_gray); }},
    {"default_rgb_replaces_device", "0.1 0.2 0.3 rg",
     [](GS& g, PDF::Element&) { EXPECT_EQ(g.GetFillColorSpace().GetType(), CS::e_cal_rgb); }},
};

INSTANTIATE_TEST_SUITE_P(Content, StateAfter, ::testing::ValuesIn(kStates),
                         [](const auto& p) { return std::string(p.param.name); });

TEST(GState, BadExtGStateValueRaisesTheTypeError) {
    PageRecipe recipe;
    recipe.resources = "/ExtGState << /Bad 6 0 R >>";
    recipe.extra = {"<< /LW (thick) >>"};
    recipe.contents = {"q /Bad gs Q"};
    EXPECT_NE(WalkPage(recipe).error, "");
}

TEST(GState, ChangeListKeepsFirstPlaceAndLatestFirst) {
    PDF::GStateImpl g;
    g.SetLineWidth(2);
    g.SetCharSpacing(1);
    g.SetLineWidth(3);
    std::vector<int> order;
    for (auto it = g.ChangesBegin(); it != g.ChangesEnd(); ++it) order.push_back(*it);
    EXPECT_EQ(order, (std::vector<int>{PDF::GState::e_char_spacing, PDF::GState::e_line_width}));
    g.ClearChangeList();
    EXPECT_TRUE(g.ChangesBegin() == g.ChangesEnd());
    EXPECT_FALSE(g.IsChanged(PDF::GState::e_line_width));
}

TEST(GState, SetTransformReplacesTheChangeMatrix) {
    PDF::GStateImpl g;
    g.Concat(1, 0, 0, 1, 10, 0);
    g.SetTransform(2, 0, 0, 2, 0, 0);
    EXPECT_EQ(g.GetCTM(), Common::Matrix2D(2, 0, 0, 2, 0, 0));
    EXPECT_EQ(g.GetTransform(), Common::Matrix2D(2, 0, 0, 2, 0, 0));
    // A singular change matrix inverts to identity.
    g.SetTransform(0, 0, 0, 0, 0, 0);
    g.SetTransform(1, 0, 0, 1, 0, 0);
    EXPECT_EQ(g.GetCTM(), Common::Matrix2D(0, 0, 0, 0, 0, 0));
}

TEST(ContentResources, LookupGoesOutwardLevelByLevel) {
    SDF::Dict page, form;
    auto* pf = page.PutDict(SDF::e_Font);
    pf->PutNumber("A", 1);
    pf->PutNumber("B", 2);
    auto* ff = form.PutDict(SDF::e_Font);
    ff->PutNumber("B", 3);
    ff->Put(SDF::Name("C"), new SDF::Null());
    PDF::ContentResources res;
    res.Push(&page);
    res.Push(nullptr);
    res.Push(&form);
    int level = 0;
    EXPECT_EQ(res.GetResource(SDF::e_Font, SDF::Name("A"), &level)->GetNumber(), 1);
    EXPECT_EQ(level, 0);
    EXPECT_EQ(res.GetResource(SDF::e_Font, SDF::Name("B"), &level)->GetNumber(), 3);
    EXPECT_EQ(level, 2);
    // A null value counts as absent, and the search goes on outward.
    EXPECT_EQ(res.GetResource(SDF::e_Font, SDF::Name("C"), &level), nullptr);
    EXPECT_EQ(level, -1);
    EXPECT_EQ(res.GetColorSpace(SDF::Name("X"), false), nullptr);
    EXPECT_THROW(res.GetXObject(SDF::Name("X")), Common::Exception);
}

TEST(ContentResources, UnknownFontNamesGiveTheOneDefaultFont) {
    MemoryDoc doc(BuildPagePdf(PageRecipe()));
    PDF::ContentResources res;
    res.SetDoc(&doc.Doc());
    res.Push(nullptr);
    SDF::Obj* first = res.GetFont(SDF::Name("Nope"));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, res.GetFont(SDF::Name("Other")));
    EXPECT_STREQ(first->FindObj(SDF::e_BaseFont)->GetName(), "Helvetica");
}

}  // namespace
}  // namespace lum::test
