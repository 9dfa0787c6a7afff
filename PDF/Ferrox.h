#pragma once
// Process-wide start and stop of the library. The tool starts it once before anything else
// and stops it once at the end of the run; both may be called again, and a nested or repeated
// start without a stop does nothing.
#include <string>
#include <vector>

namespace lum::PDF {

class Ferrox {
public:
    // Raises when a part of the library cannot be started.
    static void Initialize();
    static void Terminate();
    static bool IsInitialized();

    // Remembers `path` when it, or the resource file name joined to it, opens as a readable
    // file. Never raises.
    static bool SetResourcesPath(const std::string& path);

    // The folder for temp files (UTF-8); raises "Could not open TEMP path" when there is none.
    static std::string GetSystemTempPath();

    // Removes files named "<prefix>-<pid>-<number>-<anything>" from `folder` whose process no
    // longer runs: what a crashed run left behind. Never raises.
    static void SweepStaleTempFiles(const std::string& folder, const std::string& prefix);
    // The same for several prefixes, in one reading of the folder.
    static void SweepStaleTempFiles(const std::string& folder, const std::vector<std::string>& prefixes);

};

}  // namespace lum::PDF
