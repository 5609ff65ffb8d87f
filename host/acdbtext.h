#pragma once

#include <string>

#include "host/acdbobject.h"
#include "host/acgepoint.h"

namespace corvane::host {

// A single-line text; attributes and attribute definitions are texts too.
class AcDbText : public AcDbEntity {
  CORVANE_RX_DECLARE(AcDbText, AcDbEntity::desc())

 public:
  // The text as stored, "%%d"-style codes included.
  virtual std::wstring textString() const = 0;
  virtual AcGePoint3d position() const = 0;
  virtual double height() const = 0;
  virtual double rotation() const = 0;

  // --- Reading into a kept string ---
  // textString() into a string the caller keeps: a walk over many texts reuses one string
  // instead of making one for each text.
  virtual void getTextString(std::wstring& text) const { text = textString(); }
};

}  // namespace corvane::host
