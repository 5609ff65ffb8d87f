// The field engine's extension points: evaluators, the loader that hands them out by id, the
// result an evaluation fills, and the reactor that brackets every batch of evaluations.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/acdbfield.h"

namespace corvane::host {

class AcDbDatabase;

// What an evaluator reports back for one field.
class AcFdFieldResult {
 public:
  virtual ~AcFdFieldResult() = default;
  virtual Acad::ErrorStatus setFieldValue(const AcFdFieldValue& value) = 0;
  virtual void setEvaluationStatus(int status, int errorCode = 0, std::wstring_view message = {}) = 0;
};

class AcFdFieldEvaluator {
 public:
  virtual ~AcFdFieldEvaluator() = default;
  // The base implementations do nothing and succeed, as the host's do.
  virtual Acad::ErrorStatus initialize(AcDbField* /*field*/) { return Acad::eOk; }
  virtual Acad::ErrorStatus compile(AcDbField* /*field*/, AcDbDatabase* /*db*/, AcFdFieldResult* /*result*/) {
    return Acad::eOk;
  }
  virtual Acad::ErrorStatus evaluate(AcDbField* /*field*/, int /*context*/, AcDbDatabase* /*db*/,
                                     AcFdFieldResult* /*result*/) {
    return Acad::eOk;
  }
  // The field's value as text. The host's own version formats the value with the field's
  // format; the engine asks for the allocated form, which it frees with acutDelString.
  virtual Acad::ErrorStatus format(AcDbField* field, wchar_t*& text);
  virtual Acad::ErrorStatus format(AcDbField* field, std::wstring& text);
};

// A copy of a text that the receiver frees with acutDelString.
Acad::ErrorStatus acutNewString(const wchar_t* source, wchar_t*& destination);
void acutDelString(wchar_t*& text);

class AcFdFieldEvaluatorLoader {
 public:
  virtual ~AcFdFieldEvaluatorLoader() = default;
  // The evaluator serving an id, or null. A null id is the caller's mistake.
  virtual AcFdFieldEvaluator* getEvaluator(const wchar_t* evaluatorId) = 0;
  virtual AcFdFieldEvaluator* findEvaluator(AcDbField* field, const wchar_t*& evaluatorId) = 0;
};

class AcFdFieldReactor {
 public:
  virtual ~AcFdFieldReactor() = default;
  virtual Acad::ErrorStatus beginEvaluateFields(int /*context*/, AcDbDatabase* /*db*/) { return Acad::eOk; }
  virtual Acad::ErrorStatus endEvaluateFields(int /*context*/, AcDbDatabase* /*db*/) { return Acad::eOk; }
};

class AcFdFieldEngine {
 public:
  virtual ~AcFdFieldEngine() = default;
  virtual Acad::ErrorStatus registerEvaluatorLoader(AcFdFieldEvaluatorLoader* loader) = 0;
  virtual Acad::ErrorStatus unregisterEvaluatorLoader(AcFdFieldEvaluatorLoader* loader) = 0;
  virtual Acad::ErrorStatus addFieldReactor(AcFdFieldReactor* reactor) = 0;
  virtual Acad::ErrorStatus removeFieldReactor(AcFdFieldReactor* reactor) = 0;

  // Evaluates one batch: the given fields, or every field of the database when the list is
  // empty, in the given context. Child fields are evaluated before their parents, and the
  // texts that hold the fields are brought up to date.
  struct BatchResult {
    int found = 0;
    int evaluated = 0;  // those the context called for, whatever came of them
    // Those that ended in an error status, in the order they were evaluated. A value that says
    // an error (a formula's own message) is a success.
    std::vector<AcDbObjectId> failed;
  };
  virtual Acad::ErrorStatus evaluateFields(AcDbDatabase* db, const std::vector<AcDbObjectId>& fields, int context,
                                           BatchResult* result = nullptr) = 0;
};

}  // namespace corvane::host
