#pragma once

#include <string>

#include "host/acdbtext.h"

namespace corvane::host {

// The value of one attribute of a block reference, owned by the reference.
class AcDbAttribute : public AcDbText {
  CORVANE_RX_DECLARE(AcDbAttribute, AcDbText::desc())

 public:
  virtual std::wstring tag() const = 0;
  virtual bool isInvisible() const = 0;
  virtual bool isConstant() const = 0;

  // --- Reading into a kept string ---
  // tag() into a string the caller keeps, as getTextString() does for the text.
  virtual void getTag(std::wstring& tag) const { tag = this->tag(); }
};

}  // namespace corvane::host
