// CMaps: the reading of embedded CMap streams (bf and cid operators, code lengths, ranges,
// usecmap, WMode), the identity maps, the predefined CMaps of the resource file, and the
// bounds against hostile streams.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "PDF/Ferrox.h"
#include "PDF/FerroxResources.h"
#include "PDF/Font/CMap.h"
#include "PDF/Font/CMapStm.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"
#include "../ObjBuilder.h"
#include "support/TestSupport.h"

using namespace lum;
using namespace lum::PDF::Fnt;

namespace {

// A stream in memory holding `text`, with WMode in its dictionary unless it is -1.
std::unique_ptr<lum::SDF::FileStream> Stream(const std::string& text, int wmode = -1) {
    auto* dict = new lum::SDF::Dict();
    if (wmode >= 0) dict->PutNumber("WMode", wmode);
    return std::make_unique<lum::SDF::FileStream>(dict, std::vector<UInt8>(text.begin(), text.end()));
}

std::unique_ptr<CMap> Parse(const std::string& text, int wmode = -1) {
    auto stm = Stream(text, wmode);
    // The CMap keeps a pointer to its stream: keep them together for the test's life.
    static std::vector<std::unique_ptr<lum::SDF::FileStream>> keep;
    keep.push_back(std::move(stm));
    return CMap::Create(keep.back().get());
}

std::vector<UInt16> Units(const CMap& cmap, UInt32 code, bool* found = nullptr) {
    UInt16 units[16];
    UInt32 n = 0;
    const bool f = cmap.MapToUnicode(code, units, 16, n);
    if (found) *found = f;
    return std::vector<UInt16>(units, units + n);
}

TEST(CMapStm, UnicodeLookups) {
    struct Query {
        UInt32 code;
        std::vector<UInt16> units;  // empty: not found
    };
    const struct Case {
        const char* what;
        std::string text;
        std::vector<Query> queries;
    } cases[] = {
        {"one range over every two-byte code",
         "1 beginbfrange <0000> <FFFF> <0000> endbfrange",
         {{0x1234, {0x1234}}, {0xFFFF, {0xFFFF}}, {0x41, {0x41}}, {0x10000, {}}}},
        {"the last unit grows along a range",
         "1 beginbfrange <41> <43> <00660041> endbfrange",
         {{0x41, {0x66, 0x41}}, {0x42, {0x66, 0x42}}, {0x43, {0x66, 0x43}}, {0x44, {}}, {0x40, {}}}},
        {"a low above the high is skipped, the block goes on",
         "3 beginbfrange <50> <40> <0041> <51> <41> <> <60> <61> <0061> endbfrange",
         {{0x45, {}}, {0x61, {0x62}}}},
        {"a bfchar block alone, no begincmap",
         "2 beginbfchar <01> <0041> <02> <00420043> endbfchar",
         {{1, {0x41}}, {2, {0x42, 0x43}}, {3, {}}}},
        {"two lengths: the shorter is asked first",
         "2 beginbfchar <41> <0041> <0041> <0042> endbfchar",
         {{0x41, {0x41}}}},
        {"a last odd byte is a unit",
         "1 beginbfchar <05> <004142> endbfchar",
         {{5, {0x41, 0x42}}}},
        {"a single on the high end of a range wins",
         "1 beginbfrange <10> <20> <0100> endbfrange 1 beginbfchar <20> <0041> endbfchar",
         {{0x20, {0x41}}, {0x1F, {0x10F}}, {0x10, {0x100}}}},
        {"an array destination gives each code its string",
         "1 beginbfrange <01> <03> [<0041> <00420043> <0044>] endbfrange",
         {{1, {0x41}}, {2, {0x42, 0x43}}, {3, {0x44}}}},
        {"the destination's last unit wraps at 16 bits",
         "1 beginbfrange <00> <02> <FFFF> endbfrange",
         {{0, {0xFFFF}}, {1, {0x0000}}, {2, {0x0001}}}},
        {"a later mapping of a code replaces an earlier one",
         "2 beginbfchar <01> <0041> <01> <0042> endbfchar",
         {{1, {0x42}}}},
        {"other words and their operands pass",
         "/CIDInit /ProcSet findresource begin 12 dict begin begincmap "
         "/CIDSystemInfo << /Registry (Adobe) /Ordering (UCS) /Supplement 0 >> def "
         "/CMapName /Adobe-Identity-UCS def /CMapType 2 def "
         "1 begincodespacerange <00> <FF> endcodespacerange "
         "1 beginnotdefrange <00> <1F> 1 endnotdefrange "
         "1 beginbfchar <20> <0020> endbfchar endcmap CMapName currentdict /CMap defineresource pop",
         {{0x20, {0x20}}, {0x21, {}}}},
        {"literal strings as codes and destinations",
         "1 beginbfchar (A) (\\000B) endbfchar",
         {{0x41, {0x42}}}},
    };
    for (const Case& c : cases) {
        auto cmap = Parse(c.text);
        ASSERT_TRUE(cmap) << c.what;
        for (const Query& q : c.queries) {
            bool found = false;
            const auto got = Units(*cmap, q.code, &found);
            if (q.units.empty()) {
                EXPECT_FALSE(found) << c.what << " code " << q.code;
                EXPECT_EQ(got, std::vector<UInt16>{0xFFFD}) << c.what;
            } else {
                EXPECT_TRUE(found) << c.what << " code " << q.code;
                EXPECT_EQ(got, q.units) << c.what << " code " << q.code;
            }
        }
    }
}

TEST(CMapStm, DamagedStreamsGiveNoCMap) {
    const char* cases[] = {
        "1 beginbfrange <01> <03> [<0041> <0042>] endbfrange",  // array size
        "1 beginbfchar <0102030405> <0041> endbfchar",           // code of five bytes
        "1 beginbfchar <> <0041> endbfchar",                     // code of no bytes
        "1 beginbfchar <01> <> endbfchar",                       // empty destination
        "1 beginbfchar <01> <0041> endbfrange",                  // wrong end
        "beginbfchar <01> <0041> endbfchar",                     // no count
        "1 begincidrange <01> <03> 5 endcidchar",
        "1 beginbfchar <01> 7 endbfchar",                        // number as destination
        "/A /B usecmap",                                         // two operands
        "1 beginbfchar <01> <0041> ) endbfchar",
    };
    for (const char* text : cases) EXPECT_FALSE(Parse(text)) << text;
    // A good block before the damage doesn't survive it.
    EXPECT_FALSE(Parse("1 beginbfchar <01> <0041> endbfchar 1 beginbfchar <> <0041> endbfchar"));
    // An end without endcmap, or nothing at all, is a CMap with no mappings.
    auto empty = Parse("");
    ASSERT_TRUE(empty);
    EXPECT_EQ(static_cast<CMapStm&>(*empty).GetEntryCount(), 0u);
}

TEST(CMapStm, CodesReadOffBytes) {
    auto cmap = Parse(
        "2 begincidrange <00> <7F> 1 <8140> <817E> 633 endcidrange "
        "2 begincidchar <A1> 500 <9000> 77 endcidchar "
        "1 begincidrange <000000> <0000FF> 9000 endcidrange");
    ASSERT_TRUE(cmap);
    const struct Case {
        std::vector<UInt8> bytes;
        int eaten;
        UInt32 code;
        UInt32 cid;
    } cases[] = {
        {{0x41}, 1, 0x41, 0x42},
        {{0x81, 0x41}, 2, 0x8141, 634},
        {{0xA1, 0x41}, 1, 0xA1, 500},
        {{0x90}, 2, 0x9000, 77},       // nothing at one byte; the missing second byte is 0
        {{0x90, 0x90}, 1, 7, 7},       // four misses: one byte eaten, out values untouched
    };
    for (const Case& c : cases) {
        UInt32 code = 7, cid = 7;
        const int eaten = cmap->MapToCID(c.bytes.data(), int(c.bytes.size()), code, cid);
        EXPECT_EQ(eaten, c.eaten);
        EXPECT_EQ(code, c.code);
        EXPECT_EQ(cid, c.cid);
    }
    EXPECT_EQ(cmap->MapToCID(0x8150), 633u + 0x10);
    EXPECT_EQ(cmap->MapToCID(0xA1), 500u);
    EXPECT_EQ(cmap->MapToCID(0x817F), 0u);
}

TEST(CMapStm, WritingMode) {
    const struct Case {
        std::string text;
        int dict_wmode;
        bool horizontal;
    } cases[] = {
        {"", -1, true},
        {"/WMode 1 def", -1, false},
        {"/WMode 0 def", -1, true},
        {"/WMode 1 def", 0, true},  // the dictionary decides over the def
        {"", 1, false},
        {"/WMode (1) def", -1, true},
    };
    for (const Case& c : cases) {
        auto cmap = Parse(c.text, c.dict_wmode);
        ASSERT_TRUE(cmap);
        EXPECT_EQ(cmap->IsHorizontal(), c.horizontal) << c.text << " " << c.dict_wmode;
    }
}

TEST(CMapIdentity, MapsCodesToThemselves) {
    CMapIdentity h(false), v(true);
    EXPECT_TRUE(h.IsHorizontal());
    EXPECT_FALSE(v.IsHorizontal());
    EXPECT_EQ(v.GetName(), "Identity-V");
    const UInt8 bytes[] = {0x12, 0x34, 0x56};
    UInt32 code = 0, cid = 0;
    EXPECT_EQ(h.MapToCID(bytes, 3, code, cid), 2);
    EXPECT_EQ(code, 0x1234u);
    EXPECT_EQ(cid, 0x1234u);
    EXPECT_EQ(h.MapToCID(bytes + 2, 1, code, cid), 1);  // a last odd byte is a code of its own
    EXPECT_EQ(code, 0x56u);
    EXPECT_EQ(Units(h, 0x4E00), std::vector<UInt16>{0x4E00});
}

class PredefinedCMaps : public ::testing::Test {
protected:
    void SetUp() override { lum::PDF::Ferrox::Initialize(); }
    void TearDown() override { lum::PDF::Ferrox::Terminate(); }
};

TEST_F(PredefinedCMaps, ByName) {
    lum::SDF::Name h("Identity-H"), uni("UniJIS-UCS2-H"), ucs2("Adobe-Japan1-UCS2"),
        hw("UniJIS-UCS2-HW-H"), missing("No-Such-CMap");
    EXPECT_TRUE(dynamic_cast<CMapIdentity*>(CMap::Create(&h).get()));
    auto jis = CMap::Create(&uni);
    ASSERT_TRUE(jis);
    EXPECT_EQ(jis->GetName(), "UniJIS-UCS2-H");
    EXPECT_EQ(jis->MapToCID(0x3042), 843u);  // HIRAGANA LETTER A
    auto to_unicode = CMap::Create(&ucs2);
    ASSERT_TRUE(to_unicode);
    EXPECT_EQ(Units(*to_unicode, 843), std::vector<UInt16>{0x3042});
    // A CMap built on another through usecmap reaches its parent's mappings.
    auto half_width = CMap::Create(&hw);
    ASSERT_TRUE(half_width);
    EXPECT_EQ(half_width->MapToCID(0x3042), 843u);
    EXPECT_THROW(CMap::Create(&missing), CMapNotFoundExc);
    const auto f = lum::test::CatchFailure([&] { CMap::Create(&missing); });
    EXPECT_EQ(f.condition, "cmap.get()");
    EXPECT_EQ(f.message,
              "Searching for 'ferrox.res'. Use Ferrox::SetResourcesPath()\nto set the correct "
              "resource path.");
    // An embedded CMap may build on a predefined one, by operator or by its dictionary.
    auto embedded = Parse("/UniJIS-UCS2-H usecmap 1 begincidchar <3042> 1 endcidchar");
    ASSERT_TRUE(embedded);
    EXPECT_EQ(embedded->MapToCID(0x3042), 1u);
    EXPECT_EQ(embedded->MapToCID(0x3044), 845u);
    // A parent the resources don't have fails the whole stream, its own mappings too.
    EXPECT_FALSE(Parse("/Adobe-Identity-UCS usecmap 1 beginbfchar <01> <0041> endbfchar"));
    // Without the resource document a name gives nothing, and raises nothing.
    lum::PDF::Ferrox::Terminate();
    EXPECT_FALSE(CMap::Create(&uni));
    lum::PDF::Ferrox::Initialize();
}

// Every predefined CMap of the resource file parses, quickly.
TEST_F(PredefinedCMaps, EveryOneParses) {
    lum::SDF::Obj* c = lum::PDF::Resource::GetResourceDoc()->GetTrailer()->Get("C")->second;
    double slowest_ms = 0;
    std::string slowest;
    for (auto it = c->DictBegin(); it != c->DictEnd(); ++it) {
        const auto t0 = std::chrono::steady_clock::now();
        auto cmap = CMap::Create(it->first);
        const double ms =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
        ASSERT_TRUE(cmap) << it->first->GetName();
        if (auto* stm = dynamic_cast<CMapStm*>(cmap.get())) {
            EXPECT_TRUE(stm->GetEntryCount() > 0 || stm->GetParent()) << it->first->GetName();
        }
        if (ms > slowest_ms) {
            slowest_ms = ms;
            slowest = it->first->GetName();
        }
    }
    RecordProperty("slowest", slowest + " " + std::to_string(slowest_ms) + " ms");
}

TEST(CMapStm, HostileStreamsEndInBoundedTimeAndMemory) {
    lum::test::ObjPool pool;
    // A stream that names itself as its UseCMap: a chain cut at the nesting bound.
    auto* self = new lum::SDF::FileStream(new lum::SDF::Dict(), std::vector<UInt8>{'%'});
    lum::SDF::Indirect* ref = pool.NewRef(self);
    self->PutIndirect("UseCMap", ref);
    auto looped = CMap::Create(ref);
    ASSERT_TRUE(looped);
    EXPECT_EQ(Units(*looped, 5), std::vector<UInt16>{0xFFFD});

    // A chain of 100 streams, each the UseCMap of the one before: cut at the nesting bound,
    // with the mappings of the levels above the cut kept.
    std::vector<lum::SDF::Indirect*> chain;
    for (int i = 0; i < 100; ++i) {
        char text[64];
        const int n = std::snprintf(text, sizeof text, "1 begincidchar <%02X> %d endcidchar", i, i + 1);
        chain.push_back(pool.NewRef(new lum::SDF::FileStream(new lum::SDF::Dict(),
                                                             std::vector<UInt8>(text, text + n))));
    }
    for (int i = 0; i + 1 < 100; ++i) chain[i]->PutIndirect("UseCMap", chain[i + 1]);
    const auto start = std::chrono::steady_clock::now();
    auto chained = CMap::Create(chain[0]);
    ASSERT_TRUE(chained);
    EXPECT_EQ(chained->MapToCID(0x00), 1u);
    EXPECT_EQ(chained->MapToCID(0x05), 6u);
    EXPECT_EQ(chained->MapToCID(0x63), 0u);  // past the cut

    // Ranges over 2^31 codes and a destination that runs past 0xFFFF cost two entries each.
    auto wide = Parse("1 begincidrange <00000000> <7FFFFFFF> 5 endcidrange");
    auto past = Parse("1 beginbfrange <0000> <FFFF> <FFFF> endbfrange");
    ASSERT_TRUE(wide && past);
    EXPECT_EQ(static_cast<CMapStm&>(*wide).GetEntryCount(), 2u);
    EXPECT_EQ(static_cast<CMapStm&>(*past).GetEntryCount(), 2u);
    const UInt8 last[] = {0x7F, 0xFF, 0xFF, 0xFF};
    UInt32 code = 0, cid = 0;
    EXPECT_EQ(wide->MapToCID(last, 4, code, cid), 4);
    EXPECT_EQ(cid, 5u + 0x7FFFFFFFu);
    EXPECT_EQ(wide->MapToCID(0x7FFFFFFE), 5u + 0x7FFFFFFEu);
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 1.0);

    // A destination of 10,000 units keeps the first ones.
    std::string text = "1 beginbfchar <01> <";
    for (int i = 0; i < 10000; ++i) text += "0041";
    auto long_value = Parse(text + "> endbfchar");
    ASSERT_TRUE(long_value);
    UInt16 units[4];
    UInt32 n = 0;
    EXPECT_TRUE(long_value->MapToUnicode(1, units, 4, n));
    EXPECT_EQ(n, 4u);

    // More mappings than a CMap may hold: the CMap is damaged.
    std::string many = "1100000 beginbfchar ";
    many.reserve(1100000 * 16);
    char buf[32];
    for (UInt32 i = 0; i < 1100000; ++i) {
        std::snprintf(buf, sizeof buf, "<%06X> <0041>\n", i);
        many += buf;
    }
    EXPECT_FALSE(Parse(many + "endbfchar"));
}

}  // namespace
