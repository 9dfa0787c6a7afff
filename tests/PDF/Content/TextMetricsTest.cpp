// The advance arithmetic against positions worked out by hand. Font /F1 of the test page has
// every glyph 500 units wide; font /T3 (object 6) is a Type 3 font with FontMatrix 0.01 and
// widths of 50.
#include <gtest/gtest.h>

#include "PDF/Content/ContentTestSupport.h"

namespace lum::test {
namespace {

const char* const kType3Font =
    "<< /Type /Font /Subtype /Type3 /FontMatrix [0.01 0 0 0.01 0 0] /FontBBox [0 0 100 100] "
    "/CharProcs << /a 7 0 R >> /Encoding << /Differences [97 /a] >> /FirstChar 97 /LastChar 98 "
    "/Widths [50 50] >>";

struct MetricsCase {
    const char* name;
    std::string content;
    size_t text_index;             // which e_text of the page
    std::vector<double> positions; // x0 y0 x1 y1 ...
    double end_x, end_y;
    double adjustment = 0;
};

class TextMetrics : public ::testing::TestWithParam<MetricsCase> {};

TEST_P(TextMetrics, PositionsAndEnd) {
    const MetricsCase& c = GetParam();
    PageRecipe recipe;
    recipe.resources = "/Font << /F1 4 0 R /T3 6 0 R >>";
    recipe.extra = {kType3Font, StreamObj("50 0 d0 0 0 100 100 re f")};
    recipe.contents = {c.content};
    const Walked w = WalkPage(recipe);
    ASSERT_EQ(w.error, "");
    const auto texts = Texts(w);
    ASSERT_LT(c.text_index, texts.size());
    const Seen& s = *texts[c.text_index];
    ASSERT_EQ(s.positions.size(), c.positions.size());
    for (size_t i = 0; i < c.positions.size(); ++i)
        EXPECT_NEAR(s.positions[i], c.positions[i], 1e-9) << "coordinate " << i;
    EXPECT_NEAR(s.end_x, c.end_x, 1e-9);
    EXPECT_NEAR(s.end_y, c.end_y, 1e-9);
    EXPECT_DOUBLE_EQ(s.adjustment, c.adjustment);
}

const MetricsCase kMetrics[] = {
    // 5 per glyph at size 10; Tc 0.5 on each; Tw 1 on the blank only.
    {"spacing", "BT /F1 10 Tf 1 Tw 0.5 Tc (a b) Tj ET", 0, {0, 0, 5.5, 0, 12, 0}, 17.5, 0},
    {"horizontal_scale_halves_everything", "BT /F1 10 Tf 1 Tw 0.5 Tc 50 Tz (a b) Tj ET", 0,
     {0, 0, 2.75, 0, 6, 0}, 8.75, 0},
    {"zero_scale", "BT /F1 10 Tf 0 Tz (ab) Tj ET", 0, {0, 0, 0, 0}, 0, 0},
    {"rise_in_stored_y_only", "BT /F1 10 Tf 5 Ts 0 20 Td (ab) Tj ET", 0, {0, 25, 5, 25}, 10, 20},
    {"strings_continue", "BT /F1 10 Tf (ab) Tj (c) Tj ET", 1, {10, 0}, 15, 0},
    {"tj_number_moves_left", "BT /F1 10 Tf [(ab) -200 (cd)] TJ ET", 1, {12, 0, 17, 0}, 22, 0, -200},
    {"tj_number_scaled", "BT /F1 10 Tf 50 Tz [(a) 100 (b)] TJ ET", 1, {2, 0}, 4.5, 0, 100},
    {"trailing_tj_number_moves_next_tj", "BT /F1 10 Tf [(a) 120] TJ (b) Tj ET", 1, {3.8, 0}, 8.8, 0, 120},
    {"cm_clears_trailing_number", "BT /F1 10 Tf [(a) 120] TJ 1 0 0 1 0 0 cm (b) Tj ET", 1, {5, 0}, 10, 0},
    {"quote_has_no_adjustment", "BT /F1 10 Tf 10 TL [(a) 120] TJ (b) ' ET", 1, {0, -10}, 5, -10},
    {"line_moves", "BT /F1 10 Tf 10 20 Td 5 -2 Td (a) Tj ET", 0, {15, 18}, 20, 18},
    {"TD_sets_leading", "BT /F1 10 Tf 0 -12 TD T* (a) Tj ET", 0, {0, -24}, 5, -24},
    {"tm_resets_position", "BT /F1 10 Tf 30 40 Td 2 0 0 2 7 7 Tm (a) Tj ET", 0, {0, 0}, 5, 0},
    {"before_bt", "/F1 10 Tf (a) Tj", 0, {-999, -999}, -994, -999},
    {"type3_units_from_font_matrix", "BT /T3 10 Tf (ab) Tj ET", 0, {0, 0, 5, 0}, 10, 0},
    {"type3_adjustment_ignores_matrix", "BT /T3 10 Tf [(a) -100 (b)] TJ ET", 1, {6, 0}, 11, 0, -100},
};

INSTANTIATE_TEST_SUITE_P(Content, TextMetrics, ::testing::ValuesIn(kMetrics),
                         [](const auto& p) { return std::string(p.param.name); });

// Boxes of text elements: the font's ascent and descent, mode-independent, none when empty.
struct BoxCase {
    const char* name;
    std::string content;  // font /Z has ascent and descent 0
    bool has_box;
    PDF::Rect box;
};

class TextBox : public ::testing::TestWithParam<BoxCase> {};

TEST_P(TextBox, BoxOfTheFirstString) {
    const BoxCase& c = GetParam();
    PageRecipe recipe;
    recipe.resources = "/Font << /F1 4 0 R /Z 6 0 R >>";
    std::string widths;
    for (int i = 0; i < 256; ++i) widths += "500 ";
    recipe.extra = {"<< /Type /Font /Subtype /Type1 /BaseFont /Zero /FirstChar 0 /LastChar 255 /Widths [" +
                      widths + "] /FontDescriptor 7 0 R >>",
                  "<< /Type /FontDescriptor /Ascent 0 /Descent 0 >>"};
    recipe.contents = {c.content};
    MemoryDoc doc(BuildPagePdf(recipe));
    PDF::ElementReader reader;
    reader.Begin(doc.FirstPage());
    PDF::Element* e;
    while ((e = reader.Next()) && e->GetType() != PDF::Element::e_text) {
    }
    ASSERT_NE(e, nullptr);
    PDF::Rect r;
    ASSERT_EQ(e->GetBBox(r), c.has_box);
    EXPECT_NEAR(r.x1, c.box.x1, 1e-9);
    EXPECT_NEAR(r.y1, c.box.y1, 1e-9);
    EXPECT_NEAR(r.x2, c.box.x2, 1e-9);
    EXPECT_NEAR(r.y2, c.box.y2, 1e-9);
}

const BoxCase kBoxes[] = {
    {"ascent_descent", "BT /F1 10 Tf 1 0 0 1 100 200 Tm (ab) Tj ET", true, {100, 198, 110, 208}},
    {"invisible_as_filled", "BT /F1 10 Tf 3 Tr 1 0 0 1 100 200 Tm (ab) Tj ET", true, {100, 198, 110, 208}},
    {"zero_metrics_fall_back", "BT /Z 10 Tf (ab) Tj ET", true, {0, -3.5, 10, 9.5}},
    {"ctm_and_text_matrix", "2 0 0 2 0 0 cm BT /F1 10 Tf 1 0 0 1 5 5 Tm (a) Tj ET", true, {10, 6, 20, 26}},
    {"stroked_grows", "4 w 0 j 1 M BT /F1 10 Tf 1 Tr (a) Tj ET", true, {-2, -4, 7, 10}},
    {"empty_string", "BT /F1 10 Tf () Tj ET", false, {}},
};

INSTANTIATE_TEST_SUITE_P(Content, TextBox, ::testing::ValuesIn(kBoxes),
                         [](const auto& p) { return std::string(p.param.name); });

TEST(TextElement, EmptyStringHasNoCharactersAndNoText) {
    PageRecipe recipe;
    recipe.contents = {"BT /F1 10 Tf () Tj ET"};
    MemoryDoc doc(BuildPagePdf(recipe));
    PDF::ElementReader reader;
    reader.Begin(doc.FirstPage());
    reader.Next();
    PDF::Element* e = reader.Next();
    ASSERT_EQ(e->GetType(), PDF::Element::e_text);
    PDF::CharData it, end;
    e->GetCharIterator(it);
    e->GetCharIteratorEnd(end);
    EXPECT_TRUE(it == end);
    EXPECT_TRUE(e->GetTextString().Empty());
}

}  // namespace
}  // namespace lum::test
