// The list of objects that defined-object fields may show: objects picked in drawings, each
// with a description, kept in the settings under "drawing|handle|type". The dialog adds and
// removes them and moves them all when their drawings move to another folder.
#pragma once

#include <string>
#include <string_view>

#include "plugin/linked/cdefinedobject.h"
#include "plugin/support/cregistry.h"

namespace corvane {

class LinkedSources;

// Every defined object kept in the settings, in ascending order of drawing (without case).
CDefinedObjectArray ReadDefinedObjects(const CRegistry& registry);

class CDefineObjectDialog {
 public:
  static constexpr const wchar_t* kColumns[] = {L"Drawing", L"Handle", L"Type", L"Description"};

  CDefineObjectDialog(LinkedSources& sources, CRegistry& registry);

  const CDefinedObjectArray& rows() const noexcept { return rows_; }
  int selected = -1;  // the selected row, -1 for none

  // Reads the list from the settings again.
  void Load();
  // Add: the object of the current drawing with the handle, described. Refused with a message
  // when the handle names nothing or the object is listed already.
  bool Add(std::wstring_view handle, std::wstring_view description);
  // Remove: the selected row, once the user confirms.
  bool Remove();
  // Replace folder: every drawing path that begins with the old folder begins with the new one,
  // once the user confirms.
  bool ReplaceFolder(std::wstring_view oldFolder, std::wstring_view newFolder);

 private:
  int message(std::wstring_view text, unsigned flags);

  LinkedSources& sources_;
  CRegistry& registry_;
  CDefinedObjectArray rows_;
};

}  // namespace corvane
