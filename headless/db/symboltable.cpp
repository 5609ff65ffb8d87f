#include "headless/db/symboltable.h"

#include <algorithm>

#include "core/textutil.h"
#include "headless/db/database.h"

namespace corvane::headless {

using host::Acad;

std::wstring SymbolTableBase::nameOf(host::AcDbObjectId id) const {
  const Database* db = tableDatabase();
  const auto* record = db ? db->get<host::AcDbSymbolTableRecord>(id) : nullptr;
  std::wstring name;
  if (record) record->getName(name);
  return name;
}

bool SymbolTableBase::erased(host::AcDbObjectId id) const {
  const Database* db = tableDatabase();
  const host::AcDbObject* object = db ? db->lookup(id) : nullptr;
  return !object || object->isErased();
}

void SymbolTableBase::addRecord(host::AcDbObjectId id) {
  if (std::find(records_.begin(), records_.end(), id) != records_.end()) return;
  records_.push_back(id);
  byName_[core::toUpper(nameOf(id))].push_back(id);
}

void SymbolTableBase::removeRecord(host::AcDbObjectId id) {
  const auto it = std::find(records_.begin(), records_.end(), id);
  if (it == records_.end()) return;
  records_.erase(it);
  reindex();
}

void SymbolTableBase::reindex() {
  byName_.clear();
  for (const host::AcDbObjectId id : records_) byName_[core::toUpper(nameOf(id))].push_back(id);
}

Acad::ErrorStatus SymbolTableBase::find(std::wstring_view name, host::AcDbObjectId& id, bool getErasedRecord) const {
  const auto it = byName_.find(core::toUpper(name));
  if (it == byName_.end()) return Acad::eKeyNotFound;
  for (const host::AcDbObjectId candidate : it->second) {
    if (getErasedRecord || !erased(candidate)) {
      id = candidate;
      return Acad::eOk;
    }
  }
  return Acad::eKeyNotFound;
}

std::vector<host::AcDbObjectId> SymbolTableBase::liveRecords() const {
  std::vector<host::AcDbObjectId> live;
  live.reserve(records_.size());
  for (const host::AcDbObjectId id : records_) {
    if (!erased(id)) live.push_back(id);
  }
  return live;
}

void recordRenamed(const ObjectRecord& record) {
  if (!record.database) return;
  if (auto* table = dynamic_cast<SymbolTableBase*>(record.database->lookup(record.owner))) table->reindex();
}

}  // namespace corvane::headless
