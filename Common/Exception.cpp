#include "Common/Exception.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ostream>
#include <vector>

namespace lum::Common {

namespace {
std::string LastComponent(const char* file) {
    if (!file) return {};
    const char* back = std::strrchr(file, '\\');
    const char* fwd = std::strrchr(file, '/');
    const char* cut = back > fwd ? back : fwd;
    return cut ? std::string(cut + 1) : std::string(file);
}
}  // namespace

Exception::Exception(const char* condition, Int32 line, const char* file, const char* function,
                     const char* message, UInt32 code)
    : m_message(message ? message : ""),
      m_condition(condition ? condition : ""),
      m_file(LastComponent(file)),
      m_function(function ? function : ""),
      m_line(line),
      m_code(code) {}

Exception::Exception(Formatted, const char* condition, Int32 line, const char* file,
                     const char* function, const char* format, ...)
    : Exception(condition, line, file, function, "", 0) {
    if (!format) return;
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    int needed = std::vsnprintf(nullptr, 0, format, args);
    va_end(args);
    if (needed > 0) {
        std::vector<char> buf(static_cast<size_t>(needed) + 1);
        std::vsnprintf(buf.data(), buf.size(), format, again);
        m_message.assign(buf.data(), static_cast<size_t>(needed));
    }
    va_end(again);
}

Exception::~Exception() = default;

const char* Exception::what() const noexcept { return m_message.c_str(); }

const char* Exception::GetTypeName() const noexcept { return "unspecified"; }

std::string Exception::GetFullText() const {
    std::string s = "Exception: ";
    s += "\n\t Message: " + m_message;
    s += "\n\t Conditional expression: " + m_condition;
    s += "\n\t Filename   : " + m_file;
    s += "\n\t Function   : " + m_function;
    s += "\n\t Linenumber : " + std::to_string(m_line);
    s += "\n";
    return s;
}

std::ostream& operator<<(std::ostream& os, const Exception& e) { return os << e.GetFullText(); }

const char* BadAllocException::GetTypeName() const noexcept { return "BadAllocException"; }

std::string QualifiedFunctionName(const char* pretty) {
    if (!pretty) return {};
    std::string s(pretty);
    // The parameter list is the first '(' outside template brackets, skipping "operator()".
    int depth = 0;
    size_t open = std::string::npos;
    for (size_t i = 0; i < s.size(); ++i) {
        char c = s[i];
        if (c == '<') ++depth;
        else if (c == '>') { if (depth > 0) --depth; }
        else if (c == '(' && depth == 0) {
            if (i >= 8 && s.compare(i - 8, 8, "operator") == 0 && i + 1 < s.size() && s[i + 1] == ')') {
                ++i;  // "operator()": the next '(' starts the parameters
                continue;
            }
            open = i;
            break;
        }
    }
    if (open == std::string::npos) return s;
    // The name starts after the last space at depth 0 before the parameters (the return type).
    depth = 0;
    size_t start = 0;
    for (size_t i = open; i-- > 0;) {
        char c = s[i];
        if (c == '>') ++depth;
        else if (c == '<') { if (depth > 0) --depth; }
        else if ((c == ' ' || c == '*' || c == '&') && depth == 0) { start = i + 1; break; }
    }
    return s.substr(start, open - start);
}

}  // namespace lum::Common
