#include "plugin/fields/formatlists.h"

namespace corvane {

namespace {
constexpr int kDecimalUnits = 2;
constexpr int kSampleBuffer = 260;  // the host writes at most this many characters
}  // namespace

ComboList unitsList() {
  // Kept in this order, not sorted.
  return ComboList({{L"(none)", kUnitsNone},
                    {L"Current units", kUnitsCurrent},
                    {L"Decimal", 2},
                    {L"Architectural", 4},
                    {L"Engineering", 3},
                    {L"Fractional", 5},
                    {L"Scientific", 1}});
}

ComboList decimalSeparatorList() {
  return ComboList({{L"'.' (Period)", 0}, {L"',' (Comma)", 44}, {L"' ' (Space)", 32}});
}

ComboList thousandsSeparatorList() {
  return ComboList(
      {{L"(None)", 0}, {L"',' (Comma)", 44}, {L"'.' (Period)", 46}, {L"''' (Single quote)", 39}});
}

void fillPrecisionList(FormatHost& host, int unitsItem, ComboList& precision) {
  int dimzin = 0;
  const bool saved = host.getShortVar(L"DIMZIN", dimzin);
  host.setShortVar(L"DIMZIN", 1);
  precision.clear();
  if (unitsItem >= 1 && unitsItem <= 5) {
    precision.enabled = true;
    precision.add(L"Current precision", kCurrentPrecision);
    // Architectural and Fractional samples are decimal numbers, as they have always been.
    const int sampleUnits = unitsItem >= 4 ? kDecimalUnits : unitsItem;
    for (int p = 0; p <= 8; ++p) {
      std::wstring sample;
      if (!host.realToString(0.0, sampleUnits, p, sample)) sample.clear();
      if (sample.size() > kSampleBuffer - 1) sample.resize(kSampleBuffer - 1);
      precision.add(sample, p);
    }
    precision.select(0);
  } else {
    precision.enabled = false;
  }
  if (saved) host.setShortVar(L"DIMZIN", dimzin);
}

}  // namespace corvane
