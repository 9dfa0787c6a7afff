// Composite fonts on the text road: codes cut by the Encoding CMap, Unicode from ToUnicode by
// code or from the collection's -UCS2 CMap by CID, the placeholders, glyph indexes by CID,
// and a descendant that is the font itself.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "PDF/Content/ContentTestSupport.h"
#include "PDF/Font/Font.h"
#include "SDF/Obj.h"

using namespace lum::PDF;

namespace {

std::string Descendant(const char* ordering) {
    return std::string("<< /Type /Font /Subtype /CIDFontType2 /BaseFont /Cid /CIDSystemInfo << /Registry (Adobe) "
                       "/Ordering (") + ordering + ") /Supplement 0 >> /FontDescriptor 5 0 R /DW 1000 >>";
}

// 4 descendant Identity, 5 descriptor, 6 ToUnicode stream, 7 descendant Japan1;
// fonts from 8: the cases below.
std::string FontsPdf() {
    return lum::test::BuildPdf({
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] >>",
        Descendant("Identity"),
        "<< /Type /FontDescriptor /FontName /Cid /Flags 4 >>",
        lum::test::StreamObj("2 beginbfchar <0041> <0061> <0042> <F761> endbfchar"),
        Descendant("Japan1"),
        "<< /Type /Font /Subtype /Type0 /BaseFont /A /Encoding /Identity-H /DescendantFonts [4 0 R] /ToUnicode 6 0 R >>",
        "<< /Type /Font /Subtype /Type0 /BaseFont /B /Encoding /UniJIS-UCS2-H /DescendantFonts [7 0 R] >>",
        "<< /Type /Font /Subtype /Type0 /BaseFont /C /Encoding /No-Such-CMap /DescendantFonts [4 0 R] >>",
        "<< /Type /Font /Subtype /Type0 /BaseFont /D /Encoding /Identity-H /DescendantFonts [4 0 R] /ToUnicode /Identity-H >>",
        "<< /Type /Font /Subtype /Type0 /BaseFont /E /Encoding /Identity-H /DescendantFonts [4 0 R] >>",
        "<< /Type /Font /Subtype /Type0 /BaseFont /F /Encoding /Identity-V /DescendantFonts [13 0 R] >>",
    });
}

class Type0Mapping : public ::testing::Test {
protected:
    Font FontAt(lum::UInt32 num) { return Font(static_cast<lum::SDF::Obj*>(m_doc.Doc().GetObj(num))); }

    lum::test::MemoryDoc m_doc{FontsPdf()};
};

TEST_F(Type0Mapping, CodesAndUnicode) {
    const struct Case {
        lum::UInt32 font;
        std::vector<lum::UInt8> bytes;
        int eaten;
        lum::UInt32 cid;
        bool real;
        std::vector<lum::Unicode> units;
    } cases[] = {
        {8, {0x00, 0x41}, 2, 0x41, true, {0x61}},          // ToUnicode by code
        {8, {0x00, 0x42}, 2, 0x42, true, {0x61}},          // its hit folded to one unit
        {8, {0x00, 0x43}, 2, 0x43, false, {0xE043}},       // no hit: placeholder
        {8, {0x19, 0x00}, 2, 6400, false, {0xFFFD}},       // placeholders stop at 6399
        {9, {0x30, 0x42}, 2, 843, true, {0x3042}},         // -UCS2 by CID
        {10, {0x41, 0x42}, 1, 0, false, {0xE000}},         // no CMap: a byte eaten, code and CID 0
        {11, {0x4E, 0x00}, 2, 0x4E00, true, {0x4E00}},     // ToUnicode /Identity-H
        {12, {0x00, 0x41}, 2, 0x41, false, {0xE041}},      // Identity without ToUnicode
        {8, {0x00}, 1, 0, false, {0xE000}},                // a last odd byte is a code
    };
    for (const Case& c : cases) {
        const Font font = FontAt(c.font);
        lum::UInt32 code = 0, cid = 0;
        EXPECT_EQ(font.MapToCID(c.bytes.data(), lum::UInt32(c.bytes.size()), code, cid), c.eaten) << c.font;
        EXPECT_EQ(cid, c.cid) << c.font;
        lum::Unicode units[4] = {0xFFFE};
        lum::UInt32 count = 0;
        EXPECT_EQ(font.MapToUnicode(code, units, 4, count), c.real) << c.font << " " << code;
        EXPECT_EQ(std::vector<lum::Unicode>(units, units + count), c.units) << c.font << " " << code;
    }
    EXPECT_TRUE(FontAt(8).IsHorizontalMode());
}

TEST_F(Type0Mapping, ADescendantThatIsTheFontItselfFails) {
    EXPECT_THROW(FontAt(13), lum::Common::Exception);
}

}  // namespace
