#pragma once
// From an input path to the files that go on to the document driver.
#include <boost/filesystem/path.hpp>

#include "Apps/Bindery/Options.h"

namespace lum::Bindery {

// Walks one folder: files go to ProcessFile, sub-folders are walked when --subfolders is set.
// `sub_path` is the chain of folder names below the output folder, each behind a separator;
// empty for a folder named on the command line. A failure of one entry is reported against
// its name and the walk goes on; a folder that can't be opened or read raises.
void ProcessFolder(boost::filesystem::path folder, PathString sub_path, Options& opt);

// Filters one file by its extension, echoes it, makes its output sub-folder and hands it to
// the document driver.
void ProcessFile(boost::filesystem::path file, PathString sub_path, Options& opt);

}  // namespace lum::Bindery
