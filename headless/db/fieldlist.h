#pragma once

#include <cstdint>
#include <unordered_set>
#include <vector>

#include "headless/db/objectimpl.h"
#include "host/acdbobject.h"

namespace corvane::headless {

// The drawing's list of every field object, parents and children alike ("ACAD_FIELDLIST").
class FieldList : public ObjectImpl<host::AcDbObject> {
 public:
  std::wstring dxfName() const override { return L"FIELDLIST"; }
  std::wstring className() const override { return L"AcDbFieldList"; }

  const std::vector<host::AcDbObjectId>& ids() const noexcept { return ids_; }
  void add(host::AcDbObjectId id);
  void remove(host::AcDbObjectId id);

 private:
  std::vector<host::AcDbObjectId> ids_;
  std::unordered_set<std::uint64_t> members_;  // the same ids, for the membership test of add()
};

}  // namespace corvane::headless
