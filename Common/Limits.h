#pragma once
// Every bound the code enforces against hostile input, in one place. Each constant says its
// unit and why it has the value it has; README "Limits" lists them for users.
#include <cstddef>
#include <cstdint>

namespace lum::Limits {

// --- Filters ---

// --- Objects and parser ---

// --- Cross-reference and document store ---

// --- Document, pages ---

}  // namespace lum::Limits
