#pragma once

#include <string>

#include "host/acdbtext.h"

namespace corvane::host {

// The template of an attribute inside a block definition; its text is the default value.
// A constant definition makes no attribute on references: its text is the value.
class AcDbAttributeDefinition : public AcDbText {
 public:
  virtual std::wstring tag() const = 0;
  virtual std::wstring prompt() const = 0;
  virtual bool isInvisible() const = 0;
  virtual bool isConstant() const = 0;
};

}  // namespace corvane::host
