// The option page of the text file field: the file (typed, browsed or from the recent files)
// and whether its path is written in full or relative to the drawing.
#pragma once

#include <string>
#include <string_view>

#include "plugin/support/crecentfilelistex.h"
#include "plugin/support/cregistry.h"

namespace corvane {

namespace host {
class AcDbField;
}

class LinkedSources;

class AsdkTextFileFieldOptionDialog {
 public:
  static constexpr const wchar_t* kBrowseFilter = L"Text Files(*.prn;*.txt;*.csv)|*.prn;*.txt;*.csv||";

  AsdkTextFileFieldOptionDialog(LinkedSources& sources, CRegistry& registry);

  std::wstring path;
  int pathType() const noexcept { return pathType_; }

  // Opening on an existing field: its path, and "Relative Path" when that path is relative.
  // The field's evaluation status 16 when its record is no text; 2 otherwise.
  int Load(const host::AcDbField& field);
  // False when a relative path was refused (the drawing was never saved).
  bool OnPathTypeChanged(int type);
  void OnBrowsed(std::wstring_view chosen);
  // The code of the field ("%<\TextField path>%"), the path made relative when so chosen.
  std::wstring FieldCode();
  CRecentFileListEx& recentFiles() noexcept { return recent_; }

 private:
  LinkedSources& sources_;
  CRecentFileListEx recent_;
  int pathType_ = 0;
};

}  // namespace corvane
