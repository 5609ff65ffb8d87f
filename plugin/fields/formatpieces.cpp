#include "plugin/fields/formatpieces.h"

#include "core/printf.h"
#include "plugin/fields/formatlists.h"

namespace corvane {

std::wstring areaUnitsPiece(int unitsItem) {
  switch (unitsItem) {
    case kUnitsCurrent: return L"%lu6%qf1";
    case 3:
    case 4: return L"%lu2%ct4%qf1 SQ. FT.";
    case 1:
    case 2:
    case 5: return core::format(L"%%lu%d", unitsItem);
    default: return L"";
  }
}

std::wstring lengthUnitsPiece(int unitsItem) {
  if (unitsItem == kUnitsCurrent) return L"%lu6";
  if (unitsItem >= 1 && unitsItem <= 5) return core::format(L"%%lu%d", unitsItem);
  return L"";
}

std::wstring precisionPiece(const ComboList& precision) {
  const auto item = precision.selectedItem();
  if (!precision.enabled || !item || *item < 0) return L"";
  return core::format(L"%%pr%d", *item);
}

}  // namespace corvane
