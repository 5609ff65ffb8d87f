#include "headless/hostapplication.h"

#include <cstdio>

#include "core/utf8.h"
#include "headless/database.h"
#include "headless/field.h"
#include "headless/fieldcode.h"
#include "headless/fieldengine.h"
#include "headless/fieldvaluetext.h"
#include "headless/objectimpl.h"
#include "headless/rtos.h"
#include "headless/valueformatter.h"

namespace corvane::headless {

using host::Acad;

HostApplication::HostApplication() : engine_(std::make_unique<FieldEngine>()) {}

HostApplication::~HostApplication() = default;

host::AcDbDatabase* HostApplication::workingDatabase() const { return working_; }

host::AcFdFieldEngine* HostApplication::fieldEngine() { return engine_.get(); }

const HostApplication::Slot* HostApplication::slot(host::AcDbObjectId id) const noexcept {
  if (id.asOldId() < kFirstId) return nullptr;
  const std::uint64_t index = id.asOldId() - kFirstId;
  if (index >= slots_.size() || !slots_[index].object) return nullptr;
  return &slots_[index];
}

bool HostApplication::isValid(host::AcDbObjectId id) const { return slot(id) != nullptr; }

bool HostApplication::isErased(host::AcDbObjectId id) const {
  const Slot* s = slot(id);
  return s && s->headless->record().erased;
}

host::AcDbHandle HostApplication::handle(host::AcDbObjectId id) const {
  const Slot* s = slot(id);
  return s ? s->headless->record().handle : host::AcDbHandle();
}

host::AcDbDatabase* HostApplication::database(host::AcDbObjectId id) const {
  const Slot* s = slot(id);
  return s ? s->db : nullptr;
}

Acad::ErrorStatus HostApplication::openObject(host::AcDbObject*& object, host::AcDbObjectId id,
                                              host::AcDb::OpenMode mode, bool openErased) {
  object = nullptr;
  if (id.isNull()) return Acad::eNullObjectId;
  const Slot* s = slot(id);
  if (!s) return Acad::eInvalidObjectId;
  const Acad::ErrorStatus es = openRecord(s->headless->record(), mode, openErased);
  if (es == Acad::eOk) object = s->object;
  return es;
}

host::AcDbHostApplicationServices::FieldHolder HostApplication::newField() {
  // It lives in the working drawing, outside its field list, until the holder lets go.
  if (!working_) return FieldHolder(nullptr, [](host::AcDbField*) {});
  Database* db = working_;
  const host::AcDbObjectId id = Field::create(*db, L"", {}, false, false);
  Field* field = db->get<Field>(id);
  field->record().writeOpen = true;
  return FieldHolder(field, [db, id](host::AcDbField* f) {
    auto* own = static_cast<Field*>(f);
    own->assignCode(L"");  // drops the children first
    own->record().writeOpen = false;
    db->destroyObject(id);
  });
}

Acad::ErrorStatus HostApplication::getPropertyValue(host::AcDbObjectId id, std::wstring_view name,
                                                    host::AcValue& value) const {
  const Slot* s = slot(id);
  if (!s) return Acad::eInvalidObjectId;
  if (s->headless->record().erased) return Acad::eWasErased;
  const auto property = s->headless->property(name);
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
  if (output_) {
    output_(text);
    return;
  }
  const std::string utf8 = core::toUtf8(text);
  std::fwrite(utf8.data(), 1, utf8.size(), stdout);
}

host::AcDbObjectId HostApplication::registerObject(Database& db, host::AcDbObject& object, HeadlessObject& headless) {
  slots_.push_back(Slot{&db, &object, &headless});
  return host::AcDbObjectId(kFirstId + slots_.size() - 1);
}

void HostApplication::unregisterObject(host::AcDbObjectId id) noexcept {
  if (id.asOldId() < kFirstId) return;
  const std::uint64_t index = id.asOldId() - kFirstId;
  if (index < slots_.size()) slots_[index] = Slot{};
}

host::AcDbObject* HostApplication::lookup(host::AcDbObjectId id) const noexcept {
  const Slot* s = slot(id);
  return s ? s->object : nullptr;
}

HeadlessObject* HostApplication::lookupHeadless(host::AcDbObjectId id) const noexcept {
  const Slot* s = slot(id);
  return s ? s->headless : nullptr;
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
