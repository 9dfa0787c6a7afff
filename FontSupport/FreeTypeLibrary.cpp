#include "FontSupport/FreeTypeLibrary.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_MODULE_H

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "Common/Exception.h"

namespace lum::FontSupport {

namespace {

FT_Library gl_library = nullptr;
std::atomic<UInt64> gl_allocated{0};
std::atomic<UInt64> gl_generation{0};

// Each block carries its size in front, so that the count stays exact through realloc.
constexpr size_t kHeader = 16;

void* Alloc(FT_Memory, long size) {
    if (size <= 0) return nullptr;
    auto* p = static_cast<unsigned char*>(std::malloc(size_t(size) + kHeader));
    if (!p) return nullptr;
    std::memcpy(p, &size, sizeof size);
    gl_allocated += UInt64(size);
    return p + kHeader;
}

void Free(FT_Memory, void* block) {
    if (!block) return;
    auto* p = static_cast<unsigned char*>(block) - kHeader;
    long size = 0;
    std::memcpy(&size, p, sizeof size);
    gl_allocated -= UInt64(size);
    std::free(p);
}

void* Realloc(FT_Memory, long, long new_size, void* block) {
    if (!block) return Alloc(nullptr, new_size);
    auto* p = static_cast<unsigned char*>(block) - kHeader;
    long old_size = 0;
    std::memcpy(&old_size, p, sizeof old_size);
    auto* q = static_cast<unsigned char*>(std::realloc(p, size_t(new_size) + kHeader));
    if (!q) return nullptr;
    std::memcpy(q, &new_size, sizeof new_size);
    gl_allocated += UInt64(new_size);
    gl_allocated -= UInt64(old_size);
    return q + kHeader;
}

FT_MemoryRec_ gl_memory = {nullptr, Alloc, Free, Realloc};

[[noreturn]] void Fail(int error) {
    throw FT::FreeTypeException("FT_Err_Ok == error", __LINE__, __FILE__,
                                "lum::FontSupport::FreeTypeLibrary", "FreeType error", error);
}

}  // namespace

void FreeTypeLibrary::Init() {
    std::lock_guard<std::mutex> lock(GetLock());
    if (gl_library) return;
    FT_Library lib = nullptr;
    const FT_Error error = FT_New_Library(&gl_memory, &lib);
    if (error) Fail(error);
    FT_Add_Default_Modules(lib);
    gl_library = lib;
}

void FreeTypeLibrary::Done() {
    std::lock_guard<std::mutex> lock(GetLock());
    if (!gl_library) return;
    FT_Done_Library(gl_library);
    gl_library = nullptr;
    ++gl_generation;
}

bool FreeTypeLibrary::IsInitialized() {
    std::lock_guard<std::mutex> lock(GetLock());
    return gl_library != nullptr;
}

FT_Library FreeTypeLibrary::Get() {
    if (!gl_library) Fail(FT_Err_Invalid_Library_Handle);
    return gl_library;
}

std::mutex& FreeTypeLibrary::GetLock() {
    static std::mutex lock;
    return lock;
}

UInt64 FreeTypeLibrary::GetGeneration() { return gl_generation.load(); }

UInt64 FreeTypeLibrary::GetAllocatedBytes() { return gl_allocated.load(); }

}  // namespace lum::FontSupport
