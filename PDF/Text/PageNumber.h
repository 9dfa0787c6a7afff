#pragma once
// The number of a page in its document, found from the page upwards: each level adds the
// pages that the kids before it hold (1 for a page, its Count for a node). The sums of one
// Kids array are made once, so numbering every page of a flat tree stays linear.
#include <unordered_map>
#include <vector>

#include "Common/Types.h"

namespace lum::SDF {
class Obj;
class SDFDoc;
}  // namespace lum::SDF

namespace lum::PDF {

class Page;

class PageNumberCache {
public:
    // The page's number from 1, or 0 when the tree doesn't tell it.
    Int32 Find(const Page& page);

private:
    struct Kids {
        std::vector<double> before;  // pages held by the kids before each index
        std::unordered_map<const SDF::Obj*, UInt32> index;  // a kid (entry or target): its index
    };
    // What a Kids array tells, read once.
    const Kids& Read(SDF::Obj* kids);

    const SDF::SDFDoc* mp_doc = nullptr;
    std::unordered_map<const SDF::Obj*, Kids> m_kids;
};

}  // namespace lum::PDF
