#pragma once
// The one FreeType library of the process, made at library start with memory hooks of its
// own and the default modules. FreeType is not thread-safe on one library: every call that
// touches it or one of its faces runs under the FreeType lock, which is taken below a font's
// own mutex and never the other way round.
#include <mutex>

#include "Common/Types.h"

typedef struct FT_LibraryRec_* FT_Library;

namespace lum::FontSupport {

class FreeTypeLibrary {
public:
    // Makes the library; raises "FreeType error" (lum::FT::FreeTypeException) when FreeType
    // refuses. A second start does nothing.
    static void Init();
    // Frees the library. Faces still open must be gone before.
    static void Done();
    static bool IsInitialized();

    // The library; raises "FreeType error" when it isn't made.
    static FT_Library Get();
    // The FreeType lock.
    static std::mutex& GetLock();

    // Counts the libraries freed so far: a face made under an older library was freed with it.
    static UInt64 GetGeneration();

    // Bytes that FreeType holds now through our hooks: faces, glyph slots, caches.
    static UInt64 GetAllocatedBytes();
};

}  // namespace lum::FontSupport
