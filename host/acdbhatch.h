#pragma once

#include <string>

#include "host/acdbobject.h"

namespace corvane::host {

class AcDbHatch : public AcDbEntity {
  CORVANE_RX_DECLARE(AcDbHatch, AcDbEntity::desc())

 public:
  // The filled area: outer boundaries less their islands, as the hatch style decides.
  virtual Acad::ErrorStatus getArea(double& area) const = 0;
  virtual bool isSolidFill() const = 0;
  virtual std::wstring patternName() const = 0;
};

}  // namespace corvane::host
