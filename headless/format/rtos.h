// Real-to-text conversion in the host's linear units (the host's acdbRToS).
#pragma once

#include <optional>
#include <string>

namespace corvane::headless {

// What the conversion depends on besides the number. The caller resolves "current" units and
// precision (-1 in the host call) from LUNITS and LUPREC before it gets here.
struct RToSSettings {
  int units = 2;      // 1 Scientific, 2 Decimal, 3 Engineering, 4 Architectural, 5 Fractional
  int precision = 4;  // decimal places (1-3) or the smallest fraction 1/2^precision (4, 5); 0 to 8
  int dimzin = 0;     // 0-3 zero feet / zero inches (an enumeration), +4 leading, +8 trailing zeros
  int unitmode = 0;   // 1: the input form without blanks ("1'5-1/2\"")
};

// The text of `value` in the given units; nullopt where the host call fails: units or precision
// out of range, a value that is not a finite number, or one too large to count in 1/2^p.
std::optional<std::wstring> rtos(double value, const RToSSettings& settings);

}  // namespace corvane::headless
