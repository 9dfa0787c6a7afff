// elements: walks the content of chosen pages through the element reader, forms included,
// and prints one line per element: its kind and level; for text the font, size, rendering
// mode, matrices, and each character's code, position and advance; for paths and images
// their boxes.
//
//   elements [--pages LIST] [--password PW] [--summary] [--struct] [--no-forms] FILE...
//
// LIST is the tool's page list syntax ("1-3,7", "odd", default all). With --summary only one
// line per page is printed: elements read, text operators met, and whether the page was read
// to its end or what ended it. With --struct only marked content with an MCID is printed, one
// line each: "mcid PAGE OWNER MCID PARENT", OWNER the object number of the page or form whose
// content holds it, PARENT the structure parent the reader gives ("N G R", "direct" or
// "none"). Exit status: 0 when every file opened, 1 otherwise, 2 for a usage error.
#include <cstdio>
#include <cstring>
#include <string>

#include "Common/Exception.h"
#include "PDF/ElementReader.h"
#include "PDF/Font/Font.h"
#include "PDF/Page.h"
#include "SDF/Obj.h"
#include "tools/PageWalkTool.h"

using namespace lum;

namespace {

struct Settings {
    bool summary = false;
    bool structure = false;
    bool forms = true;
};

const char* KindName(PDF::Element::Type type) {
    static const char* const names[] = {
        "null",      "path",         "text_begin", "text",     "text_new_line",
        "text_end",  "image",        "inline_image", "shading", "form",
        "group_begin", "group_end",  "mc_begin",   "mc_end",   "mc_point"};
    return type >= 0 && type <= PDF::Element::e_marked_content_point ? names[type] : "?";
}

std::string Matrix(const Common::Matrix2D& m) {
    char buf[160];
    std::snprintf(buf, sizeof buf, "[%g %g %g %g %g %g]", m.m_a, m.m_b, m.m_c, m.m_d, m.m_h, m.m_v);
    return buf;
}

std::string Box(PDF::Element& e) {
    PDF::Rect r;
    if (!e.GetBBox(r)) return "none";
    char buf[128];
    std::snprintf(buf, sizeof buf, "[%g %g %g %g]", r.x1, r.y1, r.x2, r.y2);
    return buf;
}

void PrintText(PDF::Element& e, int level) {
    PDF::GState& gs = e.GetGState();
    const PDF::Font& font = gs.GetFont();
    std::printf("%*stext font=\"%s\" size=%g mode=%d adj=%g length=%g ctm=%s tm=%s bbox=%s\n",
                level * 2, "", font ? font.GetName() : "", gs.GetFontSize(),
                int(gs.GetTextRenderMode()), e.GetPosAdjustment(), e.GetTextLength(),
                Matrix(e.GetCTM()).c_str(), Matrix(e.GetTextMatrix()).c_str(), Box(e).c_str());
    PDF::CharData it, end;
    e.GetCharIterator(it);
    e.GetCharIteratorEnd(end);
    double end_x, end_y;
    e.GetEndPosition(end_x, end_y);
    const bool horizontal = !font || font.IsHorizontalMode();
    for (; it != end;) {
        const PDF::CharData here = it;
        ++it;
        double advance;
        if (it != end)
            advance = horizontal ? it.x - here.x : it.y - here.y;
        else
            advance = horizontal ? end_x - here.x : end_y - here.y;
        std::printf("%*s  code=%u bytes=%u x=%g y=%g advance=%g\n", level * 2, "", here.char_code,
                    here.bytes, here.x, here.y, advance);
    }
}

std::string ObjRef(SDF::Obj* obj) {
    if (!obj) return "none";
    if (!obj->IsIndirect()) return "direct";
    return std::to_string(obj->GetObjNum()) + " " + std::to_string(obj->GetGenNum()) + " R";
}

// The MCID of a marked-content element and the parent the reader found for it; empty when it
// has no MCID.
std::string StructText(PDF::Element& e) {
    const int mcid = e.GetStructMCID();
    if (mcid < 0) return {};
    return "mcid=" + std::to_string(mcid) + " parent=" + ObjRef(e.GetParentStructElement());
}

struct PageCounts {
    unsigned long elements = 0;
    unsigned long text = 0;
    unsigned long forms = 0;
};

// Where the walk stands: the page, and the page or form whose content is read.
struct Place {
    Int32 page;
    SDF::Obj* owner;
};

// The elements of the current level, and of the forms they paint.
void Walk(PDF::ElementReader& reader, const Settings& s, PageCounts& counts, int level,
          const Place& place) {
    while (PDF::Element* e = reader.Next()) {
        ++counts.elements;
        const PDF::Element::Type type = e->GetType();
        if (type == PDF::Element::e_text) ++counts.text;
        const bool marked = type == PDF::Element::e_marked_content_begin ||
                            type == PDF::Element::e_marked_content_point;
        if (s.structure) {
            if (marked && e->GetStructMCID() >= 0)
                std::printf("mcid %d %s %d %s\n", place.page,
                            place.owner && place.owner->IsIndirect()
                                ? std::to_string(place.owner->GetObjNum()).c_str()
                                : "direct",
                            e->GetStructMCID(), ObjRef(e->GetParentStructElement()).c_str());
        } else if (!s.summary) {
            if (type == PDF::Element::e_text) {
                PrintText(*e, level);
            } else if (type == PDF::Element::e_path || type == PDF::Element::e_image ||
                       type == PDF::Element::e_inline_image || type == PDF::Element::e_form ||
                       type == PDF::Element::e_shading) {
                std::printf("%*s%s bbox=%s\n", level * 2, "", KindName(type), Box(*e).c_str());
            } else if (marked) {
                const std::string mc = StructText(*e);
                std::printf("%*s%s%s%s\n", level * 2, "", KindName(type), mc.empty() ? "" : " ",
                            mc.c_str());
            } else {
                std::printf("%*s%s\n", level * 2, "", KindName(type));
            }
        }
        if (type == PDF::Element::e_form && s.forms) {
            ++counts.forms;
            const Place inner{place.page, e->GetXObject()};
            reader.FormBegin();
            Walk(reader, s, counts, level + 1, inner);
            reader.End();
        }
    }
}

void ProcessPage(const char* path, Int32 n, PDF::PageIterator it, PDF::PDFDoc& doc,
                 const Settings& s) {
    if (it == doc.GetPageIteratorEnd() || !it->IsValid()) {
        std::printf("%s page %d: not found\n", path, n);
        return;
    }
    if (!s.summary && !s.structure) std::printf("%s page %d\n", path, n);
    PDF::ElementReader reader;
    PageCounts counts;
    std::string status = "ok";
    try {
        reader.Begin(*it);
        Walk(reader, s, counts, 1, Place{n, it->GetSDFObj()});
    } catch (const Common::Exception& e) {
        status = std::string("ended: ") + e.GetMessage();
    }
    std::printf("%s page %d: %s elements=%lu text=%lu forms=%lu textops=%llu\n", path, n,
                status.c_str(), counts.elements, counts.text, counts.forms,
                static_cast<unsigned long long>(reader.GetTextOperatorCount()));
}

}  // namespace

int main(int argc, char** argv) {
    Settings s;
    DevTool::PageWalkOptions options;
    const bool named = DevTool::ParsePageWalkOptions(argc, argv, options, [&](int i) {
        bool* const flags[] = {&s.summary, &s.structure, &s.forms};
        const bool values[] = {true, true, false};
        const char* const names[] = {"--summary", "--struct", "--no-forms"};
        for (int k = 0; k < 3; ++k)
            if (std::strcmp(argv[i], names[k]) == 0) {
                *flags[k] = values[k];
                return 1;
            }
        return 0;
    });
    if (!named) {
        std::fprintf(stderr,
                     "usage: elements [--pages LIST] [--password PW] [--summary] [--struct] "
                     "[--no-forms] FILE...\n");
        return 2;
    }
    return DevTool::WalkChosenPages(options, [&](const char* path, Int32 n, PDF::PageIterator it,
                                                 PDF::PDFDoc& doc) { ProcessPage(path, n, it, doc, s); });
}
