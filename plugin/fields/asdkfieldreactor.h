#pragma once

#include "host/acfd.h"

namespace corvane {

// The shared resources that live for one batch of field evaluations: the private Excel
// instance and the defined-object list. The subsystems that own them supply this.
class AsdkFieldBatchResources {
 public:
  virtual ~AsdkFieldBatchResources() = default;
  // Releases the private Excel evaluation instance and its open-workbook cache.
  virtual void releaseExcelInstance() = 0;
  // Ends a left-over process of that instance, if one is found.
  virtual void endLeftOverExcel() = 0;
  virtual void loadDefinedObjects() = 0;
  virtual void freeDefinedObjects() = 0;
};

// Brackets each batch: expensive shared resources are loaded once per batch and released
// after it. It keeps no state of its own; the flag and the resources are the application's.
class AsdkFieldReactor : public host::AcFdFieldReactor {
 public:
  AsdkFieldReactor(bool& fieldEvaluationActive, AsdkFieldBatchResources* resources = nullptr)
      : fieldEvaluationActive_(fieldEvaluationActive), resources_(resources) {}

  void setResources(AsdkFieldBatchResources* resources) noexcept { resources_ = resources; }

  host::Acad::ErrorStatus beginEvaluateFields(int context, host::AcDbDatabase* db) override;
  host::Acad::ErrorStatus endEvaluateFields(int context, host::AcDbDatabase* db) override;

 private:
  bool& fieldEvaluationActive_;
  AsdkFieldBatchResources* resources_;
};

}  // namespace corvane
