// The additional-format settings of the measurement fields (prefix, suffix, conversion factor,
// separators, zero suppression) and the piece of format string they make.
#pragma once

#include <string>
#include <string_view>

#include "host/formataffix.h"

namespace corvane {

struct ZeroSuppression {
  bool leading = false;
  bool trailing = false;
  bool zeroFeet = false;
  bool zeroInches = false;

  // The "%zs" mask: 1 "0 feet", 2 "0 inches", 4 "Leading", 8 "Trailing".
  int mask() const noexcept;
  static ZeroSuppression fromMask(int mask) noexcept;
  bool operator==(const ZeroSuppression&) const = default;
};

struct AdditionalFormat {
  double conversionFactor = 1.0;
  std::wstring prefix;
  std::wstring suffix;
  int decimalSeparator = 0;    // character code; 0 the host's default
  int thousandsSeparator = 0;  // character code; 0 none
  ZeroSuppression zeros;

  // "%ps[...]", "%ct8[...]", "%ds", "%th" and "%zs", each only when it changes something;
  // empty when nothing does.
  std::wstring build(int hostVersion) const;
  // What an option page takes back from the "Additional Format" dialog: factor, prefix,
  // suffix and zero suppression (the separators stay as they were).
  void takeChosen(const AdditionalFormat& chosen) {
    conversionFactor = chosen.conversionFactor;
    prefix = chosen.prefix;
    suffix = chosen.suffix;
    zeros = chosen.zeros;
  }
  bool operator==(const AdditionalFormat&) const = default;
};

// Hosts up to this version have no escapes inside "%ps[...]".
constexpr int kLastVersionWithoutEscapes = 16;
using host::escapeAffix;
using host::unescapeAffix;

}  // namespace corvane
