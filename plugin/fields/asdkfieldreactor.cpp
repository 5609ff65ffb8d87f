#include "plugin/fields/asdkfieldreactor.h"

namespace corvane {

host::Acad::ErrorStatus AsdkFieldReactor::beginEvaluateFields(int /*context*/, host::AcDbDatabase* /*db*/) {
  if (resources_) {
    resources_->releaseExcelInstance();
    resources_->endLeftOverExcel();
  }
  fieldEvaluationActive_ = true;
  if (resources_) resources_->loadDefinedObjects();
  return host::Acad::eOk;
}

host::Acad::ErrorStatus AsdkFieldReactor::endEvaluateFields(int /*context*/, host::AcDbDatabase* /*db*/) {
  fieldEvaluationActive_ = false;
  if (resources_) {
    resources_->releaseExcelInstance();
    resources_->freeDefinedObjects();
  }
  return host::Acad::eOk;
}

}  // namespace corvane
