// The headless host's field engine: loaders and reactors, evaluation batches, the host's own
// evaluators, and bringing the texts that hold fields up to date.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/acfd.h"

namespace corvane::headless {

class Database;
class Field;

class FieldEngine : public host::AcFdFieldEngine {
 public:
  FieldEngine();
  ~FieldEngine() override;

  host::Acad::ErrorStatus registerEvaluatorLoader(host::AcFdFieldEvaluatorLoader* loader) override;
  host::Acad::ErrorStatus unregisterEvaluatorLoader(host::AcFdFieldEvaluatorLoader* loader) override;
  host::Acad::ErrorStatus addFieldReactor(host::AcFdFieldReactor* reactor) override;
  host::Acad::ErrorStatus removeFieldReactor(host::AcFdFieldReactor* reactor) override;
  host::Acad::ErrorStatus evaluateFields(host::AcDbDatabase* db, const std::vector<host::AcDbObjectId>& fields,
                                         int context, BatchResult* result = nullptr) override;

  // The evaluator serving an id: the host's own first, then each loader in the order of
  // registration. Null when none serves it.
  host::AcFdFieldEvaluator* findEvaluator(std::wstring_view evaluatorId);
  std::size_t loaderCount() const noexcept { return loaders_.size(); }
  std::size_t reactorCount() const noexcept { return reactors_.size(); }

  // Evaluates one field and its children outside a batch (no reactor calls), as a field's
  // own evaluate does: the evaluators work against `db`, which need not hold the field.
  host::Acad::ErrorStatus evaluateField(Field& field, Database& db, int context, BatchResult* result = nullptr);
  // Compiles a field that has not been compiled yet, without evaluating it, so that what its
  // evaluator keeps in the field from the code is there for whoever reads it next. False when
  // no evaluator serves the field or its code does not compile; the field is left as it was.
  bool compileField(Field& field, Database& db);

 private:
  // findEvaluator for an id kept as a string already: the loaders take it as it is.
  host::AcFdFieldEvaluator* evaluatorFor(const std::wstring& evaluatorId);
  void evaluateTree(Field& field, Database& own, Database& db, int context, BatchResult& result);
  void evaluateOne(Field& field, Database& db, int context, BatchResult& result);
  void updateHostTexts(Database& db, const std::vector<host::AcDbObjectId>& topLevel);

  std::vector<host::AcFdFieldEvaluatorLoader*> loaders_;
  std::vector<host::AcFdFieldReactor*> reactors_;
  std::vector<std::unique_ptr<host::AcFdFieldEvaluator>> own_;  // "_text", "AcVar", "AcObjProp"
};

}  // namespace corvane::headless
