// Embedded font programs through the font road: a font dictionary in memory whose descriptor
// embeds the input (header byte: 0 FontFile2 TrueType, 1 FontFile3 OpenType, 2 FontFile3
// Type1C, 3 FontFile Type 1), asked for the outlines of its first glyphs by index and for the
// glyph boxes of its codes. A program FreeType refuses makes a font that isn't embedded, which
// the substitute then draws: both roads run.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Common/Exception.h"
#include "PDF/Ferrox.h"
#include "PDF/Font/Font.h"
#include "PDF/GlyphBoxCache.h"
#include "SDF/Obj.h"
#include "tests/PDF/ObjBuilder.h"

using namespace lum;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool started = [] {
        PDF::Ferrox::Initialize();
        return true;
    }();
    (void)started;
    if (size < 1) return 0;
    const int kind = data[0] % 4;
    test::ObjPool pool;
    auto* stream_dict = new SDF::Dict();
    if (kind == 1) stream_dict->PutName("Subtype", "OpenType");
    if (kind == 2) stream_dict->PutName("Subtype", "Type1C");
    if (kind == 3) stream_dict->PutNumber("Length1", double(size - 1));
    SDF::Indirect* program = pool.NewRef(
        new SDF::FileStream(stream_dict, std::vector<UInt8>(data + 1, data + size)));
    auto* desc = new SDF::Dict();
    desc->PutName("Type", "FontDescriptor");
    desc->PutName("FontName", "Fuzz");
    desc->PutNumber("Flags", 32);
    desc->PutIndirect(kind == 0 ? "FontFile2" : kind == 3 ? "FontFile" : "FontFile3", program);
    auto* font_dict = new SDF::Dict();
    font_dict->PutName("Type", "Font");
    font_dict->PutName("Subtype", kind == 0 || kind == 1 ? "TrueType" : "Type1");
    font_dict->PutName("BaseFont", "Fuzz");
    font_dict->PutNumber("FirstChar", 0);
    font_dict->PutNumber("LastChar", 255);
    SDF::Obj* widths = font_dict->PutArray("Widths");
    for (int i = 0; i < 256; ++i) widths->PushBack(new SDF::Number(500));
    font_dict->PutIndirect("FontDescriptor", pool.NewRef(desc));
    SDF::Indirect* font_ref = pool.NewRef(font_dict);
    try {
        PDF::Font font(static_cast<SDF::Obj*>(font_ref));
        std::vector<UInt8> ops;
        std::vector<double> points;
        for (UInt32 gid = 0; gid < 32; ++gid) font.GetGlyphPath(gid, ops, points, gid & 1, nullptr, true);
        PDF::GlyphBoxCache cache;
        PDF::FormSet forms;
        for (UInt32 code = 0; code < 256; code += 3) {
            PDF::CharData c;
            c.char_code = code;
            PDF::Rect box;
            cache.GetGlyphBox(font, c, box, forms);
        }
    } catch (const Common::Exception&) {
    }
    return 0;
}
