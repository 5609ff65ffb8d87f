// The part every symbol table shares: its records in the order they were added, and lookup by
// name without regard to case. Records are added once they are in the database; a table
// tolerates two records of one name (a damaged file may have them) and finds the first.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/textutil.h"
#include "headless/db/objectimpl.h"
#include "host/acdbsymboltable.h"
#include "host/acvalue.h"

namespace corvane::headless {

class Database;

class SymbolTableBase {
 public:
  virtual ~SymbolTableBase() = default;

  void addRecord(host::AcDbObjectId id);
  void removeRecord(host::AcDbObjectId id);
  // Every record, erased ones too.
  const std::vector<host::AcDbObjectId>& records() const noexcept { return records_; }
  // Called when a record changes its name.
  void reindex();

 protected:
  host::Acad::ErrorStatus find(std::wstring_view name, host::AcDbObjectId& id, bool getErasedRecord) const;
  std::vector<host::AcDbObjectId> liveRecords() const;
  virtual const Database* tableDatabase() const noexcept = 0;

 private:
  std::wstring nameOf(host::AcDbObjectId id) const;
  bool erased(host::AcDbObjectId id) const;

  std::vector<host::AcDbObjectId> records_;
  std::map<std::wstring, std::vector<host::AcDbObjectId>> byName_;  // key: upper-case name
};

template <typename Interface>
class SymbolTable : public ObjectImpl<Interface>, public SymbolTableBase {
 public:
  std::wstring dxfName() const override { return L"TABLE"; }
  host::Acad::ErrorStatus getAt(std::wstring_view name, host::AcDbObjectId& id,
                                bool getErasedRecord = false) const override {
    return find(name, id, getErasedRecord);
  }
  bool has(std::wstring_view name) const override {
    host::AcDbObjectId id;
    return find(name, id, false) == host::Acad::eOk;
  }
  host::AcDbSymbolTableIterator newIterator() const override { return host::AcDbSymbolTableIterator(liveRecords()); }

 protected:
  const Database* tableDatabase() const noexcept override { return this->record_.database; }
};

// The part every symbol table record shares: its name, which a field reads as "Name".
template <typename Interface>
class SymbolTableRecordImpl : public ObjectImpl<Interface> {
 public:
  explicit SymbolTableRecordImpl(std::wstring name) : name_(std::move(name)) {}
  host::Acad::ErrorStatus getName(std::wstring& name) const override {
    name = name_;
    return host::Acad::eOk;
  }
  const std::wstring& name() const noexcept { return name_; }
  void setName(std::wstring name);

  std::optional<host::AcValue> property(std::wstring_view name) const override {
    if (core::equalsNoCase(name, L"Name")) return host::AcValue(name_);
    return ObjectImpl<Interface>::property(name);
  }

 private:
  std::wstring name_;
};

// Tells the table that owns a record that the record's name changed.
void recordRenamed(const ObjectRecord& record);

template <typename Interface>
void SymbolTableRecordImpl<Interface>::setName(std::wstring name) {
  if (name == name_) return;
  name_ = std::move(name);
  this->record_.modified = true;
  recordRenamed(this->record_);
}

}  // namespace corvane::headless
