// Curves: entities with a start, an end and a parameter running between them.
#pragma once

#include "host/acdbobject.h"

namespace corvane::host {

class AcDbCurve : public AcDbEntity {
  CORVANE_RX_DECLARE(AcDbCurve, AcDbEntity::desc())

 public:
  virtual bool isClosed() const = 0;
  virtual Acad::ErrorStatus getStartParam(double& param) const = 0;
  virtual Acad::ErrorStatus getEndParam(double& param) const = 0;
  // The length along the curve from its start to the parameter; eInvalidInput outside the
  // parameter range. At the end parameter it is the curve's length.
  virtual Acad::ErrorStatus getDistAtParam(double param, double& dist) const = 0;
  // The enclosed area; an open curve counts as closed by the straight line from its end back
  // to its start.
  virtual Acad::ErrorStatus getArea(double& area) const = 0;
};

}  // namespace corvane::host
