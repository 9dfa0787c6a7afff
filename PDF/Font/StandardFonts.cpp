#include "PDF/Font/StandardFonts.h"

#include <atomic>

namespace lum::PDF::Fnt {

namespace {

std::atomic<bool> gl_widths_ready{false};

UInt32 WidthHash(std::string_view name) {
    UInt32 h = 0;
    for (unsigned char c : name) h = h * 17 + c;
    return h;
}

}  // namespace

bool StdWidthTable::Find(std::string_view name, double& width) const {
    if (count == 0) return false;
    for (Int16 k = buckets[WidthHash(name) % count]; k >= 0; k = entries[k].next) {
        if (name == entries[k].name) {
            width = entries[k].width;
            return true;
        }
    }
    return false;
}

const StdWidthTable* GetStandardFontWidths(int index) {
    if (index < 0 || index >= kStandardFontCount) return nullptr;
    if (!gl_widths_ready.load(std::memory_order_acquire)) return nullptr;
    return &gl_standard_fonts[index].width_data;
}

void InitStandardFontWidths() { gl_widths_ready.store(true, std::memory_order_release); }
void ReleaseStandardFontWidths() { gl_widths_ready.store(false, std::memory_order_release); }

}  // namespace lum::PDF::Fnt
