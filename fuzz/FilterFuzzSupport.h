#pragma once
// Shared by the filter fuzz targets: the bytes behind a target's header, read whole or through
// the 1 KiB windows of a shared file view (as a document's streams are read), and a drain.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "Filters/ThreadSafeFilter.h"

namespace lum::fuzz {

// The input after a header of `skip` bytes, which the caller has checked are there.
inline std::unique_ptr<Filters::Filter> Input(const uint8_t* data, size_t size, size_t skip,
                                              bool windowed = false) {
    std::unique_ptr<Filters::Filter> f = std::make_unique<Filters::ExtBufInputFilter>(data + skip, size - skip);
    if (windowed) f = std::make_unique<Filters::ThreadSafeFilter>(std::move(f));
    return f;
}

// Reads `f` to its end in reads of `chunk` bytes (at most 4096); a bomb stops after 64 MiB so
// that a run stays fast.
inline void Drain(Filters::Filter& f, size_t chunk = 4096) {
    Filters::FilterReader r(&f);
    uint8_t buf[4096];
    chunk = chunk < sizeof buf ? chunk : sizeof buf;
    for (size_t total = 0, n; total < (64u << 20) && (n = r.Read(buf, chunk)) > 0;) total += n;
}

}  // namespace lum::fuzz
