// The units and precision pieces that begin a numeric field's format string; the
// additional-format piece follows them.
#pragma once

#include <string>

#include "plugin/fields/combolist.h"

namespace corvane {

// Area: Architectural and Engineering areas are decimal square feet ("%lu2%ct4%qf1 SQ. FT."),
// "Current units" is "%lu6%qf1". An unknown item value gives an empty piece.
std::wstring areaUnitsPiece(int unitsItem);
// Length: "%lu1" to "%lu5", "Current units" "%lu6".
std::wstring lengthUnitsPiece(int unitsItem);
// "%pr" and the selected item value when the list is enabled and a precision of 0 or more is
// selected; "Current precision" gives nothing.
std::wstring precisionPiece(const ComboList& precision);

}  // namespace corvane
