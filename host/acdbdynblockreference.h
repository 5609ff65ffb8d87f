// The dynamic-block view of a block reference, made from the reference's id as the host's is.
// It reads the reference once, when it is made, and keeps nothing open.
#pragma once

#include <vector>

#include "host/acdbblockreference.h"
#include "host/hostservices.h"

namespace corvane::host {

class AcDbDynBlockReference {
 public:
  AcDbDynBlockReference(AcDbHostApplicationServices& services, AcDbObjectId blockReferenceId);

  // False too when the id does not open as a block reference.
  bool isDynamicBlock() const noexcept { return dynamic_; }
  AcDbObjectId dynamicBlockTableRecord() const noexcept { return definition_; }
  // The block the reference inserts: the anonymous variant or the definition itself.
  AcDbObjectId anonymousBlockTableRecord() const noexcept { return block_; }
  // eNotApplicable for a reference of a block that is no dynamic block.
  Acad::ErrorStatus getBlockProperties(std::vector<AcDbDynBlockReferenceProperty>& properties) const;

 private:
  Acad::ErrorStatus status_ = Acad::eNullObjectId;
  bool dynamic_ = false;
  AcDbObjectId definition_;
  AcDbObjectId block_;
  std::vector<AcDbDynBlockReferenceProperty> properties_;
};

}  // namespace corvane::host
