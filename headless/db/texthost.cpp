#include "headless/db/texthost.h"

#include <memory>

#include "headless/db/database.h"
#include "headless/db/dictionary.h"
#include "headless/db/field.h"
#include "headless/db/fieldlist.h"

namespace corvane::headless {

host::AcDbObjectId fieldOf(const Database& db, host::AcDbObjectId object, std::wstring_view key) {
  const auto* headless = db.objects().lookupHeadless(object);
  if (!headless || headless->record().database != &db) return {};
  const auto* xdict = db.get<Dictionary>(headless->record().extensionDictionary);
  host::AcDbObjectId fieldDictId;
  if (!xdict || xdict->getAt(L"ACAD_FIELD", fieldDictId) != host::Acad::eOk) return {};
  const auto* fieldDict = db.get<Dictionary>(fieldDictId);
  host::AcDbObjectId fieldId;
  if (!fieldDict || fieldDict->getAt(key, fieldId) != host::Acad::eOk) return {};
  return fieldId;
}

host::AcDbObjectId attachField(Database& db, host::AcDbObjectId object, std::wstring_view code,
                               std::wstring_view key) {
  HeadlessObject* headless = db.objects().lookupHeadless(object);
  if (!headless || headless->record().database != &db) return {};
  ObjectRecord& record = headless->record();
  if (record.extensionDictionary.isNull()) {
    record.extensionDictionary = db.addObject(std::make_unique<Dictionary>(), object);
  }
  auto* xdict = db.get<Dictionary>(record.extensionDictionary);
  host::AcDbObjectId fieldDictId;
  if (xdict->getAt(L"ACAD_FIELD", fieldDictId) != host::Acad::eOk) {
    fieldDictId = db.addObject(std::make_unique<Dictionary>(), xdict->objectId());
    xdict->put(L"ACAD_FIELD", fieldDictId);
  }
  auto* fieldDict = db.get<Dictionary>(fieldDictId);

  auto* fieldList = db.get<FieldList>(db.fieldListId());
  host::AcDbObjectId oldId;
  if (fieldDict->getAt(key, oldId) == host::Acad::eOk) {
    if (auto* old = db.get<Field>(oldId)) old->assignCode(L"");
    fieldList->remove(oldId);
    fieldDict->drop(key);
    db.destroyObject(oldId);
  }

  const host::AcDbObjectId fieldId = Field::create(db, code, fieldDictId, true);
  fieldDict->put(std::wstring(key), fieldId);
  Field* raw = db.get<Field>(fieldId);
  if (auto* text = dynamic_cast<TextHost*>(db.lookup(object))) text->setHostText(raw->getFieldCode(host::AcDbField::kFieldCode));
  return fieldId;
}

}  // namespace corvane::headless
