// Values as the host displays them with a field's format string (the host's AcValue::format).
//
// A format string mixes codes and literal text: "%lu2%ct4%qf1 SQ. FT." is the area in square
// feet followed by " SQ. FT.". Codes may stand in any order and are applied in a fixed order
// (conversion, units and precision, zero suppression, separators, prefix and suffix); the
// number takes the place of the first code. Codes are read case-insensitively:
//
//   %luN   linear units 1-5; 6 (or no %lu) the drawing's LUNITS
//   %prN   precision 0-8; without it LUPREC
//   %zsN   zero suppression: 1 zero feet, 2 zero inches, 4 leading, 8 trailing
//   %ct1   reciprocal   %ct4  square inches to square feet   %ct8[f]  times f
//   %qfN   1: an area, never in feet and inches; 256/512/1024/2048 add %zs 1/2/4/8
//   %ps[prefix,suffix]   "\\", "\,", "\[" and "\]" stand for the character itself
//   %dsN, %thN           decimal and thousands separator given by character code
//   %tcN   text case of strings: 1 upper, 2 lower, 3 first capital, 4 title
//
// Reading never fails: text that is not a known code stays literal, and a code whose number
// or bracket cannot be used is skipped.
#pragma once

#include <string>
#include <string_view>

#include "host/acvalue.h"

namespace corvane::headless {

// The drawing's settings the formatter reads.
struct DrawingUnits {
  int lunits = 2;
  int luprec = 4;
  int dimzin = 0;
  int unitmode = 0;
};

std::wstring formatValue(const host::AcValue& value, std::wstring_view format, const DrawingUnits& units);

}  // namespace corvane::headless
