// The "Additional Format" dialog of the area and length fields: conversion factor, prefix,
// suffix, separators and zero suppression, with a preview of the current value.
#pragma once

#include <string>

#include "host/acvalue.h"
#include "plugin/fields/combolist.h"
#include "plugin/fields/formathost.h"
#include "plugin/measure/additionalformat.h"

namespace corvane {

class CAdditionalFormatDialog {
 public:
  // Kinds of the value being formatted, as the option dialogs pass them.
  enum ValueKind : int { kReal = 1, kInteger = 2, kPoint = 3, kText = 4, kDistance = 5, k3dPoint = 6 };

  struct Input {
    std::wstring unitsPiece;
    std::wstring precisionPiece;
    int unitsItem = -1;  // below 1: the drawing's LUNITS
    int valueKind = kReal;
    host::AcValue currentValue;
    AdditionalFormat settings;
  };

  struct CheckBox {
    bool checked = false;
    bool enabled = true;
  };

  CAdditionalFormatDialog(FormatHost& host, Input input);

  static constexpr const wchar_t* kCaption = L"Additional Format";
  static constexpr const wchar_t* kNotANumber = L"Please enter a number.";

  // Fills the lists, applies the enabling rules and shows the current value.
  void onInitDialog();

  // The controls. After changing one, call updatePreview().
  std::wstring conversionFactor;  // the edit box's text
  bool conversionFactorEnabled = true;
  std::wstring prefix;
  std::wstring suffix;
  ComboList decimalSeparator;  // present, never shown
  ComboList thousandsSeparator;
  CheckBox leading;
  CheckBox trailing;
  CheckBox zeroFeet;
  CheckBox zeroInches;

  // The current value formatted with the units, precision and additional pieces the controls
  // make now; a conversion factor that is not a number keeps the last good one.
  void updatePreview();
  const std::wstring& preview() const noexcept { return preview_; }
  int units() const noexcept { return units_; }

  // Takes the settings from the controls and builds the additional-format piece. A conversion
  // factor that is not a number leaves the dialog open with message() set.
  bool onOK();
  const AdditionalFormat& result() const noexcept { return result_; }
  const std::wstring& additionalPiece() const noexcept { return piece_; }
  const std::wstring& message() const noexcept { return message_; }

 private:
  // Every setting from its control; false when the conversion factor is not a number (the
  // factor is then left as it was).
  bool readControls(AdditionalFormat& settings) const;

  FormatHost& host_;
  Input input_;
  int units_ = 2;
  double lastFactor_ = 1.0;
  std::wstring preview_;
  AdditionalFormat result_;
  std::wstring piece_;
  std::wstring message_;
};

}  // namespace corvane
