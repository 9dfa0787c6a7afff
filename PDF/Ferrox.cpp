#include "PDF/Ferrox.h"

#include <sys/resource.h>
#include <sys/types.h>
#include <signal.h>

#include <cerrno>
#include <clocale>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <shared_mutex>

#include <boost/filesystem.hpp>
#include <boost/regex.hpp>
#include <openssl/crypto.h>

#include "Common/Exception.h"
#include "Common/UnicodeUtils.h"
#include "FontSupport/FreeTypeLibrary.h"
#include "FontSupport/PlatformFonts.h"
#include "PDF/FerroxResources.h"
#include "PDF/Font/StandardFontFaces.h"
#include "PDF/Font/StandardFonts.h"

namespace lum::PDF {

namespace {

namespace fs = boost::filesystem;

// Made at first use, so a start from a static constructor of another unit finds it ready.
std::recursive_mutex& StartupLock() {
    static std::recursive_mutex lock;
    return lock;
}

bool gl_initialized = false;

// One path with its own lock: readers share it, a writer excludes them.
class GuardedPath {
public:
    std::string Get() const {
        std::shared_lock<std::shared_mutex> lock(m_lock);
        return m_path;
    }
    void Set(const std::string& path) {
        std::unique_lock<std::shared_mutex> lock(m_lock);
        m_path = path;
    }

private:
    mutable std::shared_mutex m_lock;
    std::string m_path;
};

struct PathHolder {
    GuardedPath resource_search_path;
    GuardedPath font_path;
    GuardedPath resource_file_name;
    GuardedPath temp_path;
};

PathHolder& Paths() {
    static PathHolder holder;
    return holder;
}

// The C runtime's default of open files is too low for a run that maps a document and opens
// an output file per page while font files are open too.
constexpr rlim_t kWantedOpenFiles = 2048;

void RaiseOpenFileLimit() {
    struct rlimit lim;
    if (getrlimit(RLIMIT_NOFILE, &lim) != 0) return;
    if (lim.rlim_cur != RLIM_INFINITY && lim.rlim_cur < kWantedOpenFiles) {
        lim.rlim_cur = (lim.rlim_max == RLIM_INFINITY || lim.rlim_max >= kWantedOpenFiles)
                           ? kWantedOpenFiles
                           : lim.rlim_max;
        setrlimit(RLIMIT_NOFILE, &lim);  // a refusal leaves the old limit, which still works
    }
}

// Whether a process with this id exists. A process of another user answers EPERM: it runs.
bool ProcessRuns(const std::string& digits) {
    errno = 0;
    char* end = nullptr;
    const unsigned long long id = std::strtoull(digits.c_str(), &end, 10);
    if (errno == ERANGE || id == 0 || id > static_cast<unsigned long long>(INT_MAX)) return false;
    if (kill(static_cast<pid_t>(id), 0) == 0) return true;
    return errno == EPERM;
}

bool OpensForReading(const std::string& path) {
    if (path.empty()) return false;
    boost::system::error_code ec;
    if (!fs::is_regular_file(fs::path(path), ec) || ec) return false;
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return false;
    std::fclose(f);
    return true;
}

}  // namespace

void Ferrox::Initialize() {
    std::lock_guard<std::recursive_mutex> lock(StartupLock());
    if (gl_initialized) return;
    // Numbers that the library writes or reads with the C runtime must use a decimal point,
    // whatever the user's locale says.
    std::setlocale(LC_ALL, "C");
    Uni::InitConverterTable();
    FontSupport::FreeTypeLibrary::Init();
    Fnt::InitStandardFontWidths();
    OPENSSL_init_crypto(OPENSSL_INIT_ADD_ALL_CIPHERS | OPENSSL_INIT_ADD_ALL_DIGESTS, nullptr);
    RaiseOpenFileLimit();
    // Opening costs the cross-reference table only: streams unpack when a font or CMap asks.
    // A failure here isn't the start's failure: each lookup tries again and reports it.
    Resource::LoadResources();
    gl_initialized = true;
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    // Two prefixes: files of the earlier name of the library are swept as well.
    std::string temp;
    try {
        temp = GetSystemTempPath();
    } catch (const Common::Exception&) {
        return;  // no temp folder: nothing to sweep, and nothing on the reading road needs one
    }
    SweepStaleTempFiles(temp, std::vector<std::string>{"Zantrix", "Lum"});
}

void Ferrox::Terminate() {
    std::lock_guard<std::recursive_mutex> lock(StartupLock());
    if (!gl_initialized) return;
    Fnt::ReleaseStandardFontWidths();
    // The standard fonts' faces read the resource document and live on FreeType: both go after.
    Fnt::ReleaseStandardFontFaces();
    Resource::UnloadResources();
    FontSupport::StopPlatformFonts();
    FontSupport::FreeTypeLibrary::Done();
    // OpenSSL is left as it is: once cleaned up it can't be started again in this process,
    // and a later Initialize must work.
    gl_initialized = false;
}

bool Ferrox::IsInitialized() {
    std::lock_guard<std::recursive_mutex> lock(StartupLock());
    return gl_initialized;
}

bool Ferrox::SetResourcesPath(const std::string& path) {
    try {
        if (OpensForReading(path)) {
            Paths().resource_search_path.Set(path);
            return true;
        }
        const std::string joined = (fs::path(path) / Paths().resource_file_name.Get()).string();
        if (OpensForReading(joined)) {
            Paths().resource_search_path.Set(joined);
            return true;
        }
    } catch (...) {
    }
    return false;
}

std::string Ferrox::GetSystemTempPath() {
    std::string path = Paths().temp_path.Get();
    if (!path.empty()) return path;
    boost::system::error_code ec;
    const fs::path temp = fs::temp_directory_path(ec);
    LUM_CHECK(!ec && !temp.empty(), "Could not open TEMP path");
    path = temp.string();
    Paths().temp_path.Set(path);
    return path;
}

void Ferrox::SweepStaleTempFiles(const std::string& folder, const std::string& prefix) {
    SweepStaleTempFiles(folder, std::vector<std::string>{prefix});
}

void Ferrox::SweepStaleTempFiles(const std::string& folder, const std::vector<std::string>& prefixes) {
    try {
        boost::system::error_code ec;
        if (!fs::is_directory(fs::path(folder), ec) || ec) return;
        // Prefixes are our own constants, free of regular-expression syntax.
        std::vector<boost::regex> patterns;
        for (const std::string& prefix : prefixes) patterns.emplace_back(prefix + "-(\\d+)-(\\d+)-.*");
        // A shared temp folder holds many other files: the prefix is compared before the pattern.
        fs::directory_iterator it(fs::path(folder), ec), end;
        for (; !ec && it != end; it.increment(ec)) {
            const std::string name = it->path().filename().string();
            for (size_t k = 0; k < prefixes.size(); ++k) {
                boost::smatch m;
                if (name.compare(0, prefixes[k].size(), prefixes[k]) != 0 ||
                    !boost::regex_match(name, m, patterns[k]))
                    continue;
                if (!ProcessRuns(m[1].str())) {
                    boost::system::error_code remove_ec;
                    fs::remove(it->path(), remove_ec);  // a file that can't go stays for a later sweep
                }
                break;
            }
        }
    } catch (...) {
        // A folder that changes under the walk or a name that cannot be converted ends the
        // sweep; start-up goes on.
    }
}

}  // namespace lum::PDF
