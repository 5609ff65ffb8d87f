// A drawing database as the plug-in sees it.
#pragma once

#include <string>
#include <string_view>

#include "host/errorstatus.h"
#include "host/objectid.h"
#include "host/resbuf.h"

namespace corvane::host {

class AcDbHostApplicationServices;
class AcDbBlockTable;
class AcDbLayerTable;
namespace AcDb {
enum OpenMode : int;
}

class AcDbDatabase {
 public:
  virtual ~AcDbDatabase() = default;

  virtual AcDbHostApplicationServices& services() = 0;
  // The drawing's file, empty for a drawing never saved.
  virtual std::wstring getFilename() const = 0;

  // Handle to id, never creating an object: eUnknownHandle when no object has the handle.
  virtual Acad::ErrorStatus getAcDbObjectId(AcDbObjectId& id, AcDbHandle handle) const = 0;
  virtual AcDbObjectId namedObjectsDictionaryId() const = 0;
  virtual AcDbObjectId currentSpaceId() const = 0;
  virtual AcDbObjectId blockTableId() const = 0;
  virtual AcDbObjectId layerTableId() const = 0;
  // Opens the table; the caller closes it (AcDbObjectPointer's adopting constructor does).
  Acad::ErrorStatus getSymbolTable(AcDbBlockTable*& table, AcDb::OpenMode mode);
  Acad::ErrorStatus getSymbolTable(AcDbLayerTable*& table, AcDb::OpenMode mode);

  // System variables kept with the drawing (LUNITS, LUPREC, DIMZIN, ...) and those of the
  // session; names are compared without regard to case. eInvalidInput for an unknown name.
  virtual Acad::ErrorStatus getSysVar(std::wstring_view name, ResBuf& value) const = 0;
  virtual Acad::ErrorStatus setSysVar(std::wstring_view name, const ResBuf& value) = 0;

  // Registered applications, needed before an object may carry extended data of that name.
  virtual bool isRegApp(std::wstring_view name) const = 0;
  virtual Acad::ErrorStatus registerApp(std::wstring_view name) = 0;
};

}  // namespace corvane::host
