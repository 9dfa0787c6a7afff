// How a shown string becomes positioned characters: the advance arithmetic that everything
// downstream rests on, and the character iterator over its result.
#include <algorithm>

#include "Common/Limits.h"
#include "PDF/ElementBuilderImpl.h"
#include "PDF/Font/Font.h"
#include "SDF/Obj.h"

namespace lum::PDF {

namespace {
// A composite font's code is at most four bytes (the longest codespace range of a CMap).
constexpr int kMaxCodeBytes = 4;
}  // namespace

double ElementBuilderImpl::UpdateTextMetrics() {
    m_points.clear();
    m_code_sizes.clear();
    double x = m_start_x, y = m_start_y;
    double length = 0;

    const Font& font = mp_state->GetFont();
    const UInt8* bytes = mp_shown ? mp_shown->GetBuffer() : nullptr;
    const size_t size = mp_shown ? size_t(mp_shown->Size()) : 0;
    if (!font || !bytes || size == 0) {
        m_cur_x = x;
        m_cur_y = y;
        m_text_length = 0;
        return 0;
    }

    const double font_size = mp_state->GetFontSize();
    const double tc = mp_state->GetCharSpacing();
    const double tw = mp_state->GetWordSpacing();
    const double th = mp_state->GetHorizontalScale() / 100.0;
    const double rise = mp_state->GetTextRise();
    const Font::Type type = font.GetType();
    const double unit =
        type == Font::e_Type3 ? font_size * font.GetType3FontMatrix().m_a : font_size * 0.001;
    const bool horizontal = font.IsHorizontalMode();
    const bool composite = type == Font::e_Type0;

    if (m_pos_adjustment != 0) {
        const double d = font_size * (m_pos_adjustment * 0.001);
        if (horizontal)
            x -= d * th;
        else
            y -= d;
    }

    const size_t max_chars = std::min(size, Limits::kMaxStringChars);
    m_points.reserve(2 * max_chars);
    if (!composite) {
        for (size_t i = 0; i < max_chars; ++i) {
            const UInt32 code = bytes[i];
            double adv = font.GetWidth(code) * unit + tc;
            if (code == 32) adv += tw;
            adv *= th;
            m_points.push_back(x);
            m_points.push_back(rise + y);
            length += adv;
            x += adv;
        }
    } else {
        const Font descendant = font.GetDescendant();
        m_code_sizes.reserve(max_chars);
        size_t i = 0;
        for (size_t chars = 0; i < size && chars < max_chars; ++chars) {
            UInt32 code = 0, cid = 0;
            int n = font.MapToCID(bytes + i, UInt32(size - i), code, cid);
            n = std::clamp(n, 1, kMaxCodeBytes);
            m_code_sizes.push_back(UInt32(n));
            i += size_t(n);
            if (horizontal) {
                double adv = unit * descendant.GetWidth(cid) + tc;
                if (code == 32 && n == 1) adv += tw;
                adv *= th;
                m_points.push_back(x);
                m_points.push_back(rise + y);
                length += adv;
                x += adv;
            } else {
                double vx = 0, vy = 0;
                const double w1 = descendant.GetVerticalAdvance(cid, vx, vy);
                double adv = unit * w1 + tc;
                if (code == 32 && n == 1) adv += tw;
                m_points.push_back(x - vx * unit);
                m_points.push_back(y - vy * unit);
                length += adv;
                y += adv;
            }
        }
    }
    m_cur_x = x;
    m_cur_y = y;
    m_text_length = length;
    return length;
}

void ElementBuilderImpl::GetCharIterator(CharData& first) const {
    first = CharData();
    const Int32 count = Int32(m_points.size() / 2);
    if (count < 1 || !mp_shown) return;
    first.count = count;
    first.positions = m_points.data();
    first.code_sizes = m_code_sizes.empty() ? nullptr : m_code_sizes.data();
    first.text = mp_shown->GetBuffer();
    first.text_size = UInt32(mp_shown->Size());
    first.text_end = first.text + first.text_size;
    first.Load();
}

void ElementBuilderImpl::GetCharIteratorEnd(CharData& end) const { end = CharData(); }

UString ElementBuilderImpl::GetTextString() {
    UString out;
    CharData it, end;
    GetCharIterator(it);
    GetCharIteratorEnd(end);
    if (it == end) return out;
    const Font& font = mp_state->GetFont();
    Unicode units[10];
    for (; it != end; ++it) {
        UInt32 count = 0;
        font.MapToUnicode(it.char_code, units, 10, count, true);
        for (UInt32 k = 0; k < count && k < 10; ++k) out.Append(units[k]);
    }
    return out;
}

}  // namespace lum::PDF
