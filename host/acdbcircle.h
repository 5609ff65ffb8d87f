#pragma once

#include "host/acdbcurve.h"
#include "host/acgepoint.h"

namespace corvane::host {

class AcDbCircle : public AcDbCurve {
  CORVANE_RX_DECLARE(AcDbCircle, AcDbCurve::desc())

 public:
  virtual AcGePoint3d center() const = 0;
  virtual double radius() const = 0;
};

}  // namespace corvane::host
