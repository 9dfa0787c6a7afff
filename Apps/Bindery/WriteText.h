#pragma once
// The one way out for page output: the screen in ASCII form, or the page's file in UTF-8 or
// UTF-16LE. Also how numbers are written into that output.
#include <string>

#include "Common/UString.h"

namespace lum::Bindery {

struct Options;

// To the screen: ConvertToAscii (units of 128 and above as \UXXXX) through message kind 2.
// To a file: the units little-endian when the encoding is "utf16" or "utf-16", else UTF-8.
// Nothing is added, and nothing happens when output goes to a file and none is open.
void WriteText(Options& opt, const UString& text);

// Whether the run writes UTF-16 (its files start with FF FE).
bool IsUtf16Encoding(const Options& opt);

// Appends `value` as printf's %g writes it (six significant digits, no trailing zeros, no
// decimal point when none is needed), independent of the locale.
void AppendNumber(std::string& out, double value);

}  // namespace lum::Bindery
