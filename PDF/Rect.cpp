#include "PDF/Rect.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "SDF/Obj.h"

namespace lum::PDF {

Rect::Rect(SDF::Obj* arr) { Attach(arr); }

void Rect::Attach(SDF::Obj* arr) {
    x1 = arr->GetAt(0)->GetNumber();
    y1 = arr->GetAt(1)->GetNumber();
    x2 = arr->GetAt(2)->GetNumber();
    y2 = arr->GetAt(3)->GetNumber();
    mp_rect = arr;
}

void Rect::Normalize() {
    if (x1 > x2) std::swap(x1, x2);
    if (y1 > y2) std::swap(y1, y2);
}

double Rect::Width() const { return std::fabs(x2 - x1); }
double Rect::Height() const { return std::fabs(y2 - y1); }

bool Rect::IntersectRect(const Rect& a, const Rect& b) {
    Rect r1 = a, r2 = b;
    r1.Normalize();
    r2.Normalize();
    // Touching rectangles pass this test and then fail on area below.
    if (r1.x2 < r2.x1 || r2.x2 < r1.x1 || r1.y2 < r2.y1 || r2.y2 < r1.y1) {
        x1 = y1 = x2 = y2 = 0;
        return false;
    }
    x1 = std::max(r1.x1, r2.x1);
    y1 = std::max(r1.y1, r2.y1);
    x2 = std::min(r1.x2, r2.x2);
    y2 = std::min(r1.y2, r2.y2);
    mp_rect = nullptr;
    if (x2 - x1 == 0 || y2 - y1 == 0) {
        x1 = y1 = x2 = y2 = 0;
        return false;
    }
    return true;
}

}  // namespace lum::PDF
