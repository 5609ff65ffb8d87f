#pragma once

#include <string>
#include <utility>
#include <vector>

#include "headless/db/objectimpl.h"
#include "host/acdbdictionary.h"

namespace corvane::headless {

class Dictionary : public ObjectImpl<host::AcDbDictionary> {
 public:
  std::wstring dxfName() const override { return L"DICTIONARY"; }
  std::wstring className() const override { return L"AcDbDictionary"; }

  host::Acad::ErrorStatus getAt(std::wstring_view name, host::AcDbObjectId& id) const override;
  bool has(std::wstring_view name) const override;
  host::Acad::ErrorStatus setAt(std::wstring_view name, host::AcDbObject* object, host::AcDbObjectId& id) override;
  host::Acad::ErrorStatus remove(std::wstring_view name) override;
  std::vector<std::pair<std::wstring, host::AcDbObjectId>> entries() const override { return entries_; }

  // Adds an entry for an object already in the database, making the dictionary its owner.
  void put(std::wstring name, host::AcDbObjectId id);
  void drop(std::wstring_view name);

 private:
  std::vector<std::pair<std::wstring, host::AcDbObjectId>> entries_;
};

}  // namespace corvane::headless
