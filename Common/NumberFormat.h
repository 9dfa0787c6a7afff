#pragma once
// Numbers in the program's text output: printf's %g with six significant digits (no trailing
// zeros, no decimal point when none is needed), whatever the locale.
#include <charconv>
#include <string>

namespace lum::Common {

inline void AppendNumber(std::string& out, double value) {
    char buf[64];
    const auto res = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::general, 6);
    out.append(buf, res.ptr);
}

}  // namespace lum::Common
