// The system variables a new drawing starts with: the host's initial values for those the
// plug-in and its users read.
#pragma once

#include <string>
#include <vector>

#include "host/resbuf.h"

namespace corvane::headless {

struct SysVarDefault {
  const wchar_t* name;
  host::ResBuf value;
  bool readOnly;
};

const std::vector<SysVarDefault>& initialSysVars();

}  // namespace corvane::headless
