// A field format string read back into the option dialogs' settings, when a dialog opens for
// an existing field.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "plugin/fields/combolist.h"
#include "plugin/fields/formathost.h"
#include "plugin/measure/additionalformat.h"

namespace corvane {

// What the format says; a setting whose code is absent stays unset. "%ds" and "%th" are not
// read back.
struct ParsedFormat {
  std::optional<int> units;      // the number after "%lu": a units item value
  std::optional<int> precision;  // the number after "%pr"
  std::optional<std::wstring> prefix;
  std::optional<std::wstring> suffix;
  std::optional<double> conversionFactor;
  std::optional<ZeroSuppression> zeros;

  // Copies what the format holds into the settings, leaving the rest as it is.
  void applyTo(AdditionalFormat& settings) const;
};

ParsedFormat parseFormat(std::wstring_view format);

// Selects what a format string read back names: the units entry (then the precision list is
// refilled for the selected units) and the precision entry. An item value with no entry
// leaves the selection as it was.
void selectFromFormat(FormatHost& host, const ParsedFormat& parsed, ComboList& units, ComboList& precision);

}  // namespace corvane
