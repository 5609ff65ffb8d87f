// The headless host application: the one place that wires the parts of the host together and
// implements the host's services by handing each call to its part. It holds the id table
// that every open database shares, the working database, the field engine and the command
// line.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "headless/db/databasehost.h"
#include "headless/db/objecttable.h"
#include "host/acdbobject.h"
#include "host/hostservices.h"

namespace corvane::headless {

class Database;
class FieldEngine;

class HostApplication : public host::AcDbHostApplicationServices, public DatabaseHost {
 public:
  HostApplication();
  ~HostApplication() override;
  HostApplication(const HostApplication&) = delete;
  HostApplication& operator=(const HostApplication&) = delete;

  host::AcDbDatabase* workingDatabase() const override;
  void setWorkingDatabase(Database* db) noexcept { working_ = db; }
  // Only databases of this host can be worked on; any other leaves none working.
  void setWorkingDatabase(host::AcDbDatabase* db) override;
  host::AcFdFieldEngine* fieldEngine() override;
  FieldEngine& engine() noexcept { return *engine_; }

  bool isValid(host::AcDbObjectId id) const override { return objects_.isValid(id); }
  bool isErased(host::AcDbObjectId id) const override { return objects_.isErased(id); }
  host::AcDbHandle handle(host::AcDbObjectId id) const override { return objects_.handle(id); }
  host::AcDbDatabase* database(host::AcDbObjectId id) const override;
  void willOpen(host::AcDbObjectId id) const noexcept override;
  host::Acad::ErrorStatus openObject(host::AcDbObject*& object, host::AcDbObjectId id, host::AcDb::OpenMode mode,
                                     bool openErased = false) override;
  FieldHolder newField() override;
  FieldHolder newField(host::AcDbObjectId owner) override;
  host::Acad::ErrorStatus readDrawingFile(std::wstring_view path, DatabaseHolder& db, std::wstring& reason) override;
  // What reads other drawings from their files: the host knows databases, not file formats,
  // so whoever wires it to a file format hands the reader over. Without one nothing is read.
  using DrawingReader = std::function<host::Acad::ErrorStatus(std::wstring_view path, DatabaseHolder& db,
                                                              std::wstring& reason)>;
  void setDrawingReader(DrawingReader reader) { reader_ = std::move(reader); }
  host::Acad::ErrorStatus saveDrawingFile(host::AcDbDatabase& db, std::wstring_view path,
                                          std::wstring& reason) override;
  // Likewise what writes them back; without one nothing is saved.
  using DrawingWriter =
      std::function<host::Acad::ErrorStatus(host::AcDbDatabase& db, std::wstring_view path, std::wstring& reason)>;
  void setDrawingWriter(DrawingWriter writer) { writer_ = std::move(writer); }
  host::AcDbObjectId owningTable(host::AcDbObjectId id) const override;
  host::Acad::ErrorStatus getPropertyValue(host::AcDbObjectId id, std::wstring_view name,
                                           host::AcValue& value) const override;
  host::Acad::ErrorStatus entGet(host::AcDbObjectId id, host::ResBufList& data) const override;
  host::Acad::ErrorStatus setField(host::AcDbObjectId object, std::wstring_view property, std::wstring_view code,
                                   host::AcDbObjectId& fieldId) override;
  host::Acad::ErrorStatus appendMText(host::AcDbObjectId space, const host::AcGePoint3d& location,
                                      std::wstring_view contents, host::AcDbObjectId& id) override;
  std::optional<FieldSpan> findField(std::wstring_view text, std::size_t from = 0) const override;
  void print(std::wstring_view text) override;
  // Ends the command line's last line when something was printed on it, so that what the program
  // writes next starts on a line of its own.
  void endLine();

  bool realToString(double value, int units, int precision, std::wstring& text) const override;
  std::wstring formatValue(const host::AcValue& value, std::wstring_view format) const override;
  int versionMajor() const override { return versionMajor_; }
  // The version the host reports, for running the plug-in as an older or newer host would.
  void setVersionMajor(int version) noexcept { versionMajor_ = version; }

  // Where command-line output goes; stdout (UTF-8) unless set.
  void setOutput(std::function<void(std::wstring_view)> sink) { output_ = std::move(sink); }

  // What the databases of this host are given.
  ObjectTable& objects() noexcept override { return objects_; }
  const ObjectTable& objects() const noexcept { return objects_; }
  host::AcDbHostApplicationServices& services() noexcept override { return *this; }
  host::Acad::ErrorStatus evaluateField(Field& field, Database& db, int context) override;
  void databaseClosing(const Database& db) noexcept override;

 private:
  FieldHolder temporaryField(Database& db, host::AcDbObjectId owner);

  ObjectTable objects_;
  // The last ids a walk said it will open, newest last: their contents are asked for in
  // stages as the walk comes nearer (see willOpen).
  mutable std::array<host::AcDbObjectId, 16> coming_{};
  mutable std::size_t comingAt_ = 0;
  Database* working_ = nullptr;
  std::unique_ptr<FieldEngine> engine_;
  std::function<void(std::wstring_view)> output_;
  DrawingReader reader_;
  DrawingWriter writer_;
  bool lineOpen_ = false;
  int versionMajor_ = 23;
};

}  // namespace corvane::headless
