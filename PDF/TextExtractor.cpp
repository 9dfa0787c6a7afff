#include "PDF/TextExtractor.h"

#include <cmath>
#include <utility>
#include <vector>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "PDF/Text/TextEngine.h"
#include "PDF/Text/TextExtractorImpl.h"
#include "PDF/Color/ColorSpaceCache.h"
#include "PDF/GlyphBoxCache.h"
#include "PDF/Text/GlyphMemo.h"
#include "PDF/Text/PageCollector.h"
#include "SDF/Obj.h"
#include "PDF/Text/TextXml.h"

namespace lum::PDF {

namespace {

Int32 Whole(double v) { return static_cast<Int32>(v); }

// The style with the most votes; among equal counts the first to appear. A word has a few
// styles at most, so a flat list beats a table.
class StyleVote {
public:
    void Add(const StyleRecord* s) {
        for (auto& [style, count] : m_votes) {
            if (style == s) {
                ++count;
                return;
            }
        }
        m_votes.emplace_back(s, 1);
    }
    const StyleRecord* Winner() const {
        const StyleRecord* best = nullptr;
        Int64 best_count = 0;
        for (const auto& [style, count] : m_votes) {
            if (count > best_count) {
                best = style;
                best_count = count;
            }
        }
        return best;
    }

private:
    std::vector<std::pair<const StyleRecord*, Int64>> m_votes;
};

}  // namespace

// --- Style ---

double TextExtractor::Style::GetFontSize() const {
    LUM_CHECK(mp_imp, "Style is empty");
    return mp_imp->font_size;
}

void TextExtractor::Style::GetColor(UInt8 rgb[3]) const {
    LUM_CHECK(mp_imp, "Style is empty");
    rgb[0] = mp_imp->red;
    rgb[1] = mp_imp->green;
    rgb[2] = mp_imp->blue;
}

// --- Word ---

TextExtractor::Word TextExtractor::Word::GetNextWord() const {
    if (!mp_word || m_place + 1 >= m_num_words) return Word();
    const Int64 n = Int64(mp_word[0]);
    const Int64 size = IsRotated() ? kRotatedWordHeader + 8 * n : kAxisWordHeader + 2 * n;
    return Word(mp_line, mp_word + size, mp_text, m_num_words, m_place + 1, mp_store);
}

const Unicode* TextExtractor::Word::GetString() const { return mp_text + Int64(mp_word[1]); }

Int32 TextExtractor::Word::GetStringLen() const { return Whole(mp_word[2]); }

Int32 TextExtractor::Word::GetNumGlyphs() const { return Whole(mp_word[0]); }

Rect TextExtractor::Word::GetBBox() const {
    if (IsRotated()) return Rect(mp_word[3], mp_word[4], mp_word[5], mp_word[6]);
    return Rect(mp_word[3], mp_line[e_line_box + 1], mp_word[4], mp_line[e_line_box + 3]);
}

TextExtractor::Style TextExtractor::Word::GetStyle() const {
    const Int64 n = GetStringLen();
    if (n < 1) return Style();
    const Int64 start = Int64(mp_word[1]);
    StyleVote vote;
    for (Int64 i = 0; i < n; ++i) vote.Add(mp_store->StyleAt(UInt64(start + i)));
    return Style(vote.Winner());
}

// --- Line ---

TextExtractor::Line TextExtractor::Line::GetNextLine() const {
    if (!mp_line || m_place + 1 >= m_num_lines) return Line();
    return Line(mp_line + Int64(mp_line[e_line_size]), mp_text, m_num_lines, m_place + 1,
                mp_store);
}

Int32 TextExtractor::Line::GetNumWords() const { return Whole(std::fabs(mp_line[e_line_words])); }

TextExtractor::Word TextExtractor::Line::GetFirstWord() const {
    const Int32 n = GetNumWords();
    if (n < 1) return Word();
    const double* word = mp_line + (IsRotated() ? kRotatedLineHeader : kAxisLineHeader);
    return Word(mp_line, word, mp_text, n, 0, mp_store);
}

Rect TextExtractor::Line::GetBBox() const {
    const double* b = mp_line + e_line_box;
    return Rect(b[0], b[1], b[2], b[3]);
}

Int32 TextExtractor::Line::GetFlowID() const { return Whole(mp_line[e_line_flow]); }
Int32 TextExtractor::Line::GetParagraphID() const { return Whole(mp_line[e_line_para]); }
bool TextExtractor::Line::EndsWithHyphen() const { return mp_line[e_line_hyphen] == 1.0; }

TextExtractor::Style TextExtractor::Line::GetStyle() const {
    StyleVote vote;
    bool any = false;
    for (Word w = GetFirstWord(); w.IsValid(); w = w.GetNextWord()) {
        vote.Add(w.GetStyle().Record());
        any = true;
    }
    return any ? Style(vote.Winner()) : Style();
}

TextExtractor::Line FirstLine(const TextExtractorImpl& store) {
    const std::vector<double>& lines = store.Lines();
    if (lines.size() < 4 || store.Text().empty()) return TextExtractor::Line();
    return TextExtractor::Line(lines.data() + 1, store.Text().data(), Whole(lines[0]), 0, &store);
}

// --- TextExtractor ---

TextExtractor::TextExtractor()
    : mp_impl(std::make_unique<TextExtractorImpl>()),
      mp_engine(std::make_unique<TextEngine>()),
      mp_colors(std::make_unique<Color::ColorSpaceCache>()),
      mp_glyphs(std::make_unique<GlyphMemo>()) {}

TextExtractor::~TextExtractor() = default;

void TextExtractor::Begin(const Page& page, const Rect* clip, UInt32 flags) {
    m_flags = flags;
    mp_impl->Reset(flags);
    m_mirror = m_mirror_inverse = Common::Matrix2D();
    if (!page.IsValid()) {
        m_page = Page();
        return;
    }
    m_page = page;
    // Colour spaces and codes are read once per document; glyph boxes are the document's own.
    const void* doc = page.GetSDFObj()->GetDoc();
    if (doc != mp_doc || !mp_colors) {
        mp_colors = std::make_unique<Color::ColorSpaceCache>();
        mp_glyphs = std::make_unique<GlyphMemo>();
        mp_doc = doc;
    }
    GlyphBoxCache& glyphs = GlyphBoxCache::Of(page.GetSDFObj());
    PageCollector collector(*mp_engine, glyphs, *mp_glyphs, *mp_colors);
    const bool captured = collector.Scan(page, clip, flags, m_mirror_mode);
    if (m_mirror_mode) {
        m_mirror = mp_engine->Capture().Mirror();
        m_mirror_inverse = mp_engine->Capture().MirrorInverse();
    }
    if (captured) mp_engine->Finish(*mp_impl, &glyphs);
}

void TextExtractor::SetCaptureTrace(CaptureTrace* trace) { mp_engine->Capture().SetTrace(trace); }

UInt32 TextExtractor::GetWordCount() const { return mp_impl->GetWordCount(); }

void TextExtractor::GetAsText(UString& out, bool dehyphen) const {
    mp_impl->GetAsText(out, dehyphen);
}

TextExtractor::Line TextExtractor::GetFirstLine() const { return FirstLine(*mp_impl); }

void TextExtractor::GetAsXML(UString& out, UInt32 flags) const {
    XmlPageInfo info;
    if (m_page.IsValid()) {
        info.number = m_page.GetIndex();
        info.crop_box = m_page.GetCropBox();
        info.media_box = m_page.GetMediaBox();
        info.rotate = Page::RotationToDegrees(m_page.GetRotation());
    }
    WriteXml(*mp_impl, info, flags, out);
}

}  // namespace lum::PDF
