// The fields an export takes from the drawing: the field of a text, a multiline text or an
// attribute, the fields of a block reference's attributes, and those of a table's cells row by
// row. A text that mixes words and fields gives each of its fields, as the field dialog shows
// them one at a time; nested fields stay inside the code of the field that holds them.
#pragma once

#include <string>
#include <vector>

#include "host/objectid.h"

namespace corvane {

namespace host {
class AcDbDatabase;
class AcDbHostApplicationServices;
}  // namespace host

struct ExportableField {
  host::AcDbObjectId field;
  host::AcDbObjectId owner;  // the text, multiline text, attribute or table
  std::wstring code;         // object references by id, as the field dialog shows it
};

// The fields of one picked object; empty when it shows none.
std::vector<ExportableField> FieldsOfObject(host::AcDbHostApplicationServices& services, host::AcDbObjectId object);
// The fields of every layout of a drawing, layout by layout in drawing order.
std::vector<ExportableField> FieldsOfDrawing(host::AcDbHostApplicationServices& services, host::AcDbDatabase& db);

}  // namespace corvane
