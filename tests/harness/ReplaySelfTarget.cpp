// A fuzz target that misbehaves on command, so the harness tests can check that the replay
// driver turns each kind of failure into a non-zero status naming the input.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string in(reinterpret_cast<const char*>(data), size);
    if (in == "abort") std::abort();
    if (in == "throw") throw std::runtime_error("thrown on purpose");
    if (in == "hang") {
        for (;;) pause();
    }
    if (in.rfind("grow ", 0) == 0) {
        // Megabyte by megabyte, as a parser that never stops would grow; every page is touched
        // so the memory counts as resident.
        size_t mb = std::strtoul(in.c_str() + 5, nullptr, 10);
        std::vector<std::vector<char>> blocks;
        for (size_t i = 0; i < mb; ++i) {
            blocks.emplace_back(1 << 20, '\1');
            usleep(1000);
        }
    }
    if (in == "overread" && size > 0) {
        // One byte past the end: only caught when the driver hands over an exact-size copy.
        volatile uint8_t past = data[size];
        (void)past;
    }
    return 0;
}
