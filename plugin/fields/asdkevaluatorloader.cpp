#include "plugin/fields/asdkevaluatorloader.h"

#include "core/textutil.h"

namespace corvane {

AsdkEvaluatorLoader::AsdkEvaluatorLoader(const Factory& make) {
  for (std::size_t row = 0; row < kEvaluatorCount; ++row) evaluators_[row] = make(row);
}

AsdkEvaluatorLoader::~AsdkEvaluatorLoader() {
  // In table order; an array of owners would go the other way.
  for (auto& evaluator : evaluators_) evaluator.reset();
}

host::AcFdFieldEvaluator* AsdkEvaluatorLoader::getEvaluator(const wchar_t* evaluatorId) {
  // The host never asks with a null id; answering "none" costs nothing.
  if (!evaluatorId) return nullptr;
  for (std::size_t row = 0; row < kEvaluatorCount; ++row) {
    if (core::equalsNoCase(evaluatorId, kEvaluatorTable[row].evaluatorId)) return evaluators_[row].get();
  }
  return nullptr;
}

host::AcFdFieldEvaluator* AsdkEvaluatorLoader::findEvaluator(host::AcDbField* /*field*/, const wchar_t*& evaluatorId) {
  if (!evaluatorId) return nullptr;
  return getEvaluator(evaluatorId);
}

}  // namespace corvane
