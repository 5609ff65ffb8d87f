#include "host/acdbdatabase.h"

#include "host/acdbobject.h"
#include "host/acdbsymboltable.h"

namespace corvane::host {

namespace {

template <typename Table>
Acad::ErrorStatus openTable(AcDbHostApplicationServices& services, AcDbObjectId id, Table*& table,
                            AcDb::OpenMode mode) {
  table = nullptr;
  if (id.isNull()) return Acad::eNullObjectId;
  AcDbObject* raw = nullptr;
  const Acad::ErrorStatus es = services.openObject(raw, id, mode);
  if (es != Acad::eOk) return es;
  table = dynamic_cast<Table*>(raw);
  if (!table) {
    raw->close();
    return Acad::eNotThatKindOfClass;
  }
  return Acad::eOk;
}

}  // namespace

Acad::ErrorStatus AcDbDatabase::getSymbolTable(AcDbBlockTable*& table, AcDb::OpenMode mode) {
  return openTable(services(), blockTableId(), table, mode);
}

Acad::ErrorStatus AcDbDatabase::getSymbolTable(AcDbLayerTable*& table, AcDb::OpenMode mode) {
  return openTable(services(), layerTableId(), table, mode);
}

}  // namespace corvane::host
