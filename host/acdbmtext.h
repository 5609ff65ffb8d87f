#pragma once

#include <string>

#include "host/acdbobject.h"
#include "host/acgepoint.h"

namespace corvane::host {

class AcDbMText : public AcDbEntity {
  CORVANE_RX_DECLARE(AcDbMText, AcDbEntity::desc())

 public:
  // The text with its formatting codes ("{\fArial;Big}\PSmall").
  virtual std::wstring contents() const = 0;
  // The text as read: formatting codes dropped, paragraph breaks as line feeds.
  virtual std::wstring text() const = 0;
  virtual AcGePoint3d location() const = 0;
  virtual double textHeight() const = 0;
};

}  // namespace corvane::host
