#include "plugin/shell/asdkeditorreactor.h"

#include "core/printf.h"
#include "core/textutil.h"
#include "host/acdbdatabase.h"
#include "host/acdbfield.h"
#include "host/acdbtable.h"
#include "host/acedprompts.h"
#include "plugin/shell/copymaintenance.h"

namespace corvane {

AsdkEditorReactor::AsdkEditorReactor(host::HostSession& session, host::AcDbHostApplicationServices& services,
                                     ReactorState& state, bool attachNow, AsdkFieldBatchResources* resources)
    : session_(session), services_(services), state_(state), resources_(resources) {
  if (attachNow) attach();
}

AsdkEditorReactor::~AsdkEditorReactor() { detach(); }

void AsdkEditorReactor::attach() {
  if (attached_) return;
  host::AcEditor* editor = session_.editor();
  if (!editor) return;
  editor->addReactor(this);
  attached_ = true;
}

void AsdkEditorReactor::detach() {
  if (!attached_) return;
  if (host::AcEditor* editor = session_.editor()) editor->removeReactor(this);
  attached_ = false;
}

bool AsdkEditorReactor::isTableEditCommand(const wchar_t* command) noexcept {
  if (!command) return false;
  return core::equalsNoCase(command, L"TABLEDIT") || core::equalsNoCase(command, L"EDITTABLECELL");
}

void AsdkEditorReactor::commandWillStart(const wchar_t* command) {
  state_.copyMap.clear();
  if (!isTableEditCommand(command)) return;
  if (const host::AcDbObjectId table = FindEditedTable(); !table.isNull()) state_.editedTableId = table;
  state_.tableEditInProgress = true;
}

void AsdkEditorReactor::commandEnded(const wchar_t* command) {
  const host::AcDbObjectId table = state_.editedTableId;
  if (isTableEditCommand(command) && services_.isValid(table) && !services_.isErased(table)) {
    RecomputeTableFormulas(table);
  }
  endCommand();
}

host::AcDbObjectId AsdkEditorReactor::FindEditedTable() {
  host::AcDbDatabase* db = services_.workingDatabase();
  if (!db) return {};
  const host::ResBufList filter{{0, std::wstring(L"ACAD_TABLE")}};
  std::vector<host::AcDbObjectId> tables;
  if (session_.prompts().ssGet(L"X", &filter, tables) != host::RTNORM) return {};
  for (const auto id : tables) {
    host::AcDbObjectPointer<host::AcDbTable> table(services_, id, host::AcDb::kForRead);
    if (table && table->ownerId() == db->currentSpaceId() && table->hasSubSelection()) return id;
  }
  return {};
}

void AsdkEditorReactor::RecomputeTableFormulas(host::AcDbObjectId tableId) {
  host::AcDbObjectPointer<host::AcDbTable> table(services_, tableId, host::AcDb::kForRead);
  if (!table) return;
  const auto recompute = [this](host::AcDbField& field, const wchar_t* failure) {
    if (const auto es = field.upgradeOpen(); es != host::Acad::eOk) {
      services_.print(core::format(failure, host::acadErrorStatusText(es)));
      return;
    }
    field.evaluate(host::AcDbField::kDemand);
  };
  for (int row = 0; row < table->numRows(); ++row) {
    for (int column = 0; column < table->numColumns(); ++column) {
      host::AcDbObjectPointer<host::AcDbField> field(services_, table->fieldId(row, column), host::AcDb::kForRead);
      if (!field) continue;
      if (core::equalsNoCase(field->evaluatorId(), L"_text") && field->childCount() == 1) {
        host::AcDbObjectPointer<host::AcDbField> child(services_, field->getChild(0), host::AcDb::kForRead);
        if (child && core::equalsNoCase(child->evaluatorId(), L"VxExpr")) {
          recompute(*child.object(), L"\nFailed to open the field to update: %s.");
        }
      } else if (core::equalsNoCase(field->evaluatorId(), L"VxExpr")) {
        recompute(*field.object(), L"\nFailed to modify the field: %s.");
      }
    }
  }
}

void AsdkEditorReactor::commandCancelled(const wchar_t* /*command*/) { endCommand(); }

void AsdkEditorReactor::commandFailed(const wchar_t* /*command*/) { endCommand(); }

void AsdkEditorReactor::endDeepClone(host::AcDbIdMapping& mapping) {
  host::AcDbIdMappingIter pairs(mapping);
  for (pairs.start(); !pairs.done(); pairs.next()) {
    host::AcDbIdPair pair;
    if (!pairs.getMap(pair)) continue;
    if (host::AcDbObjectPointer<host::AcDbTable> table(services_, pair.value(), host::AcDb::kForRead); table) {
      fixCopiedTable(*table.object(), mapping);
      continue;
    }
    if (host::AcDbObjectPointer<host::AcDbField> field(services_, pair.value(), host::AcDb::kForRead); field) {
      fixCopiedField(*field.object(), mapping);
    }
  }
}

void AsdkEditorReactor::fixCopiedField(host::AcDbField& field, const host::AcDbIdMapping& mapping) {
  const std::wstring evaluator = field.evaluatorId();
  if (core::equalsNoCase(evaluator, L"TableCell")) {
    FixTableReference(services_, field, mapping);
  } else if (core::equalsNoCase(evaluator, L"AcArea")) {
    FixHandleList(services_, field, mapping, L"AcArea Data");
  } else if (core::equalsNoCase(evaluator, L"AcLength")) {
    FixHandleList(services_, field, mapping, L"AcLength Data");
  }
}

void AsdkEditorReactor::fixCopiedTable(const host::AcDbTable& table, const host::AcDbIdMapping& mapping) {
  for (int row = 0; row < table.numRows(); ++row) {
    for (int column = 0; column < table.numColumns(); ++column) {
      const host::AcDbObjectId fieldId = table.fieldId(row, column);
      if (!services_.isValid(fieldId)) continue;
      host::AcDbObjectPointer<host::AcDbField> field(services_, fieldId, host::AcDb::kForRead);
      if (!field) continue;
      if (core::equalsNoCase(field->evaluatorId(), L"TableCell")) {
        FixTableReference(services_, *field.object(), mapping);
      } else if (core::equalsNoCase(field->evaluatorId(), L"_text") && field->childCount() == 1) {
        host::AcDbObjectPointer<host::AcDbField> child(services_, field->getChild(0), host::AcDb::kForRead);
        if (child && core::equalsNoCase(child->evaluatorId(), L"TableCell")) {
          FixTableReference(services_, *child.object(), mapping);
        }
      }
    }
  }
}

void AsdkEditorReactor::endCommand() {
  state_.editedTableId = host::AcDbObjectId();
  state_.tableEditInProgress = false;
  if (resources_) {
    resources_->releaseExcelInstance();
    resources_->endLeftOverExcel();
  }
}

}  // namespace corvane
