#pragma once
#include <exception>
#include <iosfwd>
#include <string>

#include "Common/Types.h"

namespace lum::Common {

// The one exception type of the library. Every failure travels as one of these, with the
// condition that failed and where it was raised, so the tool can show a sentence to the
// user and the whole record to a developer.
class Exception : public std::exception {
public:
    struct Formatted {};

    Exception(const char* condition, Int32 line, const char* file, const char* function,
              const char* message, UInt32 code = 0);
    // Formats the message printf-style. The tag keeps this apart from the plain form,
    // whose trailing code would otherwise swallow a lone integer argument.
    Exception(Formatted, const char* condition, Int32 line, const char* file, const char* function,
              const char* format, ...) __attribute__((format(printf, 7, 8)));

    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;
    ~Exception() override;

    const char* what() const noexcept override;
    virtual const char* GetTypeName() const noexcept;

    std::string GetFullText() const;

    const std::string& GetMessage() const noexcept { return m_message; }
    const std::string& GetCondition() const noexcept { return m_condition; }
    const std::string& GetFileName() const noexcept { return m_file; }
    const std::string& GetFunction() const noexcept { return m_function; }
    Int32 GetLine() const noexcept { return m_line; }
    UInt32 GetCode() const noexcept { return m_code; }

private:
    std::string m_message;
    std::string m_condition;
    std::string m_file;
    std::string m_function;
    Int32 m_line = 0;
    UInt32 m_code = 0;
};

std::ostream& operator<<(std::ostream& os, const Exception& e);

class BadAllocException : public Exception {
public:
    using Exception::Exception;
    const char* GetTypeName() const noexcept override;
};

// Reduces a compiler's decorated function signature to its qualified name
// ("void lum::PDF::Font::GetName() const" -> "lum::PDF::Font::GetName").
std::string QualifiedFunctionName(const char* pretty);

}  // namespace lum::Common

namespace lum::FT {
// FreeType failures carry FreeType's error number in the code; the type name stays the base's.
class FreeTypeException : public lum::Common::Exception {
public:
    using Exception::Exception;
};
}  // namespace lum::FT

#define LUM_FUNCTION (::lum::Common::QualifiedFunctionName(__PRETTY_FUNCTION__).c_str())

// The checks are how the library fails, not a debugging aid: they stay on in every build.
#define LUM_CHECK(cond, ...)                                                                     \
    do {                                                                                         \
        if (!(cond)) [[unlikely]]                                                                \
            throw ::lum::Common::Exception(::lum::Common::Exception::Formatted{}, #cond,         \
                                           __LINE__, __FILE__, LUM_FUNCTION, __VA_ARGS__);       \
    } while (0)

// The same with the condition's text given in the system's own words, where the expression
// in the code reads differently.
#define LUM_CHECK_AS(cond, condition_text, ...)                                                  \
    do {                                                                                         \
        if (!(cond)) [[unlikely]]                                                                \
            throw ::lum::Common::Exception(::lum::Common::Exception::Formatted{}, condition_text, \
                                           __LINE__, __FILE__, LUM_FUNCTION, __VA_ARGS__);       \
    } while (0)
#define LUM_FAIL(...)                                                                            \
    throw ::lum::Common::Exception(::lum::Common::Exception::Formatted{}, "false", __LINE__,     \
                                   __FILE__, LUM_FUNCTION, __VA_ARGS__)

// For handles: the condition names the pointer test, the message is fixed per class.
#define LUM_CHECK_OBJECT(cond, message)                                                          \
    do {                                                                                         \
        if (!(cond)) [[unlikely]]                                                                \
            throw ::lum::Common::Exception(#cond, __LINE__, __FILE__, LUM_FUNCTION, message, 0); \
    } while (0)
