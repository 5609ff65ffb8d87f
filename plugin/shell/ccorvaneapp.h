// The plug-in's one application object: it owns the evaluator loader and the field reactor
// and everything else that lives for the whole load of the plug-in.
#pragma once

#include "host/hostservices.h"
#include "plugin/fields/asdkevaluatorloader.h"
#include "plugin/fields/asdkfieldreactor.h"

namespace corvane {

class CCorvaneApp {
 public:
  explicit CCorvaneApp(host::AcDbHostApplicationServices& services);
  ~CCorvaneApp();
  CCorvaneApp(const CCorvaneApp&) = delete;
  CCorvaneApp& operator=(const CCorvaneApp&) = delete;

  // The host's initialisation message: registers the field services.
  void onInitialize();
  // The host's unload message: unregisters what initialisation registered.
  void onUnload();

  AsdkEvaluatorLoader& loader() noexcept { return loader_; }
  AsdkFieldReactor& fieldReactor() noexcept { return fieldReactor_; }
  bool fieldServicesRegistered() const noexcept { return fieldServicesRegistered_; }
  bool fieldEvaluationActive() const noexcept { return fieldEvaluationActive_; }
  host::AcDbHostApplicationServices& services() noexcept { return services_; }

 private:
  host::AcDbHostApplicationServices& services_;
  bool fieldEvaluationActive_ = false;  // written by the field reactor around each batch
  AsdkEvaluatorLoader loader_;
  AsdkFieldReactor fieldReactor_;
  bool fieldServicesRegistered_ = false;
};

// The evaluator of a row of the evaluator table.
std::unique_ptr<host::AcFdFieldEvaluator> makeCorvaneEvaluator(std::size_t row);

}  // namespace corvane
