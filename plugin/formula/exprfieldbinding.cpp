#include "plugin/formula/exprfieldbinding.h"

#include <charconv>
#include <utility>
#include <vector>

#include "core/crt.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/acdbattribute.h"
#include "host/acdbblockreference.h"
#include "host/acdbblocktablerecord.h"
#include "host/acdbdatabase.h"
#include "host/acdbdynblockreference.h"
#include "host/acdbfield.h"
#include "host/acdbtable.h"
#include "plugin/fields/fieldreferences.h"
#include "plugin/formula/exprvalue.h"

namespace corvane {

using host::Acad;

namespace {

// "%.15G" of the C runtime: to_chars with a precision is defined by printf's "%g". Every cell a
// formula reads goes through here, so it skips the general formatter.
std::wstring realText(double real) {
  if (auto whole = WholeNumberText(real, 15)) return std::move(*whole);
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, real, std::chars_format::general, 15);
  if (result.ec != std::errc()) return core::format(L"%.15G", real);
  std::wstring text(buffer, result.ptr);
  for (auto& ch : text) ch = core::toUpperChar(ch);
  return text;
}

}  // namespace

std::optional<std::wstring> ExprFieldBinding::ObjectProperty(std::wstring_view handle, std::wstring_view property) {
  host::AcDbDatabase* db = services_.workingDatabase();
  const auto parsed = host::AcDbHandle::fromText(handle);
  if (!db || !parsed) return std::nullopt;
  host::AcDbObjectId id;
  if (db->getAcDbObjectId(id, *parsed) != Acad::eOk) return std::nullopt;
  host::AcValue value;
  if (services_.getPropertyValue(id, property, value) != Acad::eOk) return std::nullopt;
  return valueText(value);
}

std::optional<std::wstring> ExprFieldBinding::SystemVariable(std::wstring_view name) {
  return evaluateInTemporaryField(core::format(L"%%<\\AcVar %s>%%", name));
}

std::wstring ExprFieldBinding::EvaluateFieldCode(std::wstring_view fieldCode) {
  if (fieldCode.size() < 2) return L"####";
  const auto span = services_.findField(fieldCode);
  if (!span) return std::wstring(fieldCode);
  // An object-property code travels with handles; the host's field wants ids.
  const std::wstring code = FormulaFieldHandlesToIds(services_, fieldCode);
  return evaluateInTemporaryField(code).value_or(L"####");
}

host::AcDbTable* ExprFieldBinding::ownerTable() const {
  if (!openTable_ && !ownerTable_.isNull()) {
    openTable_ = host::AcDbObjectPointer<host::AcDbTable>(services_, ownerTable_, host::AcDb::kForRead);
  }
  return openTable_.object();
}

int ExprFieldBinding::OwnerTableRows() const {
  const host::AcDbTable* table = ownerTable();
  return table ? table->numRows() : 0;
}

int ExprFieldBinding::OwnerTableColumns() const {
  const host::AcDbTable* table = ownerTable();
  return table ? table->numColumns() : 0;
}

std::optional<std::wstring> ExprFieldBinding::OwnerTableCell(int row, int column) {
  const host::AcDbTable* table = ownerTable();
  if (!table || row < 1 || column < 1 || row > table->numRows() || column > table->numColumns()) return std::nullopt;
  const int r = row - 1, c = column - 1;
  const host::AcValue value = table->value(r, c);
  // A number is read as the number it is, whatever the cell's display format rounds it to.
  std::int32_t whole = 0;
  double real = 0;
  if (value.get(whole)) return *WholeNumberText(whole, 15);  // every 32-bit integer is one
  if (value.get(real)) return realText(real);
  if (table->contentType(r, c) == host::AcDb::kCellContentTypeField) return services_.formatValue(value, value.getFormat());
  std::wstring text;
  if (table->textString(r, c, host::AcValueOptions::kIgnoreMtextFormat, text) != Acad::eOk) return std::wstring();
  return text;
}

void ExprFieldBinding::bindContext(const host::AcDbField& field, host::AcDbObjectId dialogOwnerTable) {
  openTable_.close();
  host::AcDbObjectId id = field.ownerId();
  if (id.isNull() || !services_.isValid(id)) {
    if (!dialogOwnerTable.isNull() && services_.isValid(dialogOwnerTable)) ownerTable_ = dialogOwnerTable;
    return;
  }
  // Each step goes one owner up; a drawing's ownership is a tree, so the walk ends.
  for (int depth = 0; depth < 1000; ++depth) {
    if (id.isNull() || !services_.isValid(id) || services_.isErased(id)) return;
    host::AcDbObjectPointer<host::AcDbObject> object(services_, id, host::AcDb::kForRead);
    if (!object) return;
    // A field (the text of a cell that holds the formula) is none of the kinds below, and
    // trying each by a cast costs more than the rest of a cell's update.
    if (object->className() != L"AcDbField" && bindOwner(id)) return;
    id = object->ownerId();
  }
}

bool ExprFieldBinding::bindOwner(host::AcDbObjectId id) {
  // A cell's field is owned by its table.
  if (host::AcDbObjectPointer<host::AcDbTable> table(services_, id, host::AcDb::kForRead); table) {
    ownerTable_ = id;
    openTable_ = std::move(table);
    return true;
  }
  if (host::AcDbObjectPointer<host::AcDbBlockTableRecord> block(services_, id, host::AcDb::kForRead); block) {
    if (block->isAnonymous()) {
      std::vector<host::AcDbObjectId> references;
      block->getBlockReferenceIds(references);
      if (references.empty()) return true;
      if (host::AcDbObjectPointer<host::AcDbTable> table(services_, references.front(), host::AcDb::kForRead); table) {
        ownerTable_ = references.front();
      } else {
        selfBlock_ = references.front();
      }
      return true;
    }
    if (!block->isLayout()) return true;
  }
  if (host::AcDbObjectPointer<host::AcDbBlockReference> reference(services_, id, host::AcDb::kForRead); reference) {
    selfBlock_ = id;
    return true;
  }
  return false;
}

std::optional<std::wstring> ExprFieldBinding::SelfBlockProperty(std::wstring_view property) {
  if (selfBlock_.isNull()) return std::nullopt;
  return referenceProperty(selfBlock_, property, false);
}

std::optional<std::wstring> ExprFieldBinding::referenceProperty(host::AcDbObjectId reference,
                                                                std::wstring_view property, bool attributes) {
  const host::AcDbDynBlockReference dynamic(services_, reference);
  std::vector<host::AcDbDynBlockReferenceProperty> properties;
  if (dynamic.isDynamicBlock() && dynamic.getBlockProperties(properties) == Acad::eOk) {
    for (const auto& p : properties) {
      if (core::equalsNoCase(p.propertyName(), property)) return valueText(p.value());
    }
  }
  if (!attributes) return std::nullopt;
  host::AcDbObjectPointer<host::AcDbBlockReference> open(services_, reference, host::AcDb::kForRead);
  if (!open) return std::nullopt;
  for (auto it = open->attributeIterator(); !it.done(); it.step()) {
    host::AcDbObjectPointer<host::AcDbAttribute> attribute(services_, it.objectId(), host::AcDb::kForRead);
    if (attribute && core::equalsNoCase(attribute->tag(), property)) return attribute->textString();
  }
  return std::nullopt;
}

double ExprFieldBinding::SumBlockProperty(std::wstring_view blockName, std::wstring_view property) {
  host::AcDbDatabase* db = services_.workingDatabase();
  if (!db) return 0.0;
  host::AcDbObjectId definition;
  std::vector<host::AcDbObjectId> blocks;
  {
    host::AcDbBlockTable* raw = nullptr;
    if (db->getSymbolTable(raw, host::AcDb::kForRead) != Acad::eOk) return 0.0;
    host::AcDbObjectPointer<host::AcDbBlockTable> table(raw);
    if (table->getAt(blockName, definition) != Acad::eOk) return 0.0;
    for (auto it = table->newIterator(); !it.done(); it.step()) blocks.push_back(it.objectId());
  }
  // The definition's own references, and those of its anonymous variants (a dynamic block
  // whose properties were changed is inserted through such a copy).
  std::vector<host::AcDbObjectId> references;
  for (const auto block : blocks) {
    host::AcDbObjectPointer<host::AcDbBlockTableRecord> record(services_, block, host::AcDb::kForRead);
    if (!record || (block != definition && !record->isAnonymous())) continue;
    std::vector<host::AcDbObjectId> ids;
    record->getBlockReferenceIds(ids);
    for (const auto id : ids) {
      if (block == definition || host::AcDbDynBlockReference(services_, id).dynamicBlockTableRecord() == definition) {
        references.push_back(id);
      }
    }
  }
  double sum = 0.0;
  for (const auto id : references) {
    if (!services_.isValid(id) || services_.isErased(id)) continue;
    if (const auto text = referenceProperty(id, property, true)) sum += core::wtof(*text);
  }
  return sum;
}

std::optional<std::wstring> ExprFieldBinding::evaluateInTemporaryField(std::wstring_view code) {
  host::AcDbDatabase* db = services_.workingDatabase();
  const auto field = services_.newField();
  if (!db || !field || field->setFieldCode(code) != Acad::eOk) return std::nullopt;
  field->evaluate(host::AcDbField::kDemand, db);
  if (field->evaluationStatus() != host::AcDbField::kSuccess) return std::nullopt;
  host::AcValue value;
  if (field->getValue(value) != Acad::eOk) return std::nullopt;
  return valueText(value);
}

}  // namespace corvane
