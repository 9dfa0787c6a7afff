#include "Apps/Bindery/WriteText.h"

#include <charconv>

#include "Apps/Bindery/Options.h"
#include "Common/Exception.h"

namespace lum::Bindery {

bool IsUtf16Encoding(const Options& opt) {
    return opt.m_encoding == "utf16" || opt.m_encoding == "utf-16";
}

void WriteText(Options& opt, const UString& text) {
    if (opt.m_to_screen) {
        opt.m_scratch = text.ConvertToAscii();
        SendMessage(opt, e_msg_text, opt.m_scratch);
        return;
    }
    if (!opt.m_out_filter) return;
    if (IsUtf16Encoding(opt)) {
        const int n = text.GetLength();
        const Unicode* units = text.GetBuffer();
        opt.m_scratch.resize(static_cast<size_t>(n) * 2);
        for (int i = 0; i < n; ++i) {
            opt.m_scratch[2 * i] = static_cast<char>(units[i] & 0xFF);
            opt.m_scratch[2 * i + 1] = static_cast<char>(units[i] >> 8);
        }
    } else {
        text.ConvertToUtf8(opt.m_scratch);
    }
    opt.m_out_writer.WriteBuffer(opt.m_scratch.data(), opt.m_scratch.size());
}

void AppendNumber(std::string& out, double value) {
    char buf[64];
    const auto res = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::general, 6);
    LUM_CHECK(res.ec == std::errc(), "Number too long to write");
    out.append(buf, res.ptr);
}

}  // namespace lum::Bindery
