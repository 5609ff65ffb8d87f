// What the linked-data fields share for as long as the plug-in is loaded: the ways out of the
// drawing (files, Excel, the user), the hidden Excel of the evaluations with the workbooks it
// holds open, the user's Excel that web workbooks are read from, and the session cache of
// defined objects. The application object owns it and hands it to the three evaluators.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/excel.h"
#include "host/hostservices.h"
#include "host/hostsystem.h"
#include "plugin/linked/cdefinedobject.h"
#include "plugin/fields/asdkfieldreactor.h"
#include "plugin/linked/excelutils.h"

namespace corvane {

namespace host {
class AcDbDatabase;
class HostSession;
class HostUi;
}  // namespace host

class LinkedSources : public AsdkFieldBatchResources {
 public:
  // Within an editor session: its files, its Excel and its UI.
  LinkedSources(host::AcDbHostApplicationServices& services, host::HostSession& session);
  // Outside one: `system` null, no file can be reached; `excel` null, no Excel; alerts go to
  // the command line.
  LinkedSources(host::AcDbHostApplicationServices& services, host::HostSystem* system, host::ExcelAutomation* excel);
  ~LinkedSources() override;
  LinkedSources(const LinkedSources&) = delete;
  LinkedSources& operator=(const LinkedSources&) = delete;

  host::AcDbHostApplicationServices& services() noexcept { return services_; }
  host::HostSystem* system() noexcept { return system_; }
  host::ExcelAutomation* excel();
  host::HostUi* ui();

  // The evaluations' own Excel connection (its private instance is started on first need).
  ExcelUtils& evaluationExcel() noexcept { return evaluationExcel_; }
  // The user's running Excel, kept once found, that web workbooks are read from.
  std::shared_ptr<host::ExcelApplication>& webExcel() noexcept { return webExcel_; }
  // Objects of other drawings read in this session, in the order they were first read.
  CDefinedObjectArray& definedObjects() noexcept { return definedObjects_; }
  // The other drawing read last, kept open with the file time it was read at, so that fields
  // on further objects of it do not read it again while the file stays as it was.
  struct OpenDrawing {
    std::wstring path;
    CDefinedObjectTime time;
    host::AcDbHostApplicationServices::DatabaseHolder db;
  };
  OpenDrawing& lastDrawing() noexcept { return lastDrawing_; }

  // Around each batch of evaluations: the hidden Excel is let go of, so that a workbook changed
  // since is read afresh; the other drawing kept open is closed after the batch. Objects read
  // from other drawings stay listed for the session.
  void releaseExcelInstance() override;
  void endLeftOverExcel() override;
  void loadDefinedObjects() override {}
  void freeDefinedObjects() override;

  // The current document's file: the working drawing's; empty when it was never saved.
  std::wstring currentDocumentPath() const;
  // A relative path made absolute against the folder of the working drawing. Nullopt when
  // that folder cannot be entered (a drawing never saved, a folder gone); an absolute path
  // comes back tidied.
  std::optional<std::wstring> resolveAgainstWorkingDrawing(std::wstring_view path) const;
  // What the path names and when it was last written; missing when no file can be reached.
  host::HostSystem::FileStatus fileStatus(std::wstring_view path) const;

 private:
  host::AcDbHostApplicationServices& services_;
  host::HostSession* session_ = nullptr;
  host::HostSystem* system_;
  host::ExcelAutomation* excel_ = nullptr;
  ExcelUtils evaluationExcel_;
  std::shared_ptr<host::ExcelApplication> webExcel_;
  CDefinedObjectArray definedObjects_;
  OpenDrawing lastDrawing_;
};

}  // namespace corvane
