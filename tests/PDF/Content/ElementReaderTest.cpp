// The element reader over small content streams: which elements come out, in which order,
// and what survives bad content.
#include <gtest/gtest.h>

#include "Common/Limits.h"
#include "PDF/Content/ContentTestSupport.h"

namespace lum::test {
namespace {

struct SequenceCase {
    const char* name;
    std::vector<std::string> contents;
    const char* kinds;  // letters of ContentTestSupport's Kinds
    std::vector<std::string> texts;
    const char* error = "";
};

class ReaderSequence : public ::testing::TestWithParam<SequenceCase> {};

TEST_P(ReaderSequence, ElementsInContentOrder) {
    const SequenceCase& c = GetParam();
    PageRecipe recipe;
    recipe.contents = c.contents;
    const Walked w = WalkPage(recipe);
    EXPECT_EQ(Kinds(w), c.kinds);
    std::vector<std::string> texts;
    for (const Seen* s : Texts(w)) texts.push_back(s->text);
    EXPECT_EQ(texts, c.texts);
    EXPECT_EQ(w.error, c.error);
}

const SequenceCase kSequences[] = {
    {"text_object", {"BT /F1 12 Tf 1 0 0 1 10 20 Tm (ab) Tj 0 -14 Td (cd) Tj ET"}, "bTnTt", {"ab", "cd"}},
    {"operands_cross_streams", {"BT /F1 12", "Tf (a) Tj ET"}, "bTt", {"a"}},
    {"tj_array", {"BT /F1 10 Tf [(ab) -200 (cd)] TJ ET"}, "bTTt", {"ab", "cd"}},
    {"unclosed_array_before_tj", {"BT /F1 10 Tf [(ab) (cd) TJ (ef) Tj ET"}, "bTTTt", {"ab", "cd", "ef"}},
    {"operator_inside_array", {"BT /F1 10 Tf [(ab) 1 0 0 rg (cd)] TJ ET"}, "bTTt", {"ab", "cd"}},
    {"q_inside_array_closes_it", {"BT /F1 10 Tf [(ab) q (cd)] TJ ET"}, "bgt", {}},
    {"quote_operators", {"BT /F1 10 Tf 12 TL (a) ' 1 2 (b) \" ET"}, "bnTnTt", {"a", "b"}},
    {"q_at_bottom", {"Q Q Q q Q"}, "gG", {}},
    {"no_font", {"BT (text) Tj [(x)] TJ ET"}, "bt", {}},
    {"text_before_bt", {"/F1 10 Tf (x) Tj"}, "T", {"x"}},
    {"unknown_and_compat", {"/Sub BX unknownop EX foo 1 2 3 bar q Q"}, "gG", {}},
    {"too_few_operands", {"1 2 cm 0 0 m 1 w re f"}, "P", {}},
    {"paths", {"0 0 m 10 10 l S 0 0 10 10 re W n 1 1 m 2 2 3 3 4 4 c h f*"}, "PPP", {}},
    {"marked_content", {"/Span BMC /P << /MCID 3 >> BDC EMC /X MP /Y << >> DP EMC"}, "mmepp" "e", {}},
    {"endstream_word", {"q endstream Q"}, "gG", {}},
    {"unterminated_array_at_end", {"q [1 2"}, "g", {}, "Illegal content stream end"},
    {"unterminated_string", {"BT /F1 10 Tf (abc"}, "b", {}, "Corrupt string"},
    {"missing_xobject", {"q /Nope Do Q"}, "g", {}, "Missing resource"},
    {"missing_shading", {"/Nope sh"}, "", {}, "Missing resource"},
    {"wrong_operand_type", {"q (x) 0 0 1 0 0 cm Q"}, "g", {}, "GetNumber() can't be invoked on Obj of this type."},
};

INSTANTIATE_TEST_SUITE_P(Content, ReaderSequence, ::testing::ValuesIn(kSequences),
                         [](const auto& p) { return std::string(p.param.name); });

TEST(ElementReader, ContentsArrayEntriesThatAreNoStreamsAreSkipped) {
    PageRecipe recipe;
    recipe.contents = {"BT /F1 10 Tf (a) Tj", "(b) Tj ET"};
    // Objects 6 and 7 are the streams; a null and a number stand between them.
    recipe.contents_override = "[6 0 R null 42 7 0 R]";
    const Walked w = WalkPage(recipe);
    EXPECT_EQ(Kinds(w), "bTTt");
    EXPECT_EQ(w.error, "");
}

TEST(ElementReader, PageWithoutContentsHasNoElements) {
    PageRecipe recipe;
    const Walked w = WalkPage(recipe);
    EXPECT_TRUE(w.seen.empty());
    EXPECT_EQ(w.error, "");
}

TEST(ElementReader, ContentsOfAnotherTypeIsABadPage) {
    PageRecipe recipe;
    recipe.contents_override = "42";
    EXPECT_EQ(WalkPage(recipe).error, "Bad page");
}

// Forms: object 6 is the form unless a case says otherwise.
struct FormCase {
    const char* name;
    std::vector<std::string> extra;
    std::string page;
    const char* kinds;
    std::vector<int> text_levels;
};

class ReaderForms : public ::testing::TestWithParam<FormCase> {};

TEST_P(ReaderForms, FormsAreEnteredOnRequest) {
    const FormCase& c = GetParam();
    PageRecipe recipe;
    recipe.extra = c.extra;
    recipe.resources = "/Font << /F1 4 0 R >> /XObject << /Fm 6 0 R /Fm2 7 0 R >>";
    recipe.contents = {c.page};
    const Walked w = WalkPage(recipe);
    EXPECT_EQ(Kinds(w), c.kinds) << w.error;
    std::vector<int> levels;
    for (const Seen* s : Texts(w)) levels.push_back(s->level);
    EXPECT_EQ(levels, c.text_levels);
    EXPECT_EQ(w.error, "");
}

const FormCase kForms[] = {
    {"resources_fall_through_to_page",
     {StreamObj("BT /F1 10 Tf (in) Tj ET", "/Subtype /Form /BBox [0 0 10 10]"), "null"},
     "/Fm Do",
     "FbTt",
     {2}},
    {"form_paints_itself",
     {StreamObj("BT /F1 10 Tf (in) Tj ET /Fm Do q Q", "/Subtype /Form /BBox [0 0 10 10]"), "null"},
     "/Fm Do /Fm Do",
     "FbTtgGFbTtgG",
     {2, 2}},
    {"forms_paint_each_other",
     {StreamObj("/Fm2 Do", "/Subtype /Form /BBox [0 0 1 1]"),
      StreamObj("/Fm Do q Q", "/Subtype /Form /BBox [0 0 1 1]")},
     "/Fm Do",
     "FFgG",
     {}},
    {"empty_form", {StreamObj("", "/Subtype /Form /BBox [0 0 1 1]"), "null"}, "/Fm Do q Q", "FgG", {}},
    {"missing_subtype_inferred",
     {StreamObj("q Q", "/BBox [0 0 1 1]"), StreamObj("xxx", "/Width 1 /Height 1 /BitsPerComponent 8")},
     "/Fm Do /Fm2 Do",
     "FgGI",
     {}},
    {"postscript_form_skipped",
     {StreamObj("q Q", "/Subtype /Form /Subtype2 /PS"), "null"}, "/Fm Do", "", {}},
    {"unknown_subtype_skipped", {StreamObj("q Q", "/Subtype /Foo"), "null"}, "/Fm Do", "", {}},
};

INSTANTIATE_TEST_SUITE_P(Content, ReaderForms, ::testing::ValuesIn(kForms),
                         [](const auto& p) { return std::string(p.param.name); });

TEST(ElementReader, FormMatrixAndParentStateReachTheForm) {
    PageRecipe recipe;
    recipe.extra = {StreamObj("BT /F1 10 Tf (in) Tj ET Q Q", "/Subtype /Form /Matrix [2 0 0 2 5 5]"), "null"};
    recipe.resources = "/Font << /F1 4 0 R >> /XObject << /Fm 6 0 R >>";
    recipe.contents = {"q 1 0 0 1 100 0 cm /Fm Do Q"};
    const Walked w = WalkPage(recipe);
    ASSERT_EQ(Kinds(w), "gFbTtG");
    EXPECT_EQ(w.seen[3].ctm, Common::Matrix2D(2, 0, 0, 2, 105, 5));
    // The parent's state is untouched by the form's unbalanced Q.
    EXPECT_EQ(w.seen[1].ctm, Common::Matrix2D(1, 0, 0, 1, 100, 0));
}

// A name means the font of the innermost level that holds it, each time it is selected: form
// Fm's F1 is twice as wide as the page's; Fm2 has no fonts of its own.
TEST(ElementReader, FontNamesFollowTheLevelInForce) {
    PageRecipe recipe;
    recipe.extra = {StreamObj("BT /F1 10 Tf (a) Tj ET", "/Subtype /Form /BBox [0 0 99 99] "
                                                        "/Resources << /Font << /F1 7 0 R >> >>"),
                    "<< /Type /Font /Subtype /Type1 /BaseFont /TestWide /FirstChar 97 /LastChar 97 "
                    "/Widths [1000] /FontDescriptor 5 0 R >>",
                    StreamObj("BT /F1 10 Tf (a) Tj ET", "/Subtype /Form /BBox [0 0 99 99]")};
    recipe.resources = "/Font << /F1 4 0 R >> /XObject << /Fm 6 0 R /Fm2 8 0 R >>";
    recipe.contents = {"BT /F1 10 Tf (a) Tj ET /Fm Do BT /F1 10 Tf (a) Tj ET /Fm2 Do /Fm Do"};
    const Walked w = WalkPage(recipe);
    std::vector<double> ends;
    for (const Seen* s : Texts(w)) ends.push_back(s->end_x);
    EXPECT_EQ(ends, (std::vector<double>{5, 10, 5, 5, 10})) << w.error;
}

TEST(ElementReader, EndBeforeTheFormsEndDropsTheRest) {
    PageRecipe recipe;
    recipe.extra = {StreamObj("q Q q Q", "/Subtype /Form"), "null"};
    recipe.resources = "/XObject << /Fm 6 0 R >>";
    recipe.contents = {"/Fm Do q Q"};
    MemoryDoc doc(BuildPagePdf(recipe));
    PDF::ElementReader reader;
    reader.Begin(doc.FirstPage());
    ASSERT_EQ(reader.Next()->GetType(), PDF::Element::e_form);
    reader.FormBegin();
    EXPECT_EQ(reader.GetLevelCount(), 2);
    ASSERT_EQ(reader.Next()->GetType(), PDF::Element::e_group_begin);
    EXPECT_FALSE(reader.End());
    ASSERT_EQ(reader.Current()->GetType(), PDF::Element::e_form);
    EXPECT_EQ(reader.Next()->GetType(), PDF::Element::e_group_begin);
    EXPECT_EQ(reader.Next()->GetType(), PDF::Element::e_group_end);
    EXPECT_EQ(reader.Next(), nullptr);
    EXPECT_TRUE(reader.End());
    EXPECT_EQ(reader.Next(), nullptr);
}

TEST(ElementReader, FormBeginNeedsAFormElement) {
    PageRecipe recipe;
    recipe.contents = {"q Q"};
    MemoryDoc doc(BuildPagePdf(recipe));
    PDF::ElementReader reader;
    reader.Begin(doc.FirstPage());
    reader.Next();
    try {
        reader.FormBegin();
        FAIL() << "FormBegin on a group element";
    } catch (const Common::Exception& e) {
        EXPECT_EQ(e.GetMessage(), "Failed to open a Form XObject");
    }
}

TEST(ElementReader, DeepNestingEndsInBoundedMemory) {
    // 10,000 q without Q, then as many Q: every bracket still comes out, balanced.
    std::string content;
    for (int i = 0; i < 10000; ++i) content += "q ";
    content += "BT /F1 10 Tf (x) Tj ET ";
    for (int i = 0; i < 10000; ++i) content += "Q ";
    PageRecipe recipe;
    recipe.contents = {content};
    const Walked w = WalkPage(recipe);
    EXPECT_EQ(w.seen.size(), 20003u);
    EXPECT_EQ(Texts(w).size(), 1u);
}

TEST(ElementReader, AMillionOperandsEndInBoundedTime) {
    std::string content = "BT /F1 10 Tf ";
    for (int i = 0; i < 1000000; ++i) content += "1 ";
    content += "(x) Tj ET";
    PageRecipe recipe;
    recipe.contents = {content};
    const Walked w = WalkPage(recipe);
    EXPECT_EQ(Kinds(w), "bTt");
}


struct InlineCase {
    const char* name;
    std::string content;
    const char* kinds;
    int width, height, bits, components;
    std::string data;
    const char* error = "";
};

class InlineImages : public ::testing::TestWithParam<InlineCase> {};

TEST_P(InlineImages, DataOfComputedSize) {
    const InlineCase& c = GetParam();
    PageRecipe recipe;
    recipe.resources = "/ColorSpace << /Sep [/Separation /Spot /DeviceCMYK 6 0 R] /Icc [/ICCBased 6 0 R] >>";
    recipe.extra = {StreamObj("", "/N 4")};
    recipe.contents = {c.content};
    MemoryDoc doc(BuildPagePdf(recipe));
    PDF::ElementReader reader;
    reader.Begin(doc.FirstPage());
    std::string kinds, error;
    int width = -1, height = -1, bits = -1, components = -1;
    std::string data;
    try {
        while (PDF::Element* e = reader.Next()) {
            Walked w;
            Seen s;
            s.type = e->GetType();
            w.seen.push_back(s);
            kinds += Kinds(w);
            if (s.type != PDF::Element::e_inline_image) continue;
            width = e->GetImageWidth();
            height = e->GetImageHeight();
            bits = e->GetBitsPerComponent();
            components = e->GetComponentNum();
            if (e->GetImageData())
                data.assign(reinterpret_cast<const char*>(e->GetImageData()), size_t(e->GetImageDataSize()));
        }
    } catch (const Common::Exception& e) {
        error = e.GetMessage();
    }
    EXPECT_EQ(kinds, c.kinds);
    EXPECT_EQ(error, c.error);
    if (std::string(c.kinds).find('i') == std::string::npos) return;
    EXPECT_EQ(width, c.width);
    EXPECT_EQ(height, c.height);
    EXPECT_EQ(bits, c.bits);
    EXPECT_EQ(components, c.components);
    EXPECT_EQ(data, c.data);
}

const InlineCase kInline[] = {
    {"data_holding_EI", "BI /W 3 /H 1 /BPC 8 /CS /RGB ID EI EI EI  EI q Q", "igG", 3, 1, 8, 3, "EI EI EI "},
    {"long_keys", "BI /Width 2 /Height 1 /BitsPerComponent 8 /ColorSpace /DeviceGray ID ab EI q Q", "igG",
     2, 1, 8, 1, "ab"},
    {"no_colour_space_is_rgb", "BI /W 1 /H 1 /BPC 8 ID xyz EI", "i", 1, 1, 8, 3, "xyz"},
    {"image_mask", "BI /W 9 /H 1 /IM true ID \x01\x02 EI", "i", 9, 1, 1, 1, "\x01\x02"},
    {"resource_colour_spaces", "BI /W 1 /H 1 /BPC 8 /CS /Icc ID abcd EI BI /W 1 /H 1 /BPC 8 /CS /Sep ID z EI",
     "ii", 1, 1, 8, 1, "z"},
    {"hex_filter", "BI /W 2 /H 1 /BPC 8 /CS /G /F /AHx ID 4549> EI q Q", "igG", 2, 1, 8, 1, "EI"},
    {"ascii85_data_with_a_paren", "BI /W 4 /H 1 /BPC 8 /CS /G /F /A85 ID @:a([~> EI q Q", "igG", 4, 1, 8, 1, "aega"},
    {"filter_array", "BI /W 2 /H 1 /BPC 8 /CS /G /F [/AHx] /DP [null] ID 4142> EI", "i", 2, 1, 8, 1, "AB"},
    {"decoder_ends_early", "BI /W 4 /H 1 /BPC 8 /CS /G /F /AHx ID 41> q Q", "igG", 4, 1, 8, 1, "A"},
    {"no_EI_at_stream_end", "BI /W 100 /H 100 /BPC 8 /CS /G ID abc", "i", 100, 100, 8, 1, "abc"},
    {"missing_width", "BI /H 1 /BPC 8 ID a EI", "", 0, 0, 0, 0, "", "Inline image is missing W"},
    {"missing_bpc", "BI /W 1 /H 1 ID a EI", "", 0, 0, 0, 0, "", "Inline image is missing BPC"},
    {"odd_dictionary", "BI /W 1 /H 1 /BPC ID a EI", "", 0, 0, 0, 0, "", "Invalid inline image dictionary."},
    {"jbig2_refused", "BI /W 1 /H 1 /BPC 1 /F /JBIG2Decode ID a EI", "", 0, 0, 0, 0, "",
     "JBIG2 filter is not allowed for inline images."},
    {"dp_mismatch", "BI /W 1 /H 1 /BPC 8 /F [/AHx /AHx] /DP [null] ID 41> EI", "", 0, 0, 0, 0, "",
     "DP doesn't match filters"},
    {"unknown_colour_space", "BI /W 1 /H 1 /BPC 8 /CS /Nope ID a EI", "", 0, 0, 0, 0, "", "Missing resource"},
};

INSTANTIATE_TEST_SUITE_P(Content, InlineImages, ::testing::ValuesIn(kInline),
                         [](const auto& p) { return std::string(p.param.name); });

// Each bound of the reader at its value and one past it.

TEST(ContentLimits, StateDepth) {
    // Depth kMaxStateDepth is reached with kMaxStateDepth - 1 pushes; one more q is refused.
    for (const size_t pushes : {Limits::kMaxStateDepth - 2, Limits::kMaxStateDepth - 1}) {
        std::string content;
        for (size_t i = 0; i < pushes; ++i) content += "q ";
        content += "5 w q 6 w Q 0 0 m 1 1 l S";
        PageRecipe recipe;
        recipe.contents = {content};
        MemoryDoc doc(BuildPagePdf(recipe));
        PDF::ElementReader reader;
        reader.Begin(doc.FirstPage());
        PDF::Element* last = nullptr;
        while (PDF::Element* e = reader.Next()) last = e;
        ASSERT_NE(last, nullptr);
        EXPECT_EQ(last->GetGState().GetLineWidth(), pushes == Limits::kMaxStateDepth - 2 ? 5 : 6);
    }
}

TEST(ContentLimits, FormLevels) {
    // Forms 6, 7, ... each show a string and paint the next: the page is level 1, so forms
    // run with content up to level kMaxContentLevels, and the one below opens empty.
    const int forms = Limits::kMaxContentLevels + 1;
    PageRecipe recipe;
    std::string xobjects;
    for (int i = 0; i < forms; ++i) {
        const std::string next = "/X" + std::to_string(i + 1);
        recipe.extra.push_back(StreamObj("BT /F1 10 Tf (x) Tj ET " + next + " Do",
                                       "/Subtype /Form /Resources << /XObject << " + next + " " +
                                           std::to_string(7 + i) + " 0 R >> >>"));
    }
    recipe.extra.push_back(StreamObj("", "/Subtype /Form"));
    recipe.resources = "/Font << /F1 4 0 R >> /XObject << /X0 6 0 R >>";
    recipe.contents = {"/X0 Do"};
    const Walked w = WalkPage(recipe);
    EXPECT_EQ(w.error, "");
    EXPECT_EQ(Texts(w).size(), size_t(Limits::kMaxContentLevels - 1));
    int deepest = 0;
    for (const Seen& s : w.seen) deepest = std::max(deepest, s.level);
    EXPECT_EQ(deepest, Limits::kMaxContentLevels);
}

TEST(ContentLimits, StringCharacters) {
    for (const size_t size : {Limits::kMaxStringChars, Limits::kMaxStringChars + 1}) {
        PageRecipe recipe;
        recipe.contents = {"BT /F1 1 Tf (" + std::string(size, 'a') + ") Tj ET"};
        const Walked w = WalkPage(recipe);
        ASSERT_EQ(Texts(w).size(), 1u);
        EXPECT_EQ(Texts(w)[0]->positions.size(), 2 * Limits::kMaxStringChars);
    }
}

TEST(ContentLimits, PathCoordinates) {
    std::string content = "0 0 m ";
    content.reserve(Limits::kMaxPathDoubles * 3 + 64);
    for (size_t i = 2; i < Limits::kMaxPathDoubles; i += 2) content += "1 1 l ";
    content += "2 2 l S";
    PageRecipe recipe;
    recipe.contents = {content};
    MemoryDoc doc(BuildPagePdf(recipe));
    PDF::ElementReader reader;
    reader.Begin(doc.FirstPage());
    PDF::Element* e = reader.Next();
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(size_t(e->GetPointCount()), Limits::kMaxPathDoubles);
    EXPECT_EQ(e->GetPathPoints()[Limits::kMaxPathDoubles - 1], 1);  // the last l was dropped
}

TEST(ContentLimits, InlineImageData) {
    const size_t bound = Limits::kMaxInlineImageBytes;
    for (const size_t size : {bound, bound + 1}) {
        PageRecipe recipe;
        recipe.contents = {"BI /W " + std::to_string(size) + " /H 1 /BPC 8 /CS /G ID " +
                         std::string(size, 'x') + " EI q Q"};
        MemoryDoc doc(BuildPagePdf(recipe));
        PDF::ElementReader reader;
        reader.Begin(doc.FirstPage());
        PDF::Element* e = reader.Next();
        ASSERT_NE(e, nullptr);
        EXPECT_EQ(size_t(e->GetImageDataSize()), bound);
        // The data is consumed whole all the same: the content goes on behind it.
        ASSERT_NE(reader.Next(), nullptr);
        EXPECT_EQ(reader.Current()->GetType(), PDF::Element::e_group_begin);
    }
}


// A client that enters the glyph of every character of every Type 3 string, as glyph
// measuring does; answers the deepest level reached.
int EnterGlyphs(PDF::ElementReader& reader) {
    int deepest = reader.GetLevelCount();
    while (PDF::Element* e = reader.Next()) {
        if (e->GetType() != PDF::Element::e_text) continue;
        PDF::CharData it, end;
        e->GetCharIterator(it);
        e->GetCharIteratorEnd(end);
        for (; it != end; ++it) {
            reader.Type3FontBegin(it);
            deepest = std::max(deepest, EnterGlyphs(reader));
            reader.End();  // the string's element is current again, for the next character
        }
    }
    return deepest;
}

TEST(Type3Glyphs, GlyphsThatShowTheirOwnFontEnd) {
    // Glyph a shows "ab" and glyph b shows "ba" in the same font: every glyph already open
    // opens an empty level, so the walk ends.
    PageRecipe recipe;
    recipe.resources = "/Font << /T3 6 0 R >>";
    recipe.extra = {
        "<< /Type /Font /Subtype /Type3 /FontMatrix [0.001 0 0 0.001 0 0] /FontBBox [0 0 1000 1000] "
        "/CharProcs << /a 7 0 R /b 8 0 R >> /Encoding << /Differences [97 /a /b] >> /FirstChar 97 "
        "/LastChar 98 /Widths [1000 1000] /Resources << /Font << /T3 6 0 R >> >> >>",
        StreamObj("1000 0 d0 BT /T3 1 Tf (ab) Tj ET"), StreamObj("1000 0 d0 BT /T3 1 Tf (ba) Tj ET")};
    recipe.contents = {"BT /T3 10 Tf (ab) Tj ET"};
    MemoryDoc doc(BuildPagePdf(recipe));
    PDF::ElementReader reader;
    reader.Begin(doc.FirstPage());
    // Page, glyph a, glyph b inside it, and the empty level of an open glyph below that.
    EXPECT_EQ(EnterGlyphs(reader), 4);
}

TEST(Type3Glyphs, GlyphLevelTakesTheMatricesAndTheFillAsStroke) {
    PageRecipe recipe;
    recipe.resources = "/Font << /T3 6 0 R >>";
    recipe.extra = {
        "<< /Type /Font /Subtype /Type3 /FontMatrix [0.01 0 0 0.01 0 0] /CharProcs << /a 7 0 R >> "
        "/Encoding << /Differences [97 /a] >> /FirstChar 97 /LastChar 97 /Widths [100] >>",
        StreamObj("100 0 d0 0 0 10 10 re f")};
    recipe.contents = {"1 0 0 rg BT /T3 20 Tf 50 Tz 2 0 0 2 100 100 Tm (aa) Tj ET"};
    MemoryDoc doc(BuildPagePdf(recipe));
    PDF::ElementReader reader;
    reader.Begin(doc.FirstPage());
    PDF::Element* e = nullptr;
    while ((e = reader.Next()) && e->GetType() != PDF::Element::e_text) {
    }
    ASSERT_NE(e, nullptr);
    PDF::CharData it;
    e->GetCharIterator(it);
    ++it;  // the second a, at x = 100 units x 0.01 x 20 x 0.5 = 10
    reader.Type3FontBegin(it);
    PDF::Element* path = reader.Next();
    ASSERT_NE(path, nullptr);
    // FontMatrix, then scale (0.5 x 20, 20), then (10, 0), then the text matrix.
    const Common::Matrix2D& ctm = path->GetCTM();
    const double got[6] = {ctm.m_a, ctm.m_b, ctm.m_c, ctm.m_d, ctm.m_h, ctm.m_v};
    const double want[6] = {0.2, 0, 0, 0.4, 120, 100};
    for (int i = 0; i < 6; ++i) EXPECT_NEAR(got[i], want[i], 1e-12) << i;
    EXPECT_EQ(path->GetGState().GetStrokeColor(), PDF::ColorPt(1, 0, 0, 0, 3));
    EXPECT_EQ(reader.Next(), nullptr);
    EXPECT_FALSE(reader.End());
}

}  // namespace
}  // namespace lum::test
