#include "plugin/measure/portdialoghost.h"

#include "host/acdbarc.h"
#include "host/acdbblockreference.h"
#include "host/acdbblocktablerecord.h"
#include "host/acdbcircle.h"
#include "host/acdbdatabase.h"
#include "host/acdbhatch.h"
#include "host/acdbline.h"
#include "host/acdbmtext.h"
#include "host/acdbpolyline.h"
#include "host/acdbsymboltable.h"
#include "host/acdbtext.h"
#include "plugin/measure/objectset.h"

namespace corvane {

using host::AcDbObjectId;
using host::AcDbObjectPointer;
namespace AcDb = host::AcDb;

int entityTypeBit(const host::AcDbEntity& entity) noexcept {
  if (dynamic_cast<const host::AcDbLine*>(&entity)) return kLineType;
  if (dynamic_cast<const host::AcDbPolyline*>(&entity)) return kPolylineType;
  if (dynamic_cast<const host::AcDbCircle*>(&entity)) return kCircleType;
  if (dynamic_cast<const host::AcDbArc*>(&entity)) return kArcType;
  if (dynamic_cast<const host::AcDbHatch*>(&entity)) return kHatchType;
  if (dynamic_cast<const host::AcDbMText*>(&entity)) return kMTextType;
  if (dynamic_cast<const host::AcDbText*>(&entity)) return kTextType;
  if (dynamic_cast<const host::AcDbBlockReference*>(&entity)) return kBlockRefType;
  return 0;
}

namespace {

// The names of a symbol table's records, in table order.
template <typename Table, typename Keep>
std::vector<std::wstring> recordNames(host::AcDbHostApplicationServices& services, AcDbObjectId tableId, Keep keep) {
  std::vector<std::wstring> names;
  AcDbObjectPointer<Table> table(services, tableId, AcDb::kForRead);
  if (!table) return names;
  for (auto records = table->newIterator(); !records.done(); records.step()) {
    AcDbObjectPointer<host::AcDbSymbolTableRecord> record(services, records.objectId(), AcDb::kForRead);
    std::wstring name;
    if (record && keep(*record.object()) && record->getName(name) == host::Acad::eOk) names.push_back(std::move(name));
  }
  return names;
}

}  // namespace

std::vector<std::wstring> PortDialogHost::layerNames() {
  host::AcDbDatabase* db = services_.workingDatabase();
  if (!db) return {};
  return recordNames<host::AcDbLayerTable>(services_, db->layerTableId(),
                                           [](const host::AcDbSymbolTableRecord&) { return true; });
}

std::vector<std::wstring> PortDialogHost::blockNames() {
  host::AcDbDatabase* db = services_.workingDatabase();
  if (!db) return {};
  return recordNames<host::AcDbBlockTable>(services_, db->blockTableId(), [](const host::AcDbSymbolTableRecord& r) {
    const auto* block = dynamic_cast<const host::AcDbBlockTableRecord*>(&r);
    return block && !block->isLayout() && !block->isAnonymous() && !block->isUnloaded() &&
           !block->isFromOverlayReference();
  });
}

std::wstring PortDialogHost::currentSpaceHandle() {
  host::AcDbDatabase* db = services_.workingDatabase();
  if (!db || db->currentSpaceId().isNull()) return {};
  return services_.handle(db->currentSpaceId()).text();
}

std::optional<EntityFacts> PortDialogHost::facts(AcDbObjectId id) {
  AcDbObjectPointer<host::AcDbEntity> entity(services_, id, AcDb::kForRead);
  if (!entity) return std::nullopt;
  return EntityFacts{services_.handle(id).text(), entity->layer(), entityTypeBit(*entity.object())};
}

std::optional<EntityFacts> PortDialogHost::entity(std::wstring_view handle) {
  host::AcDbDatabase* db = services_.workingDatabase();
  const auto parsed = host::AcDbHandle::fromText(handle);
  AcDbObjectId id;
  if (!db || !parsed || db->getAcDbObjectId(id, *parsed) != host::Acad::eOk) return std::nullopt;
  return facts(id);
}

int PortDialogHost::selectEntities(const host::ResBufList& filter, std::vector<EntityFacts>& picked) {
  std::vector<AcDbObjectId> selection;
  const int result = prompts_.ssGet(L"", &filter, selection);
  if (result != host::RTNORM) return result;
  for (const AcDbObjectId id : selection) {
    if (auto found = facts(id)) picked.push_back(std::move(*found));
  }
  return result;
}

int PortDialogHost::pickExtents(std::wstring_view prompt, EntityFacts& picked, host::AcDbExtents& extents) {
  AcDbObjectId id;
  host::AcGePoint3d at;
  const int result = prompts_.entSel(prompt, id, at);
  if (result != host::RTNORM) return result;
  AcDbObjectPointer<host::AcDbEntity> entity(services_, id, AcDb::kForRead);
  if (!entity || entity->getGeomExtents(extents) != host::Acad::eOk) {
    services_.print(L"\nThe object has no extents to take a window from.");
    return host::RTERROR;
  }
  picked = {services_.handle(id).text(), entity->layer(), entityTypeBit(*entity.object())};
  return result;
}

}  // namespace corvane
