#pragma once

#include <string>
#include <vector>

#include "headless/objectimpl.h"
#include "host/acdbobject.h"

namespace corvane::headless {

// A block definition or a layout's space: a name and its entities in drawing order.
class BlockTableRecord : public ObjectImpl<host::AcDbObject> {
 public:
  explicit BlockTableRecord(std::wstring name) : name_(std::move(name)) {}
  std::wstring dxfName() const override { return L"BLOCK_RECORD"; }
  std::wstring className() const override { return L"AcDbBlockTableRecord"; }

  const std::wstring& name() const noexcept { return name_; }
  const std::vector<host::AcDbObjectId>& entities() const noexcept { return entities_; }
  void append(host::AcDbObjectId id) { entities_.push_back(id); }

 private:
  std::wstring name_;
  std::vector<host::AcDbObjectId> entities_;
};

}  // namespace corvane::headless
