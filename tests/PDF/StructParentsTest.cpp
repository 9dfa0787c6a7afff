// The structure parents of marked content: the ParentTree lookup for a page or form, and what
// the content reader's elements answer for each MCID. Every failure of the lookup costs the
// structure only: the page is read all the same.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Common/Exception.h"
#include "PDF/ElementReader.h"
#include "PDF/StructParents.h"
#include "PDF/Content/ContentTestSupport.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"
#include "support/TestSupport.h"

using namespace lum;

namespace {

std::string Ref(SDF::Obj* obj) {
    if (!obj) return "none";
    if (obj->IsIndirect()) return "R" + std::to_string(obj->GetObjNum());
    return obj->IsArray() ? "array" : "direct";
}

// Marked content of the page and its form: "MCID:parent" for each sequence with an MCID, a
// form's prefixed with "f"; and the count of text elements read.
struct Read {
    std::string parents;
    int texts = 0;
};

void Walk(PDF::ElementReader& reader, Read& out, int level) {
    while (PDF::Element* e = reader.Next()) {
        if (e->GetType() == PDF::Element::e_text) ++out.texts;
        if (e->GetType() == PDF::Element::e_marked_content_begin && e->GetStructMCID() >= 0)
            out.parents += std::string(out.parents.empty() ? "" : " ") + (level > 1 ? "f" : "") +
                           std::to_string(e->GetStructMCID()) + ":" +
                           Ref(e->GetParentStructElement());
        if (e->GetType() == PDF::Element::e_form) {
            reader.FormBegin();
            Walk(reader, out, level + 1);
            reader.End();
        }
    }
}

struct Tagged {
    std::string catalog = "/StructTreeRoot 6 0 R";
    std::string page_key = "/StructParents 0";
    std::string form_key;
    std::string tree_root = "<< /Type /StructTreeRoot /ParentTree 7 0 R >>";
    std::string parent_tree = "<< /Nums [0 [8 0 R 9 0 R]] >>";
    std::string extra11;  // object 11, when a case needs one
};

// 1 catalog, 2 pages, 3 the page (MCIDs 0 and 1 and the form), 4 its content, 5 the font,
// 6 the structure tree root, 7 the ParentTree, 8 and 9 structure elements, 10 a form with
// MCID 0, 11 free for a case, 12 a stream.
std::string BuildTagged(const Tagged& t) {
    const std::string mc = "/P << /MCID 0 >> BDC BT /F1 12 Tf 72 700 Td (a) Tj ET EMC "
                           "/P << /MCID 1 >> BDC BT /F1 12 Tf 72 680 Td (b) Tj ET EMC /Fm Do";
    const std::string form = "/Span << /MCID 0 >> BDC BT /F1 12 Tf 72 600 Td (c) Tj ET EMC";
    return test::BuildPdf({
        "<< /Type /Catalog /Pages 2 0 R " + t.catalog + " >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] " + t.page_key +
            " /Resources << /Font << /F1 5 0 R >> /XObject << /Fm 10 0 R >> >> /Contents 4 0 R >>",
        test::StreamObj(mc),
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
        t.tree_root,
        t.parent_tree,
        "<< /Type /StructElem /S /P >>",
        "<< /Type /StructElem /S /P >>",
        test::StreamObj(form, "/Type /XObject /Subtype /Form /BBox [0 0 612 792] " + t.form_key +
                                  " /Resources << /Font << /F1 5 0 R >> >>"),
        t.extra11.empty() ? test::kFree : t.extra11,
        test::StreamObj("", "/Type /Metadata"),
    });
}

TEST(StructParents, LookupAndElements) {
    using Change = std::pair<std::string Tagged::*, std::string>;
    const std::string none = "0:none 1:none f0:none", both = "0:R8 1:R9 f0:none";
    const std::string two_keys = "<< /Nums [0 [8 0 R 9 0 R] 1 [9 0 R]] >>";
    const struct Case {
        const char* name;
        std::vector<Change> changes;
        const char* lookup;   // LookUpStructParents of the page
        std::string parents;  // what the elements answer
    } cases[] = {
        {"tagged page, form without a key", {}, "array", both},
        {"form with its own key",
         {{&Tagged::form_key, "/StructParents 1"}, {&Tagged::parent_tree, two_keys}}, "array", "0:R8 1:R9 f0:R9"},
        {"form with StructParent",
         {{&Tagged::form_key, "/StructParent 1"}, {&Tagged::parent_tree, two_keys}}, "array", "0:R8 1:R9 f0:R9"},
        {"no key", {{&Tagged::page_key, ""}}, "none", none},
        {"StructParent alone", {{&Tagged::page_key, "/StructParent 0"}}, "array", both},
        {"StructParents before StructParent",
         {{&Tagged::page_key, "/StructParent 1 /StructParents 0"},
          {&Tagged::parent_tree, "<< /Nums [0 [8 0 R 9 0 R] 1 [9 0 R 8 0 R]] >>"}},
         "array", both},
        {"key truncated", {{&Tagged::page_key, "/StructParents 0.9"}}, "array", both},
        {"key beyond 32 bits", {{&Tagged::page_key, "/StructParents 4294967296"}}, "none", none},
        {"key not a number", {{&Tagged::page_key, "/StructParents /Zero"}}, "none", none},
        {"untagged document", {{&Tagged::catalog, ""}}, "none", none},
        {"StructTreeRoot an array", {{&Tagged::catalog, "/StructTreeRoot [6 0 R]"}}, "none", none},
        {"StructTreeRoot a stream", {{&Tagged::catalog, "/StructTreeRoot 12 0 R"}}, "none", none},
        {"StructTreeRoot missing object", {{&Tagged::catalog, "/StructTreeRoot 99 0 R"}}, "none", none},
        {"no ParentTree", {{&Tagged::tree_root, "<< /Type /StructTreeRoot >>"}}, "none", none},
        {"ParentTree an array", {{&Tagged::parent_tree, "[0 [8 0 R 9 0 R]]"}}, "none", none},
        {"key not in the tree", {{&Tagged::page_key, "/StructParents 3"}}, "none", none},
        {"value a dictionary", {{&Tagged::parent_tree, "<< /Nums [0 8 0 R] >>"}}, "R8", none},
        {"value a stream", {{&Tagged::parent_tree, "<< /Nums [0 12 0 R] >>"}}, "R12", none},
        {"value a number", {{&Tagged::parent_tree, "<< /Nums [0 8] >>"}}, "none", none},
        {"value null", {{&Tagged::parent_tree, "<< /Nums [0 null] >>"}}, "none", none},
        {"MCID past the array", {{&Tagged::parent_tree, "<< /Nums [0 [8 0 R]] >>"}}, "array", "0:R8 1:none f0:none"},
        {"entries of other kinds", {{&Tagged::parent_tree, "<< /Nums [0 [(x) 12 0 R]] >>"}}, "array",
         "0:none 1:R12 f0:none"},
        {"direct entry", {{&Tagged::parent_tree, "<< /Nums [0 [<< /S /P >> 9 0 R]] >>"}}, "array",
         "0:direct 1:R9 f0:none"},
        {"odd leaf", {{&Tagged::parent_tree, "<< /Nums [0 [8 0 R 9 0 R] 1] >>"}}, "none", none},
        {"damaged ParentTree object", {{&Tagged::parent_tree, "<< /Nums [0 [8 0 R 9 0 R]] /Type OBJR >>"}},
         "none", none},
        {"tree with a cycle",
         {{&Tagged::parent_tree, "<< /Kids [7 0 R 11 0 R] >>"}, {&Tagged::extra11, "<< /Nums [0 [9 0 R 8 0 R]] >>"}},
         "array", "0:R9 1:R8 f0:none"},
    };
    for (const Case& c : cases) {
        Tagged t;
        for (const auto& [field, value] : c.changes) t.*field = value;
        test::MemoryDoc doc(BuildTagged(t));
        PDF::Page page = doc.FirstPage();
        SDF::Obj* found = PDF::LookUpStructParents(page.GetSDFObj());
        EXPECT_EQ(Ref(found), c.lookup) << c.name;
        Read read;
        PDF::ElementReader reader;
        reader.Begin(page);
        Walk(reader, read, 1);
        reader.End();
        EXPECT_EQ(read.parents, c.parents) << c.name;
        EXPECT_EQ(read.texts, 3) << c.name;
    }
}

TEST(StructParents, PageWithoutAKeyLeavesTheTreeAlone) {
    Tagged t;
    t.page_key = "";
    test::MemoryDoc doc(BuildTagged(t));
    PDF::Page page = doc.FirstPage();
    EXPECT_EQ(PDF::LookUpStructParents(page.GetSDFObj()), nullptr);
    EXPECT_FALSE(page.GetSDFObj()->GetDoc()->GetObj(6)->IsLoaded());
    EXPECT_EQ(PDF::LookUpStructParents(nullptr), nullptr);
}

// Our own tagged file: each page tries one rule of the lookup (the file's comments say which).
TEST(StructParents, TaggedTestFile) {
    const std::vector<std::string> expect = {
        "0:R41 1:R42 2:none",  // Limits hold the key
        "0:R44",               // the first leaf's Limits leave key 2 out
        "0:R45",               // key 3's first value is null; past a Kids entry back to the root
        "0:R46",               // key 4 twice in one leaf: the first wins
        "0:R50 1:R51 f0:R52",  // a form with its own key
        "0:R53 0:R53",         // StructParent; a named properties resource
        "0:none",              // the value is a dictionary
        "0:none",              // only a leaf of odd size holds the key
        "0:none",              // no key
    };
    PDF::Ferrox::Initialize();
    PDF::PDFDoc doc(test::DataPath("struct-parents.pdf").string());
    ASSERT_EQ(doc.GetPageCount(), Int32(expect.size()));
    for (Int32 n = 1; n <= doc.GetPageCount(); ++n) {
        Read read;
        PDF::ElementReader reader;
        reader.Begin(*doc.GetPageIterator(n));
        Walk(reader, read, 1);
        reader.End();
        EXPECT_EQ(read.parents, expect[size_t(n - 1)]) << "page " << n;
    }
}

}  // namespace
