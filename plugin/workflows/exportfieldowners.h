// The fields an export takes from the drawing: the field of a text, a multiline text or an
// attribute, the fields of a block reference's attributes, and those of a table's cells row by
// row. A text that mixes words and fields gives each of its fields, as the field dialog shows
// them one at a time; nested fields stay inside the code of the field that holds them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/hostservices.h"
#include "host/objectid.h"

namespace corvane {

namespace host {
class AcDbDatabase;
class AcDbHostApplicationServices;
}  // namespace host

struct ExportableField {
  host::AcDbObjectId field;
  host::AcDbObjectId owner;  // the text, multiline text, attribute or table
  // Object references by id, as the field dialog shows it; a formula of a table cell behind
  // its table's reference (TableFieldCode).
  std::wstring code;
};

// A formula in a table cell reads the cells of its table, which its code does not name: taken
// from its cell, the code alone would evaluate to an error. So it travels with a table
// reference in front, "Table(<handle>).%<\VxExpr (A1+B1)>%", and is evaluated as a field owned
// by that table, which reads the same cells as the field in its cell, in the drawing of the
// export and in any drawing read again by handle later.
std::wstring TableFieldCode(std::wstring_view tableHandle, std::wstring_view code);
struct TableFieldCodeParts {
  std::wstring table;  // the handle text
  std::wstring code;
};
// The parts of a code that begins with a table reference; nullopt for any other code.
std::optional<TableFieldCodeParts> SplitTableFieldCode(std::wstring_view code);
// The temporary field that evaluates an exported code against `db`: for a code with a table
// reference a field owned by that table of `db`, `code` then left with the field's own code;
// for any other code a field of no drawing. Empty when `db` has no such table.
host::AcDbHostApplicationServices::FieldHolder NewFieldForExportedCode(host::AcDbHostApplicationServices& services,
                                                                      host::AcDbDatabase& db, std::wstring& code);

// The fields of one picked object; empty when it shows none.
std::vector<ExportableField> FieldsOfObject(host::AcDbHostApplicationServices& services, host::AcDbObjectId object);
// The fields of every layout of a drawing, layout by layout in drawing order.
std::vector<ExportableField> FieldsOfDrawing(host::AcDbHostApplicationServices& services, host::AcDbDatabase& db);

}  // namespace corvane
