#include "PDF/Page.h"

#include <cmath>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "PDF/PDFDoc.h"
#include "PDF/PageIterator.h"
#include "SDF/Obj.h"

namespace lum::PDF {

using SDF::Obj;

namespace {

const SDF::Name& BoxKey(Page::Box kind) {
    static const SDF::Name media(SDF::e_MediaBox), crop(SDF::e_CropBox), bleed(SDF::e_BleedBox),
        trim(SDF::e_TrimBox), art(SDF::e_ArtBox), user_crop("LUM_UserCrop");
    switch (kind) {
        case Page::e_media: return media;
        case Page::e_crop: return crop;
        case Page::e_bleed: return bleed;
        case Page::e_trim: return trim;
        case Page::e_art: return art;
        case Page::e_user_crop: break;
    }
    return user_crop;
}

bool HasArea(const Rect& r) { return r.x2 - r.x1 != 0 && r.y2 - r.y1 != 0; }

// The parent of `node` for the inheritance walk, or null where the walk ends: no Parent, or a
// Parent that is the node itself. A Parent of another kind is asked like a node: a stream
// answers from its dictionary, anything else raises, and so does one that can't be loaded.
Obj* ParentOf(Obj* node) {
    Obj* parent = node->FindObj(SDF::e_Parent);
    if (!parent || parent == node || parent->GetDirect() == node->GetDirect()) return nullptr;
    return parent;
}

}  // namespace

bool Page::IsValid() const {
    if (!mp_leaf_node) return false;
    // Objects the program makes (the blank page) carry the free kind, being no part of the
    // file, but have a value; a free entry of the file never has one.
    if (mp_leaf_node->IsIndirect() && mp_leaf_node->IsFree() && !mp_leaf_node->IsLoaded())
        return false;
    return mp_leaf_node->IsDict();
}

Obj* Page::FindInheritedAttribute(const SDF::Name& key) const {
    if (!IsValid()) return nullptr;
    Obj* node = mp_leaf_node;
    // The depth cap also ends a Parent chain that loops through several nodes.
    for (int depth = 0; node && depth <= Limits::kMaxPageTreeDepth; ++depth) {
        if (Obj* value = node->FindObj(key)) return value;
        node = ParentOf(node);
    }
    return nullptr;
}

Obj* Page::FindBoxArray(const SDF::Name& key) const {
    // Only the size is tested: a string or dictionary of four or more passes, and fails in the
    // conversion to a Rect.
    Obj* box = FindInheritedAttribute(key);
    if (box && box->Size() > 3) return box;
    return nullptr;
}

Rect Page::GetMediaBox() const {
    if (Obj* box = FindBoxArray(BoxKey(e_media))) return Rect(box);
    return Rect(0, 0, kDefaultWidth, kDefaultHeight);
}

Rect Page::CropBox(bool degenerate_as_media_box) const {
    const Rect media = GetMediaBox();
    Obj* box = FindBoxArray(BoxKey(e_crop));
    if (!box) return media;
    const Rect raw(box);
    Rect crop;
    if (crop.IntersectRect(raw, media)) return crop;
    // A crop box outside the media box stands when it has an area of its own.
    if (HasArea(raw)) return raw;
    return degenerate_as_media_box ? media : GetBox(e_media);
}

Rect Page::GetCropBox() const { return CropBox(true); }

Rect Page::GetBox(Box kind) const {
    if (kind == e_media) {
        Rect media = GetMediaBox();
        if (HasArea(media)) return media;
        media.Normalize();
        // A page without area would divide by zero further on; give it a sliver.
        if (media.x2 - media.x1 == 0) media.x2 += 0.0001;
        if (media.y2 - media.y1 == 0) media.y2 += 0.0001;
        return media;
    }
    const Rect crop = CropBox(false);
    if (kind == e_crop) return crop;
    // These boxes are converted as found, with no test of their size.
    Obj* box = FindInheritedAttribute(BoxKey(kind));
    if (kind == e_user_crop) {
        Rect user;
        if (box && user.IntersectRect(Rect(box), crop)) return user;
        return crop;
    }
    if (!box) return crop;
    Rect r;
    r.IntersectRect(Rect(box), GetMediaBox());  // no overlap leaves all zeros, as intended
    return r;
}

Page::Rotate Page::GetRotation() const {
    Obj* rotate = FindInheritedAttribute(SDF::e_Rotate);
    if (!rotate || !rotate->IsNumber()) return e_0;
    const double value = std::trunc(rotate->GetNumber());
    if (!std::isfinite(value)) return e_0;
    double deg = std::fmod(value, 360.0);
    if (deg < 0) deg += 360;
    if (deg == 90) return e_90;
    if (deg == 180) return e_180;
    if (deg == 270) return e_270;
    return e_0;
}

double Page::GetPageWidth() const {
    Rect box = GetBox(e_crop);
    box.Normalize();
    const Rotate r = GetRotation();
    return (r == e_90 || r == e_270) ? box.Height() : box.Width();
}

double Page::GetPageHeight() const {
    Rect box = GetBox(e_crop);
    box.Normalize();
    const Rotate r = GetRotation();
    return (r == e_90 || r == e_270) ? box.Width() : box.Height();
}

Obj* Page::GetContents() const {
    if (!IsValid()) return nullptr;
    return mp_leaf_node->FindObj(SDF::e_Contents);
}

Obj* Page::GetAnnots() const {
    if (!IsValid()) return nullptr;
    return mp_leaf_node->FindObj(SDF::e_Annots);
}

Int32 Page::GetIndex() const {
    if (!IsValid()) return 0;
    auto* doc = dynamic_cast<PDFDoc*>(mp_leaf_node->GetDoc());
    if (!doc) return 0;
    if (const Int32 found = doc->GetFoundPageNumber(mp_leaf_node)) return found;
    try {
        return PageIterator::NumberByParents(mp_leaf_node, doc->GetPagesRoot());
    } catch (const Common::Exception&) {
        return 0;  // no catalog or no Pages: no tree to count in
    }
}

Obj* Page::GetResourceDict() const { return IMPL_LUM_PageGetResourceDict(mp_leaf_node); }

Obj* IMPL_LUM_PageGetResourceDict(Obj* page) {
    Obj* o = Page(page).FindInheritedAttribute(SDF::e_Resources);
    LUM_CHECK(o != 0, "Page resources not found.");
    return o;
}

}  // namespace lum::PDF
