// The dialog of the export command: how the drawing's path is written into the notes ("Full
// Path" or "Relative Path", from the workbook's folder), where the active cell moves after each
// value ("Down" or "Right"), and the fields of the object picked, exported one after another.
#pragma once

#include <array>
#include <vector>

#include "plugin/support/cregistry.h"
#include "plugin/workflows/exportfieldowners.h"

namespace corvane {

class LinkedSources;

class CExportFiledToExcelDialog {
 public:
  static constexpr std::array<const wchar_t*, 2> kPathTypes = {L"Full Path", L"Relative Path"};
  static constexpr std::array<const wchar_t*, 2> kMoveDirections = {L"Down", L"Right"};

  // The two choices start as the settings keep them.
  CExportFiledToExcelDialog(LinkedSources& sources, CRegistry& registry);

  int pathType = 0;
  int moveDirection = 0;

  // The path-type list: "Relative Path" is refused (with a message) while the drawing was never
  // saved, and then nothing is kept; a choice that stands goes to the settings. False when
  // refused.
  bool OnPathTypeChanged(int type);
  // The two choices to the settings, where the field dialog's export button reads them.
  void SaveChoices();

  // The object picked: its fields become the list. False when it shows none.
  bool SetOwner(host::AcDbObjectId object);
  const std::vector<ExportableField>& fields() const noexcept { return fields_; }

  // OK: the choices go to the settings, then every listed field is exported in turn until one
  // is refused. The number exported.
  int OnOK();

 private:
  LinkedSources& sources_;
  CRegistry& registry_;
  std::vector<ExportableField> fields_;
};

}  // namespace corvane
