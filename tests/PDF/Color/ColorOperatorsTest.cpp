// The colour operators as the text road sees them: the fill space and colour of the last string
// of a page, and the RGB bytes that the capture makes of them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PDF/Color/ColorSpaceCache.h"
#include "PDF/Color/DeviceColor.h"
#include "PDF/Content/ContentTestSupport.h"
#include "PDF/GState.h"
#include "SDF/Obj.h"

namespace lum::test {
namespace {

using CS = PDF::ColorSpace;

struct Fill {
    CS::Type type = CS::e_null;
    PDF::ColorPt color;
    bool pattern = false;
    std::vector<int> rgb;  // empty: no conversion (a Pattern)
    CS::Type base = CS::e_null;
};

void Record(PDF::Element& e, Fill& out) {
    const PDF::GState& gs = e.GetGState();
    const CS& cs = gs.GetFillColorSpace();
    out.type = cs.GetType();
    out.color = gs.GetFillColor();
    out.pattern = gs.GetFillPattern().mp_pattern != nullptr;
    out.base = out.type == CS::e_indexed || out.type == CS::e_pattern
                   ? (cs.GetBaseColorSpace() ? cs.GetBaseColorSpace().GetType() : CS::e_null)
                   : CS::e_null;
    PDF::Color::ColorSpaceCache cache;
    double rgb[3];
    out.rgb.clear();
    if (cache.ToRGB(cs, out.color, rgb))
        for (double v : rgb) out.rgb.push_back(PDF::Color::ColorByte(v));
}

// Records the state of the string `shown` (the one byte shown).
void Walk(PDF::ElementReader& reader, Fill& out, char shown = 'x') {
    while (PDF::Element* e = reader.Next()) {
        if (e->GetType() == PDF::Element::e_text && e->GetTextDataSize() == 1 &&
            e->GetTextData()[0] == shown)
            Record(*e, out);
        if (e->GetType() == PDF::Element::e_form) {
            reader.FormBegin();
            Walk(reader, out, shown);
            reader.End();
        }
    }
}

struct OperatorCase {
    const char* name;
    std::string content;  // before the string x
    Fill expect;
    char shown = 'x';     // the string whose state is looked at
};

class ColorOperators : public ::testing::TestWithParam<OperatorCase> {};

TEST_P(ColorOperators, LastString) {
    const OperatorCase& c = GetParam();
    PageRecipe recipe;
    recipe.resources =
        "/Font << /F1 4 0 R >> /XObject << /Fm 9 0 R >> /Pattern << /P0 8 0 R >> "
        "/ColorSpace << /Idx [/Indexed /DeviceRGB 1 <ff0000 0000ff>] /Short [/Indexed /DeviceRGB 9 <00>] "
        "/Pat [/Pattern /DeviceRGB] /Spot [/Separation /Spot /DeviceCMYK 6 0 R] /Icc [/ICCBased 7 0 R] "
        "/Bad [/DeviceN [/A] /DeviceGray 42] >>";
    recipe.extra = {
        "<< /FunctionType 2 /Domain [0 1] /C0 [0 0 0 0] /C1 [0 1 1 0] /N 1 >>",  // 6
        StreamObj("", "/N 4"),                                                  // 7
        StreamObj("", "/PatternType 1 /PaintType 2 /BBox [0 0 1 1]"),          // 8
        // 9: a form whose own resources name the form itself as a pattern
        StreamObj("/P1 scn BT /F1 10 Tf (f) Tj ET",
                  "/Subtype /Form /BBox [0 0 9 9] /Resources << /Font << /F1 4 0 R >> /Pattern << /P1 9 0 R >> >>"),
    };
    recipe.contents = {c.content + " BT /F1 10 Tf (x) Tj ET"};
    MemoryDoc doc(BuildPagePdf(recipe));
    PDF::ElementReader reader;
    Fill last;
    reader.Begin(doc.FirstPage());
    Walk(reader, last, c.shown);
    EXPECT_EQ(last.type, c.expect.type);
    EXPECT_EQ(last.color, c.expect.color);
    EXPECT_EQ(last.pattern, c.expect.pattern);
    EXPECT_EQ(last.rgb, c.expect.rgb);
    EXPECT_EQ(last.base, c.expect.base);
}

PDF::ColorPt Pt(std::vector<double> v) {
    PDF::ColorPt c;
    c.SetColorantNum(int(v.size()));
    for (size_t i = 0; i < v.size(); ++i) c.Set(int(i), v[i]);
    return c;
}

const OperatorCase kOperators[] = {
    {"initial_gray_black", "", {CS::e_device_gray, Pt({0}), false, {0, 0, 0}}},
    {"k_pure_black_is_the_k_corner", "0 0 0 1 k", {CS::e_device_cmyk, Pt({0, 0, 0, 1}), false, {35, 31, 32}}},
    {"k_no_ink_white", "0 0 0 0 k", {CS::e_device_cmyk, Pt({0, 0, 0, 0}), false, {255, 255, 255}}},
    {"rg_clamps", "2 0 -1 rg", {CS::e_device_rgb, Pt({1, 0, 0}), false, {255, 0, 0}}},
    {"g_clamps", "1.5 g", {CS::e_device_gray, Pt({1}), false, {255, 255, 255}}},
    {"sc_does_not_clamp_and_wraps", "/DeviceRGB cs 2 0 0 sc", {CS::e_device_rgb, Pt({2, 0, 0}), false, {254, 0, 0}}},
    {"rg_too_few_operands_skipped", "0.5 g 1 0 rg", {CS::e_device_gray, Pt({0.5}), false, {127, 127, 127}}},
    {"k_too_few_operands_skipped", "1 0 0 rg 1 1 1 k", {CS::e_device_rgb, Pt({1, 0, 0}), false, {255, 0, 0}}},
    {"scn_without_operands_skipped", "0.5 g scn", {CS::e_device_gray, Pt({0.5}), false, {127, 127, 127}}},
    {"cs_sets_the_initial_colour", "1 0 0 rg /DeviceCMYK cs", {CS::e_device_cmyk, Pt({0, 0, 0, 1}), false, {35, 31, 32}}},
    {"cs_icc_of_four_starts_white", "/Icc cs", {CS::e_icc, Pt({0, 0, 0, 0}), false, {255, 255, 255}}},
    {"indexed_by_name", "/Idx cs 1 sc", {CS::e_indexed, Pt({1}), false, {0, 0, 255}, CS::e_device_rgb}},
    {"inline_array_operand", "[/Indexed /DeviceGray 1 <00ff>] cs 1 sc",
     {CS::e_indexed, Pt({1}), false, {255, 255, 255}, CS::e_device_gray}},
    {"separation_through_its_tint", "/Spot cs 1 sc", {CS::e_separation, Pt({1}), false, {236, 27, 36}}},
    {"broken_space_skips_cs", "0 1 0 rg /Short cs", {CS::e_device_rgb, Pt({0, 1, 0}), false, {0, 255, 0}}},
    {"bad_tint_skips_cs", "0 1 0 rg /Bad cs", {CS::e_device_rgb, Pt({0, 1, 0}), false, {0, 255, 0}}},
    {"unknown_name_skips_cs", "0 1 0 rg /Nowhere cs", {CS::e_device_rgb, Pt({0, 1, 0}), false, {0, 255, 0}}},
    {"number_operand_skips_cs", "0 1 0 rg 7 cs", {CS::e_device_rgb, Pt({0, 1, 0}), false, {0, 255, 0}}},
    // A pattern has no colour of its own; the capture keeps the one before.
    {"pattern_with_components", "/Pat cs 0 0 1 /P0 scn",
     {CS::e_pattern, Pt({0, 0, 1}), true, {}, CS::e_device_rgb}},
    {"pattern_named_by_family", "/Pattern cs /P0 scn", {CS::e_pattern, Pt({}), true, {}}},
    // In the form, its own pattern paints itself: white in RGB instead.
    {"pattern_that_paints_itself", "/Fm Do", {CS::e_device_rgb, Pt({1, 1, 1}), false, {255, 255, 255}}, 'f'},
};

INSTANTIATE_TEST_SUITE_P(Color, ColorOperators, ::testing::ValuesIn(kOperators),
                         [](const auto& p) { return std::string(p.param.name); });

// Default spaces of the resources replace the device spaces, and the device bases of Indexed
// and Pattern; a form inherits them and may bring its own.
struct DefaultCase {
    const char* name;
    std::string defaults;
    std::string content;
    CS::Type type;
    CS::Type base;
};

class DefaultSpaces : public ::testing::TestWithParam<DefaultCase> {};

TEST_P(DefaultSpaces, Replace) {
    const DefaultCase& c = GetParam();
    PageRecipe recipe;
    recipe.resources = "/Font << /F1 4 0 R >> /ColorSpace << " + c.defaults +
                     " /Idx [/Indexed /DeviceRGB 0 <ff0000>] /Pat [/Pattern /DeviceRGB] >>";
    recipe.extra = {StreamObj("", "/N 4")};
    recipe.contents = {c.content + " BT /F1 10 Tf (x) Tj ET"};
    MemoryDoc doc(BuildPagePdf(recipe));
    PDF::ElementReader reader;
    reader.Begin(doc.FirstPage());
    Fill last;
    Walk(reader, last);
    EXPECT_EQ(last.type, c.type);
    EXPECT_EQ(last.base, c.base);
}

const std::string kCalRGB = "/DefaultRGB [/CalRGB << /WhitePoint [1 1 1] >>]";

const DefaultCase kDefaults[] = {
    {"rg_takes_default_rgb", kCalRGB, "1 0 0 rg", CS::e_cal_rgb, CS::e_null},
    {"cs_device_takes_default", kCalRGB, "/DeviceRGB cs", CS::e_cal_rgb, CS::e_null},
    {"other_families_keep_the_device", kCalRGB, "0 g", CS::e_device_gray, CS::e_null},
    {"k_takes_default_cmyk", "/DefaultCMYK [/ICCBased 6 0 R]", "0 0 0 1 k", CS::e_icc, CS::e_null},
    {"indexed_base_replaced", kCalRGB, "/Idx cs", CS::e_indexed, CS::e_cal_rgb},
    {"pattern_base_replaced", kCalRGB, "/Pat cs", CS::e_pattern, CS::e_cal_rgb},
    {"default_of_wrong_size_ignored", "/DefaultRGB /DeviceGray", "1 0 0 rg", CS::e_device_rgb, CS::e_null},
    {"broken_default_ignored", "/DefaultRGB [/CalRGB << >>]", "1 0 0 rg", CS::e_device_rgb, CS::e_null},
};

INSTANTIATE_TEST_SUITE_P(Color, DefaultSpaces, ::testing::ValuesIn(kDefaults),
                         [](const auto& p) { return std::string(p.param.name); });

}  // namespace
}  // namespace lum::test
