// Colour spaces to RGB: a row per family and per edge that can go wrong, read from objects of a
// small document, the way the content reader meets them.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Filters/ExtBufInputFilter.h"
#include "PDF/Color/ColorSpaceCache.h"
#include "PDF/Color/DeviceColor.h"
#include "PDF/Color/Function.h"
#include "PDF/ColorSpace.h"
#include "PDF/Ferrox.h"
#include "PDF/Font/Font.h"
#include "PDF/PdfBuilder.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"
#include "support/TestSupport.h"

namespace Color = lum::PDF::Color;
using lum::PDF::ColorPt;
using lum::PDF::ColorSpace;
using lum::test::CatchFailure;

namespace {

// A document whose object 1 is `space` and objects 2... are `more`.
class Doc {
public:
    explicit Doc(const std::string& space, const std::vector<std::string>& more = {}) {
        std::vector<std::string> objs = {space};
        objs.insert(objs.end(), more.begin(), more.end());
        objs.push_back("<< /Type /Catalog >>");
        m_bytes = lum::test::BuildPdf(objs, "/Root " + std::to_string(objs.size()) + " 0 R");
        m_doc = std::make_unique<lum::SDF::SDFDoc>(std::make_unique<lum::Filters::ExtBufInputFilter>(
            reinterpret_cast<const lum::UInt8*>(m_bytes.data()), m_bytes.size()));
    }
    lum::SDF::Obj* Obj(lum::UInt32 n) { return m_doc->GetObj(n)->GetDirect(); }

private:
    std::string m_bytes;
    std::unique_ptr<lum::SDF::SDFDoc> m_doc;
};

std::string Stream(const std::string& dict, const std::string& data) {
    return "<< " + dict + " /Length " + std::to_string(data.size()) + " >>\nstream\n" + data +
           "\nendstream";
}

ColorPt Point(const std::vector<double>& v) {
    ColorPt c;
    c.SetColorantNum(int(v.size()));
    for (size_t i = 0; i < v.size(); ++i) c.Set(int(i), v[i]);
    return c;
}

// The colour as bytes, the way the capture stores it.
std::vector<int> Bytes(const ColorPt& rgb) {
    return {Color::ColorByte(rgb.Get(0)), Color::ColorByte(rgb.Get(1)), Color::ColorByte(rgb.Get(2))};
}

std::string Names(int n) {
    std::string s;
    for (int i = 0; i < n; ++i) s += "/C" + std::to_string(i) + " ";
    return "[" + s + "]";
}

// A type 4 function of one input and one output.
std::string Calculator(const std::string& program) {
    return Stream("/FunctionType 4 /Domain [0 1] /Range [0 1]", program);
}

const std::string kSep = "[/Separation /S /DeviceGray 2 0 R]";
const std::string kD65 = "/WhitePoint [0.9505 1 1.089]";
const std::string kGrayTint = "<< /FunctionType 2 /Domain [0 1] /C0 [1] /C1 [0] /N 1 >>";

}  // namespace

TEST(ColorSpaces, ToRGB) {
    const struct {
        const char* name;
        std::string space;
        std::vector<std::string> more;
        std::vector<double> color;
        std::vector<int> rgb;
    } cases[] = {
        {"device gray", "/DeviceGray", {}, {0.5}, {127, 127, 127}},
        {"device gray as it stands: 2 wraps", "/DeviceGray", {}, {2}, {254, 254, 254}},
        {"device RGB as it stands", "/RGB", {}, {1, 0.5, 0}, {255, 127, 0}},
        {"pure K is the K corner, not black", "/DeviceCMYK", {}, {0, 0, 0, 1}, {35, 31, 32}},
        {"CMYK components beyond 1: the sum clamps", "[/DeviceCMYK]", {}, {2, 0, 0, 0}, {0, 90, 223}},
        {"CalGray black", "[/CalGray << " + kD65 + " /BlackPoint [0 0 0] >>]", {}, {0}, {0, 0, 0}},
        {"CalGray mid gray takes gamma 2 out", "[/CalGray << /WhitePoint [1 1 1] >>]", {}, {0.25},
         {127, 127, 127}},
        {"CalRGB at the white point reads as white", "[/CalRGB << " + kD65 +
             " /Matrix [0.4124 0.2126 0.0193 0.3576 0.7152 0.1192 0.1805 0.0722 0.9505] >>]",
         {}, {1, 1, 1}, {255, 255, 255}},
        {"CalRGB components clamped before the gamma", "[/CalRGB << /WhitePoint [1 1 1] >>]", {},
         {-1, -1, -1}, {0, 0, 0}},
        {"Lab L clamped to 100", "[/Lab << " + kD65 + " >>]", {}, {250, 60, 0}, {255, 201, 255}},
        {"Lab a clamped to its range", "[/Lab << " + kD65 + " /Range [-10 10 -10 10] >>]", {},
         {50, 128, 0}, {126, 103, 109}},
        {"Lab below 6/29 takes the linear piece", "[/Lab << " + kD65 + " >>]", {}, {0, 0, 0},
         {0, 0, 0}},
        {"ICC of 4 without Alternate is CMYK; 0 0 0 0 is white", "[/ICCBased 2 0 R]",
         {Stream("/N 4", "xx")}, {0, 0, 0, 0}, {255, 255, 255}},
        {"ICC with an Alternate", "[/ICCBased 2 0 R]", {Stream("/N 3 /Alternate /DeviceGray", "x")},
         {0.25, 0.9, 0.9}, {63, 63, 63}},
        {"ICC whose Alternate leads back to itself goes by N", "[/ICCBased 2 0 R]",
         {Stream("/N 1 /Alternate 1 0 R", "")}, {0.5}, {127, 127, 127}},
        {"a bare ICC profile stream", Stream("/N 3", "x"), {}, {0, 1, 0}, {0, 255, 0}},
        {"Indexed: 2.5 takes index 3", "[/Indexed /DeviceRGB 3 <000000 ff0000 00ff00 0000ff>]", {},
         {2.5}, {0, 0, 255}},
        {"Indexed: 2.4 takes index 2", "[/I /RGB 3 <000000 ff0000 00ff00 0000ff>]", {}, {2.4},
         {0, 255, 0}},
        {"Indexed above hival gives zero", "[/Indexed /DeviceRGB 1 <ffffff ffffff>]", {}, {2},
         {0, 0, 0}},
        {"Indexed below 0 gives zero", "[/Indexed /DeviceGray 1 <ffff>]", {}, {-3}, {0, 0, 0}},
        {"Indexed over a stream, bytes scaled to Lab's ranges", "[/Indexed [/Lab << " + kD65 + " >>] 0 2 0 R]",
         {Stream("", "\xff\x80\x80")}, {0}, {255, 254, 254}},
        {"Indexed over a Separation", "[/Indexed [/Separation /Spot /DeviceGray " + kGrayTint + "] 1 <00ff>]",
         {}, {1}, {0, 0, 0}},
        {"Pattern with an underlying space", "[/Pattern /DeviceRGB]", {}, {0, 0, 1}, {0, 0, 255}},
        {"Separation All: 1 - tint", "[/Separation /All /DeviceCMYK 2 0 R]",
         {"<< /FunctionType 2 /Domain [0 1] /N 1 >>"}, {1}, {0, 0, 0}},
        {"Separation All needs no working transform", "[/Separation /All /DeviceGray 2 0 R]",
         {"<< /FunctionType 9 >>"}, {0.25}, {191, 191, 191}},
        {"Separation through an exponential tint",
         "[/Separation /Spot /DeviceRGB << /FunctionType 2 /Domain [0 1] /C0 [1 1 1] /C1 [1 0 0] /N 1 >>]",
         {}, {1}, {255, 0, 0}},
        {"Separation: the tint clipped to the Domain", "[/Separation /Spot /DeviceGray " + kGrayTint + "]",
         {}, {3}, {0, 0, 0}},
        {"Separation None goes through its transform", "[/Separation /None /DeviceGray " + kGrayTint + "]",
         {}, {0}, {255, 255, 255}},
        {"Separation into CMYK through the corner table",
         "[/Separation /Spot /DeviceCMYK << /FunctionType 2 /Domain [0 1] /C0 [0 0 0 0] /C1 [0 0 0 1] >>]",
         {}, {1}, {35, 31, 32}},
        {"DeviceN through a calculator", "[/DeviceN [/A /B] /DeviceGray 2 0 R]",
         {Stream("/FunctionType 4 /Domain [0 1 0 1] /Range [0 1]", "{ add 2 div 1 exch sub }")},
         {0.5, 0.5}, {127, 127, 127}},
        {"DeviceN of 32 colourants", "[/DeviceN " + Names(32) + " /DeviceGray " + kGrayTint + "]", {},
         {1}, {0, 0, 0}},
        {"a sampled table interpolated along two inputs", "[/DeviceN [/A /B] /DeviceGray 2 0 R]",
         {Stream("/FunctionType 0 /Domain [0 1 0 1] /Range [0 1] /Size [2 2] /BitsPerSample 8",
                 std::string("\x00\x00\x00\xff", 4))},
         {0.5, 0.5}, {63, 63, 63}},
        {"a sampled table of 16-bit samples with Decode", "[/DeviceN [/A] /DeviceGray 2 0 R]",
         {Stream("/FunctionType 0 /Domain [0 1] /Range [0 1] /Decode [1 0] /Size [2] /BitsPerSample 16",
                 std::string("\x00\x00\xff\xff", 4))},
         {0}, {255, 255, 255}},
        {"a short sample stream reads as zeros", "[/DeviceN [/A] /DeviceGray 2 0 R]",
         {Stream("/FunctionType 0 /Domain [0 1] /Range [0 1] /Size [4] /BitsPerSample 8", "\xff")},
         {1}, {0, 0, 0}},
        {"Separation through stitched exponentials",
         "[/Separation /S /DeviceGray << /FunctionType 3 /Domain [0 1] /Bounds [0.5] /Encode [0 1 0 1]"
         " /Functions [<< /FunctionType 2 /Domain [0 1] /C0 [0] /C1 [0.5] /N 1 >>"
         " << /FunctionType 2 /Domain [0 1] /C0 [0.5] /C1 [1] /N 1 >>] >>]",
         {}, {0.75}, {191, 191, 191}},
        {"a stitching tree naming one part many times",
         "[/Separation /S /DeviceGray << /FunctionType 3 /Domain [0 1] /Bounds [0.2 0.4 0.6 0.8]"
         " /Functions [2 0 R 2 0 R 2 0 R 2 0 R 2 0 R] >>]",
         {"<< /FunctionType 2 /Domain [0 1] /C0 [0] /C1 [1] >>"}, {0.5}, {127, 127, 127}},
    };
    for (const auto& c : cases) {
        Doc doc(c.space, c.more);
        ColorSpace cs = ColorSpace::Empty();
        ASSERT_NO_THROW(cs = ColorSpace(doc.Obj(1))) << c.name;
        ASSERT_TRUE(cs) << c.name;
        ColorPt rgb;
        cs.Convert2RGB(Point(c.color), rgb);
        EXPECT_EQ(Bytes(rgb), c.rgb) << c.name;
    }
}

TEST(ColorSpaces, InitialColours) {
    const struct {
        std::string space;
        std::vector<std::string> more;
        ColorSpace::Type type;
        ColorPt initial;
    } cases[] = {
        {"/DeviceGray", {}, ColorSpace::e_device_gray, ColorPt(0, 0, 0, 0, 1)},
        {"/DeviceRGB", {}, ColorSpace::e_device_rgb, ColorPt(0, 0, 0, 0, 3)},
        {"/DeviceCMYK", {}, ColorSpace::e_device_cmyk, ColorPt(0, 0, 0, 1, 4)},
        // Not 0 0 0 1: an ICC space of four components starts white.
        {"[/ICCBased 2 0 R]", {Stream("/N 4", "")}, ColorSpace::e_icc, ColorPt(0, 0, 0, 0, 4)},
        {"[/Lab << /WhitePoint [1 1 1] >>]", {}, ColorSpace::e_lab, ColorPt(0, 0, 0, 0, 3)},
        {"[/Indexed /DeviceRGB 0 <ffffff>]", {}, ColorSpace::e_indexed, ColorPt(0, 0, 0, 0, 1)},
        {"[/Separation /S /DeviceGray " + kGrayTint + "]", {}, ColorSpace::e_separation,
         ColorPt(0, 0, 0, 0, 1)},
        {"[/DeviceN [/A /B] /DeviceGray " + kGrayTint + "]", {}, ColorSpace::e_device_n,
         ColorPt(0, 0, 0, 0, 2)},
        {"[/Pattern /DeviceCMYK]", {}, ColorSpace::e_pattern, ColorPt(0, 0, 0, 0, 4)},
    };
    for (const auto& c : cases) {
        Doc doc(c.space, c.more);
        const ColorSpace cs(doc.Obj(1));
        EXPECT_EQ(cs.GetType(), c.type) << c.space;
        ColorPt initial(9, 9, 9, 9, 4);
        cs.InitColor(initial);
        EXPECT_EQ(initial, c.initial) << c.space;
    }
}

// Broken spaces raise from the constructor, with the conditions the reader's callers match, and
// with bounded work whatever the numbers ask for.
TEST(ColorSpaces, BrokenSpacesRaiseAndBoundedWork) {
    const struct {
        const char* name;
        std::string space;
        std::vector<std::string> more;
        const char* condition;  // null: any
    } cases[] = {
        {"Indexed lookup shorter than hival", "[/Indexed /DeviceRGB 3 <000000>]", {},
         "(int)lookup->Size()>=lookup_sz"},
        {"Indexed lookup stream shorter than hival", "[/Indexed /DeviceRGB 3 2 0 R]",
         {Stream("", "abc")}, "(int)lookup->Size()>=lookup_sz"},
        {"Indexed hival of 256", "[/Indexed /DeviceGray 256 2 0 R]", {Stream("", std::string(257, 'a'))},
         "m_highval<256"},
        {"Indexed over a Pattern", "[/Indexed /Pattern 0 <00>]", {}, nullptr},
        {"Indexed without a lookup", "[/Indexed /DeviceGray 0 7]", {}, nullptr},
        {"DeviceN of 33 names", "[/DeviceN " + Names(33) + " /DeviceGray " + kGrayTint + "]", {},
         "m_component_num <= 32"},
        {"DeviceN without names", "[/DeviceN [] /DeviceGray " + kGrayTint + "]", {}, nullptr},
        {"ICC without N", "[/ICCBased 2 0 R]", {Stream("", "x")}, nullptr},
        {"ICC of 2 components without Alternate", "[/ICCBased 2 0 R]", {Stream("/N 2", "x")}, "false"},
        {"ICC of 40 components", "[/ICCBased 2 0 R]", {Stream("/N 40 /Alternate /DeviceRGB", "x")}, nullptr},
        {"CalRGB without WhitePoint", "[/CalRGB << /Gamma [1 1 1] >>]", {}, nullptr},
        {"Lab without a dictionary", "/Lab", {}, nullptr},
        {"Separation with a Pattern alternate", "[/Separation /S /Pattern " + kGrayTint + "]", {}, nullptr},
        {"Separation without a transform", "[/Separation /S /DeviceGray]", {}, nullptr},
        {"a tint function that contains itself", kSep,
         {"<< /FunctionType 3 /Domain [0 1] /Functions [2 0 R] /Encode [0 1] >>"}, nullptr},
        {"a sampled function of 2^31 points", kSep,
         {Stream("/FunctionType 0 /Domain [0 1] /Range [0 1] /Size [2147483648] /BitsPerSample 8", "")}, nullptr},
        {"a sampled function of 2^16 x 2^16 points", "[/DeviceN [/A /B] /DeviceGray 2 0 R]",
         {Stream("/FunctionType 0 /Domain [0 1 0 1] /Range [0 1] /Size [65536 65536] /BitsPerSample 8", "")},
         nullptr},
        {"a sampled function of 7 bits", kSep,
         {Stream("/FunctionType 0 /Domain [0 1] /Range [0 1] /Size [2] /BitsPerSample 7", "")}, nullptr},
        {"an exponential of 33 outputs", "[/Separation /S /DeviceGray << /FunctionType 2 /Domain [0 1] /C1 " +
             Names(33) + " >>]", {}, nullptr},
        {"a calculator that doesn't parse", kSep, {Calculator("{ 1 frobnicate }")}, nullptr},
        {"a calculator with a loop", kSep, {Calculator("{ 3 { pop } repeat }")}, nullptr},
        {"a calculator program of blanks", kSep, {Calculator("{" + std::string(2 << 20, ' ') + "}")}, nullptr},
        {"spaces nested through each other", "[/Indexed 1 0 R 0 <00>]", {}, nullptr},
    };
    for (const auto& c : cases) {
        Doc doc(c.space, c.more);
        const auto start = std::chrono::steady_clock::now();
        const auto f = CatchFailure([&] { ColorSpace cs(doc.Obj(1)); });
        EXPECT_TRUE(f.thrown) << c.name;
        if (c.condition) {
            EXPECT_EQ(f.condition, c.condition) << c.name;
        }
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1)) << c.name;
    }
}

TEST(ColorSpaces, ClassificationAndEmptyHandles) {
    const struct {
        std::string obj;
        ColorSpace::Type type;
    } cases[] = {
        {"/G", ColorSpace::e_device_gray},
        {"[/CMYK]", ColorSpace::e_device_cmyk},
        {"/CalRGB", ColorSpace::e_cal_rgb},
        {"[/Separation /S /DeviceGray 5]", ColorSpace::e_separation},
        {Stream("/N 3", ""), ColorSpace::e_icc},
        {Stream("/Length1 3", ""), ColorSpace::e_null},
        {"/Unheard", ColorSpace::e_null},
        {"[]", ColorSpace::e_null},
        {"[1 /DeviceRGB]", ColorSpace::e_null},
        {"42", ColorSpace::e_null},
    };
    for (const auto& c : cases) {
        Doc doc(c.obj);
        EXPECT_EQ(ColorSpace::GetType(doc.Obj(1)), c.type) << c.obj;
        if (c.type != ColorSpace::e_null) continue;
        const ColorSpace cs(doc.Obj(1));
        EXPECT_FALSE(cs) << c.obj;
        EXPECT_EQ(CatchFailure([&] { cs.GetComponentNum(); }).condition, "mp_impl") << c.obj;
    }
}

TEST(ColorSpaces, FamiliesAnswerTheirOwnQuestionsOnly) {
    Doc doc("[/Indexed /DeviceRGB 1 <102030 405060>]",
            {"[/DeviceN [/None /None] /DeviceGray " + kGrayTint + "]", "[/ICCBased 4 0 R]",
             Stream("/N 1", "")});
    const ColorSpace indexed(doc.Obj(1)), device_n(doc.Obj(2)), icc(doc.Obj(3));
    EXPECT_EQ(indexed.GetHighVal(), 1);
    EXPECT_EQ(indexed.GetBaseCompNum(), 3);
    EXPECT_EQ(indexed.GetLookupTable()[3], 0x40);
    ColorPt base;
    indexed.GetBaseColor(1, base);
    EXPECT_NEAR(base.Get(2), 0x60 / 255.0, 1e-12);
    EXPECT_EQ(indexed.GetBaseColorSpace().GetType(), ColorSpace::e_device_rgb);
    EXPECT_TRUE(device_n.IsNone());
    EXPECT_FALSE(device_n.IsAll());
    EXPECT_EQ(device_n.GetColorantNames().size(), 2u);
    EXPECT_EQ(icc.GetICCProfile(), doc.Obj(4));
    EXPECT_EQ(icc.GetAlternateColorSpace().GetType(), ColorSpace::e_device_gray);
    EXPECT_EQ(CatchFailure([&] { indexed.IsAll(); }).message,
              "IsAll() can't be applied to this type of color space.");
    EXPECT_THROW(icc.GetHighVal(), lum::Common::Exception);
    EXPECT_THROW(ColorSpace::CreateDeviceRGB().GetAlternateColorSpace(), lum::Common::Exception);
}

// Spaces are shared per object, read-only; a base replaced makes a new object.
TEST(ColorSpaces, SharedPerObjectAndReplacedBaseIsACopy) {
    lum::PDF::Ferrox::Initialize();
    Doc doc("[/Indexed /DeviceRGB 0 <ff0000>]",
            {Stream("/Type /Font /Subtype /Type1 /BaseFont /Helvetica /N 3", "")});
    const ColorSpace a(doc.Obj(1)), b(doc.Obj(1));
    EXPECT_TRUE(a == b);
    Doc other("[/CalRGB << /WhitePoint [1 1 1] >>]");
    const ColorSpace cal(other.Obj(1));
    const ColorSpace replaced = a.WithBaseColorSpace(cal);
    EXPECT_FALSE(replaced == a);
    EXPECT_EQ(a.GetBaseColorSpace().GetType(), ColorSpace::e_device_rgb);
    EXPECT_EQ(replaced.GetBaseColorSpace().GetType(), ColorSpace::e_cal_rgb);
    EXPECT_THROW(a.WithBaseColorSpace(ColorSpace::CreateDeviceGray()), lum::Common::Exception);
    // One object opened as a font and then as a colour space: each use gets its own kind.
    const lum::PDF::Font font(doc.Obj(2));
    const ColorSpace icc(doc.Obj(2));
    EXPECT_EQ(icc.GetType(), ColorSpace::e_icc);
    EXPECT_EQ(font.GetType(), lum::PDF::Font::e_Type1);
}

TEST(ColorSpaces, ByteSamples) {
    const struct {
        std::string space;
        std::vector<lum::UInt8> in;
        std::vector<lum::UInt8> rgb;
    } cases[] = {
        {"/DeviceCMYK", {0, 0, 0, 255, 0, 0, 0, 0}, {35, 31, 32, 255, 255, 255}},
        {"[/Indexed /DeviceRGB 1 <ff0000 00ff00>]", {1, 0, 7}, {0, 255, 0, 255, 0, 0, 0, 0, 0}},
        {"/DeviceGray", {128}, {128, 128, 128}},
    };
    for (const auto& c : cases) {
        Doc doc(c.space);
        const ColorSpace cs(doc.Obj(1));
        std::vector<lum::UInt8> out(c.rgb.size());
        cs.Convert2RGB(c.in.data(), out.data(), c.in.size() / size_t(cs.GetComponentNum()));
        EXPECT_EQ(out, c.rgb) << c.space;
    }
}

TEST(ColorSpaces, CacheKeepsPatternsApart) {
    Color::ColorSpaceCache cache;
    double rgb[3] = {-1, -1, -1};
    EXPECT_FALSE(cache.ToRGB(ColorSpace::CreatePattern(), ColorPt(), rgb));
    EXPECT_FALSE(cache.ToRGB(ColorSpace::Empty(), ColorPt(), rgb));
    EXPECT_TRUE(cache.ToRGB(ColorSpace::CreateDeviceGray(), ColorPt(0.5, 0, 0, 0, 1), rgb));
    EXPECT_EQ(rgb[0], 0.5);
    EXPECT_TRUE(cache.ToRGB(ColorSpace::CreateDeviceRGB(), ColorPt(0.5, 0, 0, 0, 3), rgb));
    EXPECT_EQ(rgb[1], 0.0);
}

TEST(ColorSpaces, CalculatorOperators) {
    const struct {
        const char* program;
        double in;
        double out;
    } cases[] = {
        {"{ 2 mul }", 0.25, 0.5},
        {"{ dup mul }", 0.5, 0.25},
        {"{ 0.5 gt { 1 } { 0 } ifelse }", 0.75, 1},
        {"{ 0.5 gt { 1 } { 0 } ifelse }", 0.25, 0},
        {"{ dup 0.5 lt { pop 0.125 } if }", 0.25, 0.125},
        {"{ 3 1 roll 1 2 3 pop pop pop }", 0.5, 0.5},
        {"{ 0.1 0.2 3 -1 roll pop pop }", 0.5, 0.1},
        {"{ 1 exch sub }", 0.25, 0.75},
        {"{ 10 mul cvi 3 mod 10 div }", 0.75, 0.1},
        {"{ 0 div }", 0.5, 0},
        {"{ pop pop pop }", 0.5, 0},
        {"{ dup 2 copy add add 4 div }", 0.5, 0.375},
        {"{ 1e300 1e300 mul 4 bitshift 1 and }", 0.5, 0},
        {"{ 90 sin mul % a comment { }\n }", 0.5, 0.5},
    };
    for (const auto& c : cases) {
        Doc doc(Calculator(c.program));
        const Color::FunctionRef f = Color::Function::Open(doc.Obj(1));
        double out[Color::Function::kMaxValues];
        f->Eval(&c.in, 1, out);
        EXPECT_NEAR(out[0], c.out, 1e-12) << c.program << " " << c.in;
    }
}
