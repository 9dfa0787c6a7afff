// Page boxes, rotation and inheritance on page dictionaries built in memory.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "Common/Limits.h"
#include "ObjBuilder.h"
#include "PDF/Page.h"
#include "support/TestSupport.h"

using namespace lum::PDF;
using namespace lum::test;
using lum::SDF::Obj;

namespace {

using Box = std::optional<std::vector<double>>;

struct Attrs {
    Box media, crop, bleed, trim, art, user;
    std::optional<double> rotate;

    Attrs& Media(double a, double b, double c, double d) { return Set(media, a, b, c, d); }
    Attrs& Crop(double a, double b, double c, double d) { return Set(crop, a, b, c, d); }
    Attrs& Bleed(double a, double b, double c, double d) { return Set(bleed, a, b, c, d); }
    Attrs& Trim(double a, double b, double c, double d) { return Set(trim, a, b, c, d); }
    Attrs& Art(double a, double b, double c, double d) { return Set(art, a, b, c, d); }
    Attrs& User(double a, double b, double c, double d) { return Set(user, a, b, c, d); }
    Attrs& Rotate(double r) {
        rotate = r;
        return *this;
    }

private:
    Attrs& Set(Box& b, double x1, double y1, double x2, double y2) {
        b = std::vector<double>{x1, y1, x2, y2};
        return *this;
    }
};

Attrs A() { return Attrs(); }

void Fill(Obj* dict, const Attrs& a) {
    auto put = [&](const char* key, const Box& b) {
        if (b) dict->Put(key, NumArray({(*b)[0], (*b)[1], (*b)[2], (*b)[3]}));
    };
    put("MediaBox", a.media);
    put("CropBox", a.crop);
    put("BleedBox", a.bleed);
    put("TrimBox", a.trim);
    put("ArtBox", a.art);
    put("LUM_UserCrop", a.user);
    if (a.rotate) dict->PutNumber("Rotate", *a.rotate);
}

// A page (attributes `own`) below a Pages node (attributes `inherited`).
struct TwoLevel {
    ObjPool pool;
    Obj* parent;
    Obj* page;
    TwoLevel(const Attrs& inherited, const Attrs& own) {
        parent = pool.NewDict();
        parent->PutName("Type", "Pages");
        Fill(parent, inherited);
        page = pool.NewDict();
        page->PutName("Type", "Page");
        page->PutIndirect("Parent", static_cast<lum::SDF::Indirect*>(parent));
        Fill(page, own);
    }
};

struct BoxCase {
    const char* name;
    Attrs inherited, own;
    Rect media;  // GetMediaBox
    Rect crop;   // GetCropBox
    Rect box[6];  // GetBox of each kind
    double width, height;
    int rotation;  // 0..3
};

Rect R(double a, double b, double c, double d) { return Rect(a, b, c, d); }

const Rect kLetter = R(0, 0, 612, 792);
const Rect kSquare = R(100, 100, 200, 200);
const Rect kA4 = R(0, 0, 595.28, 841.89);

// A case whose boxes of kind 1 to 5 all equal the crop box.
BoxCase Case(const char* name, Attrs inherited, Attrs own, Rect media, Rect crop, Rect kind0,
             double w, double h, int rotation = 0) {
    return {name, inherited, own, media, crop, {kind0, crop, crop, crop, crop, crop}, w, h, rotation};
}

// clang-format off
std::vector<BoxCase> BoxCases() {
    Rect z = R(0, 0, 0, 792);
    std::vector<BoxCase> v = {
        Case("NoMediaBoxAnywhere", A(), A(), kLetter, kLetter, kLetter, 612, 792),
        Case("InheritedMediaBox", A().Media(0, 0, 595.28, 841.89), A(), kA4, kA4, kA4, 595.28,
             841.89),
        Case("OwnMediaBoxWinsOverParent", A().Media(0, 0, 10, 10), A().Media(0, 0, 300, 400),
             R(0, 0, 300, 400), R(0, 0, 300, 400), R(0, 0, 300, 400), 300, 400),
        // A media box without width: kind 0 gets a sliver, everything else keeps it raw.
        Case("ZeroWidthMediaBox", A(), A().Media(0, 0, 0, 792), z, z, R(0, 0, 0.0001, 792), 0, 792),
        Case("UnorderedMediaBoxStaysAsStored", A(), A().Media(612, 792, 0, 0), R(612, 792, 0, 0),
             R(612, 792, 0, 0), R(612, 792, 0, 0), 612, 792),
        // Apart from the media box but with an area of its own: the crop box stands.
        Case("CropBoxOutsideMediaBox", A(), A().Media(100, 100, 200, 200).Crop(10, 10, 20, 20),
             kSquare, R(10, 10, 20, 20), kSquare, 10, 10),
        Case("CropBoxWithoutWidth", A(), A().Media(100, 100, 200, 200).Crop(150, 100, 150, 200),
             kSquare, kSquare, kSquare, 100, 100),
        Case("CropBoxCutToOverlap", A(), A().Media(0, 0, 612, 792).Crop(-10, 700, 100, 900),
             kLetter, R(0, 700, 100, 792), kLetter, 100, 92),
        // Touching boxes have no overlap with area.
        Case("CropBoxTouchingMediaBox", A(), A().Media(0, 0, 100, 100).Crop(100, 0, 200, 100),
             R(0, 0, 100, 100), R(100, 0, 200, 100), R(0, 0, 100, 100), 100, 100),
        Case("UnorderedCropBoxIsOrderedByIntersection", A().Crop(500, 700, 50, 60), A(), kLetter,
             R(50, 60, 500, 700), kLetter, 450, 640),
        Case("RotatedCropSwapsWidthAndHeight", A().Rotate(90), A().Media(0, 0, 600, 800),
             R(0, 0, 600, 800), R(0, 0, 600, 800), R(0, 0, 600, 800), 800, 600, 1),
    };
    // Degenerate media and crop: kind 1 falls back to kind 0, GetCropBox to the raw media box.
    Rect sliver = R(0, 0, 0.0001, 792);
    v.push_back({"DegenerateMediaAndCrop", A(), A().Media(0, 0, 0, 792).Crop(5, 5, 5, 5), z, z,
                 {sliver, sliver, sliver, sliver, sliver, sliver}, 0.0001, 792, 0});
    // Bleed, trim and art are cut by the media box, not the crop box; apart gives zeros.
    Rect c = R(10, 10, 300, 300);
    v.push_back({"BleedTrimArt", A(), A().Media(0, 0, 612, 792).Crop(10, 10, 300, 300)
                     .Bleed(-5, -5, 700, 700).Trim(700, 800, 900, 900).Art(20, 20, 30, 30),
                 kLetter, c, {kLetter, c, R(0, 0, 612, 700), R(0, 0, 0, 0), R(20, 20, 30, 30), c},
                 290, 290, 0});
    Rect u = R(20, 20, 100, 100);
    v.push_back({"UserCropInside", A().User(0, 0, 50, 50), A().Crop(20, 20, 100, 100), kLetter, u,
                 {kLetter, u, u, u, u, R(20, 20, 50, 50)}, 80, 80, 0});
    v.push_back(Case("UserCropApartGivesCrop", A(),
                     A().Crop(20, 20, 100, 100).User(200, 200, 300, 300), kLetter, u, kLetter, 80,
                     80));
    return v;
}
// clang-format on

class PageBoxes : public ::testing::TestWithParam<BoxCase> {};

void ExpectRect(const Rect& want, const Rect& got, const std::string& what) {
    EXPECT_TRUE(want == got) << what << ": " << got.x1 << " " << got.y1 << " " << got.x2 << " " << got.y2;
}

TEST_P(PageBoxes, Answer) {
    const BoxCase& c = GetParam();
    TwoLevel t(c.inherited, c.own);
    Page page(t.page);
    ExpectRect(c.media, page.GetMediaBox(), "media box");
    ExpectRect(c.crop, page.GetCropBox(), "crop box");
    for (int kind = 0; kind < 6; ++kind)
        ExpectRect(c.box[kind], page.GetBox(static_cast<Page::Box>(kind)),
                   "box kind " + std::to_string(kind));
    EXPECT_DOUBLE_EQ(c.width, page.GetPageWidth());
    EXPECT_DOUBLE_EQ(c.height, page.GetPageHeight());
    EXPECT_EQ(c.rotation, page.GetRotation());
}

INSTANTIATE_TEST_SUITE_P(Cases, PageBoxes, ::testing::ValuesIn(BoxCases()),
                         [](const auto& p) { return std::string(p.param.name); });

TEST(Page, MediaBoxRemembersItsArrayOnlyWhenRead) {
    TwoLevel t(A(), A().Media(0, 0, 1, 1));
    EXPECT_EQ(t.page->FindObj("MediaBox"), Page(t.page).GetMediaBox().mp_rect);
    TwoLevel none(A(), A());
    EXPECT_EQ(nullptr, Page(none.page).GetMediaBox().mp_rect);
}

TEST(Page, RotationValues) {
    struct {
        double value;
        int want;
    } cases[] = {{0, 0},    {90, 1},    {180, 2},    {270, 3},         {-90, 3},
                 {450, 1},  {45, 0},    {-270, 1},   {720, 0},         {90.7, 1},
                 {-450, 3}, {1e300, 0}, {-1e300, 0}, {2147483610.0, 1}};
    for (const auto& c : cases) {
        TwoLevel t(A(), A().Rotate(c.value));
        EXPECT_EQ(c.want, Page(t.page).GetRotation()) << c.value;
    }
    TwoLevel inherited(A().Rotate(270), A());
    EXPECT_EQ(Page::e_270, Page(inherited.page).GetRotation());
    TwoLevel named(A(), A());
    named.page->PutName("Rotate", "R90");
    EXPECT_EQ(Page::e_0, Page(named.page).GetRotation());
}

// A dictionary of `n` number entries.
Obj* DictOf(int n) {
    auto* d = new lum::SDF::Dict();
    for (int i = 0; i < n; ++i) d->PutNumber(("K" + std::to_string(i)).c_str(), i);
    return d;
}

TEST(Page, BoxesOfAnotherKind) {
    // Only the size is tested before the conversion: a value of four or more "elements" that is
    // no array fails the page there; a smaller one gives the default page size.
    struct {
        const char* name;
        Obj* box;
        bool raises;
    } cases[] = {
        {"number", new lum::SDF::Number(5), false},
        {"three numbers", NumArray({0, 0, 100}), false},
        {"empty dictionary", DictOf(0), false},
        {"dictionary of four", DictOf(4), true},
        {"string of three", new lum::SDF::Str(reinterpret_cast<const lum::UInt8*>("abc"), 3), false},
        {"string of four", new lum::SDF::Str(reinterpret_cast<const lum::UInt8*>("abcd"), 4), true},
        {"stream of four", new lum::SDF::FileStream(static_cast<lum::SDF::Dict*>(DictOf(4)), std::vector<lum::UInt8>{}), true},
    };
    for (const auto& c : cases) {
        TwoLevel t(A(), A());
        t.page->Put("MediaBox", c.box);
        if (c.raises)
            EXPECT_THROW(Page(t.page).GetMediaBox(), lum::Common::Exception) << c.name;
        else
            ExpectRect(kLetter, Page(t.page).GetMediaBox(), c.name);
    }
    // A stream as Parent answers from its dictionary.
    ObjPool pool;
    auto* parent_dict = new lum::SDF::Dict();
    parent_dict->Put("MediaBox", NumArray({0, 0, 10, 20}));
    Obj* parent = pool.NewRef(new lum::SDF::FileStream(parent_dict, std::vector<lum::UInt8>{}));
    Obj* page = pool.NewDict();
    page->PutIndirect("Parent", static_cast<lum::SDF::Indirect*>(parent));
    ExpectRect(R(0, 0, 10, 20), Page(page).GetMediaBox(), "stream as Parent");
    // A non-number inside a box fails the page, as every Obj call does.
    TwoLevel t(A(), A());
    Obj* media = t.page->PutArray("MediaBox");
    media->PushBack(new lum::SDF::Number(0));
    media->PushBack(new lum::SDF::Name("x"));
    media->PushBack(new lum::SDF::Number(1));
    media->PushBack(new lum::SDF::Number(1));
    EXPECT_THROW(Page(t.page).GetMediaBox(), lum::Common::Exception);
    // Elements past the fourth are ignored.
    TwoLevel five(A(), A());
    five.page->Put("MediaBox", NumArray({1, 2, 3, 4, 5}));
    ExpectRect(R(1, 2, 3, 4), Page(five.page).GetMediaBox(), "five elements");
}

TEST(Page, ParentChainsThatLoopEnd) {
    ObjPool pool;
    // A page whose Parent is itself.
    Obj* self = pool.NewDict();
    self->PutIndirect("Parent", static_cast<lum::SDF::Indirect*>(self));
    EXPECT_EQ(nullptr, Page(self).FindInheritedAttribute("MediaBox"));
    // A longer loop: page -> a -> b -> a.
    Obj* a = pool.NewDict();
    Obj* b = pool.NewDict();
    a->PutIndirect("Parent", static_cast<lum::SDF::Indirect*>(b));
    b->PutIndirect("Parent", static_cast<lum::SDF::Indirect*>(a));
    Obj* page = pool.NewDict();
    page->PutIndirect("Parent", static_cast<lum::SDF::Indirect*>(a));
    EXPECT_EQ(nullptr, Page(page).FindInheritedAttribute("MediaBox"));
    ExpectRect(kLetter, Page(page).GetCropBox(), "looping parents");
    // A free reference is no Parent; one of another kind is asked like a node: a stream
    // answers from its dictionary, a number raises.
    Obj* odd = pool.NewDict();
    odd->PutNumber("Parent", 3);
    EXPECT_THROW(Page(odd).FindInheritedAttribute("Rotate"), lum::Common::Exception);
    Obj* freed = pool.NewDict();
    freed->PutIndirect("Parent", pool.NewFree());
    EXPECT_EQ(nullptr, Page(freed).FindInheritedAttribute("Rotate"));
}

TEST(Page, ValidityAndOwnEntries) {
    ObjPool pool;
    EXPECT_FALSE(Page().IsValid());
    EXPECT_FALSE(Page(pool.NewFree()).IsValid());
    EXPECT_FALSE(Page(pool.NewRef(new lum::SDF::Number(1))).IsValid());
    EXPECT_EQ(nullptr, Page().FindInheritedAttribute("MediaBox"));
    EXPECT_EQ(nullptr, Page().GetContents());
    ExpectRect(kLetter, Page().GetMediaBox(), "invalid page");

    TwoLevel t(A(), A());
    t.parent->PutDict("Resources");
    t.parent->PutArray("Annots");
    t.parent->PutNumber("Contents", 1);
    Page page(t.page);
    EXPECT_TRUE(page.IsValid());
    // Contents and Annots are the page's own, never inherited; Resources are inherited.
    EXPECT_EQ(nullptr, page.GetContents());
    EXPECT_EQ(nullptr, page.GetAnnots());
    EXPECT_EQ(t.parent->FindObj("Resources"), page.GetResourceDict());
    t.page->PutArray("Contents");
    EXPECT_EQ(t.page->FindObj("Contents"), page.GetContents());
}

TEST(Page, MissingResourcesRaise) {
    TwoLevel t(A(), A());
    const auto f = lum::test::CatchFailure([&] { lum::PDF::IMPL_LUM_PageGetResourceDict(t.page); });
    EXPECT_EQ("o != 0", f.condition);
    EXPECT_EQ("Page resources not found.", f.message);
}

}  // namespace
