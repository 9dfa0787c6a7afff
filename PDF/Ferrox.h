#pragma once
#include <string>

namespace lum::PDF {

// Start and stop of the library.
class Ferrox {
public:
    static void Initialize();
    static void Terminate();
    static void SetResourcesPath(const std::string& path);
    static bool IsInitialized();
};

}  // namespace lum::PDF
