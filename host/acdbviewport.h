#pragma once

#include "host/acdbobject.h"
#include "host/acgepoint.h"

namespace corvane::host {

// A window of a paper-space layout onto model space.
class AcDbViewport : public AcDbEntity {
 public:
  virtual AcGePoint3d centerPoint() const = 0;  // on the sheet
  virtual double width() const = 0;
  virtual double height() const = 0;
  virtual AcGeVector3d viewDirection() const = 0;
  virtual AcGePoint2d viewCenter() const = 0;  // of the model view, in display coordinates
  virtual double viewHeight() const = 0;       // of the model view, in model units
  virtual int number() const = 0;              // 1 is the sheet itself
};

}  // namespace corvane::host
