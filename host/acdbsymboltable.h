// Symbol tables: the drawing's named records (blocks, layers), looked up by name without
// regard to case, as the host does.
#pragma once

#include <string>
#include <string_view>

#include "host/acdbobject.h"
#include "host/acdbobjectiterator.h"

namespace corvane::host {

class AcDbSymbolTableRecord : public AcDbObject {
 public:
  virtual Acad::ErrorStatus getName(std::wstring& name) const = 0;
};

class AcDbSymbolTable : public AcDbObject {
 public:
  // eKeyNotFound when no record has the name; erased records are found only when asked for.
  virtual Acad::ErrorStatus getAt(std::wstring_view name, AcDbObjectId& id, bool getErasedRecord = false) const = 0;
  virtual bool has(std::wstring_view name) const = 0;
  // The records in the order they were added, erased ones left out.
  virtual AcDbSymbolTableIterator newIterator() const = 0;
};

class AcDbBlockTable : public AcDbSymbolTable {};
class AcDbLayerTable : public AcDbSymbolTable {};

}  // namespace corvane::host
