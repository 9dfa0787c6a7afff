#include "PDF/StructParents.h"

#include "Common/Exception.h"
#include "Common/NumberConversions.h"
#include "SDF/NTree.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

namespace lum::PDF {

SDF::Obj* LookUpStructParents(SDF::Obj* page_or_form) noexcept {
    if (!page_or_form) return nullptr;
    try {
        // The key first: most pages and forms have none, and then the tree isn't touched.
        SDF::Obj* key = page_or_form->FindObj(SDF::Name(SDF::e_StructParents));
        if (!key) key = page_or_form->FindObj(SDF::Name(SDF::e_StructParent));
        if (!key) return nullptr;
        const Int32 number = Common::TruncateToInt32(key->GetNumber());

        SDF::SDFDoc* doc = page_or_form->GetDoc();
        if (!doc) return nullptr;
        SDF::Obj* tree_root = doc->GetRoot()->FindObj(SDF::Name(SDF::e_StructTreeRoot));
        if (!tree_root || !tree_root->IsDict()) return nullptr;
        SDF::Obj* parent_tree = tree_root->FindObj(SDF::Name(SDF::e_ParentTree));
        if (!parent_tree) return nullptr;

        const SDF::NTreeNode entry(parent_tree, number);
        if (entry.IsEnd()) return nullptr;
        SDF::Obj* value = entry.Value();
        return value->IsArray() || value->IsDict() || value->IsStream() ? value : nullptr;
    } catch (const Common::Exception&) {
        return nullptr;
    }
}

}  // namespace lum::PDF
