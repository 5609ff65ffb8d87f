#include "headless/fields/fieldengine.h"

#include <algorithm>
#include <typeinfo>

#include "core/textutil.h"
#include "headless/db/cellhost.h"
#include "headless/db/database.h"
#include "headless/db/field.h"
#include "headless/db/fieldlist.h"
#include "headless/db/fieldvaluetext.h"
#include "headless/db/table.h"
#include "headless/db/texthost.h"
#include "headless/fields/hostevaluators.h"

namespace corvane::headless {

using host::Acad;
using host::AcDbField;

namespace {

constexpr std::wstring_view kOwnIds[] = {L"_text", L"AcVar", L"AcObjProp"};

// Collects what an evaluator reports for one field.
class FieldResult : public host::AcFdFieldResult {
 public:
  explicit FieldResult(Field& field) : field_(field) {}
  Acad::ErrorStatus setFieldValue(const host::AcFdFieldValue& value) override {
    field_.storeValue(value);
    valueSet_ = true;
    return Acad::eOk;
  }
  void setEvaluationStatus(int status, int errorCode, std::wstring_view message) override {
    field_.storeStatus(status, errorCode, std::wstring(message));
    statusSet_ = true;
  }
  bool statusSet() const noexcept { return statusSet_; }

 private:
  Field& field_;
  bool valueSet_ = false;
  bool statusSet_ = false;
};

// The object as a holder of cell fields, or null. A table, the usual one, is told apart by its
// type alone: a cast through the hierarchy for each field of a big table costs more than the
// field's own update.
CellHost* cellHostOf(host::AcDbObject* object) {
  if (object && typeid(*object) == typeid(Table)) return static_cast<Table*>(object);
  return dynamic_cast<CellHost*>(object);
}

// Keeps the field open for write while an evaluator works on it.
class WriteOpen {
 public:
  explicit WriteOpen(Field& field) : record_(field.record()), wasOpen_(record_.writeOpen) { record_.writeOpen = true; }
  ~WriteOpen() { record_.writeOpen = wasOpen_; }
  WriteOpen(const WriteOpen&) = delete;
  WriteOpen& operator=(const WriteOpen&) = delete;

 private:
  ObjectRecord& record_;
  bool wasOpen_;
};

}  // namespace

FieldEngine::FieldEngine() {
  own_.push_back(makeTextEvaluator());
  own_.push_back(makeVariableEvaluator());
  own_.push_back(makeObjectPropertyEvaluator());
}

FieldEngine::~FieldEngine() = default;

Acad::ErrorStatus FieldEngine::registerEvaluatorLoader(host::AcFdFieldEvaluatorLoader* loader) {
  if (!loader) return Acad::eNullPtr;
  if (std::find(loaders_.begin(), loaders_.end(), loader) != loaders_.end()) return Acad::eDuplicateKey;
  loaders_.push_back(loader);
  return Acad::eOk;
}

Acad::ErrorStatus FieldEngine::unregisterEvaluatorLoader(host::AcFdFieldEvaluatorLoader* loader) {
  const auto it = std::find(loaders_.begin(), loaders_.end(), loader);
  if (it == loaders_.end()) return Acad::eKeyNotFound;
  loaders_.erase(it);
  return Acad::eOk;
}

Acad::ErrorStatus FieldEngine::addFieldReactor(host::AcFdFieldReactor* reactor) {
  if (!reactor) return Acad::eNullPtr;
  if (std::find(reactors_.begin(), reactors_.end(), reactor) != reactors_.end()) return Acad::eDuplicateKey;
  reactors_.push_back(reactor);
  return Acad::eOk;
}

Acad::ErrorStatus FieldEngine::removeFieldReactor(host::AcFdFieldReactor* reactor) {
  const auto it = std::find(reactors_.begin(), reactors_.end(), reactor);
  if (it == reactors_.end()) return Acad::eKeyNotFound;
  reactors_.erase(it);
  return Acad::eOk;
}

host::AcFdFieldEvaluator* FieldEngine::findEvaluator(std::wstring_view evaluatorId) {
  return evaluatorFor(std::wstring(evaluatorId));
}

host::AcFdFieldEvaluator* FieldEngine::evaluatorFor(const std::wstring& evaluatorId) {
  for (std::size_t i = 0; i < own_.size(); ++i) {
    if (core::equalsNoCase(evaluatorId, kOwnIds[i])) return own_[i].get();
  }
  for (auto* loader : loaders_) {
    if (auto* evaluator = loader->getEvaluator(evaluatorId.c_str())) return evaluator;
  }
  return nullptr;
}

void FieldEngine::evaluateOne(Field& field, Database& db, int context, BatchResult& result) {
  ++result.found;
  if ((field.evaluationOption() & context) == 0 && context != AcDbField::kPreview) return;
  ++result.evaluated;

  host::AcFdFieldEvaluator* evaluator = evaluatorFor(field.ownEvaluatorId());
  if (!evaluator) {
    field.storeStatus(AcDbField::kEvaluatorNotFound, 0, L"");
    field.storeDisplayText(L"####");
    return;
  }
  WriteOpen open(field);
  FieldResult fieldResult(field);
  if ((field.state() & AcDbField::kCompiled) == 0) {
    evaluator->initialize(&field);
    if (evaluator->compile(&field, &db, &fieldResult) != Acad::eOk) {
      if (!fieldResult.statusSet()) field.storeStatus(AcDbField::kInvalidCode, 0, L"");
      field.storeDisplayText(L"####");
      return;
    }
    field.setState(field.state() | AcDbField::kCompiled);
  }
  evaluator->evaluate(&field, context, &db, &fieldResult);
  if (!fieldResult.statusSet()) field.storeStatus(AcDbField::kSuccess, 0, L"");
  if (field.evaluationStatus() != AcDbField::kSuccess) {
    field.storeDisplayText(L"####");
    return;
  }
  wchar_t* text = nullptr;
  if (evaluator->format(&field, text) == Acad::eOk && text) {
    field.storeDisplayText(text);
  } else {
    std::wstring formatted;
    field.formatValue(formatted);
    field.storeDisplayText(formatted);
  }
  host::acutDelString(text);
  field.setState(field.state() | AcDbField::kEvaluated | AcDbField::kHasFormattedString);
}

void FieldEngine::evaluateTree(Field& field, Database& own, Database& db, int context, BatchResult& result) {
  // Children first: a parent's code and value are made of its children's values. The depth
  // of a tree is bounded by how deeply its code nests markers.
  for (const auto child : field.children()) {
    if (auto* childField = Field::of(own.lookup(child))) evaluateTree(*childField, own, db, context, result);
  }
  const int before = result.evaluated;
  evaluateOne(field, db, context, result);
  if (result.evaluated != before && field.evaluationStatus() != AcDbField::kSuccess) {
    result.failed.push_back(field.objectId());
  }
}

Acad::ErrorStatus FieldEngine::evaluateField(Field& field, Database& db, int context, BatchResult* result) {
  // The tree is walked where its fields are kept; the evaluators work against `db`.
  Database& own = *field.record().database;
  BatchResult local;
  evaluateTree(field, own, db, context, local);
  // The fields that hold this one show its new value too: each is put together again from the
  // values of its children, up to the field that a text or a cell holds. A temporary field
  // shows in nothing, even when it is evaluated where a table or a text would hold it.
  Field* top = &field;
  while (Field* holder = Field::of(own.lookup(top->ownerId()))) {
    evaluateOne(*holder, db, context, local);
    top = holder;
  }
  if (top->listed()) updateHostTexts(own, {top->objectId()});
  if (result) *result = local;
  return Acad::eOk;
}

bool FieldEngine::compileField(Field& field, Database& db) {
  if ((field.state() & AcDbField::kCompiled) != 0) return true;
  host::AcFdFieldEvaluator* evaluator = evaluatorFor(field.ownEvaluatorId());
  if (!evaluator) return false;
  WriteOpen open(field);
  FieldResult fieldResult(field);
  evaluator->initialize(&field);
  if (evaluator->compile(&field, &db, &fieldResult) != Acad::eOk) return false;
  field.setState(field.state() | AcDbField::kCompiled);
  return true;
}

Acad::ErrorStatus FieldEngine::evaluateFields(host::AcDbDatabase* hostDb, const std::vector<host::AcDbObjectId>& fields,
                                              int context, BatchResult* result) {
  auto* db = dynamic_cast<Database*>(hostDb);
  if (!db) return Acad::eNoDatabase;

  // The top-level fields of the request: those not owned by another field.
  std::vector<host::AcDbObjectId> topLevel;
  const auto& candidates = fields.empty() ? db->get<FieldList>(db->fieldListId())->ids() : fields;
  for (const auto id : candidates) {
    const auto* field = Field::of(db->lookup(id));
    if (!field || field->isErased()) continue;
    if (Field::of(db->lookup(field->ownerId()))) continue;
    topLevel.push_back(id);
  }

  for (auto* reactor : std::vector(reactors_)) reactor->beginEvaluateFields(context, db);
  BatchResult local;
  for (const auto id : topLevel) {
    if (auto* field = Field::of(db->lookup(id))) evaluateTree(*field, *db, *db, context, local);
  }
  updateHostTexts(*db, topLevel);
  for (auto* reactor : std::vector(reactors_)) reactor->endEvaluateFields(context, db);
  if (result) *result = local;
  return Acad::eOk;
}

void FieldEngine::updateHostTexts(Database& db, const std::vector<host::AcDbObjectId>& topLevel) {
  // A field linked as "TEXT" sits under ACAD_FIELD in its host's extension dictionary:
  // field -> "ACAD_FIELD" dictionary -> extension dictionary -> host entity.
  for (const auto id : topLevel) {
    const auto* field = Field::of(db.lookup(id));
    if (!field || field->evaluationStatus() == AcDbField::kNotYetEvaluated) continue;
    if (auto* cells = cellHostOf(db.lookup(field->ownerId()))) {
      cells->fieldEvaluated(id, field->displayText());
      continue;
    }
    const auto* fieldDict = db.lookup(field->ownerId());
    const auto* xdict = fieldDict ? db.lookup(fieldDict->ownerId()) : nullptr;
    auto* owner = xdict ? db.lookup(xdict->ownerId()) : nullptr;
    auto* text = dynamic_cast<TextHost*>(owner);
    if (text && fieldOf(db, owner->objectId()) == id) text->setHostText(field->getDisplayText());
  }
}

}  // namespace corvane::headless
