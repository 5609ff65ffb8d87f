#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>

#include "host/acfd.h"
#include "plugin/fields/evaluatortable.h"

namespace corvane {

// Hands the host the evaluator of each of the eight field types. It owns the evaluators:
// it makes them in table order when it is made and deletes them in table order. The
// evaluator classes live in the subsystems above this one, so whoever owns the loader
// supplies the function that makes the evaluator of a row.
class AsdkEvaluatorLoader : public host::AcFdFieldEvaluatorLoader {
 public:
  using Factory = std::function<std::unique_ptr<host::AcFdFieldEvaluator>(std::size_t row)>;
  explicit AsdkEvaluatorLoader(const Factory& make);
  ~AsdkEvaluatorLoader() override;
  AsdkEvaluatorLoader(const AsdkEvaluatorLoader&) = delete;
  AsdkEvaluatorLoader& operator=(const AsdkEvaluatorLoader&) = delete;

  // The evaluator of the first row whose id equals the given one, ignoring case; null when
  // none does.
  host::AcFdFieldEvaluator* getEvaluator(const wchar_t* evaluatorId) override;
  // The same lookup by the id alone; the field is not looked at and the id is not changed.
  host::AcFdFieldEvaluator* findEvaluator(host::AcDbField* field, const wchar_t*& evaluatorId) override;

  host::AcFdFieldEvaluator* evaluatorAt(std::size_t row) const noexcept {
    return row < kEvaluatorCount ? evaluators_[row].get() : nullptr;
  }

 private:
  std::array<std::unique_ptr<host::AcFdFieldEvaluator>, kEvaluatorCount> evaluators_;
};

}  // namespace corvane
