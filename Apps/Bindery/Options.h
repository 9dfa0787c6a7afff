#pragma once
// The run configuration of the tool: every setting of the command line, the message channel
// through which everything the user reads or types passes, and the buffers reused from page
// to page.
#include <memory>
#include <string>

#include <boost/filesystem/path.hpp>

#include "Common/Types.h"
#include "Common/UString.h"
#include "Filters/Filter.h"
#include "Filters/FilterWriter.h"

namespace lum::Bindery {

// The native string of a path: UTF-8 bytes on this platform.
using PathString = boost::filesystem::path::string_type;

// Kinds of m_message.
enum MessageKind : Int32 {
    e_msg_error = 1,        // "Error: " + text + newline on standard output, flushed
    e_msg_text = 2,         // text as it is, no newline, no flush (also page output to screen)
    e_msg_read_line = 3,    // reads one line from standard input; answers it
    e_msg_output_file = 4,  // the UTF-8 name of an output file just opened; the console ignores it
};

// Answers text for e_msg_read_line, null otherwise.
using MessageFunc = const char* (*)(Int32 kind, const char* text, void* context);

struct Options {
    Options();
    ~Options();
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;

    // Joins folder and file names when output names are built.
    PathString m_path_separator = "/";
    // The last failure recorded by the document driver (1, 3, 4, 5 or 6).
    Int32 m_last_error = 0;
    Int32 m_verbosity = 1;
    bool m_subfolders = false;
    bool m_to_screen = true;
    std::string m_format;    // lower-cased after parsing
    std::string m_encoding;  // lower-cased after parsing
    std::string m_clip;
    std::string m_pages;
    std::string m_prefix;
    Int32 m_digits = -1;
    // The absolute output folder; the current folder unless --output names one.
    PathString m_output_path;
    // From --pass, then whatever the user types at a password prompt.
    std::string m_password;
    bool m_wordcount = false;
    bool m_charcount = false;
    bool m_pageinfo = false;
    bool m_noligatures = false;
    bool m_nodehyphen = false;
    bool m_no_dup_remove = false;
    bool m_punct_break = false;
    bool m_remove_hidden_text = false;
    bool m_no_invisible_text = false;
    bool m_xml_words_as_elements = false;
    bool m_output_bbox = false;
    bool m_xml_output_styles = false;
    bool m_noprompt = false;
    // The extension, dot included, that a file must have to be processed.
    std::string m_extension = ".pdf";
    MessageFunc m_message;
    void* m_message_context;
    UString m_text;          // the page's text, reused from page to page
    std::string m_scratch;   // converted output, reused from page to page
    // The output file of the current page; none when output goes to the screen.
    std::unique_ptr<Filters::Filter> m_out_filter;
    Filters::FilterWriter m_out_writer;  // buffered writer on m_out_filter
};

// The console channel: errors and text to standard output (standard error is not used),
// lines read from standard input.
const char* ConsoleMessage(Int32 kind, const char* text, void* context);

// Sends through opt.m_message when one is set; answers its result, or null.
const char* SendMessage(Options& opt, MessageKind kind, const std::string& text);

}  // namespace lum::Bindery
