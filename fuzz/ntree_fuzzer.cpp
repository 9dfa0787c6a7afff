// Number and name trees from fuzzed objects. The input's first byte picks the page's key; the
// rest is object bodies separated by ';', the first of them the root of the ParentTree. Each
// run looks keys up in the tree, walks a name tree lookup and the first entry over the same
// objects, and reads the page's marked content through the element reader, asking every
// sequence for its structure parent.
#include <climits>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Filters/ExtBufInputFilter.h"
#include "PDF/ElementReader.h"
#include "PDF/PDFDoc.h"
#include "PDF/StructParents.h"
#include "SDF/NTree.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"
#include "tests/PDF/PdfBuilder.h"

namespace {

using namespace lum;

constexpr size_t kMaxBodies = 64;
constexpr UInt32 kTreeRoot = 6;

std::string BuildPdf(const UInt8* data, size_t size, int key) {
    const std::string content =
        "/P <</MCID 0>> BDC EMC /P <</MCID 1>> BDC EMC /Q /Pr BDC EMC /P <</MCID 2>> DP";
    std::vector<std::string> objects = {
        "<< /Type /Catalog /Pages 2 0 R /StructTreeRoot 3 0 R >>",
        "<< /Type /Pages /Kids [4 0 R] /Count 1 >>",
        "<< /Type /StructTreeRoot /ParentTree 6 0 R >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 9 9] /StructParents " + std::to_string(key) +
            " /Contents 5 0 R /Resources << /Properties << /Pr << /MCID 3 >> >> >> >>",
        "<< /Length " + std::to_string(content.size()) + " >>\nstream\n" + content + "\nendstream",
    };
    const char* p = reinterpret_cast<const char*>(data);
    const char* end = p + size;
    while (p <= end && objects.size() < kTreeRoot - 1 + kMaxBodies) {
        const char* q = p;
        while (q < end && *q != ';') ++q;
        objects.emplace_back(p, q);
        p = q + 1;
    }
    return test::BuildPdf(objects);
}

template <class F>
void Try(F&& f) {
    try {
        f();
    } catch (const Common::Exception&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const std::string pdf = BuildPdf(data + 1, size - 1, data[0] % 8);
    Try([&] {
        PDF::PDFDoc doc(std::make_unique<Filters::ExtBufInputFilter>(
            reinterpret_cast<const UInt8*>(pdf.data()), pdf.size()));
        SDF::Obj* root = doc.GetObj(kTreeRoot);
        for (Int32 key : {0, 1, 2, 3, 7, -1, INT_MIN, INT_MAX})
            Try([&] {
                const SDF::NTreeNode node(root, key);
                if (!node.IsEnd()) node.Value();
                (void)(node == SDF::NTreeNode());
            });
        Try([&] {
            SDF::NTreeNode names;
            SDF::NTreeNode::VisitedSet visited;
            SDF::Str key(reinterpret_cast<const UInt8*>("a"), 1);
            if (names.FindImpl(visited, root, &key)) names.Value();
        });
        Try([&] {
            SDF::NTreeNode first;
            SDF::NTreeNode::VisitedSet visited;
            if (first.FindImpl(visited, root, nullptr)) first.Value();
        });
        PDF::PageIterator it = doc.GetPageIterator(1);
        if (it == doc.GetPageIteratorEnd()) return;
        const PDF::Page page = *it;
        PDF::LookUpStructParents(page.GetSDFObj());
        PDF::ElementReader reader;
        reader.Begin(page);
        Try([&] {
            while (PDF::Element* e = reader.Next()) {
                e->GetStructMCID();
                e->GetParentStructElement();
            }
        });
        reader.End();
    });
    return 0;
}
