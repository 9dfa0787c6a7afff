// The plain text of the store, as it stands or with words split at line ends joined again.
#include "Common/UString.h"
#include "PDF/Text/TextExtractorImpl.h"
#include "PDF/Text/TextUnicode.h"

namespace lum::PDF {

void TextExtractorImpl::GetAsText(UString& out, bool dehyphen) const {
    out.Clear();
    if (m_text.empty()) return;
    if (!dehyphen) {
        out.Assign(m_text.data(), static_cast<int>(m_text.size()));
        return;
    }
    std::vector<Unicode> buf;
    Dehyphenate(m_text.data(), m_text.size(), buf);
    out.Assign(buf.data(), static_cast<int>(buf.size()));
}

void Dehyphenate(const Unicode* t, size_t count, std::vector<Unicode>& buf) {
    buf.clear();
    buf.reserve(count);
    const Int64 n = static_cast<Int64>(count);
    bool held = false;    // a line break was dropped inside a split word; it comes back later
    Int64 last_solid = -1;  // the last index before i whose unit isn't blank
    for (Int64 i = 0; i < n; ++i) {
        const Unicode c = t[i];
        if (c == 0x0A) {
            if (last_solid >= 0) {
                const Int64 j = last_solid;
                if (IsHyphen(t[j]) && j >= 1 && !IsBlank(t[j - 1])) {
                    held = true;
                } else {
                    buf.push_back(0x0A);
                }
            }
        } else if (IsBlank(c)) {
            if (i >= 1 && !IsBlank(t[i - 1]) && held) {
                buf.push_back(0x0A);
                held = false;
            } else if (i == n - 1 || !IsBlank(t[i + 1])) {
                // Of a row of blanks the last is kept.
                buf.push_back(c);
            }
        } else {
            // The hyphen of a word split at the line's end goes.
            if (!(IsHyphen(c) && i < n - 1 && t[i + 1] == 0x0A && i >= 1 && !IsBlank(t[i - 1])))
                buf.push_back(c);
        }
        if (!IsBlank(c)) last_solid = i;
    }
}

}  // namespace lum::PDF
