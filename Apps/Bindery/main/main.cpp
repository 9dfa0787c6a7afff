#include "Apps/Bindery/CommandLine.h"

int main(int argc, char** argv) {
    try {
        return lum::Bindery::Run(argc, argv);
    } catch (...) {
        // Run reports its own failures; this only keeps a failure to build its state (out of
        // memory) from ending in an abort.
        return lum::Bindery::e_status_error;
    }
}
