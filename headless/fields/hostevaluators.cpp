#include "headless/fields/hostevaluators.h"

#include <filesystem>

#include "core/textutil.h"
#include "headless/db/database.h"
#include "headless/db/field.h"
#include "headless/db/fieldcode.h"

namespace corvane::headless {

using host::Acad;
using host::AcDbField;

namespace {

Database* headlessDatabase(host::AcDbDatabase* db) { return dynamic_cast<Database*>(db); }

// The same when the field is known: its own drawing, the one it is nearly always evaluated
// in, is found without a cast.
Database* headlessDatabase(host::AcDbDatabase* db, const Field& field) {
  Database* own = field.record().database;
  return own && db == own ? own : headlessDatabase(db);
}

class TextEvaluator : public host::AcFdFieldEvaluator {
 public:
  Acad::ErrorStatus evaluate(AcDbField* field, int, host::AcDbDatabase* db, host::AcFdFieldResult* result) override {
    Field* own = Field::of(field);
    if (!own || !headlessDatabase(db, *own)) return Acad::eInvalidInput;
    // The children are kept with the field, whichever drawing it is evaluated against.
    const Database* database = own->record().database;
    const auto childText = [&](std::size_t index) -> std::wstring_view {
      if (index >= own->children().size()) return L"";
      const auto* child = Field::of(database->lookup(own->children()[index]));
      return child ? std::wstring_view(child->displayText()) : L"####";
    };
    // A cell or text that is one field and nothing else, the common case, is that field's text.
    static constexpr std::wstring_view kOnlyChild = L"%<\\_FldIdx 0>%";
    std::wstring text = own->ownCode() == kOnlyChild ? std::wstring(childText(0))
                                                     : expandPlaceholders(own->ownCode(), L"_FldIdx", childText);
    result->setFieldValue(host::AcValue(std::move(text)));
    result->setEvaluationStatus(AcDbField::kSuccess);
    return Acad::eOk;
  }
};

host::AcValue valueOf(const host::ResBuf& var) {
  if (const auto* i = std::get_if<std::int32_t>(&var.value)) return host::AcValue(*i);
  if (const auto* d = std::get_if<double>(&var.value)) return host::AcValue(*d);
  if (const auto* s = std::get_if<std::wstring>(&var.value)) return host::AcValue(*s);
  return host::AcValue(std::get<std::array<double, 3>>(var.value));
}

class VariableEvaluator : public host::AcFdFieldEvaluator {
 public:
  Acad::ErrorStatus evaluate(AcDbField* field, int, host::AcDbDatabase* db, host::AcFdFieldResult* result) override {
    if (!field || !db) return Acad::eInvalidInput;
    const std::wstring args = splitEvaluatorId(field->getFieldCode(AcDbField::kStripOptions)).second;
    const std::wstring name = core::trim(args.substr(0, args.find(L' ')));
    host::AcValue value;
    if (core::equalsNoCase(name, L"Filename")) {
      value = host::AcValue(std::filesystem::path(db->getFilename()).filename().wstring());
    } else {
      host::ResBuf var;
      if (name.empty() || db->getSysVar(name, var) != Acad::eOk) {
        result->setEvaluationStatus(AcDbField::kInvalidCode, 0, L"Unknown system variable");
        return Acad::eInvalidInput;
      }
      value = valueOf(var);
    }
    result->setFieldValue(value);
    result->setEvaluationStatus(AcDbField::kSuccess);
    return Acad::eOk;
  }
};

class ObjectPropertyEvaluator : public host::AcFdFieldEvaluator {
 public:
  Acad::ErrorStatus evaluate(AcDbField* field, int, host::AcDbDatabase* db, host::AcFdFieldResult* result) override {
    Field* own = Field::of(field);
    Database* database = own ? headlessDatabase(db, *own) : nullptr;
    if (!own || !database) return Acad::eInvalidInput;
    // "\AcObjProp Object(%<\_ObjIdx 0>%).Property"
    const std::wstring code = splitFormatOption(own->ownCode()).first;
    static constexpr std::wstring_view kObject = L"Object(%<\\_ObjIdx ";
    const std::size_t at = code.find(kObject);
    const std::size_t close = at == std::wstring::npos ? at : code.find(L">%).", at);
    if (close == std::wstring::npos || own->objectIds().empty()) {
      result->setEvaluationStatus(AcDbField::kInvalidCode, 0, L"No object reference");
      return Acad::eInvalidInput;
    }
    const std::wstring property = core::trim(code.substr(close + 4));
    const host::AcDbObjectId id = own->objectIds().front();
    HeadlessObject* object = database->objects().lookupHeadless(id);
    if (!object || object->record().erased) {
      result->setEvaluationStatus(AcDbField::kOtherError, 0, L"The object does not exist");
      return Acad::eInvalidInput;
    }
    const auto value = object->property(property);
    if (!value) {
      result->setEvaluationStatus(AcDbField::kInvalidCode, 0, L"The object has no such property");
      return Acad::eInvalidInput;
    }
    result->setFieldValue(*value);
    result->setEvaluationStatus(AcDbField::kSuccess);
    return Acad::eOk;
  }
};

}  // namespace

std::unique_ptr<host::AcFdFieldEvaluator> makeTextEvaluator() { return std::make_unique<TextEvaluator>(); }
std::unique_ptr<host::AcFdFieldEvaluator> makeVariableEvaluator() { return std::make_unique<VariableEvaluator>(); }
std::unique_ptr<host::AcFdFieldEvaluator> makeObjectPropertyEvaluator() {
  return std::make_unique<ObjectPropertyEvaluator>();
}

}  // namespace corvane::headless
