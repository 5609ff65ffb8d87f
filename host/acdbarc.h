#pragma once

#include "host/acdbcurve.h"
#include "host/acgepoint.h"

namespace corvane::host {

// A circular arc, running counter-clockwise from its start angle to its end angle (radians,
// from the x axis). The end angle may be the smaller: the arc then passes angle 0.
class AcDbArc : public AcDbCurve {
  CORVANE_RX_DECLARE(AcDbArc, AcDbCurve::desc())

 public:
  virtual AcGePoint3d center() const = 0;
  virtual double radius() const = 0;
  virtual double startAngle() const = 0;
  virtual double endAngle() const = 0;
};

}  // namespace corvane::host
