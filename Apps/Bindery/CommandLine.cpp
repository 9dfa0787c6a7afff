#include "Apps/Bindery/CommandLine.h"

#include <cstdio>
#include <optional>
#include <sstream>
#include <vector>

#include <boost/filesystem/operations.hpp>
#include <boost/program_options.hpp>

#include "Apps/Bindery/BatchWalk.h"
#include "Apps/Bindery/PathText.h"
#include "PDF/Ferrox.h"

namespace lum::Bindery {

namespace po = boost::program_options;
namespace fs = boost::filesystem;

namespace {

constexpr unsigned kLineLength = 80;
constexpr unsigned kMinDescriptionLength = 40;

// Every row of the table, in the order of the help listing. Values that go straight into
// Options are bound here; the rest are read from the variables map after parsing.
void AddRows(po::options_description& d, Options& opt) {
    d.add_options()
        ("file...", po::value<std::vector<std::string>>(),
         "A list of folders and/or file names to process.\n")
        ("output,o", po::value<std::string>(),
         "The folder used to store output files. By default, the output will be displayed on screen.\n")
        ("pages,a", po::value<std::string>(&opt.m_pages)->default_value("-"),
         "Specifies the list of pages to convert. By default, all pages are converted.\n")
        ("encoding,e", po::value<std::string>(&opt.m_encoding)->default_value("UTF8"),
         "Output text encoding:\n \tUTF8\n \tUTF16\nThe default output encoding is UTF8.\n")
        ("format,f", po::value<std::string>(&opt.m_format)->default_value("plain"),
         "Output text formating:\n \tplain\n \twordlist\n \ttextruns\n \txml\n"
         "The default output format is 'plain' text.\n")
        ("noligatures",
         "Disables expanding of ligatures using a predefined mapping. Default ligatures are: fi, ff, "
         "fl, ffi, ffl, ch, cl, ct, ll, ss, fs, st, oe, OE.\n")
        ("nodehyphen",
         "Disables finding and removing hyphens that split words across two lines. Hyphens are often "
         "used a the end of lines as an indicator that a word spans two lines. Hyphen detection "
         "enables removal of hyphen character and merging of text runs to form a single word. This "
         "option has no effect on Tagged PDF files.\n")
        ("no_dup_remove",
         "Disables removing duplicated text that is frequently used to achieve visual effects of "
         "drop shadow and fake bold.\n")
        ("punct_break",
         "Treat punctuation (e.g. full stop, comma, semicolon, etc.) as word break characters.\n")
        ("remove_hidden_text",
         "Enables removal of text that is obscured by images or rectangles. Since this option has "
         "small performance penalty on performance of text extraction, by default it is not enabled.\n")
        ("no_invisible_text",
         "Enables removing text that uses rendering mode 3 (i.e. invisible text). Invisible text is "
         "usually used in 'PDF Searchable Images' (i.e. scanned pages with a corresponding OCR text). "
         "As a result, invisible text will be extracted by default.\n")
        ("output_bbox",
         "Include bounding box information for each text element. If the output format is 'XML' the "
         "bounding box information will be stored in 'bbox' attribute. If the output format is "
         "'wordlist' the coordinates of the bounding box will precede the word.\n")
        ("xml_words_as_elements", "Output words as XML elements instead of inline text.\n")
        ("xml_output_styles", "Include font and styling information.\n")
        ("wordcount", "Get the number of words on each page.\n")
        ("charcount", "Get total number of characters on each page.\n")
        ("pageinfo",
         "Get the width, height, media box, crop box, and page rotation for every page.\n")
        ("prefix", po::value<std::string>(),
         "The prefix for output text files. The output filename will be constructed by appending the "
         "prefix string, the page number, and the appropriate file extension (e.g. myprefix1.txt, "
         "myprefix2.xml, etc). The prefix option should be used only for processing of individual "
         "documents. By default, PDF filename will be used as a prefix.\n")
        ("digits", po::value<int>(&opt.m_digits),
         "The number of digits used in the page counter portion of the output filename. By default, "
         "new digits are added as needed; however this parameter could be used to format the page "
         "counter field to a uniform width (e.g. myfile0001.txt, myfile0002.txt, etc).\n")
        ("subfolders",
         "Process all sub-directory for every directory specified in the argument list. By default, "
         "sub-directories are not processed.\n")
        ("clip,c", po::value<std::string>(&opt.m_clip),
         "User definable clip box. The default clip region is crop box of the page.\n")
        ("noprompt",
         "Disables any user input. By default, the application will ask for a valid password if the "
         "password is incorrect.\n")
        ("pass,p", po::value<std::string>(),
         "The password for secured PDF files. Not required if the input document is not secured "
         "using the 'open' password.\n")
        ("extension", po::value<std::string>()->default_value(".pdf"),
         "The default file extension used to process PDF documents. The default extension is "
         "\".pdf\".\n")
        ("verb", po::value<int>(&opt.m_verbosity)->default_value(1),
         "Set the opt.m_verbosity level to 'arg' (0-2).\n")
        ("version,v", "Print the version information.\n")
        ("help,h", "Print a listing of available options.\n");
}

std::string HelpTextOf(const po::options_description& all) {
    po::options_description visible("OPTIONS", kLineLength, kMinDescriptionLength);
    visible.add(all);
    std::ostringstream os;
    os << "Usage: scrivex [<options>] file...\n" << '\n' << visible
       << "\nExamples:\n  scrivex my.pdf\n  scrivex -o test_out/ex1 test/my.pdf\n"
          "  scrivex --wordcount my.pdf\n  scrivex -o test_out -a 1 -f xml --output_bbox my.pdf\n\n";
    return os.str();
}

void LowerAscii(std::string& s) {
    for (char& c : s)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
}

// The two echo lines that bypass the message channel.
void EchoToStdout(const std::string& line) {
    std::fputs(line.c_str(), stdout);
    std::fflush(stdout);
}

// The switches that are copied after parsing, with their echo, in this order.
struct Switch {
    const char* name;
    bool Options::*field;
};
constexpr Switch kSwitches[] = {
    {"noprompt", &Options::m_noprompt},
    {"wordcount", &Options::m_wordcount},
    {"charcount", &Options::m_charcount},
    {"pageinfo", &Options::m_pageinfo},
    {"noligatures", &Options::m_noligatures},
    {"nodehyphen", &Options::m_nodehyphen},
    {"no_dup_remove", &Options::m_no_dup_remove},
    {"punct_break", &Options::m_punct_break},
    {"remove_hidden_text", &Options::m_remove_hidden_text},
    {"no_invisible_text", &Options::m_no_invisible_text},
    {"xml_words_as_elements", &Options::m_xml_words_as_elements},
    {"output_bbox", &Options::m_output_bbox},
    {"xml_output_styles", &Options::m_xml_output_styles},
};

// One input name of the command line.
void ProcessInputName(const std::string& name, Options& opt) {
    // Made absolute, an empty name names the current folder, which is walked.
    fs::path path = FullPath(fs::path(name));
    bool found = PathExists(path);
    if (!found && fs::path(name).extension().empty()) {
        path = FullPath(fs::path(name + opt.m_extension));
        found = PathExists(path);
    }
    if (!found) {
        if (opt.m_verbosity >= 1) SendMessage(opt, e_msg_error, "Wrong input filename or path: " + name);
        return;
    }
    boost::system::error_code ec;
    if (fs::is_directory(path, ec))
        ProcessFolder(path, PathString(), opt);
    else
        ProcessFile(path, PathString(), opt);
}

// Steps from parsing to the end of the batch; exceptions leave to Run.
int ParseAndWalk(int argc, const char* const* argv, Options& opt) {
    po::options_description all("", kLineLength, kMinDescriptionLength);
    AddRows(all, opt);
    po::positional_options_description positional;
    positional.add("file...", -1);

    po::variables_map vm;
    // The parser reads argv[1..argc); a process started without even argv[0] has nothing.
    if (argc > 1)
        po::store(po::command_line_parser(argc, argv).options(all).positional(positional).run(), vm);
    po::notify(vm);

    if (argc <= 1 || vm.count("help")) {
        SendMessage(opt, e_msg_text, kBanner);
        SendMessage(opt, e_msg_text, HelpTextOf(all));
        return e_status_ok;
    }
    if (vm.count("version")) {
        SendMessage(opt, e_msg_text, kBanner);
        return e_status_ok;
    }
    if (!vm.count("file...") || vm["file..."].as<std::vector<std::string>>().empty()) {
        if (opt.m_verbosity >= 1) SendMessage(opt, e_msg_text, "No input files specified.\n");
        return e_status_ok;
    }

    const bool echo = opt.m_verbosity >= 2;
    std::optional<std::string> output_name;
    if (vm.count("output")) {
        opt.m_to_screen = false;
        output_name = vm["output"].as<std::string>();
        opt.m_output_path = FullPath(fs::path(*output_name)).native();
        if (echo) SendMessage(opt, e_msg_text, "'output' parameter: " + NameAsAscii(*output_name) + "\n");
    }
    if (vm.count("subfolders")) {
        opt.m_subfolders = true;
        if (echo) SendMessage(opt, e_msg_text, "'subfolders' parameter: true\n");
    }
    if (vm.count("pass")) {
        opt.m_password = vm["pass"].as<std::string>();
        if (echo) SendMessage(opt, e_msg_text, "'pass' parameter: " + opt.m_password + "\n");
    }
    for (const Switch& s : kSwitches) {
        if (!vm.count(s.name)) continue;
        opt.*s.field = true;
        if (echo) SendMessage(opt, e_msg_text, std::string("'") + s.name + "' parameter: true\n");
    }
    if (vm.count("extension")) {
        opt.m_extension = vm["extension"].as<std::string>();
        if (echo) EchoToStdout("'extension' parameter: " + opt.m_extension + "\n");
    }
    if (vm.count("prefix")) {
        opt.m_prefix = vm["prefix"].as<std::string>();
        if (echo) EchoToStdout("'prefix' parameter: " + opt.m_prefix + "\n");
    }

    LowerAscii(opt.m_format);
    LowerAscii(opt.m_encoding);

    const std::vector<std::string> names = vm["file..."].as<std::vector<std::string>>();

    if (output_name && !output_name->empty() && !opt.m_output_path.empty() &&
        !PathExists(opt.m_output_path)) {
        try {
            fs::create_directories(opt.m_output_path);
        } catch (...) {
            SendMessage(opt, e_msg_error, "Failed to create the output directory: " + opt.m_output_path);
            return e_status_no_output_dir;
        }
    }

    if (echo) SendMessage(opt, e_msg_text, "Processing... \n");
    for (const std::string& name : names) ProcessInputName(name, opt);
    return e_status_ok;
}

int FailureStatus(const Options& opt) { return opt.m_last_error != 0 ? opt.m_last_error : e_status_error; }

}  // namespace

std::string HelpText() {
    Options opt;
    po::options_description all("", kLineLength, kMinDescriptionLength);
    AddRows(all, opt);
    return HelpTextOf(all);
}

int Run(int argc, const char* const* argv) {
    // Arguments arrive as UTF-8 bytes here, so they go to the parser as they are.
    Options opt;
    return Run(argc, argv, opt);
}

int Run(int argc, const char* const* argv, Options& opt) {
    int status = e_status_ok;
    try {
        opt.m_output_path = fs::current_path().native();
    } catch (const std::exception& e) {
        SendMessage(opt, e_msg_error, e.what());
        return e_status_error;
    }

    try {
        PDF::Ferrox::Initialize();
        // The resource file lives in the program's own data; the search path only matters for
        // a file placed beside it, and the root stands in for the drive root.
        PDF::Ferrox::SetResourcesPath("/");
    } catch (...) {
        try {
            PDF::Ferrox::Terminate();
        } catch (...) {
        }
        return e_status_no_library;
    }

    try {
        status = ParseAndWalk(argc, argv, opt);
    } catch (const std::exception& e) {
        SendMessage(opt, e_msg_error, e.what());
        status = FailureStatus(opt);
    } catch (...) {
        SendMessage(opt, e_msg_error, "An unknown error encountered.");
        status = FailureStatus(opt);
    }

    try {
        PDF::Ferrox::Terminate();
    } catch (...) {
        // Nothing is left to report to: the run's own status stands.
    }
    return status;
}

}  // namespace lum::Bindery
