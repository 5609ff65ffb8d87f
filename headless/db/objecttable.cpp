#include "headless/db/objecttable.h"

#include "headless/db/objectimpl.h"

namespace corvane::headless {

host::AcDbObjectId ObjectTable::add(Database& db, host::AcDbObject& object, HeadlessObject& headless) {
  slots_.push_back(Slot{&db, &object, &headless});
  return host::AcDbObjectId(kFirstId + slots_.size() - 1);
}

void ObjectTable::remove(host::AcDbObjectId id) noexcept {
  if (id.asOldId() < kFirstId) return;
  const std::uint64_t index = id.asOldId() - kFirstId;
  if (index < slots_.size()) slots_[index] = Slot{};
}

bool ObjectTable::isErased(host::AcDbObjectId id) const noexcept {
  const Slot* s = slot(id);
  return s && s->headless->record().erased;
}

host::AcDbHandle ObjectTable::handle(host::AcDbObjectId id) const noexcept {
  const Slot* s = slot(id);
  return s ? s->headless->record().handle : host::AcDbHandle();
}

}  // namespace corvane::headless
