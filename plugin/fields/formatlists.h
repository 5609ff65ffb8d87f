// The lists the option pages of numeric fields choose their number format from.
#pragma once

#include "plugin/fields/combolist.h"
#include "plugin/fields/formathost.h"

namespace corvane {

// Units item values: "(none)" 0, "Current units" -1, then the host's linear units 1-5.
constexpr int kUnitsNone = 0;
constexpr int kUnitsCurrent = -1;
constexpr int kCurrentPrecision = -1;

ComboList unitsList();
ComboList decimalSeparatorList();
ComboList thousandsSeparatorList();

// Refills the precision list for a units item value: disabled and empty for "(none)" and
// "Current units", otherwise "Current precision" and the text of 0.0 at each precision 0 to 8,
// with the first entry selected. The samples are made with DIMZIN 1 (every zero written),
// which is restored afterwards; Architectural and Fractional are sampled in Decimal.
void fillPrecisionList(FormatHost& host, int unitsItem, ComboList& precision);

}  // namespace corvane
