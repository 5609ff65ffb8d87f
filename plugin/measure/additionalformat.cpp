#include "plugin/measure/additionalformat.h"

#include "core/printf.h"
#include "core/textutil.h"

namespace corvane {

int ZeroSuppression::mask() const noexcept {
  return (zeroFeet ? 1 : 0) | (zeroInches ? 2 : 0) | (leading ? 4 : 0) | (trailing ? 8 : 0);
}

ZeroSuppression ZeroSuppression::fromMask(int mask) noexcept {
  return {(mask & 4) != 0, (mask & 8) != 0, (mask & 1) != 0, (mask & 2) != 0};
}

std::wstring AdditionalFormat::build(int hostVersion) const {
  std::wstring piece;
  if (!prefix.empty() || !suffix.empty()) {
    const bool escape = hostVersion > kLastVersionWithoutEscapes;
    piece += core::format(L"%%ps[%s,%s]", escape ? escapeAffix(prefix) : prefix,
                          escape ? escapeAffix(suffix) : suffix);
  }
  // The factor is written with "%g"; one whose text is "1" would multiply by one and is left out.
  const std::wstring factor = core::format(L"%g", conversionFactor);
  if (factor != L"1") piece += L"%ct8[" + factor + L"]";
  if (decimalSeparator > 0) piece += core::format(L"%%ds%d", decimalSeparator);
  if (thousandsSeparator > 0) piece += core::format(L"%%th%d", thousandsSeparator);
  if (const int mask = zeros.mask(); mask != 0) piece += core::format(L"%%zs%d", mask);
  return piece;
}

}  // namespace corvane
