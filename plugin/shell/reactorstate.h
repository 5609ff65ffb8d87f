// What the editor reactor and the database reactor share while commands run.
#pragma once

#include <map>
#include <string>

#include "host/objectid.h"

namespace corvane {

struct ReactorState {
  // Set from the start of a table-editing command until the next command ends, is cancelled
  // or fails.
  bool tableEditInProgress = false;
  host::AcDbObjectId editedTableId;
  // Emptied at the start of every command.
  std::map<std::wstring, std::wstring> copyMap;
};

}  // namespace corvane
