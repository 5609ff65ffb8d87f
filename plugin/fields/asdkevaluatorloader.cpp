#include "plugin/fields/asdkevaluatorloader.h"

#include <array>
#include <string_view>

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
  // The host asks for every field it evaluates: the id is measured once, and the table's ids
  // at compile time.
  static constexpr auto kIds = [] {
    std::array<std::wstring_view, kEvaluatorCount> ids{};
    for (std::size_t row = 0; row < kEvaluatorCount; ++row) ids[row] = kEvaluatorTable[row].evaluatorId;
    return ids;
  }();
  const std::wstring_view id(evaluatorId);
  for (std::size_t row = 0; row < kEvaluatorCount; ++row) {
    if (core::equalsNoCase(id, kIds[row])) return evaluators_[row].get();
  }
  return nullptr;
}

host::AcFdFieldEvaluator* AsdkEvaluatorLoader::findEvaluator(host::AcDbField* /*field*/, const wchar_t*& evaluatorId) {
  if (!evaluatorId) return nullptr;
  return getEvaluator(evaluatorId);
}

}  // namespace corvane
