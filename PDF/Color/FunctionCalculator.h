#pragma once
// Type 4 functions: a program in a small subset of PostScript (arithmetic, comparisons,
// stack operators, if and ifelse; no loops).
namespace lum::SDF { class Obj; }

namespace lum::PDF::Color {

class Function;

// Reads the program of `stream`; raises when it can't be parsed or breaks a bound.
// The caller owns the result (no references taken yet).
Function* CreateCalculator(SDF::Obj* stream);

}  // namespace lum::PDF::Color
