#pragma once

#include <string>

#include "host/objectid.h"

namespace corvane::headless {

// An object that owns fields directly and shows their texts in places of its own (a table's
// cells), rather than through the "ACAD_FIELD" link of a text. The field engine tells it
// after each evaluation of a field it owns.
class CellHost {
 public:
  virtual ~CellHost() = default;
  virtual void fieldEvaluated(host::AcDbObjectId field, const std::wstring& displayText) = 0;
};

}  // namespace corvane::headless
