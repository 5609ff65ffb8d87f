#include "plugin/shell/ccorvaneapp.h"

#include "core/filepath.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/acdbdatabase.h"
#include "host/acedcommandstack.h"
#include "host/acedmenu.h"
#include "host/acfdui.h"
#include "host/hostsystem.h"
#include "plugin/fields/fieldregistration.h"
#include "plugin/formula/asdkexprevaluator.h"
#include "plugin/linked/asdkdefinedobjectevaluator.h"
#include "plugin/linked/asdkexcelcellevaluator.h"
#include "plugin/linked/asdktextfileevaluator.h"
#include "plugin/measure/asdkareaevaluator.h"
#include "plugin/measure/asdkblockcountevaluator.h"
#include "plugin/measure/asdklengthevaluator.h"
#include "plugin/measure/asdktablecellevaluator.h"

namespace corvane {

namespace {

// The module's path is read into a buffer of the system's maximum path length.
constexpr std::size_t kMaxPath = 260;

}  // namespace

std::unique_ptr<host::AcFdFieldEvaluator> makeCorvaneEvaluator(std::size_t row) {
  switch (row) {
    case kLengthRow: return std::make_unique<AsdkLengthEvaluator>();
    case kAreaRow: return std::make_unique<AsdkAreaEvaluator>();
    case kBlockCountRow: return std::make_unique<AsdkBlockCountEvaluator>();
    case kTextFileRow: return std::make_unique<AsdkTextFileEvaluator>();
    case kTableCellRow: return std::make_unique<AsdkTableCellEvaluator>();
    case kExcelCellRow: return std::make_unique<AsdkExcelCellEvaluator>();
    case kExprRow: return std::make_unique<AsdkExprEvaluator>();
    case kDefinedObjectRow: return std::make_unique<AsdkDefinedObjectEvaluator>();
    default: return nullptr;
  }
}

CCorvaneApp::CCorvaneApp(host::AcDbHostApplicationServices& services)
    : services_(services),
      linked_(std::make_unique<LinkedSources>(services, nullptr, nullptr)),
      loader_([this](std::size_t row) { return makeEvaluator(row); }),
      fieldReactor_(fieldEvaluationActive_, linked_.get()) {}

CCorvaneApp::CCorvaneApp(host::AcDbHostApplicationServices& services, host::HostSession& session)
    : services_(services),
      session_(&session),
      linked_(std::make_unique<LinkedSources>(services, session)),
      loader_([this](std::size_t row) { return makeEvaluator(row); }),
      fieldReactor_(fieldEvaluationActive_, linked_.get()),
      registry_(&session.registry()) {}

CCorvaneApp::CCorvaneApp(host::AcDbHostApplicationServices& services, host::HostSystem& system,
                         host::ExcelAutomation* excel)
    : services_(services),
      linked_(std::make_unique<LinkedSources>(services, &system, excel)),
      loader_([this](std::size_t row) { return makeEvaluator(row); }),
      fieldReactor_(fieldEvaluationActive_, linked_.get()) {}

std::unique_ptr<host::AcFdFieldEvaluator> CCorvaneApp::makeEvaluator(std::size_t row) {
  switch (row) {
    case kExprRow: return std::make_unique<AsdkExprEvaluator>(&dialogOwnerTable_);
    case kTextFileRow: return std::make_unique<AsdkTextFileEvaluator>(linked_.get());
    case kExcelCellRow: return std::make_unique<AsdkExcelCellEvaluator>(linked_.get());
    case kDefinedObjectRow: return std::make_unique<AsdkDefinedObjectEvaluator>(linked_.get());
    default: return makeCorvaneEvaluator(row);
  }
}

CCorvaneApp::~CCorvaneApp() {
  // The hook and the database reactor stay registered for as long as the module is loaded;
  // the module ends here.
  if (session_) {
    if (databaseReactor_ && databaseReactorDb_)
      session_->removeDatabaseReactor(databaseReactorDb_, databaseReactor_.get());
    if (dialogHook_) {
      if (auto* manager = session_->fieldManager()) manager->UnregisterFieldDialogHook(dialogHook_.get());
    }
    if (menuTimerId_ != 0) session_->system().killTimer(menuTimerId_);
  }
}

host::AcRx::AppRetCode CCorvaneApp::On_kInitAppMsg() {
  if (session_) {
    registerCommands();

    const OptionPageSources pages{services_,
                                  *session_,
                                  registry_,
                                  *linked_,
                                  [this] { return dialogOwnerTable_; },
                                  [this](host::AcDbObjectId table) { dialogOwnerTable_ = table; }};
    dialogHook_ = std::make_unique<AsdkCustomOptionDialogHook>(session_->system(), pages, reactorState_);
    if (auto* manager = session_->fieldManager()) manager->RegisterFieldDialogHook(dialogHook_.get());

    std::wstring module = session_->system().moduleFileName();
    if (module.size() >= kMaxPath) module.resize(kMaxPath - 1);
    moduleFolder_ = core::folderOf(std::move(module));

    registry_.setRoot(host::RegistryHive::kCurrentUser, settings::kMaker);

    arrangeMenuLoading();

    if (!editorReactor_) editorReactor_ = std::make_unique<AsdkEditorReactor>(*session_, services_, reactorState_, true, linked_.get());
    if (!databaseReactor_) {
      databaseReactor_ = std::make_unique<AsdkDataBaseReactor>(reactorState_);
      if (host::AcDbDatabase* db = services_.workingDatabase()) {
        if (session_->addDatabaseReactor(db, databaseReactor_.get()) == host::Acad::eOk) databaseReactorDb_ = db;
      }
    }
  }
  registerEvaluatorLoader(services_, loader_);
  if (auto* engine = services_.fieldEngine()) engine->addFieldReactor(&fieldReactor_);
  fieldServicesRegistered_ = true;
  return host::AcRx::kRetOK;
}

host::AcRx::AppRetCode CCorvaneApp::On_kUnloadAppMsg() {
  if (commandsRegistered_ && session_) {
    session_->commandStack().removeGroup(kCommandGroup);
    commandsRegistered_ = false;
  }
  editorReactor_.reset();
  if (fieldServicesRegistered_) {
    unregisterEvaluatorLoader(services_, loader_);
    if (auto* engine = services_.fieldEngine()) engine->removeFieldReactor(&fieldReactor_);
    fieldServicesRegistered_ = false;
  }
  return host::AcRx::kRetOK;
}

host::AcRx::AppRetCode CCorvaneApp::On_kLoadDwgMsg() {
  if (host::AcDbDatabase* db = services_.workingDatabase()) {
    std::wstring name = db->getFilename();
    if (!name.empty()) {
      currentDrawingName_ = std::move(name);
      currentDrawingFlag_ = false;
    }
  }
  return host::AcRx::kRetOK;
}

void CCorvaneApp::registerCommands() {
  auto& stack = session_->commandStack();
  for (const Command& command : commands()) {
    const auto action = command.action;
    stack.addCommand(kCommandGroup, command.globalName, command.localName, host::ACRX_CMD::kModal,
                     [this, action] { (this->*action)(); });
  }
  commandsRegistered_ = true;
}

void CCorvaneApp::arrangeMenuLoading() {
  if (session_->menus().isMenuGroupLoaded(kProductName)) return;
  if (core::equalsNoCase(session_->program(), L"acadlt")) {
    // The light edition runs no expressions; a timer sends the command once a document is
    // there. The marker file lets a site load the menu its own way.
    const auto& system = session_->system();
    const std::wstring marker = core::format(L"%s\\%s", moduleFolder_, kMarkerFile);
    if (system.fileExists(menuFilePath()) && !system.fileExists(marker)) {
      menuTimerId_ = session_->system().setTimer(kMenuTimerPeriodMs, [this](std::uintptr_t) { onMenuTimer(); });
    }
  } else {
    session_->queueExpr(core::format(L"(command \"%s\")", L"Corvane_LoadMenu"));
  }
}

void CCorvaneApp::onMenuTimer() {
  if (!session_) return;
  const bool loaded = session_->menus().isMenuGroupLoaded(kProductName);
  if (session_->hasCurrentDocument() && !loaded && menuTimerId_ != 0) {
    session_->sendStringToExecute(L"Corvane_LoadMenu\n", false, true, true);
    session_->system().killTimer(menuTimerId_);
    menuTimerId_ = 0;
  } else if (loaded) {
    session_->system().killTimer(menuTimerId_);
    menuTimerId_ = 0;
  }
}

std::wstring CCorvaneApp::menuFilePath() const {
  const bool japanese = session_ && session_->system().systemDefaultLangId() == host::kLangJapanese;
  return core::format(L"%s%s%s", moduleFolder_ + L"\\", kProductName, japanese ? L".jp.cuix" : L".cuix");
}

std::wstring CCorvaneApp::helpFilePath() const { return core::format(L"%s\\%s.chm", moduleFolder_, kProductName); }

}  // namespace corvane
