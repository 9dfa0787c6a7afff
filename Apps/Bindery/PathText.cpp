#include "Apps/Bindery/PathText.h"

#include <boost/filesystem/operations.hpp>

#include "Common/Exception.h"
#include "Common/UnicodeUtils.h"

namespace lum::Bindery {

namespace fs = boost::filesystem;

namespace {

// Length of the valid UTF-8 sequence at s[i], or 0 when none starts there.
size_t ValidSequenceAt(const std::string& s, size_t i) {
    const auto lead = static_cast<UInt8>(s[i]);
    if (lead < 0x80) return 1;
    const int n = Uni::UTF8SequenceLength(lead);
    if (n < 2 || n > 4 || i + static_cast<size_t>(n) > s.size()) return 0;
    UInt32 cp = lead & (0x7Fu >> n);
    for (int k = 1; k < n; ++k) {
        const auto c = static_cast<UInt8>(s[i + static_cast<size_t>(k)]);
        if ((c & 0xC0) != 0x80) return 0;
        cp = (cp << 6) | (c & 0x3Fu);
    }
    if ((cp >= 0xD800 && cp <= 0xDFFF) || cp > 0x10FFFF) return 0;
    return static_cast<size_t>(n);
}

bool IsValidUtf8(const std::string& s) {
    for (size_t i = 0; i < s.size();) {
        const size_t n = ValidSequenceAt(s, i);
        if (n == 0) return false;
        i += n;
    }
    return true;
}

}  // namespace

UString DecodeNameLenient(const std::string& bytes) {
    if (IsValidUtf8(bytes)) return UString(bytes);
    UString out;
    out.Reserve(static_cast<int>(std::min<size_t>(bytes.size(), 1u << 30)));
    for (size_t i = 0; i < bytes.size();) {
        const size_t n = ValidSequenceAt(bytes, i);
        if (n == 0) {
            out.Append(static_cast<Unicode>(static_cast<UInt8>(bytes[i])));
            ++i;
        } else {
            out.Append(UString(bytes.data() + i, static_cast<int>(n), enc_utf8));
            i += n;
        }
    }
    return out;
}

std::string NameForDisplay(const std::string& bytes) {
    if (IsValidUtf8(bytes)) return bytes;
    return std::string(static_cast<size_t>(DecodeNameLenient(bytes).GetLength()), '?');
}

std::string NameAsAscii(const std::string& bytes) { return DecodeNameLenient(bytes).ConvertToAscii(); }

fs::path FullPath(const fs::path& p) {
    fs::path full = fs::absolute(p).lexically_normal();
    // A trailing separator leaves "." as the last element; the folder itself is meant.
    while (full.filename() == "." && full.has_parent_path() && full != full.root_path())
        full = full.parent_path();
    return full;
}

bool PathExists(const fs::path& p) {
    boost::system::error_code ec;
    const fs::file_status st = fs::status(p, ec);
    if (ec) return false;
    return st.type() != fs::status_error && st.type() != fs::file_not_found;
}

}  // namespace lum::Bindery
