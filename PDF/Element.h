#pragma once
// What the content reader hands out: one text string, one painted path, one image, one
// bracket. An element is valid until the reader's next `Next`; a client copies what it wants
// to keep. Positions of text are relative to the text matrix: a character's origin on the
// page is (x, y) through GetTextMatrix() and then GetCTM().
#include <string>

#include "Common/Matrix2D.h"
#include "Common/Types.h"
#include "Common/UString.h"
#include "PDF/CharData.h"
#include "PDF/ContentResources.h"
#include "PDF/GState.h"
#include "PDF/Rect.h"

namespace lum::SDF {
class Obj;
}

namespace lum::PDF {

// The image side of an element (e_image, e_inline_image).
class ImageBase {
public:
    virtual ~ImageBase();
    // The bytes of an inline image (decoded), null for other kinds.
    virtual const UInt8* GetImageData() const = 0;
    virtual int GetImageDataSize() const = 0;
    // The colour space object of the image (the inline value or the dictionary's), or null.
    virtual SDF::Obj* GetImageColorSpace() const = 0;
    virtual int GetImageWidth() const = 0;
    virtual int GetImageHeight() const = 0;
    virtual SDF::Obj* GetDecodeArray() const = 0;
    virtual int GetBitsPerComponent() const = 0;
    virtual int GetComponentNum() const = 0;
    virtual bool IsImageMask() const = 0;
    virtual bool IsImageInterpolate() const = 0;
    virtual SDF::Obj* GetMask() const = 0;
    virtual SDF::Obj* GetSoftMask() const = 0;
    virtual void ImageReserved() {}
    virtual GState::RenderingIntent GetImageRenderingIntent() const = 0;
};

class Element : public ImageBase {
public:
    enum Type : Int32 {
        e_null = 0,
        e_path = 1,
        e_text_begin = 2,
        e_text = 3,
        e_text_new_line = 4,
        e_text_end = 5,
        e_image = 6,
        e_inline_image = 7,
        e_shading = 8,
        e_form = 9,
        e_group_begin = 10,
        e_group_end = 11,
        e_marked_content_begin = 12,
        e_marked_content_end = 13,
        e_marked_content_point = 14,
    };

    // Path segment codes.
    enum PathSegmentType {
        e_moveto = 1,
        e_lineto = 2,
        e_cubicto = 3,
        e_conicto = 4,
        e_rect = 5,
        e_closepath = 6,
    };

    virtual Type GetType() const = 0;
    // The state in force: read it at once, the next `Next` changes it.
    virtual GState& GetGState() = 0;
    virtual const Common::Matrix2D& GetCTM() const = 0;
    // The element's box in page space, ordered; false (and an empty rect) when it has none.
    virtual bool GetBBox(Rect& out) = 0;
    virtual SDF::Obj* GetParentStructElement() = 0;
    virtual int GetStructMCID() = 0;
    virtual bool IsOCVisible() const = 0;
    virtual bool IsClippingPath() const = 0;
    virtual bool IsStroked() const = 0;
    virtual bool IsFilled() const = 0;
    virtual bool IsWindingFill() const = 0;
    virtual bool IsClipWindingFill() const = 0;
    // Segment codes and coordinates of a path; null when empty. GetPointCount counts doubles.
    virtual const UInt8* GetPathTypes() const = 0;
    virtual int GetPathTypesCount() const = 0;
    virtual const double* GetPathPoints() const = 0;
    virtual int GetPointCount() const = 0;
    virtual void SetPathClip(bool clip) = 0;
    virtual void SetPathStroke(bool stroke) = 0;
    virtual void SetPathFill(bool fill) = 0;
    virtual void SetWindingFill(bool winding) = 0;
    virtual void SetClipWindingFill(bool winding) = 0;
    virtual void SetPathPoints(const double* points, int count) = 0;
    virtual void SetPathTypes(const UInt8* types, int count) = 0;
    // The image, form or shading of e_image, e_form, e_shading; null for other kinds.
    virtual SDF::Obj* GetXObject() const = 0;
    virtual void SetXObject(SDF::Obj* xobject) = 0;
    // Image samples as RGB are not produced on the text road.
    virtual std::string GetImageRGB() = 0;
    // The Unicode text of the string, through the font's mapping (up to 10 units a code).
    virtual UString GetTextString() = 0;
    // The shown bytes, undecoded (decrypted as all strings are).
    virtual const UInt8* GetTextData() const = 0;
    virtual int GetTextDataSize() const = 0;
    virtual const Common::Matrix2D& GetTextMatrix() const = 0;
    virtual void GetCharIterator(CharData& first) const = 0;
    virtual void GetCharIteratorEnd(CharData& end) const = 0;
    // The sum of the advances, in text space.
    virtual double GetTextLength() const = 0;
    // The TJ number ahead of this string, thousandths of text space.
    virtual double GetPosAdjustment() const = 0;
    virtual void GetNewTextLineOffset(double& x, double& y) const = 0;
    virtual bool HasTextMatrix() const = 0;
    virtual void SetTextData(const UInt8* bytes, int size) = 0;
    virtual void SetTextData(const std::string& bytes) = 0;
    virtual void SetTextMatrix(const Common::Matrix2D& mtx) = 0;
    virtual void SetTextMatrix(double a, double b, double c, double d, double h, double v) = 0;
    virtual void SetPosAdjustment(double adjust) = 0;
    // The position behind the string, where the next one starts.
    virtual void GetEndPosition(double& x, double& y) const = 0;
    virtual void GetStartPosition(double& x, double& y) const = 0;
    // Positions the characters of the string from its start position; answers the length.
    virtual double UpdateTextMetrics() = 0;
    virtual void SetNewTextLineOffset(double x, double y) = 0;
    virtual SDF::Obj* GetShading() const = 0;
    virtual SDF::Obj* GetMCPropertyDict() const = 0;
    virtual SDF::Obj* GetMCTag() const = 0;
    virtual void ElementReserved() {}
    // Of an e_form; raises "Not an e_form" for any other kind.
    virtual FormXObj GetFormXObj() const = 0;
};

}  // namespace lum::PDF
