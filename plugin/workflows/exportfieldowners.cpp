#include "plugin/workflows/exportfieldowners.h"

#include "core/matchgroups.h"
#include "core/textutil.h"

#include "host/acdbblockreference.h"
#include "host/acdbblocktablerecord.h"
#include "host/acdbdatabase.h"
#include "host/acdbdictionary.h"
#include "host/acdbfield.h"
#include "host/acdbobject.h"
#include "host/acdbsymboltable.h"
#include "host/acdbtable.h"
#include "host/hostservices.h"

namespace corvane {

namespace {

using host::AcDb::kForRead;

// The evaluator of a field that only strings its child fields together with plain words.
constexpr wchar_t kTextEvaluator[] = L"_text";
// The formula evaluator, whose fields read the cells of the table they stand in.
constexpr wchar_t kFormulaEvaluator[] = L"VxExpr";
constexpr std::wstring_view kTableWord = L"TABLE(";
constexpr std::wstring_view kTablePattern = L"TABLE\\([<]*{[A-Z0-9a-z]+}[>]*\\)\\.{.*}";

// The code of one field; a formula of a table (`table` the table's handle, empty for any
// other owner) with its table's reference.
std::wstring exportedCode(const host::AcDbField& field, std::wstring_view table) {
  constexpr int kCode = host::AcDbField::kFieldCode | host::AcDbField::kAddMarkers;
  std::wstring code = field.getFieldCode(kCode);
  if (!table.empty() && core::equalsNoCase(field.evaluatorId(), kFormulaEvaluator)) {
    return TableFieldCode(table, code);
  }
  return code;
}

// The field, or the fields inside a text field, as the codes the field dialog would show.
void addField(host::AcDbHostApplicationServices& services, host::AcDbObjectId fieldId, host::AcDbObjectId owner,
              std::wstring_view table, std::vector<ExportableField>& out) {
  host::AcDbObjectPointer<host::AcDbField> field(services, fieldId, kForRead);
  if (!field) return;
  if (field->evaluatorId() != kTextEvaluator) {
    out.push_back({fieldId, owner, exportedCode(*field.object(), table)});
    return;
  }
  for (int i = 0; i < field->childCount(); ++i) {
    const host::AcDbObjectId childId = field->getChild(i);
    host::AcDbObjectPointer<host::AcDbField> child(services, childId, kForRead);
    if (child) out.push_back({childId, owner, exportedCode(*child.object(), table)});
  }
}

// The field a text-like object keeps in its extension dictionary under ACAD_FIELD, key TEXT.
void addTextField(host::AcDbHostApplicationServices& services, const host::AcDbObject& object,
                  std::vector<ExportableField>& out) {
  const host::AcDbObjectId xdictId = object.extensionDictionary();
  if (xdictId.isNull()) return;
  host::AcDbObjectId fieldsId, fieldId;
  {
    host::AcDbObjectPointer<host::AcDbDictionary> xdict(services, xdictId, kForRead);
    if (!xdict || xdict->getAt(L"ACAD_FIELD", fieldsId) != host::Acad::eOk) return;
  }
  {
    host::AcDbObjectPointer<host::AcDbDictionary> fields(services, fieldsId, kForRead);
    if (!fields || fields->getAt(L"TEXT", fieldId) != host::Acad::eOk) return;
  }
  addField(services, fieldId, object.objectId(), {}, out);
}

}  // namespace

std::wstring TableFieldCode(std::wstring_view tableHandle, std::wstring_view code) {
  return L"Table(<" + std::wstring(tableHandle) + L">)." + std::wstring(code);
}

std::optional<TableFieldCodeParts> SplitTableFieldCode(std::wstring_view code) {
  if (code.size() < kTableWord.size() || !core::equalsNoCase(code.substr(0, kTableWord.size()), kTableWord)) {
    return std::nullopt;
  }
  // The word in either case; the code after the reference exactly as it is.
  const std::wstring probe = std::wstring(kTableWord) + std::wstring(code.substr(kTableWord.size()));
  std::vector<std::wstring> groups;
  if (!core::MatchGroups(probe, kTablePattern, groups) || groups.size() != 2) return std::nullopt;
  if (!groups[1].starts_with(L"%<")) return std::nullopt;
  return TableFieldCodeParts{std::move(groups[0]), std::move(groups[1])};
}

host::AcDbHostApplicationServices::FieldHolder NewFieldForExportedCode(host::AcDbHostApplicationServices& services,
                                                                      host::AcDbDatabase& db, std::wstring& code) {
  std::optional<TableFieldCodeParts> parts = SplitTableFieldCode(code);
  if (!parts) return services.newField();
  const std::optional<host::AcDbHandle> handle = host::AcDbHandle::fromText(parts->table);
  host::AcDbObjectId table;
  if (!handle || db.getAcDbObjectId(table, *handle) != host::Acad::eOk) {
    return host::AcDbHostApplicationServices::FieldHolder(nullptr, [](host::AcDbField*) {});
  }
  {
    host::AcDbObjectPointer<host::AcDbTable> opened(services, table, kForRead);
    if (!opened) return host::AcDbHostApplicationServices::FieldHolder(nullptr, [](host::AcDbField*) {});
  }
  code = std::move(parts->code);
  return services.newField(table);
}

std::vector<ExportableField> FieldsOfObject(host::AcDbHostApplicationServices& services, host::AcDbObjectId object) {
  std::vector<ExportableField> out;
  host::AcDbObjectPointer<host::AcDbObject> opened(services, object, kForRead);
  if (!opened) return out;
  if (const auto* table = dynamic_cast<const host::AcDbTable*>(opened.object())) {
    const std::wstring handle = table->handle().text();
    for (int row = 0; row < table->numRows(); ++row) {
      for (int column = 0; column < table->numColumns(); ++column) {
        const host::AcDbObjectId fieldId = table->fieldId(row, column);
        if (!fieldId.isNull()) addField(services, fieldId, object, handle, out);
      }
    }
    return out;
  }
  if (const auto* reference = dynamic_cast<const host::AcDbBlockReference*>(opened.object())) {
    std::vector<host::AcDbObjectId> attributes;
    for (auto it = reference->attributeIterator(); !it.done(); it.step()) attributes.push_back(it.objectId());
    opened.close();
    for (const host::AcDbObjectId attribute : attributes) {
      host::AcDbObjectPointer<host::AcDbObject> attributeObject(services, attribute, kForRead);
      if (attributeObject) addTextField(services, *attributeObject.object(), out);
    }
    return out;
  }
  addTextField(services, *opened.object(), out);
  return out;
}

std::vector<ExportableField> FieldsOfDrawing(host::AcDbHostApplicationServices& services, host::AcDbDatabase& db) {
  std::vector<host::AcDbObjectId> layouts;
  {
    host::AcDbObjectPointer<host::AcDbBlockTable> blocks(services, db.blockTableId(), kForRead);
    if (!blocks) return {};
    for (auto it = blocks->newIterator(); !it.done(); it.step()) layouts.push_back(it.objectId());
  }
  std::vector<ExportableField> out;
  for (const host::AcDbObjectId layoutId : layouts) {
    std::vector<host::AcDbObjectId> entities;
    {
      host::AcDbObjectPointer<host::AcDbBlockTableRecord> layout(services, layoutId, kForRead);
      if (!layout || !layout->isLayout()) continue;
      for (auto it = layout->newIterator(); !it.done(); it.step()) entities.push_back(it.objectId());
    }
    for (const host::AcDbObjectId entity : entities) {
      std::vector<ExportableField> found = FieldsOfObject(services, entity);
      out.insert(out.end(), found.begin(), found.end());
    }
  }
  return out;
}

}  // namespace corvane
