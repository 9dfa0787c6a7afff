#pragma once
// Sources, sinks and reference encoders shared by the filter tests.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Filters/Filter.h"
#include "support/TestSupport.h"

namespace lum::test {

// An input filter over its own copy of `bytes`, delivering at most `window` bytes per window,
// so that decoders meet their input cut at every possible place.
std::unique_ptr<Filters::Filter> Source(const std::string& bytes, size_t window = 1 << 20);

// Reads a chain to its end through a FilterReader, in reads of `chunk` bytes.
std::string ReadAll(Filters::Filter& f, size_t chunk = 4096);
std::string ReadAll(std::unique_ptr<Filters::Filter> f, size_t chunk = 4096);

// Deterministic data that compresses like text.
std::string TextLike(size_t n, unsigned seed = 1);
// Deterministic incompressible bytes.
std::string Noise(size_t n, unsigned seed = 1);

// Reference encoders, written from the formats, independent of the decoders under test.
std::string Deflate(const std::string& data, int level = 6, bool raw = false);
std::string LzwEncode(const std::string& data, int early_change, bool clear_first = true);
std::string Ascii85Encode(const std::string& data);
std::string RunLengthEncode(const std::string& data);
// PNG rows, each filtered by `tags[row % tags.size()]`.
std::string PngEncode(const std::string& data, size_t row_size, size_t pixel_size,
                      const std::vector<int>& tags);
std::string TiffEncode(const std::string& data, unsigned columns, unsigned colors, unsigned bits);

// The exception `f` raises; a test failure when it raises nothing.
template <typename F>
Common::Exception Raised(F&& f) {
    try {
        f();
    } catch (const Common::Exception& e) {
        return e;
    }
    ADD_FAILURE() << "nothing raised";
    return Common::Exception("", 0, "", "", "", 0);
}

}  // namespace lum::test
