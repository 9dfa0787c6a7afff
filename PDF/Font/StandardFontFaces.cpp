#include "PDF/Font/StandardFontFaces.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <array>
#include <memory>
#include <mutex>
#include <vector>

#include "Common/Exception.h"
#include "Filters/FilterReader.h"
#include "FontSupport/FreeTypeLibrary.h"
#include "PDF/FerroxResources.h"
#include "PDF/Font/StandardFonts.h"
#include "SDF/Obj.h"

namespace lum::PDF::Fnt {

namespace {

struct Slot {
    std::unique_ptr<FontSupport::Face> face;
    bool tried = false;
};
std::array<Slot, kStandardFontCount> gl_faces;

std::unique_ptr<FontSupport::Face> OpenStandardFace(int index) {
    SDF::Obj* font = Resource::GetBase14FontDict(gl_standard_fonts[index].name);
    if (!font) return nullptr;
    SDF::Obj* desc = font->FindObj("FontDescriptor");
    SDF::Obj* file = desc ? desc->FindObj("FontFile") : nullptr;
    if (!file || !file->IsStream()) return nullptr;
    auto chain = file->GetDecodedStream();
    Filters::FilterReader reader(chain.get());
    std::vector<UInt8> program;
    UInt8 buf[65536];
    for (size_t n; (n = reader.Read(buf, sizeof buf)) > 0;) program.insert(program.end(), buf, buf + n);
    return FontSupport::Face::OpenMemory(std::move(program));
}

}  // namespace

FontSupport::Face* GetStandardFontFace(int index) {
    if (index < 0 || index >= kStandardFontCount) return nullptr;
    std::lock_guard<std::recursive_mutex> lock(Resource::GetResourceLock());
    Slot& slot = gl_faces[index];
    if (!slot.tried) {
        slot.tried = true;
        try {
            slot.face = OpenStandardFace(index);
        } catch (const Common::Exception&) {
            slot.face.reset();
        }
    }
    return slot.face.get();
}

bool GetStandardGlyphPath(int index, const char* name, bool conics_to_cubics,
                          FontSupport::GlyphOutline& out, double& advance) {
    out.Clear();
    FontSupport::Face* face = GetStandardFontFace(index);
    if (!face || !name) return false;
    FT_UInt gid = 0;
    {
        std::lock_guard<std::mutex> lock(FontSupport::FreeTypeLibrary::GetLock());
        gid = FT_Get_Name_Index(face->Get(), name);
    }
    if (gid == 0) return false;
    if (face->LoadOutline(gid, FontSupport::Face::kLoadNoScale, conics_to_cubics, out) != 0)
        return false;
    const double scale = 1000.0 / face->GetUnitsPerEm();
    if (scale != 1.0)
        for (double& v : out.points) v *= scale;
    advance = face->GetGlyphMetric(gid, FontSupport::Face::e_horz_advance);
    return true;
}

void ReleaseStandardFontFaces() {
    std::lock_guard<std::recursive_mutex> lock(Resource::GetResourceLock());
    for (Slot& slot : gl_faces) {
        slot.face.reset();
        slot.tried = false;
    }
}

}  // namespace lum::PDF::Fnt
