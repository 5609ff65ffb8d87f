// A lightweight polyline: 2D vertices at one elevation, each starting a straight or bulged
// segment to the next vertex (and, when closed, from the last back to the first).
#pragma once

#include "host/acdbcurve.h"
#include "host/acgecurve2d.h"
#include "host/acgepoint.h"

namespace corvane::host {

class AcDbPolyline : public AcDbCurve {
  CORVANE_RX_DECLARE(AcDbPolyline, AcDbCurve::desc())

 public:
  // The host's numbering.
  enum SegType : int { kLine = 0, kArc = 1, kCoincident = 2, kPoint = 3, kEmpty = 4 };

  virtual unsigned int numVerts() const = 0;
  // The kind of the segment that starts at the vertex: kEmpty past the last vertex or for a
  // polyline without vertices, kPoint for the last vertex of an open polyline and for a
  // polyline of one vertex, kCoincident when the segment's ends coincide.
  virtual SegType segType(unsigned int index) const = 0;
  // The segment starting at the vertex; eInvalidIndex past the last vertex and
  // eWrongObjectType when the segment is of the other kind.
  virtual Acad::ErrorStatus getLineSegAt(unsigned int index, AcGeLineSeg2d& segment) const = 0;
  virtual Acad::ErrorStatus getArcSegAt(unsigned int index, AcGeCircArc2d& arc) const = 0;
  virtual Acad::ErrorStatus getPointAt(unsigned int index, AcGePoint2d& point) const = 0;
  virtual Acad::ErrorStatus getBulgeAt(unsigned int index, double& bulge) const = 0;
  virtual double elevation() const = 0;
};

}  // namespace corvane::host
