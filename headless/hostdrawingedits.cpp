// The host's services that read an object's record as group codes and that change a drawing on
// the plug-in's behalf: a field linked to a text, a new multiline text.
#include <memory>

#include "headless/db/blocktablerecord.h"
#include "headless/db/database.h"
#include "headless/db/fieldlist.h"
#include "headless/db/mtext.h"
#include "headless/db/objectimpl.h"
#include "headless/db/texthost.h"
#include "headless/hostapplication.h"
#include "host/acdbattribute.h"

namespace corvane::headless {

using host::Acad;

namespace {

constexpr double kFallbackTextHeight = 0.2;

std::wstring handleText(const ObjectTable& objects, host::AcDbObjectId id) {
  return id.isNull() ? std::wstring(L"0") : objects.handle(id).text();
}

}  // namespace

Acad::ErrorStatus HostApplication::entGet(host::AcDbObjectId id, host::ResBufList& data) const {
  data.clear();
  const HeadlessObject* headless = objects_.lookupHeadless(id);
  const host::AcDbObject* object = objects_.lookup(id);
  if (!headless || !object) return Acad::eInvalidObjectId;
  const ObjectRecord& record = headless->record();
  if (record.erased) return Acad::eWasErased;
  data.push_back({0, object->dxfName()});
  data.push_back({5, record.handle.text()});
  data.push_back({330, handleText(objects_, record.owner)});
  const auto* fieldList = dynamic_cast<const FieldList*>(object);
  if (!fieldList) return Acad::eNotImplementedYet;
  // The field list is an id set: a count, then a reference to each field.
  data.push_back({100, std::wstring(L"AcDbIdSet")});
  data.push_back({90, static_cast<std::int32_t>(fieldList->ids().size())});
  for (const host::AcDbObjectId field : fieldList->ids()) data.push_back({330, handleText(objects_, field)});
  data.push_back({100, std::wstring(L"AcDbFieldList")});
  return Acad::eOk;
}

Acad::ErrorStatus HostApplication::setField(host::AcDbObjectId object, std::wstring_view property,
                                            std::wstring_view code, host::AcDbObjectId& fieldId) {
  fieldId = {};
  HeadlessObject* headless = objects_.lookupHeadless(object);
  host::AcDbObject* target = objects_.lookup(object);
  if (!headless || !target) return Acad::eInvalidObjectId;
  const ObjectRecord& record = headless->record();
  if (record.erased) return Acad::eWasErased;
  if (record.writeOpen || record.readers > 0) return Acad::eWasOpenForWrite;
  if (!record.database) return Acad::eNotInDatabase;
  // Only a text property can hold a field here, and a constant attribute shows its
  // definition's text whatever it holds.
  if (property != L"TEXT" || !dynamic_cast<TextHost*>(target)) return Acad::eNotApplicable;
  if (const auto* attribute = dynamic_cast<const host::AcDbAttribute*>(target); attribute && attribute->isConstant())
    return Acad::eNotApplicable;
  fieldId = attachField(*record.database, object, code, property);
  return fieldId.isNull() ? Acad::eInvalidInput : Acad::eOk;
}

Acad::ErrorStatus HostApplication::appendMText(host::AcDbObjectId space, const host::AcGePoint3d& location,
                                               std::wstring_view contents, host::AcDbObjectId& id) {
  id = {};
  Database* db = objects_.database(space);
  if (!db) return Acad::eInvalidObjectId;
  if (!db->get<BlockTableRecord>(space)) return Acad::eWrongObjectType;
  double height = kFallbackTextHeight;
  host::ResBuf size;
  if (db->getSysVar(L"TEXTSIZE", size) == Acad::eOk) {
    if (const auto* real = std::get_if<double>(&size.value); real && *real > 0) height = *real;
  }
  id = db->appendEntity(std::make_unique<MText>(location, height, std::wstring(contents)), space);
  return id.isNull() ? Acad::eInvalidInput : Acad::eOk;
}

}  // namespace corvane::headless
