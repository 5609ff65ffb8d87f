// The protocol the eight evaluators share: compile stores the field's own code as its data
// record, evaluate runs the type's worker and reports its status, format hands out the
// host's text of the value. Each evaluator class derives from AsdkFieldEvaluator<itself>
// and supplies its table row and its worker:
//
//   int evaluateField(host::AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value);
//
// which returns an evaluation status and, on success (2), has filled the value. A worker that
// can say why it failed takes a fourth argument, std::wstring& message, which becomes the
// message of the field's status.
#pragma once

#include <string>
#include <string_view>

#include "host/acfd.h"
#include "plugin/fields/evaluatortable.h"

namespace corvane {

// Compile: the field's code with evaluated children and without its format option, stored
// under the data key. An empty code sets status 16 and leaves any earlier record alone.
host::Acad::ErrorStatus compileFieldRecord(host::AcDbField* field, host::AcDbDatabase* db,
                                           host::AcFdFieldResult* result, const wchar_t* dataKey);

// What evaluate does once the worker has run: on success the value goes to the host (its
// status is the call's result), otherwise the result is invalid input, or OK for a "not yet
// evaluated" that the type accepts; then the status is set whatever happened.
host::Acad::ErrorStatus finishEvaluation(host::AcFdFieldResult* result, int status, const host::AcFdFieldValue& value,
                                         bool notYetEvaluatedIsOk, std::wstring_view message = {});

// The arguments of a data record: the code after its evaluator id ("\AcArea Object(<1F>)" gives
// "Object(<1F>)"); a record without an id is all arguments.
std::wstring_view fieldArguments(std::wstring_view record) noexcept;

// Format: the host's text of the value, copied for the caller to free.
host::Acad::ErrorStatus formatFieldText(host::AcFdFieldEvaluator& evaluator, host::AcDbField* field, wchar_t*& text);

template <typename Derived>
class AsdkFieldEvaluator : public host::AcFdFieldEvaluator {
 public:
  using host::AcFdFieldEvaluator::format;

  host::Acad::ErrorStatus compile(host::AcDbField* field, host::AcDbDatabase* db,
                                  host::AcFdFieldResult* result) override {
    return compileFieldRecord(field, db, result, kEvaluatorTable[Derived::kRow].dataKey);
  }

  host::Acad::ErrorStatus evaluate(host::AcDbField* field, int /*context*/, host::AcDbDatabase* db,
                                   host::AcFdFieldResult* result) override {
    // Every context, preview included, evaluates the same way.
    if (!field) return host::Acad::eInvalidInput;
    if (!db) db = field->database();
    host::AcFdFieldValue value;
    Derived& worker = *static_cast<Derived*>(this);
    if constexpr (requires(std::wstring& message) { worker.evaluateField(field, db, value, message); }) {
      std::wstring message;
      const int status = worker.evaluateField(field, db, value, message);
      return finishEvaluation(result, status, value, Derived::kNotYetEvaluatedIsOk, message);
    } else {
      const int status = worker.evaluateField(field, db, value);
      return finishEvaluation(result, status, value, Derived::kNotYetEvaluatedIsOk);
    }
  }

  host::Acad::ErrorStatus format(host::AcDbField* field, wchar_t*& text) override {
    return formatFieldText(*this, field, text);
  }

  // The evaluator id of the type (never null).
  const wchar_t* typeId() const noexcept { return kEvaluatorTable[Derived::kRow].evaluatorId; }

  static constexpr bool kNotYetEvaluatedIsOk = false;
};

}  // namespace corvane
