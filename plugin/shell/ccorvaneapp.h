// The plug-in's one application object: it owns the evaluator loader, the field reactor and
// everything else that lives for the whole load of the plug-in, answers the host's messages and
// carries the commands.
//
// Made with a host session it is the full plug-in: commands, field dialog hook, settings,
// menu, reactors and field services. Made without one (a drawing worked on outside any
// editor) initialisation registers the field services only.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/acdbtable.h"
#include "host/acrxarxapp.h"
#include "host/hostservices.h"
#include "host/hostsession.h"
#include "plugin/fields/asdkevaluatorloader.h"
#include "plugin/fields/asdkfieldreactor.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/shell/asdkcustomoptiondialoghook.h"
#include "plugin/shell/asdkdatabasereactor.h"
#include "plugin/shell/asdkeditorreactor.h"
#include "plugin/support/cregistry.h"
#include "plugin/shell/reactorstate.h"

namespace corvane {

class CCorvaneApp : public host::AcRxArxApp {
 public:
  static constexpr const wchar_t* kProductName = L"Corvane";
  static constexpr const wchar_t* kCommandGroup = L"Halvek";
  static constexpr const wchar_t* kMessageCaption = L"Halvek Corvane";
  static constexpr const wchar_t* kMarkerFile = L"halvek.cfg";
  static constexpr unsigned kMenuTimerPeriodMs = 500;

  explicit CCorvaneApp(host::AcDbHostApplicationServices& services);
  CCorvaneApp(host::AcDbHostApplicationServices& services, host::HostSession& session);
  // Outside any editor, with files (and Excel, when given) within the linked fields' reach.
  CCorvaneApp(host::AcDbHostApplicationServices& services, host::HostSystem& system, host::ExcelAutomation* excel);
  ~CCorvaneApp() override;
  CCorvaneApp(const CCorvaneApp&) = delete;
  CCorvaneApp& operator=(const CCorvaneApp&) = delete;

  // The host's messages.
  host::AcRx::AppRetCode On_kInitAppMsg() override;
  host::AcRx::AppRetCode On_kUnloadAppMsg() override;
  host::AcRx::AppRetCode On_kLoadDwgMsg() override;
  void onInitialize() { On_kInitAppMsg(); }
  void onUnload() { On_kUnloadAppMsg(); }

  // Runs every 500 ms while the menu timer of the light edition is running.
  void onMenuTimer();

  // The command table: every command of the group, global and local name.
  struct Command {
    const wchar_t* globalName;
    const wchar_t* localName;
    void (CCorvaneApp::*action)();
  };
  static std::span<const Command> commands();

  // The commands.
  void Corvane_Test();
  void Corvane_LoadMenu();
  void Corvane_Help();
  void Corvane_Website();
  void Corvane_About();
  void Corvane_Support();
  void Corvane_Faq();
  void Corvane_New();
  void Corvane_Demo();
  void Corvane_Live_Update();
  void Corvane_Insert_Fields_To_Drawings();
  void Corvane_Multi_Cell_Fields();
  void Corvane_Define_Object();
  void Corvane_List_DefObj_InSession();
  void Corvane_Workbooks_Manager();
  void Corvane_AutoFill_Formulas();
  void Corvane_Update_Fields_In_Excel();
  void Corvane_Export_Fields_to_Excel();

  // The menu file: the module folder, "\", the product name and ".cuix" (".jp.cuix" on a
  // Japanese system).
  std::wstring menuFilePath() const;
  std::wstring helpFilePath() const;

  AsdkEvaluatorLoader& loader() noexcept { return loader_; }
  // The table chosen in the formula dialog: formula fields placed nowhere read its cells.
  // Shared by every formula evaluator the loader makes, for as long as the module lives.
  void setDialogOwnerTable(host::AcDbObjectId table) noexcept { dialogOwnerTable_ = table; }
  host::AcDbObjectId dialogOwnerTable() const noexcept { return dialogOwnerTable_; }
  AsdkFieldReactor& fieldReactor() noexcept { return fieldReactor_; }
  LinkedSources& linkedSources() noexcept { return *linked_; }
  bool fieldServicesRegistered() const noexcept { return fieldServicesRegistered_; }
  bool fieldEvaluationActive() const noexcept { return fieldEvaluationActive_; }
  host::AcDbHostApplicationServices& services() noexcept { return services_; }
  host::HostSession* session() noexcept { return session_; }
  CRegistry& registry() noexcept { return registry_; }
  ReactorState& reactorState() noexcept { return reactorState_; }
  AsdkEditorReactor* editorReactor() noexcept { return editorReactor_.get(); }
  AsdkDataBaseReactor* databaseReactor() noexcept { return databaseReactor_.get(); }
  AsdkCustomOptionDialogHook* dialogHook() noexcept { return dialogHook_.get(); }
  bool commandsRegistered() const noexcept { return commandsRegistered_; }
  std::uintptr_t menuTimerId() const noexcept { return menuTimerId_; }
  const std::wstring& moduleFolder() const noexcept { return moduleFolder_; }
  const std::wstring& currentDrawingName() const noexcept { return currentDrawingName_; }

 private:
  std::unique_ptr<host::AcFdFieldEvaluator> makeEvaluator(std::size_t row);
  void registerCommands();
  void arrangeMenuLoading();
  void notAvailable(const wchar_t* localName);
  void openPage(const wchar_t* address);
  // Writes the first cell's formula, moved, into the other cells of the range. Gives the
  // table's formula fields in reading order, or none when the first cell holds no formula or
  // the table cannot be changed.
  std::vector<host::AcDbObjectId> fillFormulas(host::AcDbObjectId table, const host::AcCellRange& range);

  host::AcDbHostApplicationServices& services_;
  host::HostSession* session_ = nullptr;
  bool fieldEvaluationActive_ = false;  // written by the field reactor around each batch
  host::AcDbObjectId dialogOwnerTable_;
  std::unique_ptr<LinkedSources> linked_;  // before the loader: its evaluators hold it

  std::unique_ptr<AsdkEditorReactor> editorReactor_;
  AsdkEvaluatorLoader loader_;
  AsdkFieldReactor fieldReactor_;
  bool fieldServicesRegistered_ = false;

  std::unique_ptr<AsdkCustomOptionDialogHook> dialogHook_;
  std::unique_ptr<AsdkDataBaseReactor> databaseReactor_;
  host::AcDbDatabase* databaseReactorDb_ = nullptr;  // where the database reactor was added
  ReactorState reactorState_;
  CRegistry registry_;
  bool commandsRegistered_ = false;
  std::uintptr_t menuTimerId_ = 0;
  std::wstring moduleFolder_;
  // Written on each drawing load and read by nothing else.
  std::wstring currentDrawingName_;
  bool currentDrawingFlag_ = true;
};

// The evaluator of a row of the evaluator table, with no dialog owner table.
std::unique_ptr<host::AcFdFieldEvaluator> makeCorvaneEvaluator(std::size_t row);

}  // namespace corvane
