#include "Apps/Bindery/Options.h"

#include <cstdio>
#include <iostream>

namespace lum::Bindery {

Options::Options() : m_message(&ConsoleMessage), m_message_context(this) {}

Options::~Options() = default;

const char* ConsoleMessage(Int32 kind, const char* text, void*) {
    if (!text) text = "";
    switch (kind) {
        case e_msg_error:
            std::fputs("Error: ", stdout);
            std::fputs(text, stdout);
            std::fputc('\n', stdout);
            std::fflush(stdout);
            return nullptr;
        case e_msg_text:
            std::fputs(text, stdout);
            return nullptr;
        case e_msg_read_line: {
            // What was written so far must be seen before we wait for the user.
            std::fflush(stdout);
            static std::string line;
            line.clear();
            std::getline(std::cin, line);
            // A line typed on a terminal that sends CR LF reads the same as one ending in LF.
            if (!line.empty() && line.back() == '\r') line.pop_back();
            return line.c_str();
        }
        default:
            return nullptr;
    }
}

const char* SendMessage(Options& opt, MessageKind kind, const std::string& text) {
    if (!opt.m_message) return nullptr;
    return opt.m_message(kind, text.c_str(), opt.m_message_context);
}

}  // namespace lum::Bindery
