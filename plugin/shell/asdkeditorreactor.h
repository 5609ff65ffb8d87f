// The plug-in's editor reactor: it watches commands so that state kept for one command does
// not leak into the next, recomputes the formulas of a table once a table-editing command
// has changed one of its cells, and keeps the references of copied fields on the copies.
#pragma once

#include "host/acdbidmapping.h"
#include "host/acdbtable.h"
#include "host/aceditor.h"
#include "host/hostservices.h"
#include "host/hostsession.h"
#include "plugin/fields/asdkfieldreactor.h"
#include "plugin/shell/reactorstate.h"

namespace corvane {

class AsdkEditorReactor : public host::AcEditorReactor {
 public:
  // With `attachNow` the reactor adds itself to the host editor at once; when the host has no
  // editor it stays detached.
  // `resources`, when given, lose their hidden Excel at the end of every command.
  AsdkEditorReactor(host::HostSession& session, host::AcDbHostApplicationServices& services, ReactorState& state,
                    bool attachNow, AsdkFieldBatchResources* resources = nullptr);
  ~AsdkEditorReactor() override;
  AsdkEditorReactor(const AsdkEditorReactor&) = delete;
  AsdkEditorReactor& operator=(const AsdkEditorReactor&) = delete;

  void attach();
  void detach();
  bool isAttached() const noexcept { return attached_; }

  void commandWillStart(const wchar_t* command) override;
  void commandEnded(const wchar_t* command) override;
  void commandCancelled(const wchar_t* command) override;
  void commandFailed(const wchar_t* command) override;
  void endDeepClone(host::AcDbIdMapping& mapping) override;

  static bool isTableEditCommand(const wchar_t* command) noexcept;

  // The table of the current space with a cell selected for editing; null when none has one.
  host::AcDbObjectId FindEditedTable();
  // Evaluates every formula field of the table's cells, nested in a text of one field or not.
  void RecomputeTableFormulas(host::AcDbObjectId table);

 private:
  void endCommand();
  // An area, length or table cell field among the clones.
  void fixCopiedField(host::AcDbField& field, const host::AcDbIdMapping& mapping);
  // The table cell fields of a cloned table, directly in a cell or alone in a cell's text.
  // Area and length fields in cells are left as they are.
  void fixCopiedTable(const host::AcDbTable& table, const host::AcDbIdMapping& mapping);

  host::HostSession& session_;
  host::AcDbHostApplicationServices& services_;
  ReactorState& state_;
  AsdkFieldBatchResources* resources_;
  bool attached_ = false;
};

}  // namespace corvane
