#include "Apps/Bindery/ProcessDocument.h"

namespace lum::Bindery {

// Placeholder until the document driver exists: the batch walk ends with the echo of the file.
bool ProcessDocument(const boost::filesystem::path&, const boost::filesystem::path&, Options&) {
    return true;
}

}  // namespace lum::Bindery
