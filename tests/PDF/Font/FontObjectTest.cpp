// Font objects from dictionaries: kinds, descriptor defaults, widths, encodings with
// Differences, the failures that stop a font from being made, and the document's table of
// shared fonts.
#include <gtest/gtest.h>

#include <functional>

#include "PDF/Content/ContentTestSupport.h"
#include "support/TestSupport.h"
#include "PDF/Font/Font.h"
#include "PDF/Font/FontImpl.h"
#include "SDF/Obj.h"
#include "SDF/SharedResource.h"

namespace lum::test {
namespace {

using PDF::Font;

const char* const kDescriptor = "/FontDescriptor << /Flags 32 /Ascent 700 /Descent -200 >>";

struct FontCase {
    const char* name;
    std::string dict;    // entries of the font dictionary
    const char* error;   // "" when the font is made
    std::function<void(const Font&)> check;
};

class FontObjects : public ::testing::TestWithParam<FontCase> {};

TEST_P(FontObjects, FromDictionary) {
    const FontCase& c = GetParam();
    PageRecipe recipe;
    recipe.extra = {"<< /Type /Font " + c.dict + " >>"};
    MemoryDoc doc(BuildPagePdf(recipe));
    EXPECT_EQ(CatchFailure([&] {
                  const Font font(doc.Doc().GetObj(6));
                  if (c.check) c.check(font);
              }).message,
              c.error);
}

std::string Widths(int first, int last, double w) {
    std::string out = "/FirstChar " + std::to_string(first) + " /LastChar " + std::to_string(last) + " /Widths [";
    for (int i = first; i <= last; ++i) out += std::to_string(w) + " ";
    return out + "]";
}

const FontCase kFonts[] = {
    {"unknown_subtype_is_type1", "/Subtype /Foo /BaseFont /X " + Widths(0, 3, 1) + " " + kDescriptor, "",
     [](const Font& f) { EXPECT_EQ(f.GetType(), Font::e_Type1); }},
    {"opentype_is_truetype", "/Subtype /OpenType /BaseFont /X " + Widths(0, 3, 1) + " " + kDescriptor, "",
     [](const Font& f) { EXPECT_EQ(f.GetType(), Font::e_TrueType); }},
    {"mmtype1", "/Subtype /MMType1 /BaseFont /X " + Widths(0, 3, 1) + " " + kDescriptor, "",
     [](const Font& f) { EXPECT_EQ(f.GetType(), Font::e_MMType1); }},
    {"no_subtype", "/BaseFont /Helvetica", "The dictionary does not contain required key: Subtype", nullptr},
    {"descriptor_metrics",
     "/Subtype /Type1 /BaseFont /X " + Widths(0, 3, 1) +
         " /FontDescriptor << /Flags 4 /Ascent 0 /Descent 200 /FontBBox [100 200 0 0] /MissingWidth 9 >>",
     "",
     [](const Font& f) {
         EXPECT_EQ(f.GetAscent(), 950);
         EXPECT_EQ(f.GetDescent(), -200);
         EXPECT_EQ(f.GetBBox(), PDF::Rect(0, 0, 100, 200));
         EXPECT_EQ(f.GetMissingWidth(), 9);
         EXPECT_EQ(f.GetWidth(200), 9);
         EXPECT_TRUE(f.IsSymbolic());
     }},
    {"damaged_descriptor_entries",
     "/Subtype /Type1 /BaseFont /X " + Widths(0, 3, 1) +
         " /FontDescriptor << /Flags (x) /Ascent /Big /Descent 0 /FontBBox [1 2 (3) 4] >>",
     "",
     [](const Font& f) {
         EXPECT_EQ(f.GetAscent(), 950);
         EXPECT_EQ(f.GetDescent(), -350);
         EXPECT_EQ(f.GetBBox(), PDF::Rect());
     }},
    {"symbolic_and_nonsymbolic", "/Subtype /Type1 /BaseFont /X " + Widths(0, 3, 1) + " /FontDescriptor << /Flags 36 >>",
     "", [](const Font& f) { EXPECT_FALSE(f.IsSymbolic()); }},
    {"subset_tags", "/Subtype /Type1 /BaseFont /ABCDEF+Foo " + Widths(0, 3, 1) + " " + kDescriptor, "",
     [](const Font& f) {
         EXPECT_TRUE(f.HasSubsetTag());
         EXPECT_STREQ(f.GetName(), "ABCDEF+Foo");
     }},
    {"seven_characters_ending_in_plus", "/Subtype /Type1 /BaseFont /ABCDEF+ " + Widths(0, 3, 1) + " " + kDescriptor,
     "", [](const Font& f) { EXPECT_FALSE(f.HasSubsetTag()); }},
    {"name_as_string", "/Subtype /Type1 /BaseFont (My Font) " + Widths(0, 3, 1) + " " + kDescriptor, "",
     [](const Font& f) { EXPECT_STREQ(f.GetName(), "My Font"); }},
    {"nonstandard_without_descriptor", "/Subtype /Type1 /BaseFont /Frutiger " + Widths(0, 3, 1),
     "Non-standard font is missing the descriptor", nullptr},
    {"nonstandard_without_widths", "/Subtype /TrueType /BaseFont /Frutiger " + std::string(kDescriptor),
     "Non-standard font is missing 'Widths' array", nullptr},
    {"first_char_out_of_range", "/Subtype /Type1 /BaseFont /X /FirstChar 300 /LastChar 301 /Widths [1 1] " +
                                    std::string(kDescriptor),
     "Font has invalid advance widths.", nullptr},
    {"short_widths",
     "/Subtype /Type1 /BaseFont /X /FirstChar 65 /LastChar 90 /Widths [1 2 3] "
     "/FontDescriptor << /MissingWidth 7 >>",
     "",
     [](const Font& f) {
         EXPECT_EQ(f.GetWidth(64), 7);
         EXPECT_EQ(f.GetWidth(65), 1);
         EXPECT_EQ(f.GetWidth(67), 3);
         EXPECT_EQ(f.GetWidth(68), 7);
         EXPECT_EQ(f.GetWidth(300), 0);
         EXPECT_EQ(f.GetMaxWidth(), 7);
     }},
    {"first_above_last_writes_nothing", "/Subtype /Type1 /BaseFont /X /FirstChar 9 /LastChar 3 /Widths [5 5] " +
                                            std::string(kDescriptor),
     "", [](const Font& f) { EXPECT_EQ(f.GetWidth(9), 0); }},
    {"standard_widths_by_name", "/Subtype /Type1 /BaseFont /Helvetica", "",
     [](const Font& f) {
         EXPECT_EQ(f.GetBase14Type(), Font::e_helvetica);
         EXPECT_EQ(f.GetWidth('A'), 667);
         EXPECT_EQ(f.GetWidth(' '), 278);
         EXPECT_EQ(f.GetWidth(9), 278);  // white space without a name takes the space
         EXPECT_EQ(f.GetAscent(), 718);
         EXPECT_EQ(f.GetBBox(), PDF::Rect(-166, -225, 1000, 931));
     }},
    {"standard_code_32_renamed",
     "/Subtype /Type1 /BaseFont /Arial,Bold /Encoding << /Differences [32 /A 33 /nosuchglyph] >>", "",
     [](const Font& f) {
         EXPECT_EQ(f.GetBase14Type(), Font::e_helvetica_bold);
         EXPECT_EQ(f.GetWidth(32), 722);
         EXPECT_EQ(f.GetWidth(33), 0);  // neither a width nor white space: the missing width
     }},
    {"differences_past_255_vanish",
     "/Subtype /Type1 /BaseFont /Courier /Encoding << /BaseEncoding /WinAnsiEncoding /Differences [254 /a /b /c] >>",
     "",
     [](const Font& f) {
         EXPECT_STREQ(f.GetEncoding()[254], "a");
         EXPECT_STREQ(f.GetEncoding()[255], "b");
         EXPECT_STREQ(f.GetEncoding()[65], "A");
     }},
    {"differences_negative_and_fractional",
     "/Subtype /Type1 /BaseFont /Courier /Encoding << /Differences [-66.7 /x] >>", "",
     [](const Font& f) {
         EXPECT_STREQ(f.GetEncoding()[66], "x");
         EXPECT_STREQ(f.GetEncoding()[67], "C");  // the rest is StandardEncoding
     }},
    {"differences_bad_item", "/Subtype /Type1 /BaseFont /Courier /Encoding << /Differences [65 (A)] >>",
     "Font has invalid encoding differences.", nullptr},
    {"unknown_encoding_name_is_absent", "/Subtype /TrueType /BaseFont /Courier /Encoding /Foo", "",
     [](const Font& f) { EXPECT_STREQ(f.GetEncoding()[0x80], "Euro"); }},  // WinAnsi behind
    {"symbol_builtin_encoding", "/Subtype /Type1 /BaseFont /Symbol", "",
     [](const Font& f) {
         EXPECT_STREQ(f.GetEncoding()['a'], "alpha");
         EXPECT_EQ(f.GetWidth('a'), 631);
     }},
    {"type3", "/Subtype /Type3 /Name /T /FontMatrix [0.01 0 0 0.01 0 0] /CharProcs << /a 1 0 R >> "
              "/Encoding << /Differences [97 /a] >> /FirstChar 97 /LastChar 97 /Widths [50] /FontBBox [10 10 0 0]",
     "",
     [](const Font& f) {
         EXPECT_EQ(f.GetType(), Font::e_Type3);
         EXPECT_STREQ(f.GetName(), "T");
         EXPECT_NEAR(f.GetType3FontMatrix().m_a, 0.01, 1e-12);
         EXPECT_NE(f.GetType3GlyphStream('a'), nullptr);
         EXPECT_EQ(f.GetType3GlyphStream('b'), nullptr);
         EXPECT_STREQ(f.GetEncoding()['b'], "b");  // Differences fill up from StandardEncoding
         EXPECT_EQ(f.GetBBox(), PDF::Rect(0, 0, 10, 10));
         EXPECT_THROW(f.GetUnitsPerEm(), Common::Exception);
     }},
    {"composite_naming_itself", "/Subtype /Type0 /BaseFont /X /Encoding /Identity-H /DescendantFonts [6 0 R]",
     "Fonts nested too deep", nullptr},
    {"type3_without_charprocs", "/Subtype /Type3 /FirstChar 0 /LastChar 0 /Widths [1]",
     "The dictionary does not contain required key: CharProcs", nullptr},
};

INSTANTIATE_TEST_SUITE_P(Font, FontObjects, ::testing::ValuesIn(kFonts),
                         [](const auto& p) { return std::string(p.param.name); });

TEST(FontHandle, EmptyHandleRaisesBadFontNamingTheOperation) {
    const Font empty;
    EXPECT_LUM_FAILURE(empty.GetType(), "Bad font", "mp_impl", "lum::PDF::Font::GetType");
}

TEST(FontHandle, VerticalMetricsOnlyOnComposite) {
    MemoryDoc doc(BuildPagePdf(PageRecipe()));
    const Font font(doc.Doc().GetObj(4));
    double vx, vy;
    EXPECT_THROW(font.GetVerticalAdvance(1, vx, vy), Common::Exception);
    EXPECT_THROW(font.GetDescendant(), Common::Exception);
}

TEST(SharedFonts, OneObjectPerDictionaryAndBoundedIdleEntries) {
    PageRecipe recipe;
    for (int i = 0; i < 30; ++i) recipe.extra.push_back("<< /Type /Font /Subtype /Type1 /BaseFont /Courier >>");
    MemoryDoc doc(BuildPagePdf(recipe));
    SDF::Obj* first_dict = doc.Doc().GetObj(6);
    const Font kept(first_dict);
    EXPECT_EQ(Font(first_dict).GetImpl(), kept.GetImpl());
    for (int i = 1; i < 30; ++i) Font idle(doc.Doc().GetObj(UInt32(6 + i)));
    SDF::SharedResourceTable* table = SDF::SharedResourceTable::Of(first_dict);
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->Size(), SDF::SharedResourceTable::kMaxIdleEntries + 1);
    // The font with a handle was never evicted: it is the same object.
    EXPECT_EQ(Font(first_dict).GetImpl(), kept.GetImpl());
}

TEST(StandardFontNames, Recognition) {
    const struct Row {
        const char* name;
        Font::StandardType1Font index;
    } rows[] = {
        {"Times-Roman", Font::e_times_roman},       {"TimesNewRoman,Bold", Font::e_times_bold},
        {"TimesNewRomanPS-BoldMT", Font::e_times_bold}, {"TimesNewRomanPS-ItalicMT", Font::e_times_italic},
        {"Arial", Font::e_helvetica},               {"Arial,BoldItalic", Font::e_helvetica_bold_oblique},
        {"ArialMT", Font::e_helvetica},             {"Helvetica-Oblique", Font::e_helvetica_oblique},
        {"Courier-BoldOblique", Font::e_courier_bold_oblique}, {"CourierNewPSMT", Font::e_courier},
        {"Symbol,Bold", Font::e_symbol},            {"ZapfDingbats", Font::e_zapf_dingbats},
        {"ABCDEF+Arial", Font::e_null},             {"Frutiger", Font::e_null},
        {"", Font::e_null},                         {nullptr, Font::e_null},
    };
    for (const Row& r : rows)
        EXPECT_EQ(PDF::FontImpl::GetStandardFontType(r.name), r.index) << (r.name ? r.name : "null");
}


// Object 7 is a ToUnicode stream: <41> to "B", <42> to "fi", and nothing else.
const std::string kToUnicode = StreamObj(
    "/CIDInit /ProcSet findresource begin 12 dict begin begincmap 1 begincodespacerange <00> <FF> "
    "endcodespacerange 2 beginbfchar <41> <0042> <42> <00660069> endbfchar endcmap end end");

struct MapCase {
    const char* name;
    std::string dict;
    UInt32 code;
    std::u16string units;
    bool real;
};

class FontMapping : public ::testing::TestWithParam<MapCase> {};

TEST_P(FontMapping, CodeToUnicode) {
    const MapCase& c = GetParam();
    PageRecipe recipe;
    recipe.extra = {"<< /Type /Font " + c.dict + " >>", kToUnicode};
    MemoryDoc doc(BuildPagePdf(recipe));
    const Font font(doc.Doc().GetObj(6));
    Unicode units[10];
    UInt32 count = 0;
    const bool real = font.MapToUnicode(c.code, units, 10, count, true);
    EXPECT_EQ(std::u16string(units, units + count), c.units);
    EXPECT_EQ(real, c.real);
}

std::string Diffs(const std::string& items) {
    return "/Subtype /Type1 /BaseFont /Courier /Encoding << /Differences [" + items + "] >>";
}

const MapCase kMappings[] = {
    {"standard_name", "/Subtype /Type1 /BaseFont /Helvetica", 'A', u"A", true},
    {"uni_form", Diffs("65 /uni0041"), 65, u"A", true},
    {"u_form_cut_to_16_bits", Diffs("65 /u1F600"), 65, u"\uF600", true},
    {"suffix_cut", Diffs("65 /A.swash"), 65, u"A", true},
    {"small_capital_folds", Diffs("65 /Asmall"), 65, u"a", true},
    {"ligature_name", Diffs("65 /f_i"), 65, u"\uFB01", true},
    {"compound_split", Diffs("65 /a_b"), 65, u"ab", true},
    {"compound_with_unknown_piece", Diffs("65 /f_i.alt"), 65, u"\uE041", false},
    {"notdef_placeholder", Diffs("65 /.notdef"), 65, u"\uE041", false},
    {"numeric_name_type1", Diffs("65 /g23"), 65, u"5", true},  // radix 10, offset 30: 53
    {"numeric_name_capital", Diffs("65 /G23"), 65, u"#", true},  // radix 16: 0x23
    {"numeric_name_truetype_is_the_code",
     "/Subtype /TrueType /BaseFont /Courier /Encoding << /Differences [66 /g23] >>", 66, u"B", true},
    {"tounicode_first", Diffs("65 /Z") + " /ToUnicode 7 0 R", 65, u"B", true},
    {"tounicode_several_units", Diffs("66 /Z") + " /ToUnicode 7 0 R", 66, u"fi", true},
    {"tounicode_miss_with_name", Diffs("67 /Z") + " /ToUnicode 7 0 R", 67, u"Z", true},
    {"tounicode_miss_without_name", Diffs("67 /.notdef") + " /ToUnicode 7 0 R", 67, u"C", true},
    {"numeric_rule_off_with_tounicode", Diffs("68 /g23") + " /ToUnicode 7 0 R", 68, u"D", true},
    {"code_above_255", "/Subtype /Type1 /BaseFont /Helvetica", 300, u"\uFFFD", false},
    {"type3_without_names_reads_codes",
     "/Subtype /Type3 /FontMatrix [0.001 0 0 0.001 0 0] /CharProcs << >> /FirstChar 0 /LastChar 0 /Widths [0]",
     65, u"A", false},
    {"type3_control_code_placeholder",
     "/Subtype /Type3 /FontMatrix [0.001 0 0 0.001 0 0] /CharProcs << >> /FirstChar 0 /LastChar 0 /Widths [0]",
     10, u"\uE00A", false},
    {"zapf_dingbats_list", "/Subtype /Type1 /BaseFont /ZapfDingbats", 0x21, u"\u2701", true},
    {"symbol_encoding", "/Subtype /Type1 /BaseFont /Symbol", 'a', u"\u03B1", true},
};

INSTANTIATE_TEST_SUITE_P(Font, FontMapping, ::testing::ValuesIn(kMappings),
                         [](const auto& p) { return std::string(p.param.name); });

TEST(FontMapping, GarbageProgramLeavesAFontThatIsNotEmbedded) {
    PageRecipe recipe;
    recipe.extra = {"<< /Type /Font /Subtype /TrueType /BaseFont /X /FirstChar 65 /LastChar 65 /Widths [600] "
                  "/FontDescriptor << /Flags 32 /FontFile2 7 0 R >> >>",
                  StreamObj("this is no font program at all", "/Length1 30")};
    MemoryDoc doc(BuildPagePdf(recipe));
    const Font font(doc.Doc().GetObj(6));
    EXPECT_FALSE(font.IsEmbedded());
    EXPECT_EQ(font.GetWidth(65), 600);
    Unicode units[4];
    UInt32 count = 0;
    EXPECT_TRUE(font.MapToUnicode(65, units, 4, count));
    EXPECT_EQ(units[0], u'A');  // WinAnsiEncoding behind a TrueType font without a program
}


// TrueType programs of tools/gen-test-fonts.py: glyphs .notdef, A (1) and B (2) behind one
// charmap each.
struct RouteCase {
    const char* name;
    const char* file;
    std::string entries;  // Flags and Encoding
    UInt32 code;
    UInt32 glyph;
    char16_t unit;
};

class TrueTypeRoutes : public ::testing::TestWithParam<RouteCase> {};

TEST_P(TrueTypeRoutes, GlyphAndNameOfACode) {
    const RouteCase& c = GetParam();
    const std::string program = ReadFile(DataPath(std::string("fonts/") + c.file));
    PageRecipe recipe;
    recipe.extra = {"<< /Type /Font /Subtype /TrueType /BaseFont /ABCDEF+Test /FirstChar 65 /LastChar 66 "
                  "/Widths [500 500] /FontDescriptor 8 0 R " + c.entries + " >>",
                  StreamObj(program, "/Length1 " + std::to_string(program.size())),
                  "<< /Type /FontDescriptor /FontName /ABCDEF+Test " +
                      std::string(c.entries.find("/Flags 4") != std::string::npos ? "/Flags 4" : "/Flags 32") +
                      " /FontFile2 7 0 R >>"};
    MemoryDoc doc(BuildPagePdf(recipe));
    const Font font(doc.Doc().GetObj(6));
    UInt32 glyph = 99;
    EXPECT_TRUE(font.GetGlyphIndex(c.code, glyph));
    EXPECT_TRUE(font.IsEmbedded());
    EXPECT_EQ(glyph, c.glyph);
    Unicode units[4];
    UInt32 count = 0;
    font.MapToUnicode(c.code, units, 4, count);
    ASSERT_EQ(count, 1u);
    EXPECT_EQ(units[0], c.unit);
}

const RouteCase kRoutes[] = {
    {"symbol_charmap_in_private_use", "symbol-cmap.ttf", "/Flags 4", 'B', 2, u'B'},
    {"unicode_route_by_name", "unicode-cmap.ttf", "/Encoding /WinAnsiEncoding", 'A', 1, u'A'},
    {"no_encoding_takes_the_codes", "unicode-cmap.ttf", "", 'B', 2, u'B'},
    {"mac_route_for_macroman", "mac-cmap.ttf", "/Encoding /MacRomanEncoding", 'A', 1, u'A'},
    {"mac_route_by_the_names_code", "mac-cmap.ttf", "/Encoding << /Differences [65 /B] >>", 'A', 2, u'B'},
};

INSTANTIATE_TEST_SUITE_P(Font, TrueTypeRoutes, ::testing::ValuesIn(kRoutes),
                         [](const auto& p) { return std::string(p.param.name); });

TEST(TrueTypeRoutes, FaceQueries) {
    const std::string program = ReadFile(DataPath("fonts/symbol-cmap.ttf"));
    PageRecipe recipe;
    recipe.extra = {"<< /Type /Font /Subtype /TrueType /BaseFont /T /FirstChar 65 /LastChar 66 /Widths [1 1] "
                  "/FontDescriptor << /Flags 4 /FontFile2 7 0 R >> >>",
                  StreamObj(program, "/Length1 " + std::to_string(program.size()))};
    MemoryDoc doc(BuildPagePdf(recipe));
    const Font font(doc.Doc().GetObj(6));
    EXPECT_EQ(font.GetFamilyName(), "TestSymbol");
    EXPECT_EQ(font.GetAscent(), 800);
    EXPECT_EQ(font.GetDescent(), -200);
    int kinds = 0;
    EXPECT_EQ(font.GetImpl()->GetCMapKinds(kinds), 1);
    EXPECT_EQ(kinds, 2);
}

}  // namespace
}  // namespace lum::test
