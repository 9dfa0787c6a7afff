#include "PDF/Ferrox.h"

#include <clocale>
#include <mutex>

namespace lum::PDF {

namespace {
std::recursive_mutex gl_startup_lock;
bool gl_initialized = false;
std::string gl_resources_path;
}  // namespace

void Ferrox::Initialize() {
    std::lock_guard<std::recursive_mutex> lock(gl_startup_lock);
    if (gl_initialized) return;
    std::setlocale(LC_ALL, "C");
    gl_initialized = true;
}

void Ferrox::Terminate() {
    std::lock_guard<std::recursive_mutex> lock(gl_startup_lock);
    gl_initialized = false;
}

void Ferrox::SetResourcesPath(const std::string& path) {
    std::lock_guard<std::recursive_mutex> lock(gl_startup_lock);
    gl_resources_path = path;
}

bool Ferrox::IsInitialized() {
    std::lock_guard<std::recursive_mutex> lock(gl_startup_lock);
    return gl_initialized;
}

}  // namespace lum::PDF
