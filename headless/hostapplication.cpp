#include "headless/hostapplication.h"

#include <cstdio>

#include "core/utf8.h"
#include "headless/db/database.h"
#include "headless/db/field.h"
#include "headless/db/fieldcode.h"
#include "headless/db/fieldvaluetext.h"
#include "headless/db/objectimpl.h"
#include "headless/fields/fieldengine.h"
#include "headless/format/rtos.h"
#include "headless/format/valueformatter.h"
#include "host/acdbtable.h"

namespace corvane::headless {

using host::Acad;

HostApplication::HostApplication() : engine_(std::make_unique<FieldEngine>()) {}

HostApplication::~HostApplication() = default;

host::AcDbDatabase* HostApplication::workingDatabase() const { return working_; }

host::AcFdFieldEngine* HostApplication::fieldEngine() { return engine_.get(); }

host::AcDbDatabase* HostApplication::database(host::AcDbObjectId id) const { return objects_.database(id); }

void HostApplication::willOpen(host::AcDbObjectId id) const noexcept {
  // The open reads the object's record and the caller its first fields: those are asked for
  // now. What the object keeps apart is asked for once the object itself has arrived, four
  // and eight hints later, one link of the chain at a time.
  if (const HeadlessObject* headless = objects_.lookupHeadless(id)) {
    __builtin_prefetch(&headless->record());
    __builtin_prefetch(objects_.lookup(id));
  }
  const std::size_t n = coming_.size();
  const auto stage = [&](std::size_t back, int step) {
    if (const HeadlessObject* earlier = objects_.lookupHeadless(coming_[(comingAt_ + n - back) % n])) {
      earlier->prefetchContents(step);
    }
  };
  stage(4, 1);
  stage(8, 2);
  coming_[comingAt_] = id;
  comingAt_ = (comingAt_ + 1) % n;
}

Acad::ErrorStatus HostApplication::openObject(host::AcDbObject*& object, host::AcDbObjectId id,
                                              host::AcDb::OpenMode mode, bool openErased) {
  object = nullptr;
  if (id.isNull()) return Acad::eNullObjectId;
  HeadlessObject* headless = objects_.lookupHeadless(id);
  if (!headless) return Acad::eInvalidObjectId;
  const Acad::ErrorStatus es = openRecord(headless->record(), mode, openErased);
  if (es == Acad::eOk) object = objects_.lookup(id);
  return es;
}

host::AcDbHostApplicationServices::FieldHolder HostApplication::newField() {
  // It lives in the working drawing, outside its field list, until the holder lets go; it is
  // evaluated against whichever drawing its evaluate() is given.
  if (!working_) return FieldHolder(nullptr, [](host::AcDbField*) {});
  return temporaryField(*working_, {});
}

host::AcDbHostApplicationServices::FieldHolder HostApplication::newField(host::AcDbObjectId owner) {
  Database* db = objects_.database(owner);
  if (!db) return FieldHolder(nullptr, [](host::AcDbField*) {});
  return temporaryField(*db, owner);
}

host::AcDbHostApplicationServices::FieldHolder HostApplication::temporaryField(Database& db,
                                                                                host::AcDbObjectId owner) {
  const host::AcDbObjectId id = Field::create(db, L"", owner, false, false);
  Field* field = db.get<Field>(id);
  field->record().writeOpen = true;
  return FieldHolder(field, [&db, id](host::AcDbField* f) {
    auto* own = static_cast<Field*>(f);
    own->assignCode(L"");  // drops the children first
    own->record().writeOpen = false;
    db.destroyObject(id);
  });
}

host::AcDbObjectId HostApplication::owningTable(host::AcDbObjectId id) const {
  // Ownership is a tree rooted in the named object dictionary, so the walk ends; the bound
  // only guards against a drawing read with an owner loop in it.
  for (int depth = 0; depth < 1000 && !id.isNull(); ++depth) {
    const HeadlessObject* headless = objects_.lookupHeadless(id);
    if (!headless || headless->record().erased) return {};
    if (dynamic_cast<const host::AcDbTable*>(objects_.lookup(id))) return id;
    id = headless->record().owner;
  }
  return {};
}

Acad::ErrorStatus HostApplication::getPropertyValue(host::AcDbObjectId id, std::wstring_view name,
                                                    host::AcValue& value) const {
  const HeadlessObject* headless = objects_.lookupHeadless(id);
  if (!headless) return Acad::eInvalidObjectId;
  if (headless->record().erased) return Acad::eWasErased;
  const auto property = headless->property(name);
  if (!property) return Acad::eKeyNotFound;
  value = *property;
  return Acad::eOk;
}

std::optional<host::AcDbHostApplicationServices::FieldSpan> HostApplication::findField(std::wstring_view text,
                                                                                       std::size_t from) const {
  const auto span = findFieldCode(text, from);
  if (!span) return std::nullopt;
  return FieldSpan{span->first, span->second};
}

void HostApplication::print(std::wstring_view text) {
  if (!text.empty()) lineOpen_ = text.back() != L'\n';
  if (output_) {
    output_(text);
    return;
  }
  const std::string utf8 = core::toUtf8(text);
  std::fwrite(utf8.data(), 1, utf8.size(), stdout);
}

void HostApplication::endLine() {
  if (lineOpen_) print(L"\n");
}

Acad::ErrorStatus HostApplication::evaluateField(Field& field, Database& db, int context) {
  return engine_->evaluateField(field, db, context);
}

host::Acad::ErrorStatus HostApplication::readDrawingFile(std::wstring_view path, DatabaseHolder& db,
                                                        std::wstring& reason) {
  db = DatabaseHolder(nullptr, [](host::AcDbDatabase*) {});
  if (!reader_) {
    reason = L"This host reads no other drawings.";
    return host::Acad::eNotImplementedYet;
  }
  return reader_(path, db, reason);
}

host::Acad::ErrorStatus HostApplication::saveDrawingFile(host::AcDbDatabase& db, std::wstring_view path,
                                                        std::wstring& reason) {
  if (!writer_) {
    reason = L"This host saves no other drawings.";
    return host::Acad::eNotImplementedYet;
  }
  return writer_(db, path, reason);
}

void HostApplication::setWorkingDatabase(host::AcDbDatabase* db) { working_ = dynamic_cast<Database*>(db); }

void HostApplication::databaseClosing(const Database& db) noexcept {
  if (working_ == &db) working_ = nullptr;
}

bool HostApplication::realToString(double value, int units, int precision, std::wstring& text) const {
  RToSSettings settings{units, precision, 0, 0};
  if (working_) {
    host::ResBuf var;
    if (working_->getSysVar(L"DIMZIN", var) == Acad::eOk) settings.dimzin = std::get<std::int32_t>(var.value);
    if (working_->getSysVar(L"UNITMODE", var) == Acad::eOk) settings.unitmode = std::get<std::int32_t>(var.value);
  }
  const auto result = rtos(value, settings);
  if (!result) return false;
  text = *result;
  return true;
}

std::wstring HostApplication::formatValue(const host::AcValue& value, std::wstring_view format) const {
  if (working_) return displayFieldValue(value, std::wstring(format), *working_);
  return headless::formatValue(value, format, DrawingUnits{});  // a new drawing's units
}

}  // namespace corvane::headless
