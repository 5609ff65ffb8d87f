// Where the host puts a new field: the text of a text, a multiline text or an attribute, or
// one cell of a table. Named as "HANDLE" or "HANDLE:ROW,COLUMN", rows and columns counted from
// 0 as the table lists them. Every way a name can miss is told in words before anything in
// the drawing changes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/objectid.h"

namespace corvane::headless {

class Database;

struct FieldPlace {
  host::AcDbObjectId owner;
  std::wstring handle;  // as the host writes it
  std::wstring kind;    // "text", "multiline text", "attribute", "table cell"
  bool isCell = false;
  int row = 0;
  int column = 0;
};

// The place as it is named: "HANDLE" or "HANDLE:ROW,COLUMN".
std::wstring placeName(const FieldPlace& place);

struct FieldPlaceLookup {
  std::optional<FieldPlace> place;
  std::wstring error;  // why there is none
};

// The place named by "HANDLE" or "HANDLE:ROW,COLUMN" in the drawing.
FieldPlaceLookup findFieldPlace(const Database& db, std::wstring_view name);
// The place of an object already found, with its cell when it is a table.
FieldPlaceLookup fieldPlaceOf(const Database& db, host::AcDbObjectId owner, std::optional<std::pair<int, int>> cell);

// Why a code cannot be placed as one field: it must be a single complete field code,
// "%<\EVALUATOR ...>%". Empty when it can.
std::wstring fieldCodeProblem(std::wstring_view code);

// The field that the place shows now: for a text or a cell with one field in it, that field;
// otherwise the text field of the whole text; null when it shows none.
host::AcDbObjectId fieldAt(const Database& db, const FieldPlace& place);

// Makes a field of the code and puts it in the place: the whole text becomes the field, or,
// when `replacing` is one of the codes it holds, the field takes that code's place and the
// rest of the text stays. The new field, the code's own field, gets the evaluation option.
// Returns the field the text or cell holds (the one the field engine evaluates), null when
// the place no longer takes it.
host::AcDbObjectId placeField(Database& db, const FieldPlace& place, std::wstring_view code, int evaluationOption,
                              std::wstring_view replacing = {});

}  // namespace corvane::headless
