// The running host around a loaded plug-in, beyond its drawings: the command stack, the editor
// and its prompts, the menus, the document manager, the UI, the operating system and the
// settings registry. The session outlives every plug-in it loads.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/errorstatus.h"

namespace corvane::host {

class AcDbDatabase;
class AcDbDatabaseReactor;
class AcEdCommandStack;
class AcEdMenu;
class AcEdPrompts;
class AcEditor;
class CAcFdUiFieldManager;
class ExcelAutomation;
class HostSystem;
class HostUi;
class Registry;

class HostSession {
 public:
  virtual ~HostSession() = default;

  virtual AcEdCommandStack& commandStack() = 0;
  // The editor object of the host's class registry ("AcEditor"), or null when there is none.
  virtual AcEditor* editor() = 0;
  virtual AcEdPrompts& prompts() = 0;
  virtual AcEdMenu& menus() = 0;
  virtual HostUi& ui() = 0;
  virtual HostSystem& system() = 0;
  virtual Registry& registry() = 0;
  // The field dialog's manager (AcFdUiGetFieldManager), or null when the host has none.
  virtual CAcFdUiFieldManager* fieldManager() = 0;
  // How Excel is reached, or null when the host reaches no Excel at all.
  virtual ExcelAutomation* excel() = 0;

  // The host program's name: "acad", or "acadlt" on the light edition.
  virtual std::wstring program() const = 0;

  // acedCommandS: runs a host command with the given answers to its prompts; the first item
  // is the command's name. Returns a prompt result code.
  virtual int command(const std::vector<std::wstring>& arguments) = 0;
  // ads_queueexpr: an expression evaluated when the host is next idle. RTNORM or RTERROR.
  virtual int queueExpr(std::wstring_view expression) = 0;

  // The document manager: whether there is a current document, and text sent to it for
  // execution as though typed once the host is idle.
  virtual bool hasCurrentDocument() const = 0;
  virtual Acad::ErrorStatus sendStringToExecute(std::wstring_view text, bool activate, bool wrapUpInactiveDoc,
                                                bool echo) = 0;

  // AcDbDatabase::addReactor and removeReactor.
  virtual Acad::ErrorStatus addDatabaseReactor(AcDbDatabase* db, AcDbDatabaseReactor* reactor) = 0;
  virtual Acad::ErrorStatus removeDatabaseReactor(AcDbDatabase* db, AcDbDatabaseReactor* reactor) = 0;
};

}  // namespace corvane::host
