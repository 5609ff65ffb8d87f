// The "Define Window Points" dialog of the block count field: the two corners of the counting
// window typed as numbers, or taken from the box around an object picked in the drawing.
#pragma once

#include <array>
#include <string>

#include "plugin/measure/dialoghost.h"
#include "plugin/support/cregistry.h"

namespace corvane {

class CDefineWindowPointsDialog {
 public:
  // First corner X, Y, Z, then opposite corner X, Y, Z.
  using Texts = std::array<std::wstring, 6>;

  static constexpr const wchar_t* kCaption = L"Define Window Points";
  static constexpr const wchar_t* kSelectObjectPrompt = L"\nSelect object: ";

  CDefineWindowPointsDialog(DialogHost& host, CRegistry& registry) : host_(host), registry_(registry) {}

  // The six texts as last kept in the settings; `defaults` for those never kept.
  void onInitDialog(const Texts& defaults);

  // The controls: "Object:" and the X, Y, Z texts of "First Corner" and "Opposite Corner".
  std::wstring object;
  Texts corners;

  // "Select Object": the corners of the box around the picked object's geometry, and the
  // object's handle as its text. A prompt result code.
  int onSelectObject();
  // Every text must be one number; the first that is not is named in a message and the dialog
  // stays open. On OK the texts are kept in the settings, blanks around them dropped.
  bool onOK();
  const Texts& result() const noexcept { return result_; }
  const std::array<double, 6>& values() const noexcept { return values_; }

  // The whole text (blanks around it allowed) read as one finite number.
  static bool readCoordinate(const std::wstring& text, double& value);

 private:
  DialogHost& host_;
  CRegistry& registry_;
  Texts result_;
  std::array<double, 6> values_{};
};

// How a coordinate is written in the dialogs' texts and settings.
std::wstring coordinateText(double value);

}  // namespace corvane
