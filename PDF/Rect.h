#pragma once
// A rectangle of page space: a page box, a clip box, a glyph box.
namespace lum::SDF { class Obj; }

namespace lum::PDF {

struct Rect {
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    // The array this rectangle was read from, or null. Values read from a file are kept as
    // stored: they need not be ordered.
    SDF::Obj* mp_rect = nullptr;

    Rect() = default;
    Rect(double ax1, double ay1, double ax2, double ay2) : x1(ax1), y1(ay1), x2(ax2), y2(ay2) {}
    // Reads elements 0 to 3 of `arr` as numbers; a non-number raises, as every Obj call does.
    explicit Rect(SDF::Obj* arr);

    void Attach(SDF::Obj* arr);

    // Orders the corners so that x1 <= x2 and y1 <= y2.
    void Normalize();
    double Width() const;   // absolute
    double Height() const;  // absolute

    // Sets this to the overlap of `a` and `b`. When they are apart or the overlap has no area,
    // this becomes all zeros and the answer is false.
    bool IntersectRect(const Rect& a, const Rect& b);

    bool operator==(const Rect& o) const {
        return x1 == o.x1 && y1 == o.y1 && x2 == o.x2 && y2 == o.y2;
    }
};

}  // namespace lum::PDF
