// The option page of the defined-object field: a drawing, one of the objects defined in it, and
// the property shown ("Contents", the only one).
#pragma once

#include <string>
#include <vector>

#include "plugin/linked/cdefinedobject.h"
#include "plugin/support/cregistry.h"

namespace corvane {

class LinkedSources;

class AsdkDefinedObjectOptionDialog {
 public:
  static constexpr const wchar_t* kProperties[] = {L"Contents"};

  AsdkDefinedObjectOptionDialog(LinkedSources& sources, CRegistry& registry);

  std::wstring drawing;
  int object = -1;  // index into objectEntries()
  std::wstring property;
  int pathType() const noexcept { return pathType_; }

  // False when a relative path was refused (the drawing was never saved).
  bool OnPathTypeChanged(int type);
  // The objects defined in the chosen drawing, as the list shows them: "handle - description".
  std::vector<std::wstring> objectEntries() const;
  // Checks the choices, saying what is wrong, then builds the code; false when refused.
  bool OnOK();
  const std::wstring& code() const noexcept { return code_; }

 private:
  LinkedSources& sources_;
  CRegistry& registry_;
  int pathType_ = 0;
  std::wstring code_;
};

}  // namespace corvane
