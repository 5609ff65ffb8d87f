#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/acdbobject.h"

namespace corvane::host {

// A dictionary: named entries pointing at objects, in insertion order. Names are compared
// without regard to case, as the host does.
class AcDbDictionary : public AcDbObject {
 public:
  virtual Acad::ErrorStatus getAt(std::wstring_view name, AcDbObjectId& id) const = 0;
  virtual bool has(std::wstring_view name) const = 0;
  // Takes ownership of the object when the dictionary is a hard owner, as the host's are.
  virtual Acad::ErrorStatus setAt(std::wstring_view name, AcDbObject* object, AcDbObjectId& id) = 0;
  virtual Acad::ErrorStatus remove(std::wstring_view name) = 0;
  virtual std::vector<std::pair<std::wstring, AcDbObjectId>> entries() const = 0;
};

}  // namespace corvane::host
