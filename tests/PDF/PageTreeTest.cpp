// Finding pages through damaged page trees, in files written for each case.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "PDF/PDFDoc.h"
#include "PDF/Content/ContentTestSupport.h"
#include "SDF/Obj.h"
#include "support/TestSupport.h"

using namespace lum::test;
using lum::PDF::PageIterator;
using lum::PDF::PDFDoc;

namespace {

const std::string kCatalog = "<< /Type /Catalog /Pages 2 0 R >>";
const std::string kPage = "<< /Type /Page /Parent 2 0 R >>";

// `objects` as a document in memory; object 1 is the catalog.
struct Opened {
    explicit Opened(const std::vector<std::string>& objects, const std::string& trailer = "/Root 1 0 R")
        : mem(BuildPdf(objects, trailer)), doc(&mem.Doc()) {}
    MemoryDoc mem;
    PDFDoc* doc;
};

// What an iterator stands on: the object number of its page, "blank" or "end".
std::string Describe(PDFDoc& doc, PageIterator& it) {
    if (it == doc.GetPageIteratorEnd()) return "end";
    lum::SDF::Obj* page = it->mp_leaf_node;
    if (page == doc.GetBlankPage()) return "blank";
    return std::to_string(page->GetObjNum());
}

std::vector<std::string> LookUp(PDFDoc& doc, int last) {
    std::vector<std::string> out;
    for (int p = 1; p <= last; ++p) {
        PageIterator it = doc.GetPageIterator(p);
        out.push_back(Describe(doc, it));
    }
    return out;
}

struct TreeCase {
    const char* name;
    std::vector<std::string> objects;  // 1 is the catalog, 2 the root of the tree
    int count;                         // GetPageCount
    std::vector<std::string> pages;    // page 1, 2, ... as found by number
};

std::vector<TreeCase> TreeCases() {
    return {
        {"Flat",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R 4 0 R 5 0 R] /Count 3 >>", kPage, kPage, kPage},
         3,
         {"3", "4", "5", "end"}},
        {"Nested",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R 6 0 R] /Count 4 >>",
          "<< /Type /Pages /Kids [4 0 R 5 0 R] /Count 2 >>", kPage, kPage,
          "<< /Type /Pages /Kids [7 0 R 8 0 R] /Count 2 >>", kPage, kPage},
         4,
         {"4", "5", "7", "8", "end"}},
        {"RootIsAPage", {kCatalog, "<< /Type /Page /MediaBox [0 0 10 10] >>"}, 1, {"2", "end"}},
        // Without Count the count is 1, but the walk still finds every page.
        {"RootWithoutCount",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R 4 0 R] >>", kPage, kPage},
         1,
         {"3", "4", "end"}},
        {"FreeKidIsBlank",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R 4 0 R 5 0 R] /Count 3 >>", kPage, kFree, kPage},
         3,
         {"3", "blank", "5", "end"}},
        {"NonDictionaryKidIsBlank",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R (text) 4 0 R 7] /Count 4 >>", kPage, kPage},
         4,
         {"3", "blank", "4", "blank", "end"}},
        {"UnreadableKidIsBlank",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R 4 0 R 5 0 R] /Count 3 >>", kPage, kBadOffset,
          kPage},
         3,
         {"3", "blank", "5", "end"}},
        // A reference to a number with no entry behaves as the trailer: no page, so blank.
        {"DanglingReferenceIsBlank",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R 99 0 R] /Count 2 >>", kPage},
         2,
         {"3", "blank", "end"}},
        {"EmptyInnerNodeDoesNotEndTheWalk",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R 4 0 R 5 0 R] /Count 2 >>",
          "<< /Type /Pages /Kids [] /Count 0 >>", kPage, kPage},
         2,
         {"4", "5", "end"}},
        // An entered node with empty Kids ends the walk; a later page is found past it.
        {"EnteredEmptyNode",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R 4 0 R] /Count 2 >>",
          "<< /Type /Pages /Kids [] /Count 1 >>", kPage},
         2,
         {"end", "4"}},
        {"OverstatedCountHidesTheNextPage",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R 5 0 R] /Count 3 >>",
          "<< /Type /Pages /Kids [4 0 R] /Count 2 >>", kPage, kPage},
         3,
         {"4", "end", "5"}},
        // Leaf test: Type Page; else no Kids and Contents or Resources. An empty untyped
        // dictionary and an inner node without Count count for nothing.
        {"LeafTest",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R 4 0 R 5 0 R 6 0 R 7 0 R] /Count 4 >>",
          "<< /Contents 8 0 R >>", "<< >>", "<< /Resources << >> >>", "<< /Kids [6 0 R] >>",
          "<< /Type /Page /Kids [] >>", "<< /Length 0 >>\nstream\n\nendstream"},
         4,
         {"3", "5", "7", "end"}},
        // Kids that lead back to a node on the path are passed over; the walk ends.
        {"KidIsItsOwnParent",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R 2 0 R] /Count 3 >>", kPage},
         3,
         {"3", "end", "end"}},
        {"CycleThroughTwoNodes",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R] /Count 5 >>",
          "<< /Type /Pages /Kids [4 0 R 2 0 R 5 0 R] /Count 5 >>", kPage, kPage},
         5,
         {"4", "end", "end", "end", "end"}},
        // The same subtree twice is a repetition, not a cycle: its pages count twice.
        {"RepeatedSubtree",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R 3 0 R] /Count 4 >>",
          "<< /Type /Pages /Kids [4 0 R 5 0 R] /Count 2 >>", kPage, kPage},
         4,
         {"4", "5", "4", "5", "end"}},
        // A Count of another kind raises, as GetNumber does (the count is -1 here).
        {"CountIsNoNumber",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R] /Count /Three >>", kPage},
         -1,
         {"3", "end"}},
        {"NegativeCount",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R] /Count -4 >>", kPage},
         0,
         {"3", "end"}},
        {"HugeCountIsCapped",
         {kCatalog, "<< /Type /Pages /Kids [3 0 R] /Count 99999999999 >>", kPage},
         lum::Limits::kMaxPageCount,
         {"3", "end"}},
    };
}

class PageTree : public ::testing::TestWithParam<TreeCase> {};

TEST_P(PageTree, FindsPagesByNumber) {
    const TreeCase& c = GetParam();
    Opened f(c.objects);
    if (c.count < 0)
        EXPECT_THROW(f.doc->GetPageCount(), lum::Common::Exception);
    else
        EXPECT_EQ(c.count, f.doc->GetPageCount());
    EXPECT_EQ(c.pages, LookUp(*f.doc, static_cast<int>(c.pages.size())));
    // Ascending lookups go on from the last page found; each page alone, from the root, and
    // in descending order must give the same answers.
    for (int p = static_cast<int>(c.pages.size()); p >= 1; --p) {
        PageIterator fresh(f.doc, f.doc->GetPagesRoot(), p);
        EXPECT_EQ(c.pages[p - 1], Describe(*f.doc, fresh)) << "page " << p;
        PageIterator descending = f.doc->GetPageIterator(p);
        EXPECT_EQ(c.pages[p - 1], Describe(*f.doc, descending)) << "page " << p;
        // A page found answers the number it was found under, whatever its Parent says.
        if (descending.GetPageNumber() != 0) {
            EXPECT_EQ(p, descending->GetIndex()) << "page " << p;
        }
    }
}

TEST(PageTree, PageNumbersByParentChain) {
    // Never looked up: the number comes from the Parent chain, counted as the walk counts.
    Opened f({kCatalog, "<< /Type /Pages /Kids [3 0 R 7 0 R (x) 8 0 R] /Count 5 >>",
              "<< /Type /Pages /Parent 2 0 R /Kids [4 0 R 5 0 R 6 0 R] /Count 2 >>",
              "<< /Type /Page /Parent 3 0 R >>", "<< /Type /Pages /Parent 3 0 R /Kids [] /Count 0 >>",
              "<< /Type /Page /Parent 3 0 R >>", kPage, kPage,
              kPage,  // 9: not among the kids of its Parent
              "<< /Type /Page /Parent 10 0 R >>"});
    const std::pair<lum::UInt32, int> want[] = {{4, 1}, {6, 2}, {7, 3}, {8, 5}, {9, 0}, {10, 0}};
    for (const auto& [num, index] : want)
        EXPECT_EQ(index, lum::PDF::Page(f.doc->GetObj(num)).GetIndex()) << num;
    PageIterator blank = f.doc->GetPageIterator(4);
    EXPECT_EQ(4, blank->GetIndex());
}

INSTANTIATE_TEST_SUITE_P(Trees, PageTree, ::testing::ValuesIn(TreeCases()),
                         [](const auto& p) { return std::string(p.param.name); });

TEST(PageTree, NumberZeroAndBelowAreTheEnd) {
    Opened f({kCatalog, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>", kPage});
    for (int p : {0, -1, -2147483647}) {
        PageIterator it = f.doc->GetPageIterator(p);
        EXPECT_EQ("end", Describe(*f.doc, it)) << p;
    }
    PageIterator end = f.doc->GetPageIteratorEnd();
    EXPECT_EQ(0, end.GetPageNumber());
    EXPECT_EQ(f.doc->GetPagesRoot(), end->mp_leaf_node);
}

TEST(PageTree, RootWithoutKidsThatIsNoPageRaises) {
    for (const char* root :
         {"<< /Type /Pages /Count 1 >>", "<< /Type /Pages /Kids 5 /Count 1 >>", "<< /Count 1 >>"}) {
        Opened f({kCatalog, root});
        EXPECT_EQ("Page root is not valid.", CatchFailure([&] { f.doc->GetPageIterator(1); }).message)
            << root;
    }
}

TEST(PageTree, UnreadableKidIsReplacedInTheTree) {
    Opened f({kCatalog, "<< /Type /Pages /Kids [3 0 R 4 0 R] /Count 2 >>", kPage, kBadOffset});
    lum::SDF::Obj* kids = f.doc->GetPagesRoot()->FindObj("Kids");
    EXPECT_EQ(4u, kids->GetAt(1)->GetObjNum());
    PageIterator it = f.doc->GetPageIterator(2);
    lum::SDF::Obj* blank = f.doc->GetBlankPage();
    EXPECT_EQ(blank, it->mp_leaf_node);
    EXPECT_EQ(blank, kids->GetAt(1));
    EXPECT_EQ(f.doc->GetPagesRoot(), blank->FindObj("Parent"));
    // The blank page is a letter-size page with no content.
    EXPECT_EQ(792, it->GetPageHeight());
    EXPECT_EQ(nullptr, it->GetContents());
    // A kid of another type stands in as blank but the tree is left as it is.
    Opened g({kCatalog, "<< /Type /Pages /Kids [3 0 R 5] /Count 2 >>", kPage});
    g.doc->GetPageIterator(2);
    EXPECT_TRUE(g.doc->GetPagesRoot()->FindObj("Kids")->GetAt(1)->IsNumber());
}

// A flat tree of `n` kids with Count n whose first kid is an inner node of two pages, so that
// direct indexing and the walk disagree about page 2.
std::vector<std::string> FlatTreeWithInnerFirstKid(int n) {
    std::string kids;
    for (int i = 0; i < n; ++i) kids += std::to_string(i + 3) + " 0 R ";
    std::vector<std::string> objects = {
        kCatalog, "<< /Type /Pages /Kids [" + kids + "] /Count " + std::to_string(n) + " >>",
        "<< /Type /Pages /Kids [" + std::to_string(n + 3) + " 0 R " + std::to_string(n + 4) +
            " 0 R] /Count 2 >>"};
    for (int i = 1; i < n; ++i) objects.push_back(kPage);
    objects.push_back(kPage);
    objects.push_back(kPage);
    return objects;
}

TEST(PageTree, LargeFlatTreesAreIndexedDirectly) {
    {
        Opened f(FlatTreeWithInnerFirstKid(1000));  // the walk: page 2 is inside kid 0
        PageIterator it = f.doc->GetPageIterator(2);
        EXPECT_EQ("1004", Describe(*f.doc, it));
    }
    {
        Opened f(FlatTreeWithInnerFirstKid(1001));  // direct: page 2 is kid 1
        EXPECT_EQ(2, lum::PDF::Page(f.doc->GetObj(4)).GetIndex());
        PageIterator it = f.doc->GetPageIterator(2);
        EXPECT_EQ("4", Describe(*f.doc, it));
        PageIterator last = f.doc->GetPageIterator(1001);
        EXPECT_EQ("1003", Describe(*f.doc, last));
        PageIterator beyond = f.doc->GetPageIterator(1002);
        EXPECT_EQ("end", Describe(*f.doc, beyond));
        // Kid 0 is no leaf: page 1 falls through to the walk.
        PageIterator first = f.doc->GetPageIterator(1);
        EXPECT_EQ("1004", Describe(*f.doc, first));
    }
}

TEST(PageTree, LaterLookupsResumeAtTheRightLevel) {
    // Two levels below the root; pages 1-3 in the first subtree (Count 3 but 2 pages: page 3
    // is lost), pages 4-5 in the second. Lookups in every order of skipping agree with fresh
    // walks from the root.
    Opened f({kCatalog, "<< /Type /Pages /Kids [3 0 R 6 0 R 9 0 R] /Count 6 >>",
              "<< /Type /Pages /Kids [4 0 R 5 0 R] /Count 3 >>", kPage, kPage,
              "<< /Type /Pages /Kids [7 0 R 8 0 R] /Count 2 >>", kPage, kPage, kPage});
    const std::vector<std::string> want = {"4", "5", "end", "7", "8", "9", "end"};
    for (int first = 1; first <= 7; ++first) {
        for (int second = first + 1; second <= 7; ++second) {
            PageIterator a = f.doc->GetPageIterator(first);
            PageIterator b = f.doc->GetPageIterator(second);
            EXPECT_EQ(want[first - 1], Describe(*f.doc, a)) << first << " then " << second;
            EXPECT_EQ(want[second - 1], Describe(*f.doc, b)) << first << " then " << second;
        }
    }
}

// Ascending lookups of every page number cost one pass over the tree in all, found or not.
TEST(PageTree, AscendingLookupsStayLinear) {
    const int n = 10000;
    std::string refs;
    for (int i = 0; i < n; ++i) refs += "4 0 R ";
    struct {
        const char* name;
        std::vector<std::string> objects;
        int last;    // pages looked up: 1 to last
        int found;   // pages 1 to found exist, in objects 3 and up
    } cases[] = {
        // Count one too many: no direct indexing, and a walk from the root for every page
        // would visit every kid again.
        {"wrong count", {}, n, n},
        // A root claiming a million pages, one page and then 10,000 references to one empty
        // node: every page from 2 on is not found, each behind a pass over all the kids (10^9
        // kid visits for the first 100,000 numbers, where one pass in all is enough).
        {"overstated", {kCatalog, "<< /Type /Pages /Kids [3 0 R " + refs + "] /Count 1000000 >>",
                        kPage, "<< /Type /Pages /Kids [] /Count 0 >>"}, 100000, 1},
        // The same with a last kid that claims every page and holds none: each walk ends there.
        {"dead end", {kCatalog, "<< /Type /Pages /Kids [3 0 R " + refs + " 5 0 R] /Count 1000000 >>",
                      kPage, "<< /Type /Pages /Kids [] /Count 0 >>",
                      "<< /Type /Pages /Kids [] /Count 999999 >>"}, 100000, 1},
    };
    cases[0].objects = {kCatalog, ""};
    std::string kids;
    for (int i = 0; i < n; ++i) {
        kids += std::to_string(i + 3) + " 0 R ";
        cases[0].objects.push_back(kPage);
    }
    cases[0].objects[1] = "<< /Type /Pages /Kids [" + kids + "] /Count " + std::to_string(n + 1) + " >>";
    for (const auto& c : cases) {
        Opened f(c.objects);
        const auto start = std::chrono::steady_clock::now();
        for (int p = 1; p <= c.last; ++p) {
            PageIterator it = f.doc->GetPageIterator(p);
            ASSERT_EQ(p <= c.found ? std::to_string(p + 2) : "end", Describe(*f.doc, it)) << c.name << " page " << p;
        }
        // Milliseconds in a release build; the bound leaves room for sanitizers and busy machines.
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << c.name;
    }
}

TEST(PageTree, DeepChainsAreWalkedAndInherit) {
    // 2000 levels of Pages, the page at the bottom, its MediaBox at the top.
    const int levels = 2000;
    std::vector<std::string> objects = {kCatalog};
    for (int i = 0; i < levels; ++i)
        objects.push_back("<< /Type /Pages /Kids [" + std::to_string(i + 3) + " 0 R] /Count 1" +
                          (i == 0 ? " /MediaBox [0 0 100 200]" : " /Parent " + std::to_string(i + 1) + " 0 R") + " >>");
    objects.push_back("<< /Type /Page /Parent " + std::to_string(levels + 1) + " 0 R >>");
    Opened f(objects);
    PageIterator it = f.doc->GetPageIterator(1);
    ASSERT_EQ(std::to_string(levels + 2), Describe(*f.doc, it));
    EXPECT_EQ(200, it->GetPageHeight());
}

std::vector<std::string> Iterate(PDFDoc& doc) {
    std::vector<std::string> out;
    for (PageIterator it = doc.GetPageIterator(1); it != doc.GetPageIteratorEnd(); ++it) {
        out.push_back(Describe(doc, it));
        if (out.size() > 100) break;
    }
    return out;
}

TEST(PageTree, IncrementWalksOnWithoutAFreshLookup) {
    struct {
        std::vector<std::string> objects;
        std::vector<std::string> pages;
    } cases[] = {
        {{kCatalog, "<< /Type /Pages /Kids [3 0 R 6 0 R 9 0 R] /Count 5 >>",
          "<< /Type /Pages /Kids [4 0 R 5 0 R] /Count 2 >>", kPage, kPage,
          "<< /Type /Pages /Kids [7 0 R 8 0 R] /Count 2 >>", kPage, kPage, kPage},
         {"4", "5", "7", "8", "9"}},
        // Empty inner nodes are passed, whatever their Count says.
        {{kCatalog, "<< /Type /Pages /Kids [3 0 R 4 0 R 5 0 R] /Count 2 >>", kPage,
          "<< /Type /Pages /Kids [] /Count 3 >>", kPage},
         {"3", "5"}},
        // The count ends the walk even where the tree holds more.
        {{kCatalog, "<< /Type /Pages /Kids [3 0 R 4 0 R] >>", kPage, kPage}, {"3"}},
        // A kid that leads back to the root is passed over.
        {{kCatalog, "<< /Type /Pages /Kids [3 0 R 2 0 R 4 0 R] /Count 9 >>", kPage, kPage},
         {"3", "4"}},
        {{kCatalog, "<< /Type /Pages /Kids [3 0 R 4 0 R] /Count 2 >>", kPage, kFree},
         {"3", "blank"}},
    };
    for (const auto& c : cases) {
        Opened f(c.objects);
        EXPECT_EQ(c.pages, Iterate(*f.doc));
    }
}

TEST(PageTree, IncrementPastTheEndRaises) {
    Opened f({kCatalog, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>", kPage});
    PageIterator it = f.doc->GetPageIterator(1);
    ++it;
    EXPECT_TRUE(it == f.doc->GetPageIteratorEnd());
    const auto failure = CatchFailure([&] { ++it; });
    EXPECT_EQ("m_page.mp_leaf_node != 0 && m_page_number>0", failure.condition);
    EXPECT_EQ("Invalid increment operation", failure.message);
}

TEST(PageTree, RepeatedEmptySubtreesCostOneVisitEach) {
    // Ten levels of ten references to the same node, with nothing at the bottom: 10^10 paths.
    std::vector<std::string> objects = {kCatalog};
    for (int level = 0; level < 10; ++level) {
        std::string kids;
        for (int i = 0; i < 10; ++i) kids += std::to_string(level + 3) + " 0 R ";
        objects.push_back("<< /Type /Pages /Kids [" + kids + "] /Count 1 >>");
    }
    objects.push_back("<< /Type /Pages /Kids [] /Count 0 >>");
    objects[1] = "<< /Type /Pages /Kids [13 0 R 3 0 R 14 0 R] /Count 2 >>";
    objects.push_back(kPage);  // 13
    objects.push_back(kPage);  // 14
    Opened f(objects);
    EXPECT_EQ((std::vector<std::string>{"13", "14"}), Iterate(*f.doc));
}

TEST(PDFDoc, TrailerWithoutRootGainsTheCatalog) {
    Opened f({"<< /Type /Pages /Kids [3 0 R] /Count 1 >>", "<< /Type /Catalog /Pages 1 0 R >>",
              "<< /Type /Page /Parent 1 0 R >>"},
             "");
    EXPECT_EQ(2u, f.doc->GetRoot()->GetObjNum());
    EXPECT_EQ(1, f.doc->GetPageCount());
}

TEST(PDFDoc, CatalogWithoutPagesFailsAtThePageCount) {
    Opened f({"<< /Type /Catalog >>"});
    const std::string message = CatchFailure([&] { f.doc->GetPageCount(); }).message;
    EXPECT_NE(std::string::npos, message.find("Pages")) << message;
}

TEST(PDFDoc, RefreshFormAppearancesClearsTheRequest) {
    Opened f({"<< /Type /Catalog /Pages 2 0 R /AcroForm << /NeedAppearances true /Fields [] >> >>",
              "<< /Type /Pages /Kids [] /Count 0 >>"});
    lum::SDF::Obj* form = f.doc->GetRoot()->FindObj("AcroForm");
    f.doc->RefreshFormAppearances();
    EXPECT_FALSE(form->FindObj("NeedAppearances")->GetBool());
    // Without a form, or with a flag of another type, nothing happens and nothing raises.
    Opened g({"<< /Type /Catalog /Pages 2 0 R /AcroForm << /NeedAppearances 1 >> >>",
              "<< /Type /Pages /Kids [] /Count 0 >>"});
    g.doc->RefreshFormAppearances();
    EXPECT_TRUE(g.doc->GetRoot()->FindObj("AcroForm")->FindObj("NeedAppearances")->IsNumber());
}

TEST(PDFDoc, FilesThatAreNoPdfRaise) {
    TempDir dir;
    WriteFile(dir / "empty.pdf", "");
    WriteFile(dir / "text.pdf", "just some text\n");
    for (const char* name : {"empty.pdf", "text.pdf", "missing.pdf"})
        EXPECT_THROW(PDFDoc((dir / name).string()), lum::Common::Exception) << name;
    EXPECT_THROW(PDFDoc(dir.path().string()), lum::Common::Exception);
}

}  // namespace
