#pragma once

#include "host/acdbsymboltable.h"

namespace corvane::host {

class AcDbLayerTableRecord : public AcDbSymbolTableRecord {
 public:
  virtual bool isOff() const = 0;
  virtual bool isFrozen() const = 0;
  virtual bool isLocked() const = 0;
};

}  // namespace corvane::host
