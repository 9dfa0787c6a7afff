#pragma once
// The keys of a document's large number tree leaves, indexed once. A tree stored as one flat
// Nums array of many thousand pairs (the common way producers write a ParentTree) would cost
// a scan of the array for every page's lookup, so a document of n pages would cost n squared;
// with the index each lookup is a binary search. The answers are those of the scan from the
// front: the first of equal keys, and the failure of the first key that isn't a number when
// the key doesn't stand before it.
#include "Common/Types.h"

namespace lum::SDF {

class Obj;

// The position of the first key equal to `key` among the even positions of `leaf`
// (an array of `size` elements, size even), or -1. Leaves that are small, hold no document or
// are asked for a key that isn't a number are scanned.
Int64 FindKeyInLeaf(Obj* leaf, UInt64 size, Obj* key);

// The scan itself, from position `from` (even) on.
Int64 ScanLeaf(Obj* leaf, UInt64 size, Obj* key, UInt64 from);

}  // namespace lum::SDF
