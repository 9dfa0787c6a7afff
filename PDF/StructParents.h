#pragma once
// The structure parents of a page's or form's marked content: the entry of its StructParents
// (or StructParent) key in the ParentTree of the document's structure tree.
namespace lum::SDF {
class Obj;
}

namespace lum::PDF {

// The ParentTree value for `page_or_form` when it is an array, a dictionary or a stream; null
// for an untagged document, a page or form without a key, a key not in the tree, a value of
// another kind, and every failure on the way (a damaged tree costs the structure, never the
// page).
SDF::Obj* LookUpStructParents(SDF::Obj* page_or_form) noexcept;

}  // namespace lum::PDF
