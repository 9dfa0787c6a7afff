#pragma once
// A page: a handle on one dictionary of the page tree. Every question reads that dictionary,
// walking up its Parent chain for inheritable attributes, and answers with a usable value for
// incomplete pages; only a box array holding a non-number raises.
#include "PDF/Rect.h"
#include "Common/Types.h"

namespace lum::SDF {
class Obj;
class Name;
}  // namespace lum::SDF

namespace lum::PDF {

class Page {
public:
    enum Box { e_media = 0, e_crop = 1, e_bleed = 2, e_trim = 3, e_art = 4, e_user_crop = 5 };
    // Page rotation, clockwise.
    enum Rotate { e_0 = 0, e_90 = 1, e_180 = 2, e_270 = 3 };

    // The page size of the program when a page has none: US Letter at 72 points to the inch.
    static constexpr double kDefaultWidth = 612;
    static constexpr double kDefaultHeight = 792;

    Page() = default;
    explicit Page(SDF::Obj* page_dict) : mp_leaf_node(page_dict) {}

    // A dictionary that is not null and, for a reference, not free.
    bool IsValid() const;
    SDF::Obj* GetSDFObj() const { return mp_leaf_node; }

    // The value of `key` in the page or the nearest ancestor that has it, or null.
    SDF::Obj* FindInheritedAttribute(const SDF::Name& key) const;

    // The inherited MediaBox as stored, possibly unordered; US Letter when there is none.
    Rect GetMediaBox() const;
    // The crop box cut down to the media box; the raw media box when there is no usable one.
    Rect GetCropBox() const;
    Rect GetBox(Box kind) const;
    Rotate GetRotation() const;
    // Of the crop box, with width and height exchanged for a page turned by 90 or 270 degrees.
    double GetPageWidth() const;
    double GetPageHeight() const;

    // The page's own Contents and Annots (not inherited), or null.
    SDF::Obj* GetContents() const;
    SDF::Obj* GetAnnots() const;
    // The inherited Resources; raises "Page resources not found." when there are none.
    SDF::Obj* GetResourceDict() const;

    // The page's number in its document, from 1: the number under which the document last
    // found it, else the one its Parent chain tells; 0 when neither can be told.
    Int32 GetIndex() const;

    bool operator==(const Page& other) const { return mp_leaf_node == other.mp_leaf_node; }

    // 0, 90, 180 or 270.
    static int RotationToDegrees(Rotate r) { return static_cast<int>(r) * 90; }

private:
    // The inherited box of `key` when it is an array of at least four numbers, else null.
    SDF::Obj* FindBoxArray(const SDF::Name& key) const;
    // The crop box rules shared by GetCropBox and GetBox; `degenerate_as_media_box` picks the
    // answer for a crop box without area.
    Rect CropBox(bool degenerate_as_media_box) const;

public:
    // The page dictionary; not owned.
    SDF::Obj* mp_leaf_node = nullptr;
};

// The inherited Resources of `page`; raises when there are none.
SDF::Obj* IMPL_LUM_PageGetResourceDict(SDF::Obj* page);

}  // namespace lum::PDF
