#pragma once
#include <boost/filesystem/path.hpp>

namespace lum::Bindery {

struct Options;

// Opens one document, selects its pages and writes each page's output.
// Answers true when every page was visited.
bool ProcessDocument(const boost::filesystem::path& file, const boost::filesystem::path& out_folder,
                     Options& opt);

}  // namespace lum::Bindery
