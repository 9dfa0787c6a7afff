// The resource file as the ordinary document reader sees it: header, trailer, every CMap
// stream, and the fourteen standard fonts with their widths, descriptors and programs.
#include <gtest/gtest.h>

#include <ft2build.h>
#include FT_FREETYPE_H

#include <cstring>
#include <map>
#include <set>
#include <string>

#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "PDF/Font/StandardFonts.h"
#include "PDF/ResourceData.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

namespace {

using lum::SDF::Obj;

std::string Decoded(Obj* stream) {
    auto chain = stream->GetDecodedStream();
    lum::Filters::FilterReader reader(chain.get());
    std::string out;
    lum::UInt8 buf[65536];
    for (size_t n; (n = reader.Read(buf, sizeof buf)) > 0;) out.append(reinterpret_cast<char*>(buf), n);
    return out;
}

std::set<std::string> Keys(Obj* dict) {
    std::set<std::string> keys;
    for (auto it = dict->DictBegin(); it != dict->DictEnd(); ++it) keys.insert(it->first->GetName());
    return keys;
}

class ResourceFile : public ::testing::Test {
protected:
    void SetUp() override {
        auto input = std::make_unique<lum::Filters::ExtBufInputFilter>(
            lum::PDF::ResourceData::Begin(), lum::PDF::ResourceData::Size());
        doc = std::make_unique<lum::SDF::SDFDoc>(std::move(input), false);
        trailer = doc->GetTrailer();
    }
    std::unique_ptr<lum::SDF::SDFDoc> doc;
    Obj* trailer = nullptr;
};

TEST_F(ResourceFile, HeaderTableAndTrailer) {
    const std::string head(reinterpret_cast<const char*>(lum::PDF::ResourceData::Begin()), 16);
    EXPECT_EQ(head, std::string("%RES-1.0\r%\xE2\xE3\xCF\xD3\r\n", 16));
    EXPECT_FALSE(doc->IsRebuilt());
    EXPECT_EQ(doc->XRefSize(), 300u);
    EXPECT_EQ(trailer->Get("Size")->second->GetNumber(), 300);
    EXPECT_EQ(Keys(trailer), (std::set<std::string>{"C", "F", "ID", "Info", "Size"}));
    Obj* id = trailer->Get("ID")->second;
    ASSERT_EQ(id->Size(), 2u);
    EXPECT_TRUE(id->GetAt(0)->IsEqualValue(id->GetAt(1)));
    EXPECT_EQ(Keys(trailer->Get("Info")->second), (std::set<std::string>{"Creator", "Producer", "Title"}));
    EXPECT_EQ(trailer->Get("C")->second->Size(), 121u);
    EXPECT_EQ(Keys(trailer->Get("F")->second),
              (std::set<std::string>{"Courier", "Courier-Bold", "Courier-BoldOblique",
                                     "Courier-Oblique", "Helvetica", "Helvetica-Bold",
                                     "Helvetica-BoldOblique", "Helvetica-Oblique", "Symbol",
                                     "Times-Bold", "Times-BoldItalic", "Times-Italic",
                                     "Times-Roman", "ZapfDingbats"}));
}

// Every CMap unpacks whole, is a CMap resource, and every CMap it builds on is there too.
TEST_F(ResourceFile, EveryCMapUnpacksAndItsParentsArePresent) {
    Obj* c = trailer->Get("C")->second;
    size_t total = 0, largest = 0;
    for (auto it = c->DictBegin(); it != c->DictEnd(); ++it) {
        const std::string name = it->first->GetName();
        Obj* stm = it->second;
        ASSERT_TRUE(stm->IsStream()) << name;
        EXPECT_EQ(Keys(stm), (std::set<std::string>{"Filter", "Length"})) << name;
        EXPECT_STREQ(stm->FindObj("Filter")->GetName(), "_lumLZMA") << name;
        const std::string text = Decoded(stm);
        EXPECT_EQ(text.rfind("%!PS-Adobe-3.0 Resource-CMap", 0), 0u) << name;
        EXPECT_NE(text.find("/CMapName /"), std::string::npos) << name;
        EXPECT_NE(text.find("endcmap"), std::string::npos) << name;
        // "/Parent usecmap": the name before each use.
        for (size_t at = text.find(" usecmap"); at != std::string::npos;
             at = text.find(" usecmap", at + 1)) {
            const size_t slash = text.rfind('/', at);
            ASSERT_NE(slash, std::string::npos) << name;
            const std::string parent = text.substr(slash + 1, at - slash - 1);
            EXPECT_TRUE(c->FindObj(parent.c_str())) << name << " uses " << parent;
        }
        total += text.size();
        largest = std::max(largest, text.size());
    }
    EXPECT_GT(total, size_t(5) << 20);
    EXPECT_LT(largest, size_t(1) << 20);
}

// Widths of each font dictionary are the AFM widths of its default encoding; the descriptor
// has the program's metrics; the embedded program opens and its advances agree with the AFM
// for every glyph name both have, but for a few glyphs of the extended Latin set that the
// metric-compatible fonts draw at widths of their own. Text widths never come from the
// programs, so those glyphs only look narrower or wider; their outlines are squeezed to the
// PDF's width where they are wider.
TEST_F(ResourceFile, StandardFontsAgreeWithTheirMetrics) {
    lum::PDF::Fnt::InitStandardFontWidths();
    FT_Library ft;
    ASSERT_EQ(FT_Init_FreeType(&ft), 0);
    Obj* f = trailer->Get("F")->second;
    for (int i = 0; i < lum::PDF::Fnt::kStandardFontCount; ++i) {
        const auto& rec = lum::PDF::Fnt::gl_standard_fonts[i];
        SCOPED_TRACE(rec.name);
        Obj* font = f->FindObj(rec.name);
        ASSERT_TRUE(font);
        EXPECT_EQ(Keys(font), (std::set<std::string>{"BaseFont", "FirstChar", "FontDescriptor",
                                                     "LastChar", "Subtype", "Type", "Widths"}));
        EXPECT_STREQ(font->FindObj("BaseFont")->GetName(), rec.name);
        Obj* widths = font->FindObj("Widths");
        ASSERT_EQ(widths->Size(), 256u);
        const auto* table = lum::PDF::Fnt::GetStandardFontWidths(i);
        ASSERT_TRUE(table);
        for (int code = 0; code < 256; ++code) {
            double w = 0;
            const char* name = rec.default_encoding[code];
            if (name) {
                EXPECT_TRUE(table->Find(name, w)) << name;
            }
            EXPECT_EQ(widths->GetAt(code)->GetNumber(), w) << code;
        }
        Obj* desc = font->FindObj("FontDescriptor");
        EXPECT_EQ(Keys(desc), (std::set<std::string>{"Ascent", "AvgWidth", "CapHeight", "Descent",
                                                     "Flags", "FontBBox", "FontFile", "FontName",
                                                     "ItalicAngle", "MaxWidth", "StemV", "Type"}));
        EXPECT_EQ(desc->FindObj("Ascent")->GetNumber(), rec.ascent);
        EXPECT_EQ(desc->FindObj("Descent")->GetNumber(), rec.descent);
        for (int k = 0; k < 4; ++k)
            EXPECT_EQ(desc->FindObj("FontBBox")->GetAt(k)->GetNumber(), rec.bbox[k]);

        Obj* prog = desc->FindObj("FontFile");
        EXPECT_EQ(Keys(prog), (std::set<std::string>{"Filter", "Length", "Length1", "Length2", "Length3"}));
        const std::string bytes = Decoded(prog);
        EXPECT_EQ(static_cast<unsigned char>(bytes[0]), 0x80);  // segmented form
        FT_Face face;
        ASSERT_EQ(FT_New_Memory_Face(ft, reinterpret_cast<const FT_Byte*>(bytes.data()),
                                     static_cast<FT_Long>(bytes.size()), 0, &face), 0);
        static const std::set<std::string> kOwnWidths = {
            "summation", "notequal", "lessequal", "greaterequal", "fraction", "Delta", "radical",
            "partialdiff", "lozenge", "tcaron", "lcaron", "dcaron", "Lcaron"};
        int compared = 0, differ = 0;
        for (int k = 0; k < table->count; ++k) {
            const auto& e = table->entries[k];
            const FT_UInt gid = FT_Get_Name_Index(face, e.name);
            if (gid == 0 || FT_Load_Glyph(face, gid, FT_LOAD_NO_SCALE)) continue;
            const double adv = face->glyph->metrics.horiAdvance * 1000.0 / face->units_per_EM;
            ++compared;
            if (std::abs(adv - e.width) > 1 && !kOwnWidths.count(e.name)) {
                ++differ;
                ADD_FAILURE() << e.name << ": program " << adv << ", AFM " << e.width;
            }
        }
        EXPECT_GT(compared, table->count * 9 / 10);
        EXPECT_EQ(differ, 0);
        FT_Done_Face(face);
    }
    FT_Done_FreeType(ft);
}

}  // namespace
