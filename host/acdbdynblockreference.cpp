#include "host/acdbdynblockreference.h"

namespace corvane::host {

AcDbDynBlockReference::AcDbDynBlockReference(AcDbHostApplicationServices& services, AcDbObjectId blockReferenceId) {
  AcDbObjectPointer<AcDbBlockReference> reference(services, blockReferenceId, AcDb::kForRead);
  status_ = reference.openStatus();
  if (!reference) return;
  block_ = reference->blockTableRecord();
  dynamic_ = reference->isDynamicBlock();
  if (!dynamic_) {
    status_ = Acad::eNotApplicable;
    return;
  }
  definition_ = reference->dynamicBlockTableRecord();
  status_ = reference->getBlockProperties(properties_);
}

Acad::ErrorStatus AcDbDynBlockReference::getBlockProperties(
    std::vector<AcDbDynBlockReferenceProperty>& properties) const {
  if (status_ != Acad::eOk) return status_;
  properties = properties_;
  return Acad::eOk;
}

}  // namespace corvane::host
