#include "PDF/GlyphBoxCache.h"

#include <algorithm>
#include <vector>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "PDF/Element.h"
#include "PDF/ElementReader.h"
#include "PDF/Text/TextGeometry.h"
#include "SDF/Obj.h"

namespace lum::PDF {

namespace {

// Type 3 glyphs measured inside one another on this thread: a glyph may show text in a
// Type 3 font, which is measured by running its glyph, which may show text ...
thread_local int gl_type3_depth = 0;

bool InProgress(const FormSet& forms, const SDF::Obj* obj) {
    return std::find(forms.begin(), forms.end(), obj) != forms.end();
}

void Leave(FormSet& forms, const SDF::Obj* obj) {
    auto it = std::find(forms.begin(), forms.end(), obj);
    if (it != forms.end()) forms.erase(it);
}

// The smallest box that holds the four corners of `r` through `m`.
Rect Through(const Common::Matrix2D& m, const Rect& r) {
    double xs[4] = {r.x1, r.x2, r.x2, r.x1}, ys[4] = {r.y1, r.y1, r.y2, r.y2};
    Rect out;
    for (int i = 0; i < 4; ++i) {
        m.Mult(xs[i], ys[i]);
        if (i == 0) {
            out = Rect(xs[0], ys[0], xs[0], ys[0]);
        } else {
            out.x1 = std::min(out.x1, xs[i]);
            out.y1 = std::min(out.y1, ys[i]);
            out.x2 = std::max(out.x2, xs[i]);
            out.y2 = std::max(out.y2, ys[i]);
        }
    }
    return out;
}

bool Intersect(const Rect& a, const Rect& b, Rect& out) {
    out = Rect(std::max(a.x1, b.x1), std::max(a.y1, b.y1), std::min(a.x2, b.x2), std::min(a.y2, b.y2));
    return out.x2 > out.x1 && out.y2 > out.y1;
}

void Join(Rect& result, const Rect& box) {
    if (result.x2 - result.x1 <= 0) {
        result = box;
        return;
    }
    result.x1 = std::min(result.x1, box.x1);
    result.y1 = std::min(result.y1, box.y1);
    result.x2 = std::max(result.x2, box.x2);
    result.y2 = std::max(result.y2, box.y2);
}

// Text, glyph units to the glyph space of the glyph being measured: the scale S, the
// character's origin, the text matrix and the CTM.
Common::Matrix2D GlyphToSpace(const Element& e, const Font& font, const CharData& c) {
    GState& gs = const_cast<Element&>(e).GetGState();
    const double size = gs.GetFontSize();
    const Common::Matrix2D s(gs.GetHorizontalScale() / 100.0 * size, 0, 0, size, 0, 0);
    Common::Matrix2D glyph;
    if (font.GetType() == Font::e_Type3) {
        glyph = font.GetType3FontMatrix() * s;
    } else {
        int u = font.GetUnitsPerEm();
        if (u == 0) u = 1000;
        glyph = Common::Matrix2D(1.0 / u, 0, 0, -1.0 / u, 0, 0) * s;
    }
    return glyph * Common::Matrix2D::Translation(c.x, c.y) * e.GetTextMatrix() * e.GetCTM();
}

// The walk of a Type 3 glyph's content, with its clip stack and its result.
class Type3Walk {
public:
    Type3Walk(GlyphBoxCache& cache, FormSet& forms) : m_cache(cache), m_forms(forms) {
        m_clips.push_back(Rect(-1e7, -1e7, 1e7, 1e7));
    }

    // Walks to the end, or to a form that is already being walked; false for the latter.
    bool Walk(ElementReader& reader) {
        while (Element* e = reader.Next()) {
            switch (e->GetType()) {
                case Element::e_form: {
                    SDF::Obj* form = e->GetXObject();
                    if (InProgress(m_forms, form)) return false;
                    m_forms.push_back(form);
                    Rect narrowed = m_clips.back(), bbox;
                    if (e->GetBBox(bbox)) Intersect(narrowed, bbox, narrowed);
                    m_clips.push_back(narrowed);
                    reader.FormBegin();
                    const bool went_on = Walk(reader);
                    reader.End();
                    m_clips.pop_back();
                    Leave(m_forms, form);
                    if (!went_on) return false;
                    break;
                }
                case Element::e_group_begin:
                    m_clips.push_back(m_clips.back());
                    break;
                case Element::e_group_end:
                    if (m_clips.size() > 1) m_clips.pop_back();
                    break;
                default:
                    Look(*e);
            }
        }
        return true;
    }

    const Rect& Result() const { return m_result; }
    bool LastGaveBox() const { return m_last_gave_box; }

private:
    void Look(Element& e) {
        const Rect& clip = m_clips.back();
        if (!e.IsOCVisible() || !(clip.x2 > clip.x1) || !(clip.y2 > clip.y1)) return;
        const Element::Type type = e.GetType();
        switch (type) {
            case Element::e_path: {
                Rect box;
                if ((e.IsStroked() || e.IsFilled()) && e.GetBBox(box)) {
                    Take(box, true, e.IsClippingPath());
                } else {
                    m_last_gave_box = false;
                }
                return;
            }
            case Element::e_text:
                LookAtText(e);
                return;
            case Element::e_image:
            case Element::e_inline_image:
            case Element::e_shading: {
                Rect box;
                if (e.GetBBox(box)) {
                    Take(box, true, false);
                } else {
                    m_last_gave_box = false;
                    if (type == Element::e_shading) Join(m_result, clip);
                }
                return;
            }
            default:
                return;
        }
    }

    void LookAtText(Element& e) {
        GState& gs = e.GetGState();
        const Font& font = gs.GetFont();
        if (!font) return;
        const int mode = gs.GetTextRenderMode();
        if (mode == GState::e_invisible_text && font.GetType() != Font::e_Type3) {
            m_last_gave_box = false;
            return;
        }
        const bool paints = mode != 3 && mode != 7;
        const bool clips = mode == 4 || mode == 6 || mode == 7;
        CharData c, end;
        e.GetCharIterator(c);
        e.GetCharIteratorEnd(end);
        for (; c != end; ++c) {
            Rect glyph;
            m_cache.GetGlyphBox(font, c, glyph, m_forms);
            const Common::Matrix2D m = GlyphToSpace(e, font, c);
            Rect box;
            if (glyph.x2 - glyph.x1 <= 0) {
                box = Rect();
            } else {
                box = Through(m, glyph);
                double ox = 0, oy = 0;
                m.Mult(ox, oy);  // the origin, which the box is widened to hold
                box.x1 = std::min(box.x1, ox);
                box.y1 = std::min(box.y1, oy);
                box.x2 = std::max(box.x2, ox);
                box.y2 = std::max(box.y2, oy);
            }
            Take(box, paints, clips);
        }
    }

    void Take(const Rect& box, bool paints, bool clips) {
        m_last_gave_box = true;
        Rect inside;
        if (!Intersect(box, m_clips.back(), inside)) return;
        if (paints) Join(m_result, inside);
        if (clips) m_clips.back() = inside;
    }

    GlyphBoxCache& m_cache;
    FormSet& m_forms;
    std::vector<Rect> m_clips;
    Rect m_result;
    bool m_last_gave_box = false;
};

GlyphBoxCache& ProcessCache() {
    static GlyphBoxCache cache;
    return cache;
}

}  // namespace

GlyphBoxCache& GlyphBoxCache::Of(SDF::DocImpl& doc) {
    return *static_cast<GlyphBoxCache*>(
        doc.GetAttachment(SDF::DocImpl::e_glyph_box_cache, [] { return new GlyphBoxCache(); }));
}

GlyphBoxCache& GlyphBoxCache::Of(SDF::Obj* font_dict) {
    SDF::Indirect* owner = nullptr;
    if (font_dict) owner = font_dict->IsIndirect() ? static_cast<SDF::Indirect*>(font_dict)
                                                   : font_dict->GetOwner();
    SDF::DocImpl* doc = owner ? owner->GetDocImpl() : nullptr;
    return doc ? Of(*doc) : ProcessCache();
}

bool GlyphBoxCache::GetGlyphBox(const Font& font, const CharData& character, Rect& box,
                                FormSet& forms) {
    SDF::Obj* key = font.GetSDFObj();
    const UInt32 code = character.char_code;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto f = m_fonts.find(key);
        if (f != m_fonts.end()) {
            auto hit = f->second.with_outline.find(code);
            if (hit != f->second.with_outline.end()) {
                box = hit->second;
                return true;
            }
            hit = f->second.without_outline.find(code);
            if (hit != f->second.without_outline.end()) {
                box = hit->second;
                return false;
            }
        }
    }
    Rect measured;
    const bool has_outline = Measure(font, character, measured, forms);
    double advance = font.GetWidth(code) / 1000.0;
    if (font.GetType() != Font::e_Type3) advance *= font.GetUnitsPerEm();
    // From the origin to at least the advance: a left side bearing is left out, and the
    // glyphs of one word abut.
    measured.x1 = 0;
    measured.x2 = std::max(measured.x2, advance);
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        FontEntry& entry = m_fonts[key];
        if (has_outline) {
            entry.with_outline[code] = measured;
            if (entry.has_extent) {
                Join(entry.extent, measured);
            } else {
                entry.extent = measured;
                entry.has_extent = true;
            }
        } else {
            entry.without_outline[code] = measured;
        }
    }
    box = measured;
    return has_outline;
}

bool GlyphBoxCache::Measure(const Font& font, const CharData& character, Rect& box,
                            FormSet& forms) {
    box = Rect();
    if (font.GetType() == Font::e_Type3) return MeasureType3(font, character.char_code, box, forms);
    Rect b;
    try {
        if (!font.GetGlyphBox(character.char_code, b)) return false;
    } catch (const Common::Exception&) {
        return false;
    }
    if (ApproxEqual((b.y2 - b.y1) * (b.x2 - b.x1), 0)) return false;
    box = b;
    return true;
}

bool GlyphBoxCache::MeasureType3(const Font& font, UInt32 code, Rect& box, FormSet& forms) {
    SDF::Obj* glyph = nullptr;
    try {
        glyph = font.GetType3GlyphStream(code);
    } catch (const Common::Exception&) {
        return false;
    }
    // A glyph that shows itself, directly or through other glyphs, has nothing more to tell.
    if (!glyph || InProgress(forms, glyph) || gl_type3_depth >= Limits::kMaxType3GlyphNesting)
        return false;
    ++gl_type3_depth;
    forms.push_back(glyph);
    Type3Walk walk(*this, forms);
    try {
        SDF::Obj* dict = font.GetSDFObj();
        ElementReader reader;
        reader.Begin(glyph, dict ? dict->FindObj("Resources") : nullptr);
        walk.Walk(reader);
        reader.End();
    } catch (const Common::Exception&) {
        // A damaged glyph keeps what it painted before the damage.
    }
    Leave(forms, glyph);
    --gl_type3_depth;
    box = walk.Result();
    return walk.LastGaveBox();
}

Rect GlyphBoxCache::GetFontExtent(SDF::Obj* font_dict) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto f = m_fonts.find(font_dict);
    if (f == m_fonts.end() || !f->second.has_extent) return Rect();
    return f->second.extent;
}

bool GlyphBoxCache::IsBlankFont(const Font& font) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto f = m_fonts.find(font.GetSDFObj());
    return f != m_fonts.end() && f->second.with_outline.empty() && !f->second.without_outline.empty();
}

}  // namespace lum::PDF
