#pragma once

#include "host/acdbcurve.h"
#include "host/acgepoint.h"

namespace corvane::host {

class AcDbLine : public AcDbCurve {
  CORVANE_RX_DECLARE(AcDbLine, AcDbCurve::desc())

 public:
  virtual AcGePoint3d startPoint() const = 0;
  virtual AcGePoint3d endPoint() const = 0;
};

}  // namespace corvane::host
