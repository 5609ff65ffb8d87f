#include "plugin/measure/cadditionalformatdialog.h"

#include <cmath>

#include "core/crt.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "plugin/fields/formatlists.h"

namespace corvane {

namespace {

// The whole text must be one finite number, blanks around it allowed.
bool readNumber(const std::wstring& text, double& value) {
  const std::wstring trimmed = core::trim(text);
  std::size_t used = 0;
  const double v = core::wcstod(trimmed, &used);
  if (trimmed.empty() || used != trimmed.size() || !std::isfinite(v)) return false;
  value = v;
  return true;
}

}  // namespace

CAdditionalFormatDialog::CAdditionalFormatDialog(FormatHost& host, Input input)
    : host_(host), input_(std::move(input)), result_(input_.settings) {}

void CAdditionalFormatDialog::onInitDialog() {
  decimalSeparator = decimalSeparatorList();
  decimalSeparator.select(0);
  decimalSeparator.visible = false;
  thousandsSeparator = thousandsSeparatorList();
  thousandsSeparator.select(0);

  units_ = input_.unitsItem;
  if (units_ < 1 && !host_.getShortVar(L"LUNITS", units_)) units_ = 2;

  const AdditionalFormat& s = input_.settings;
  lastFactor_ = s.conversionFactor;
  conversionFactor = core::format(L"%.15g", s.conversionFactor);
  prefix = s.prefix;
  suffix = s.suffix;
  leading.checked = s.zeros.leading;
  trailing.checked = s.zeros.trailing;
  zeroFeet.checked = s.zeros.zeroFeet;
  zeroInches.checked = s.zeros.zeroInches;

  const int k = input_.valueKind;
  thousandsSeparator.enabled = k != kReal;
  conversionFactorEnabled = k == kReal || k == kInteger || k == kDistance;
  const bool feetAndInches = k != kText && (units_ == 3 || units_ == 4);
  zeroFeet.enabled = feetAndInches;
  zeroInches.enabled = feetAndInches;
  const bool decimals = k != kText && units_ != 4;
  leading.enabled = decimals;
  trailing.enabled = decimals;
  updatePreview();
}

bool CAdditionalFormatDialog::readControls(AdditionalFormat& settings) const {
  const bool factorRead = readNumber(conversionFactor, settings.conversionFactor);
  settings.prefix = prefix;
  settings.suffix = suffix;
  settings.decimalSeparator = decimalSeparator.selectedItem().value_or(0);
  settings.thousandsSeparator = thousandsSeparator.selectedItem().value_or(0);
  settings.zeros = {leading.checked, trailing.checked, zeroFeet.checked, zeroInches.checked};
  return factorRead;
}

void CAdditionalFormatDialog::updatePreview() {
  AdditionalFormat settings;
  if (readControls(settings)) {
    lastFactor_ = settings.conversionFactor;
  } else {
    settings.conversionFactor = lastFactor_;
  }
  const std::wstring format = input_.unitsPiece + input_.precisionPiece + settings.build(host_.hostVersion());
  preview_ = host_.formatValue(input_.currentValue, format);
}

bool CAdditionalFormatDialog::onOK() {
  AdditionalFormat settings;
  if (!readControls(settings)) {
    message_ = kNotANumber;
    return false;
  }
  message_.clear();
  result_ = settings;
  piece_ = settings.build(host_.hostVersion());
  return true;
}

}  // namespace corvane
