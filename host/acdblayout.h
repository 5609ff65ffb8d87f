#pragma once

#include <string>

#include "host/acdbobject.h"

namespace corvane::host {

// A layout: a named sheet ("Model", "Layout1") and the block table record of its space.
class AcDbLayout : public AcDbObject {
 public:
  virtual Acad::ErrorStatus getLayoutName(std::wstring& name) const = 0;
  virtual AcDbObjectId getBlockTableRecordId() const = 0;
  virtual int getTabOrder() const = 0;
};

}  // namespace corvane::host
