#include "headless/db/dictionary.h"

#include <algorithm>
#include <memory>

#include "core/textutil.h"
#include "headless/db/database.h"

namespace corvane::headless {

namespace {
template <typename Entries>
auto findEntry(Entries& entries, std::wstring_view name) {
  return std::find_if(entries.begin(), entries.end(),
                      [name](const auto& entry) { return core::equalsNoCase(entry.first, name); });
}
}  // namespace

host::Acad::ErrorStatus Dictionary::getAt(std::wstring_view name, host::AcDbObjectId& id) const {
  const auto it = findEntry(entries_, name);
  if (it == entries_.end()) return host::Acad::eKeyNotFound;
  id = it->second;
  return host::Acad::eOk;
}

bool Dictionary::has(std::wstring_view name) const { return findEntry(entries_, name) != entries_.end(); }

host::Acad::ErrorStatus Dictionary::setAt(std::wstring_view name, host::AcDbObject* object, host::AcDbObjectId& id) {
  if (!record_.writeOpen) return host::Acad::eNotOpenForWrite;
  if (name.empty()) return host::Acad::eInvalidKey;
  if (!object) return host::Acad::eNullObjectPointer;
  Database& db = *record_.database;
  if (object->objectId().isNull()) {
    id = db.addObject(std::unique_ptr<host::AcDbObject>(object), record_.id);
  } else {
    if (object->database() != &db) return host::Acad::eWrongDatabase;
    id = object->objectId();
    if (auto* headless = dynamic_cast<HeadlessObject*>(object)) headless->record().owner = record_.id;
  }
  const auto it = findEntry(entries_, name);
  if (it != entries_.end()) it->second = id;
  else entries_.emplace_back(std::wstring(name), id);
  record_.modified = true;
  return host::Acad::eOk;
}

host::Acad::ErrorStatus Dictionary::remove(std::wstring_view name) {
  if (!record_.writeOpen) return host::Acad::eNotOpenForWrite;
  const auto it = findEntry(entries_, name);
  if (it == entries_.end()) return host::Acad::eKeyNotFound;
  entries_.erase(it);
  record_.modified = true;
  return host::Acad::eOk;
}

void Dictionary::drop(std::wstring_view name) {
  const auto it = findEntry(entries_, name);
  if (it != entries_.end()) entries_.erase(it);
  record_.modified = true;
}

void Dictionary::put(std::wstring name, host::AcDbObjectId id) {
  if (auto* headless = record_.database->objects().lookupHeadless(id)) headless->record().owner = record_.id;
  const auto it = findEntry(entries_, name);
  if (it != entries_.end()) it->second = id;
  else entries_.emplace_back(std::move(name), id);
  record_.modified = true;
}

}  // namespace corvane::headless
