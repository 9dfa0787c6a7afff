// glyphboxes: walks the text of every page as the text engine will, and asks the glyph box
// cache for each character: how each font's glyphs are drawn (embedded program, standard font
// of its name, system font, fallback standard font, Type 3), how many embedded programs
// FreeType refused, and with --chars the box and outline bit of every character.
//
//   glyphboxes [--chars] FILE...
//
// One summary line per file; the exit status is 1 when a file could not be opened.
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>

#include "Common/Exception.h"
#include "Filters/MappedFile.h"
#include "PDF/Element.h"
#include "PDF/ElementReader.h"
#include "PDF/Ferrox.h"
#include "PDF/Font/FontImpl.h"
#include "PDF/Font/FontSubstitution.h"
#include "PDF/GlyphBoxCache.h"
#include "PDF/PDFDoc.h"
#include "PDF/Page.h"
#include "PDF/PageIterator.h"
#include "SDF/Obj.h"

using namespace lum;

namespace {

struct Tally {
    long chars = 0, outlined = 0;
    std::map<SDF::Obj*, PDF::Font> fonts;
};

void Walk(PDF::ElementReader& reader, PDF::GlyphBoxCache& cache, PDF::FormSet& forms, Tally& t,
          int page, bool chars, int depth) {
    while (PDF::Element* e = reader.Next()) {
        if (e->GetType() == PDF::Element::e_form && depth < 32) {
            reader.FormBegin();
            Walk(reader, cache, forms, t, page, chars, depth + 1);
            reader.End();
            continue;
        }
        if (e->GetType() != PDF::Element::e_text) continue;
        const PDF::Font& font = e->GetGState().GetFont();
        if (!font) continue;
        t.fonts.emplace(font.GetSDFObj(), font);
        PDF::CharData c, end;
        e->GetCharIterator(c);
        e->GetCharIteratorEnd(end);
        for (; c != end; ++c) {
            PDF::Rect box;
            const bool outline = cache.GetGlyphBox(font, c, box, forms);
            ++t.chars;
            t.outlined += outline;
            if (chars)
                std::printf("%d %s %u %d %.2f %.2f %.2f %.2f\n", page, font.GetName(), c.char_code,
                            outline ? 1 : 0, box.x1, box.y1, box.x2, box.y2);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    bool chars = false;
    int status = 0;
    PDF::Ferrox::Initialize();
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--chars")) {
            chars = true;
            continue;
        }
        Tally t;
        int pages = 0, failed_pages = 0;
        try {
            PDF::PDFDoc doc(std::make_unique<Filters::MappedFile>(argv[i]));
            doc.InitSecurityHandler();
            PDF::GlyphBoxCache& cache = PDF::GlyphBoxCache::Of(*doc.GetImpl());
            const Int32 count = doc.GetPageCount();
            for (Int32 n = 1; n <= count; ++n) {
                ++pages;
                try {
                    PDF::PageIterator it = doc.GetPageIterator(n);
                    if (it == doc.GetPageIteratorEnd()) {
                        ++failed_pages;
                        continue;
                    }
                    PDF::ElementReader reader;
                    reader.Begin(it.Current());
                    PDF::FormSet forms;
                    Walk(reader, cache, forms, t, pages, chars, 0);
                    reader.End();
                } catch (const Common::Exception&) {
                    ++failed_pages;
                }
            }
            // How each font was drawn.
            int embedded = 0, refused = 0, standard = 0, system = 0, fallback = 0, type3 = 0;
            for (auto& [dict, font] : t.fonts) {
                PDF::Font drawn = font.GetType() == PDF::Font::e_Type0 ? font.GetDescendant() : font;
                if (!drawn) continue;
                PDF::FontImpl* impl = drawn.GetImpl();
                if (drawn.GetType() == PDF::Font::e_Type3) {
                    ++type3;
                } else if (impl->GetFace()) {
                    ++embedded;
                } else {
                    SDF::Obj* desc = impl->GetDescriptor();
                    if (desc && (desc->FindObj("FontFile") || desc->FindObj("FontFile2") ||
                                 desc->FindObj("FontFile3")))
                        ++refused;
                    const PDF::Fnt::FontSubstitution* s = impl->GetSubstitution();
                    if (!s) continue;
                    if (s->kind == 3) ++standard;
                    else if (s->platform) ++system;
                    else ++fallback;
                }
            }
            std::printf("%s: pages %d (%d failed), chars %ld (%ld with outline), fonts %zu: embedded %d, "
                        "refused %d, standard %d, system %d, fallback %d, type3 %d\n",
                        argv[i], pages, failed_pages, t.chars, t.outlined, t.fonts.size(), embedded,
                        refused, standard, system, fallback, type3);
        } catch (const std::exception& e) {
            std::printf("%s: not opened: %s\n", argv[i], e.what());
            status = 1;
        }
    }
    PDF::Ferrox::Terminate();
    return status;
}
