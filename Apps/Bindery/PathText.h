#pragma once
// Paths and names as the tool shows and opens them. Arguments and folder entries arrive as
// bytes that are UTF-8 in practice but need not be: a name in another encoding must still
// reach the file system unchanged and be shown without a failure.
#include <string>

#include <boost/filesystem/path.hpp>

#include "Common/UString.h"

namespace lum::Bindery {

// UTF-8 decoding that can't fail: a byte that starts no valid sequence becomes the unit of
// the same value, so the text keeps every byte in view.
UString DecodeNameLenient(const std::string& bytes);

// The name as UTF-8 for the screen; a name that isn't valid UTF-8 shows as one question mark
// for each of its characters.
std::string NameForDisplay(const std::string& bytes);

// The ASCII form of the name (see UString::ConvertToAscii), for error lines.
std::string NameAsAscii(const std::string& bytes);

// The absolute, lexically normal form of `p` against the current folder, without a trailing
// separator; "" gives the current folder. Raises when the current folder is gone.
boost::filesystem::path FullPath(const boost::filesystem::path& p);

// Whether the path's status can be read and is anything but "not found".
bool PathExists(const boost::filesystem::path& p);

}  // namespace lum::Bindery
