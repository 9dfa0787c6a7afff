#include "PDF/Text/TextExtractorImpl.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "PDF/Text/TextFlags.h"
#include "PDF/Text/TextUnicode.h"

namespace lum::PDF {

namespace {

// Room kept at each reset: a dense page of text fits without growing.
constexpr size_t kTextReserve = 20000;
constexpr size_t kLinesReserve = 160000;
constexpr size_t kWordGeometryReserve = 256;

// Sizes closer than this share a style.
constexpr double kStyleSizeTolerance = 0.01;

UInt64 StyleKey(const SDF::Obj* font, UInt8 red, UInt8 green, UInt8 blue) {
    const UInt64 rgb = (UInt64(red) << 16) | (UInt64(green) << 8) | blue;
    return UInt64(reinterpret_cast<std::uintptr_t>(font)) * 0x9E3779B97F4A7C15ull ^ rgb;
}

bool SameStyle(const StyleRecord& s, const SDF::Obj* font, double size, UInt8 red, UInt8 green,
               UInt8 blue) {
    return s.font == font && std::fabs(s.font_size - size) < kStyleSizeTolerance &&
           s.red == red && s.green == green && s.blue == blue;
}

}  // namespace

TextExtractorImpl::TextExtractorImpl() { Reset(0); }
TextExtractorImpl::~TextExtractorImpl() = default;

void TextExtractorImpl::Reset(UInt32 flags) {
    m_flags = flags;
    m_text.clear();
    m_text.reserve(kTextReserve);
    m_offsets.clear();
    m_offsets.reserve(kTextReserve);
    m_unit_quads.clear();
    m_unit_quads.reserve(kTextReserve * 8);
    m_lines.clear();
    m_lines.reserve(kLinesReserve);
    m_lines.push_back(0.0);
    m_word_geometry.clear();
    m_word_geometry.reserve(kWordGeometryReserve);
    m_word_closed = true;
    m_word_counter = 0;
    m_word_start = 0;
    m_para_counter = 0;
    m_flow_counter = 0;
    m_in_para = false;
    m_line_start = 0;
    m_line_axis = true;
    m_styles.clear();
    m_style_runs.clear();
    m_style_index.clear();
}

void TextExtractorImpl::BeginLine(const Rect& box, const Quad& quad, bool axis_aligned) {
    m_line_axis = axis_aligned;
    m_line_start = static_cast<Int64>(m_lines.size());
    m_lines.insert(m_lines.end(),
                   {double(m_word_counter), double(m_line_start), double(m_flow_counter),
                    m_in_para ? double(m_para_counter) : 0.0, 0.0, box.x1, box.y1, box.x2,
                    box.y2});
    if (!axis_aligned) m_lines.insert(m_lines.end(), quad.v, quad.v + 8);
}

void TextExtractorImpl::EndLine() {
    EndWord(true);
    double* rec = m_lines.data() + m_line_start;
    rec[e_line_words] = double(m_word_counter) - rec[e_line_words];
    if (!m_line_axis) rec[e_line_words] = rec[e_line_words] == 0 ? -0.1 : -rec[e_line_words];
    rec[e_line_size] = double(m_lines.size()) - rec[e_line_size];
    // The line's newline is the last unit; a hyphen in front of it that follows a letter
    // splits a word.
    const size_t len = m_text.size();
    if (len >= 4 && IsHyphen(m_text[len - 2]) && m_text[len - 3] != 0x20 &&
        m_text[len - 3] != 0x0A)
        rec[e_line_hyphen] = 1.0;
    m_lines[0] += 1.0;
}

// Eight values at the end of `v`: a fixed-size copy the compiler lays out in place, where a
// range insert is a call and a memmove for every unit of the page.
// Pushed one by one, inline: a resize zeroed the eight values first, in a call of its own.
static void AppendQuad(std::vector<double>& v, const double* quad) {
    for (int i = 0; i < 8; ++i) v.push_back(quad[i]);
}

void TextExtractorImpl::StoreGlyph(Unicode unit, Int32 offset, const Rect& box, const Quad& quad,
                                   SDF::Obj* font, double font_size, UInt8 red, UInt8 green,
                                   UInt8 blue) {
    const bool own_word = (m_flags & e_punct_break) && IsPunctuation(unit);
    if (own_word) EndWord(false);
    m_word_closed = false;
    if (m_line_axis) {
        m_word_geometry.push_back(box.x1);
        m_word_geometry.push_back(box.x2);
    } else {
        AppendQuad(m_word_geometry, quad.v);
    }
    Unicode units[3] = {unit, 0, 0};
    const int n = (m_flags & e_no_ligatures) ? 1 : ExpandLigature(unit, units);
    for (int i = 0; i < n; ++i) {
        AppendUnit(units[i], offset, quad.v);
        RecordStyle(font, font_size, red, green, blue);
    }
    if (own_word) EndWord(false);
}

void TextExtractorImpl::AppendUnit(Unicode unit, Int32 offset, const double* quad) {
    m_text.push_back(unit);
    m_offsets.push_back(offset);
    AppendQuad(m_unit_quads, quad);
}

void TextExtractorImpl::EndWord(bool newline) {
    if (!m_word_closed) {
        const double start = double(m_word_start);
        const double length = double(Int64(m_text.size()) - m_word_start);
        const size_t size = m_word_geometry.size();
        if (m_line_axis) {
            m_lines.insert(m_lines.end(), {double(size / 2), start, length,
                                           m_word_geometry.front(), m_word_geometry.back()});
        } else {
            const int n = static_cast<int>(size / 8);
            Quad q;
            std::copy(m_word_geometry.begin(), m_word_geometry.begin() + 8, q.v);
            MergeQuads(q, m_word_geometry.data() + 8, n - 1);
            const Rect box = BoxAround(q);
            m_lines.insert(m_lines.end(),
                           {double(n), start, length, box.x1, box.y1, box.x2, box.y2});
            m_lines.insert(m_lines.end(), q.v, q.v + 8);
        }
        m_lines.insert(m_lines.end(), m_word_geometry.begin(), m_word_geometry.end());
        m_word_geometry.clear();

        // A separator repeats the quad of the unit before it and belongs to its style.
        const double* last_quad = m_unit_quads.data() + m_unit_quads.size() - 8;
        double quad[8];
        std::copy(last_quad, last_quad + 8, quad);
        AppendUnit(newline ? 0x0A : 0x20, newline ? kNewlineOffset : kBlankOffset, quad);
        if (!m_style_runs.empty()) ++m_style_runs.back().last_unit;

        m_word_closed = true;
        ++m_word_counter;
        m_word_start = static_cast<Int64>(m_text.size());
    } else if (newline && !m_text.empty()) {
        // A line whose last glyphs were dropped ends with the separator before them.
        m_text.back() = 0x0A;
    }
}

void TextExtractorImpl::RecordStyle(SDF::Obj* font, double size, UInt8 red, UInt8 green,
                                    UInt8 blue) {
    const UInt64 unit = m_text.size() - 1;
    if (!m_style_runs.empty() &&
        SameStyle(*m_style_runs.back().style, font, size, red, green, blue)) {
        ++m_style_runs.back().last_unit;
        return;
    }
    std::vector<StyleRecord*>& same_key = m_style_index[StyleKey(font, red, green, blue)];
    if (!m_style_runs.empty()) {
        // The last matching record in the order of creation wins.
        for (auto it = same_key.rbegin(); it != same_key.rend(); ++it) {
            if (SameStyle(**it, font, size, red, green, blue)) {
                m_style_runs.push_back({unit, *it});
                return;
            }
        }
    }
    auto record = std::make_unique<StyleRecord>(StyleRecord{font, size, red, green, blue});
    same_key.push_back(record.get());
    m_style_runs.push_back({unit, record.get()});
    m_styles.push_back(std::move(record));
}

const StyleRecord* TextExtractorImpl::StyleAt(UInt64 unit) const {
    const auto it = std::lower_bound(
        m_style_runs.begin(), m_style_runs.end(), unit,
        [](const StyleRun& r, UInt64 u) { return r.last_unit < u; });
    return it == m_style_runs.end() ? nullptr : it->style;
}

}  // namespace lum::PDF
