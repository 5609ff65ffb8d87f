#pragma once

#include <string>
#include <vector>

#include "host/acdbobject.h"
#include "host/acdbobjectiterator.h"
#include "host/acgepoint.h"
#include "host/acvalue.h"

namespace corvane::host {

// A property of a dynamic block as one reference has it.
class AcDbDynBlockReferenceProperty {
 public:
  AcDbDynBlockReferenceProperty() = default;
  AcDbDynBlockReferenceProperty(std::wstring name, AcValue value, std::wstring description = {},
                                bool readOnly = false)
      : name_(std::move(name)), value_(std::move(value)), description_(std::move(description)), readOnly_(readOnly) {}
  const std::wstring& propertyName() const noexcept { return name_; }
  const AcValue& value() const noexcept { return value_; }
  const std::wstring& description() const noexcept { return description_; }
  bool readOnly() const noexcept { return readOnly_; }

 private:
  std::wstring name_;
  AcValue value_;
  std::wstring description_;
  bool readOnly_ = false;
};

// An insertion of a block (INSERT), with the attributes it owns.
class AcDbBlockReference : public AcDbEntity {
  CORVANE_RX_DECLARE(AcDbBlockReference, AcDbEntity::desc())

 public:
  virtual AcDbObjectId blockTableRecord() const = 0;
  virtual AcGePoint3d position() const = 0;
  virtual AcGeScale3d scaleFactors() const = 0;
  virtual double rotation() const = 0;
  virtual AcDbObjectIterator attributeIterator() const = 0;

  // The dynamic-block side, which the host reaches through AcDbDynBlockReference. A reference
  // is dynamic when its block is a dynamic block definition or an anonymous variant of one;
  // the definition is then that dynamic block (for a variant, the block it varies).
  virtual bool isDynamicBlock() const = 0;
  virtual AcDbObjectId dynamicBlockTableRecord() const = 0;
  virtual Acad::ErrorStatus getBlockProperties(std::vector<AcDbDynBlockReferenceProperty>& properties) const = 0;
};

}  // namespace corvane::host
