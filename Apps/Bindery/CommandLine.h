#pragma once
// The front of the program: the option table, the help and version texts, and the run from
// the arguments to the exit status.
#include <string>

#include "Apps/Bindery/Options.h"

namespace lum::Bindery {

// Exit statuses of a run.
enum RunStatus : int {
    e_status_ok = 0,
    e_status_error = 1,           // when nothing more precise was recorded in m_last_error
    e_status_no_library = 2,      // the library could not be started
    e_status_no_output_dir = 3,   // the output folder could not be created
};

inline constexpr const char* kBanner = "\nZantrix Scrivex V6.6042202.\n";

// The help text after the banner: usage line, the option listing and the examples.
std::string HelpText();

// One whole run over UTF-8 arguments (argv[0] is the program): starts the library, parses
// the options into `opt`, walks the input names and stops the library. `opt` is freshly
// constructed; its message channel may have been replaced. Every message goes through it
// except the two echo lines that go straight to standard output. Answers the exit status.
int Run(int argc, const char* const* argv, Options& opt);
// The same with the console channel.
int Run(int argc, const char* const* argv);

}  // namespace lum::Bindery
