// fontboxes: the outline bounds of every glyph of the embedded TrueType and CFF/OpenType font
// programs of a PDF, as the font road reads them (a sized face, hinted loads falling back to
// unhinted ones on instruction errors, scaled back to font units, y negated, curves by their
// control points). With --dump DIR each program is written to DIR/<object>.<kind> too, for an
// independent reader to compare with (tools/fontboxes-compare).
//
//   fontboxes [--dump DIR] [--max-glyphs N] FILE
//
// Output: one line per glyph: object, kind (ttf or cff), glyph index, units per em, outline
// (1 or 0), x1 y1 x2 y2. The library is started; a program FreeType refuses gives a line
// "object kind refused".
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Filters/FilterReader.h"
#include "Filters/MappedFile.h"
#include "FontSupport/Face.h"
#include "PDF/Ferrox.h"
#include "SDF/DocImpl.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

using namespace lum;

namespace {

std::vector<UInt8> ReadAll(SDF::Obj* stm) {
    auto chain = stm->GetDecodedStream();
    Filters::FilterReader r(chain.get());
    std::vector<UInt8> out;
    UInt8 buf[65536];
    for (size_t n; (n = r.Read(buf, sizeof buf)) > 0;) out.insert(out.end(), buf, buf + n);
    return out;
}

void Measure(UInt32 obj, const char* kind, std::vector<UInt8> program, UInt32 max_glyphs) {
    std::unique_ptr<FontSupport::Face> face;
    try {
        face = FontSupport::Face::OpenMemory(std::move(program), true);
    } catch (const Common::Exception&) {
        std::printf("%u %s refused\n", obj, kind);
        return;
    }
    bool scaled = true;
    const UInt32 n = std::min(face->GetNumGlyphs(), max_glyphs);
    FontSupport::GlyphOutline out;
    for (UInt32 gid = 0; gid < n; ++gid) {
        int error = face->LoadOutline(gid, scaled ? FontSupport::Face::kLoadScaled
                                                  : FontSupport::Face::kLoadNoScale,
                                      true, out);
        if (error >= 128 && error <= 141 && scaled) {
            scaled = false;
            error = face->LoadOutline(gid, FontSupport::Face::kLoadNoScale, true, out);
        }
        if (error || out.points.size() < 2) {
            std::printf("%u %s %u %d 0 0 0 0 0\n", obj, kind, gid, face->GetUnitsPerEm());
            continue;
        }
        const double s = scaled ? 1.0 / 256 : 1.0;
        double x1 = out.points[0], y1 = out.points[1], x2 = x1, y2 = y1;
        for (size_t i = 0; i + 1 < out.points.size(); i += 2) {
            x1 = std::min(x1, out.points[i]);
            x2 = std::max(x2, out.points[i]);
            y1 = std::min(y1, out.points[i + 1]);
            y2 = std::max(y2, out.points[i + 1]);
        }
        const bool area = (x2 - x1) * (y2 - y1) != 0;
        std::printf("%u %s %u %d %d %.3f %.3f %.3f %.3f\n", obj, kind, gid, face->GetUnitsPerEm(),
                    area ? 1 : 0, x1 * s, y1 * s, x2 * s, y2 * s);
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::string dump, file;
    UInt32 max_glyphs = 1000;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--dump") && i + 1 < argc) dump = argv[++i];
        else if (!std::strcmp(argv[i], "--max-glyphs") && i + 1 < argc) max_glyphs = UInt32(std::atoi(argv[++i]));
        else file = argv[i];
    }
    if (file.empty()) {
        std::fprintf(stderr, "usage: fontboxes [--dump DIR] [--max-glyphs N] FILE\n");
        return 2;
    }
    PDF::Ferrox::Initialize();
    try {
        SDF::SDFLinarDoc doc(std::make_unique<Filters::MappedFile>(file));
        doc.InitSecurityHandler();
        SDF::DocImpl& impl = *doc.GetImpl();
        for (size_t n = 1; n < impl.GetXRefSize(); ++n) {
            try {
                SDF::Obj* obj = impl.GetObj(UInt32(n));
                if (!obj || !obj->IsDict()) continue;
                SDF::Obj* type = obj->FindObj("Type");
                if (!type || !type->IsName() || std::strcmp(type->GetName(), "FontDescriptor")) continue;
                for (const char* key : {"FontFile2", "FontFile3"}) {
                    SDF::Obj* stm = obj->FindObj(key);
                    if (!stm || !stm->IsStream()) continue;
                    SDF::Obj* sub = stm->FindObj("Subtype");
                    const std::string subtype = sub && sub->IsName() ? sub->GetName() : "";
                    const char* kind = !std::strcmp(key, "FontFile2") || subtype == "OpenType" ? "ttf" : "cff";
                    if (!std::strcmp(kind, "cff") && subtype != "Type1C" && subtype != "CIDFontType0C") continue;
                    const UInt32 num = stm->IsIndirect() ? stm->GetObjNum() : UInt32(n);
                    std::vector<UInt8> program = ReadAll(stm);
                    if (!dump.empty()) {
                        std::ofstream f(dump + "/" + std::to_string(num) + "." + kind, std::ios::binary);
                        f.write(reinterpret_cast<const char*>(program.data()), std::streamsize(program.size()));
                    }
                    Measure(num, kind, std::move(program), max_glyphs);
                }
            } catch (const Common::Exception&) {
            }
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s: %s\n", file.c_str(), e.what());
        PDF::Ferrox::Terminate();
        return 1;
    }
    PDF::Ferrox::Terminate();
    return 0;
}
