// The headless host application: the id table shared by every open database, the working
// database, the field engine and the command line.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/acdbobject.h"
#include "host/hostservices.h"

namespace corvane::headless {

class Database;
class FieldEngine;
class HeadlessObject;

class HostApplication : public host::AcDbHostApplicationServices {
 public:
  HostApplication();
  ~HostApplication() override;
  HostApplication(const HostApplication&) = delete;
  HostApplication& operator=(const HostApplication&) = delete;

  host::AcDbDatabase* workingDatabase() const override;
  void setWorkingDatabase(Database* db) noexcept { working_ = db; }
  host::AcFdFieldEngine* fieldEngine() override;
  FieldEngine& engine() noexcept { return *engine_; }

  bool isValid(host::AcDbObjectId id) const override;
  bool isErased(host::AcDbObjectId id) const override;
  host::AcDbHandle handle(host::AcDbObjectId id) const override;
  host::AcDbDatabase* database(host::AcDbObjectId id) const override;
  host::Acad::ErrorStatus openObject(host::AcDbObject*& object, host::AcDbObjectId id, host::AcDb::OpenMode mode,
                                     bool openErased = false) override;
  FieldHolder newField() override;
  host::Acad::ErrorStatus getPropertyValue(host::AcDbObjectId id, std::wstring_view name,
                                           host::AcValue& value) const override;
  std::optional<FieldSpan> findField(std::wstring_view text, std::size_t from = 0) const override;
  void print(std::wstring_view text) override;

  bool realToString(double value, int units, int precision, std::wstring& text) const override;
  std::wstring formatValue(const host::AcValue& value, std::wstring_view format) const override;
  int versionMajor() const override { return versionMajor_; }
  // The version the host reports, for running the plug-in as an older or newer host would.
  void setVersionMajor(int version) noexcept { versionMajor_ = version; }

  // Where command-line output goes; stdout (UTF-8) unless set.
  void setOutput(std::function<void(std::wstring_view)> sink) { output_ = std::move(sink); }

  // The id table. Databases register each object they hold and drop it when it goes away.
  host::AcDbObjectId registerObject(Database& db, host::AcDbObject& object, HeadlessObject& headless);
  void unregisterObject(host::AcDbObjectId id) noexcept;
  // Room for that many more objects, so that a drawing read whole does not grow the table by
  // doubling, with the old and the new table held at once.
  void reserveIds(std::size_t count) { slots_.reserve(slots_.size() + count); }
  // The object behind an id without opening it (headless code only); null for invalid ids.
  host::AcDbObject* lookup(host::AcDbObjectId id) const noexcept;
  HeadlessObject* lookupHeadless(host::AcDbObjectId id) const noexcept;

 private:
  struct Slot {
    Database* db = nullptr;
    host::AcDbObject* object = nullptr;
    HeadlessObject* headless = nullptr;
  };
  const Slot* slot(host::AcDbObjectId id) const noexcept;

  // Ids start high so that an id is never mistaken for a handle or an index, and stay below
  // 2^31 because the host's own id texts are read back with 32-bit conversions.
  static constexpr std::uint64_t kFirstId = 0x10000000;
  std::vector<Slot> slots_;
  Database* working_ = nullptr;
  std::unique_ptr<FieldEngine> engine_;
  std::function<void(std::wstring_view)> output_;
  int versionMajor_ = 23;
};

}  // namespace corvane::headless
