// Colour spaces to RGB: a row per family and per edge that can go wrong, read from objects of a
// small document, the way the text engine meets them.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Filters/ExtBufInputFilter.h"
#include "PDF/Color/ColorSpaceImpl.h"
#include "PDF/Color/DeviceColor.h"
#include "PDF/Color/Function.h"
#include "PDF/PdfBuilder.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

namespace Color = lum::PDF::Color;
using lum::PDF::ColorSpace;

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

// The colour as bytes, the way the capture stores it.
std::vector<int> Bytes(const double rgb[3]) {
    return {Color::ColorByte(rgb[0]), Color::ColorByte(rgb[1]), Color::ColorByte(rgb[2])};
}

const std::string kD65 = "/WhitePoint [0.9505 1 1.089]";

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
        {"device RGB as it stands", "/RGB", {}, {1, 0.5, 0}, {255, 127, 0}},
        {"pure K is not black", "/DeviceCMYK", {}, {0, 0, 0, 1}, {35, 31, 32}},
        {"CalGray white", "[/CalGray << " + kD65 + " /Gamma 2.2 >>]", {}, {1}, {255, 255, 255}},
        {"CalGray black", "[/CalGray << " + kD65 + " >>]", {}, {0}, {0, 0, 0}},
        {"CalRGB at the white point", "[/CalRGB << " + kD65 +
             " /Matrix [0.4124 0.2126 0.0193 0.3576 0.7152 0.1192 0.1805 0.0722 0.9505] >>]",
         {}, {1, 1, 1}, {255, 255, 255}},
        {"Lab white", "[/Lab << " + kD65 + " >>]", {}, {100, 0, 0}, {255, 255, 255}},
        {"Lab a and b clamped to the range", "[/Lab << " + kD65 + " /Range [-10 10 -10 10] >>]",
         {}, {50, 128, 0}, {}},
        {"ICC of 4 without Alternate is CMYK; 0 0 0 0 is white",
         "[/ICCBased 2 0 R]", {Stream("/N 4", "xx")}, {0, 0, 0, 0}, {255, 255, 255}},
        {"ICC with an Alternate", "[/ICCBased 2 0 R]", {Stream("/N 3 /Alternate /DeviceGray", "x")},
         {0.25, 0.9, 0.9}, {63, 63, 63}},
        {"Indexed takes the truncated value + 0.5", "[/Indexed /DeviceRGB 3 <000000 ff0000 00ff00 0000ff>]",
         {}, {2.5}, {0, 0, 255}},
        {"Indexed above hival gives zero", "[/Indexed /DeviceRGB 1 <ffffff ffffff>]", {}, {2},
         {0, 0, 0}},
        {"Indexed over a stream of Lab", "[/Indexed [/Lab << " + kD65 + " >>] 0 2 0 R]",
         {Stream("", "\xff\x80\x80")}, {0}, {255, 254, 254}},
        {"Separation All", "[/Separation /All /DeviceCMYK 2 0 R]",
         {"<< /FunctionType 2 /Domain [0 1] /N 1 >>"}, {1}, {0, 0, 0}},
        {"Separation through an exponential tint",
         "[/Separation /Spot /DeviceRGB << /FunctionType 2 /Domain [0 1] /C0 [1 1 1] /C1 [1 0 0] /N 1 >>]",
         {}, {1}, {255, 0, 0}},
        {"DeviceN through a calculator", "[/DeviceN [/A /B] /DeviceGray 2 0 R]",
         {Stream("/FunctionType 4 /Domain [0 1 0 1] /Range [0 1]", "{ add 2 div 1 exch sub }")},
         {0.5, 0.5}, {127, 127, 127}},
        {"DeviceN through a sampled table",
         "[/DeviceN [/A] /DeviceGray 2 0 R]",
         {Stream("/FunctionType 0 /Domain [0 1] /Range [0 1] /Size [2] /BitsPerSample 8",
                 std::string("\x00\xff", 2))},
         {0.5}, {127, 127, 127}},
        {"Separation through stitched exponentials",
         "[/Separation /S /DeviceGray << /FunctionType 3 /Domain [0 1] /Bounds [0.5] /Encode [0 1 0 1]"
         " /Functions [<< /FunctionType 2 /Domain [0 1] /C0 [0] /C1 [0.5] /N 1 >>"
         " << /FunctionType 2 /Domain [0 1] /C0 [0.5] /C1 [1] /N 1 >>] >>]",
         {}, {0.75}, {191, 191, 191}},
    };
    for (const auto& c : cases) {
        Doc doc(c.space, c.more);
        std::unique_ptr<Color::ColorSpaceImpl> cs;
        ASSERT_NO_THROW(cs = Color::ColorSpaceImpl::Create(doc.Obj(1))) << c.name;
        ASSERT_TRUE(cs) << c.name;
        double rgb[3] = {-1, -1, -1};
        cs->Convert2RGB(c.color.data(), int(c.color.size()), rgb);
        if (c.rgb.empty()) {
            for (double v : rgb) EXPECT_TRUE(v >= 0 && v <= 1) << c.name;
        } else {
            EXPECT_EQ(Bytes(rgb), c.rgb) << c.name;
        }
    }
}

TEST(ColorSpaces, BrokenSpacesRaiseAndBoundedWork) {
    const struct {
        const char* name;
        std::string space;
        std::vector<std::string> more;
    } cases[] = {
        {"Indexed lookup shorter than hival", "[/Indexed /DeviceRGB 3 <000000>]", {}},
        {"Indexed hival of 256", "[/Indexed /DeviceGray 256 2 0 R]", {Stream("", std::string(257, 'a'))}},
        {"DeviceN of 33 names", "[/DeviceN [" + std::string(33 * 3, ' ').replace(0, 0, "/A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A /A") + "] /DeviceGray 2 0 R]",
         {"<< /FunctionType 2 /Domain [0 1] /N 1 >>"}},
        {"ICC without N", "[/ICCBased 2 0 R]", {Stream("", "x")}},
        {"ICC of 2 components without Alternate", "[/ICCBased 2 0 R]", {Stream("/N 2", "x")}},
        {"a tint function that contains itself",
         "[/Separation /S /DeviceGray 2 0 R]",
         {"<< /FunctionType 3 /Domain [0 1] /Functions [2 0 R] /Encode [0 1] >>"}},
        {"a sampled function of 2^31 points", "[/Separation /S /DeviceGray 2 0 R]",
         {Stream("/FunctionType 0 /Domain [0 1] /Range [0 1] /Size [2147483648] /BitsPerSample 8", "")}},
        {"an alternate space that is itself", "[/ICCBased 2 0 R]", {Stream("/N 1 /Alternate 1 0 R", "")}},
        {"a calculator that doesn't parse", "[/Separation /S /DeviceGray 2 0 R]",
         {Stream("/FunctionType 4 /Domain [0 1] /Range [0 1]", "{ 1 frobnicate }")}},
    };
    for (const auto& c : cases) {
        Doc doc(c.space, c.more);
        EXPECT_THROW(Color::ColorSpaceImpl::Create(doc.Obj(1)), lum::Common::Exception) << c.name;
    }
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
        {"{ 1 exch sub }", 0.25, 0.75},
        {"{ 10 mul cvi 3 mod 10 div }", 0.75, 0.1},
        {"{ 0 div }", 0.5, 0},
        {"{ pop pop pop }", 0.5, 0},
    };
    for (const auto& c : cases) {
        Doc doc("[/Separation /S /DeviceGray 2 0 R]",
                {Stream("/FunctionType 4 /Domain [0 1] /Range [0 1]", c.program)});
        auto f = Color::Function::Create(doc.Obj(2));
        double out = -1;
        f->Eval(&c.in, 1, &out);
        EXPECT_NEAR(out, c.out, 1e-12) << c.program << " " << c.in;
    }
}
