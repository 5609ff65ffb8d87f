// The export step that the program adds to the host's field dialog: the value of the field the
// dialog shows goes into the active cell of the user's Excel, with a note naming the drawing and
// the field (its object reference by handle, so that the note outlives the session), and the
// active cell moves on, down or right.
#pragma once

#include <string>
#include <string_view>

#include "plugin/support/cregistry.h"

namespace corvane {

class LinkedSources;

// The choices of the two export settings, by index.
enum ExportMoveDirection : int {
  kMoveDown = 0,
  kMoveRight = 1,
};

class CExportFieldButtonDialog {
 public:
  static constexpr const wchar_t* kTemplate = L"IDD_DIALOG_QUORVAUI_EXPORT_FIELD";

  CExportFieldButtonDialog(LinkedSources& sources, CRegistry& registry);

  // The code the field dialog shows, object references by id.
  std::wstring fieldCode;

  // The button: the path type and the direction come from the settings.
  bool OnBnClickedButtonExportField();
  // Every step of the export with the choices given; true once the value, the note and the
  // move are done. A refusal says why in a message box and leaves Excel as it was.
  bool Export(std::wstring_view code, int pathType, int moveDirection);

  // Of the last export that went through: "workbook[worksheet]:$B$3" and the note written.
  const std::wstring& target() const noexcept { return target_; }
  const std::wstring& note() const noexcept { return note_; }

 private:
  bool refuse(std::wstring_view text);

  LinkedSources& sources_;
  CRegistry& registry_;
  std::wstring target_;
  std::wstring note_;
};

}  // namespace corvane
