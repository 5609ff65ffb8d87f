#include "host/acdbblocktablerecord.h"

#include "host/acdbdatabase.h"
#include "host/hostservices.h"

namespace corvane::host {

Acad::ErrorStatus AcDbBlockTableRecord::readEntities(EntityReader& reader) const {
  AcDbDatabase* db = database();
  if (!db) return Acad::eNoDatabase;
  AcDbHostApplicationServices& services = db->services();
  constexpr std::size_t kAhead = 12;  // entities asked for ahead of the one being read
  // Erased entities refuse the open below, so the iterator need not leave them out first.
  for (auto entities = newIterator(false); !entities.done(); entities.step()) {
    services.willOpen(entities.peek(kAhead));
    AcDbObjectPointer<AcDbEntity> entity(services, entities.objectId(), AcDb::kForRead);
    if (entity) reader.read(*entity.object());
  }
  return Acad::eOk;
}

}  // namespace corvane::host
