// The part every headless object shares: identity, owner, open state, erase state, extension
// dictionary and extended data. Each object class derives from ObjectImpl<its port interface>.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "headless/db/xdatalist.h"
#include "host/acdbobject.h"
#include "host/acvalue.h"
#include "host/resbuf.h"

namespace corvane::headless {

class Database;

struct ObjectRecord {
  // The open and erase state first: a walk over many objects reads it for each, and finds it
  // on the line that holds the object's start.
  int readers = 0;
  bool writeOpen = false;
  bool erased = false;
  // Changed since the drawing was read (or made): what a save has to write back.
  bool modified = false;
  // An entity's visibility, kept in the byte the fields above leave spare.
  bool visible = true;
  host::AcDbObjectId id;
  host::AcDbHandle handle;
  host::AcDbObjectId owner;
  Database* database = nullptr;
  host::AcDbObjectId extensionDictionary;
  XDataList xdata;  // every application's groups, each starting with its 1001
};

// Open-state bookkeeping, shared by all object classes.
host::Acad::ErrorStatus openRecord(ObjectRecord& record, host::AcDb::OpenMode mode, bool openErased);
host::Acad::ErrorStatus closeRecord(ObjectRecord& record);
host::Acad::ErrorStatus upgradeRecord(ObjectRecord& record);
host::Acad::ErrorStatus downgradeRecord(ObjectRecord& record);
host::ResBufList xdataOf(const ObjectRecord& record, std::wstring_view appName);
host::Acad::ErrorStatus setXdataOf(ObjectRecord& record, const host::ResBufList& data);
host::Acad::ErrorStatus createExtensionDictionaryOf(ObjectRecord& record);

// The headless side of every object, reachable from the port interface by dynamic_cast.
class HeadlessObject {
 public:
  virtual ~HeadlessObject() = default;
  // A named property as object-property fields read it ("Area", "Layer", ...), compared
  // without regard to case; nullopt when the object has no such property.
  virtual std::optional<host::AcValue> property(std::wstring_view name) const;
  // Asks memory for what the object keeps apart from itself (vertices, loops), one step of
  // the chain per stage (1, 2): a walk that stages its requests ahead finds them waiting.
  virtual void prefetchContents(int /*stage*/) const noexcept {}
  ObjectRecord& record() noexcept { return record_; }
  const ObjectRecord& record() const noexcept { return record_; }

 protected:
  ObjectRecord record_;
};

template <typename Interface>
class ObjectImpl : public Interface, public HeadlessObject {
 public:
  const host::AcRxClass* isA() const noexcept override { return Interface::desc(); }
  host::AcDbObjectId objectId() const override { return record_.id; }
  host::AcDbObjectId ownerId() const override { return record_.owner; }
  host::AcDbHandle handle() const override { return record_.handle; }
  host::AcDbDatabase* database() const override;
  bool isErased() const override { return record_.erased; }
  bool isReadEnabled() const override { return record_.readers > 0 || record_.writeOpen; }
  bool isWriteEnabled() const override { return record_.writeOpen; }
  host::Acad::ErrorStatus upgradeOpen() override { return upgradeRecord(record_); }
  host::Acad::ErrorStatus downgradeOpen() override { return downgradeRecord(record_); }
  host::Acad::ErrorStatus erase(bool erasing = true) override {
    if (!record_.writeOpen) return host::Acad::eNotOpenForWrite;
    if (record_.erased == erasing) return erasing ? host::Acad::eWasErased : host::Acad::eWasNotErased;
    record_.erased = erasing;
    record_.modified = true;
    return host::Acad::eOk;
  }
  host::Acad::ErrorStatus close() override { return closeRecord(record_); }
  host::AcDbObjectId extensionDictionary() const override { return record_.extensionDictionary; }
  host::Acad::ErrorStatus createExtensionDictionary() override { return createExtensionDictionaryOf(record_); }
  host::ResBufList xData(std::wstring_view appName = {}) const override { return xdataOf(record_, appName); }
  host::Acad::ErrorStatus setXData(const host::ResBufList& data) override {
    if (!record_.writeOpen) return host::Acad::eNotOpenForWrite;
    return setXdataOf(record_, data);
  }
};

}  // namespace corvane::headless

#include "headless/db/database.h"

namespace corvane::headless {
template <typename Interface>
host::AcDbDatabase* ObjectImpl<Interface>::database() const {
  return record_.database;
}
}  // namespace corvane::headless
