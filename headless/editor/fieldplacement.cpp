#include "headless/editor/fieldplacement.h"

#include "core/printf.h"
#include "core/textutil.h"
#include "headless/db/attribute.h"
#include "headless/db/database.h"
#include "headless/db/field.h"
#include "headless/db/fieldcode.h"
#include "headless/db/mtext.h"
#include "headless/db/table.h"
#include "headless/db/text.h"
#include "headless/db/texthost.h"

namespace corvane::headless {

namespace {

using host::AcDbField;

FieldPlaceLookup refused(std::wstring error) { return {std::nullopt, std::move(error)}; }

// A whole number of decimal digits, nothing else.
std::optional<int> cellIndex(std::wstring_view text) {
  text = core::trimmed(text);
  if (text.empty() || text.size() > 9) return std::nullopt;
  int value = 0;
  for (const wchar_t c : text) {
    if (c < L'0' || c > L'9') return std::nullopt;
    value = value * 10 + (c - L'0');
  }
  return value;
}

const wchar_t* kindOf(const host::AcDbObject& object) {
  if (dynamic_cast<const Text*>(&object)) return L"text";
  if (dynamic_cast<const MText*>(&object)) return L"multiline text";
  if (dynamic_cast<const Attribute*>(&object)) return L"attribute";
  return nullptr;
}

// The text field a text or cell holds, before any look inside it.
host::AcDbObjectId holderAt(const Database& db, const FieldPlace& place) {
  if (!place.isCell) return fieldOf(db, place.owner);
  const auto* table = db.get<Table>(place.owner);
  return table ? table->fieldId(place.row, place.column) : host::AcDbObjectId();
}

}  // namespace

std::wstring placeName(const FieldPlace& place) {
  return place.isCell ? core::format(L"%s:%d,%d", place.handle, place.row, place.column) : place.handle;
}

FieldPlaceLookup findFieldPlace(const Database& db, std::wstring_view name) {
  name = core::trimmed(name);
  const std::size_t colon = name.find(L':');
  const std::wstring_view handleText = name.substr(0, colon);
  const auto handle = host::AcDbHandle::fromText(handleText);
  if (handleText.empty() || !handle) {
    return refused(core::format(L"'%s' is no handle: a handle is hexadecimal, as 1F", handleText));
  }
  host::AcDbObjectId id;
  if (db.getAcDbObjectId(id, *handle) != host::Acad::eOk || id.isNull()) {
    return refused(core::format(L"the drawing has no object %s", handle->text()));
  }
  std::optional<std::pair<int, int>> cell;
  if (colon != std::wstring_view::npos) {
    const std::wstring_view cellText = name.substr(colon + 1);
    const std::size_t comma = cellText.find(L',');
    const auto row = cellIndex(cellText.substr(0, comma));
    const auto column = comma == std::wstring_view::npos ? std::nullopt : cellIndex(cellText.substr(comma + 1));
    if (!row || !column) {
      return refused(core::format(L"'%s' is no cell: give ROW,COLUMN, counted from 0", cellText));
    }
    cell = std::make_pair(*row, *column);
  }
  return fieldPlaceOf(db, id, cell);
}

FieldPlaceLookup fieldPlaceOf(const Database& db, host::AcDbObjectId owner, std::optional<std::pair<int, int>> cell) {
  const host::AcDbObject* object = db.lookup(owner);
  const std::wstring handle = object ? object->handle().text() : std::wstring();
  if (!object || object->isErased()) return refused(core::format(L"the drawing has no object %s", handle));
  FieldPlace place{owner, handle, L"", false, 0, 0};
  if (const auto* table = dynamic_cast<const Table*>(object)) {
    if (!cell)
      return refused(core::format(L"object %s is a table: name one of its cells as %s:ROW,COLUMN", handle, handle));
    const auto [row, column] = *cell;
    if (row >= table->numRows() || column >= table->numColumns()) {
      return refused(core::format(L"the table %s has no cell %d,%d: it has %d rows and %d columns, counted from 0",
                                  handle, row, column, table->numRows(), table->numColumns()));
    }
    place.kind = L"table cell";
    place.isCell = true;
    place.row = row;
    place.column = column;
    return {place, {}};
  }
  const wchar_t* kind = kindOf(*object);
  if (!kind) {
    return refused(
        core::format(L"object %s (%s) cannot hold a field; name a text, a multiline text, an "
                     L"attribute or a table cell",
                     handle, object->dxfName()));
  }
  if (cell)
    return refused(core::format(L"object %s (%s) is no table: only a table cell has a row and column", handle, kind));
  place.kind = kind;
  return {place, {}};
}

std::wstring fieldCodeProblem(std::wstring_view code) {
  const std::wstring_view trimmed = core::trimmed(code);
  if (trimmed.empty()) return L"the field code is empty";
  const auto span = findFieldCode(trimmed);
  if (!span) return core::format(L"'%s' is no field code: a field code reads %%<\\EVALUATOR ...>%%", trimmed);
  if (span->first != 0 || span->second != trimmed.size()) {
    return core::format(
        L"'%s' is more than a field code: give one field code, %%<\\EVALUATOR ...>%%, with nothing "
        L"around it",
        trimmed);
  }
  const ParsedFieldCode parsed = parseFieldCode(trimmed);
  if (parsed.evaluatorId.empty() || parsed.evaluatorId == L"_text")
    return core::format(L"'%s' names no evaluator after %%<\\", trimmed);
  return {};
}

host::AcDbObjectId fieldAt(const Database& db, const FieldPlace& place) {
  const host::AcDbObjectId holder = holderAt(db, place);
  const auto* field = db.get<Field>(holder);
  if (!field) return {};
  // A text with one field in it shows that field, whatever text stands around it.
  if (field->evaluatorId() == L"_text" && field->children().size() == 1) return field->children().front();
  return holder;
}

host::AcDbObjectId placeField(Database& db, const FieldPlace& place, std::wstring_view code, int evaluationOption,
                              std::wstring_view replacing) {
  std::wstring text(core::trimmed(code));
  if (!replacing.empty()) {
    const auto* holder = db.get<Field>(holderAt(db, place));
    const std::wstring current =
        holder ? holder->getFieldCode(AcDbField::kFieldCode | AcDbField::kAddMarkers) : std::wstring();
    if (const std::size_t at = current.find(replacing); at != std::wstring::npos)
      text = current.substr(0, at) + text + current.substr(at + replacing.size());
  }

  host::AcDbObjectId holder;
  if (place.isCell) {
    auto* table = db.get<Table>(place.owner);
    if (!table || table->putTextString(place.row, place.column, text) != host::Acad::eOk) return {};
    holder = table->fieldId(place.row, place.column);
  } else {
    holder = attachField(db, place.owner, text);
  }
  // The field made from `code` is the holder's child with that code.
  if (auto* field = db.get<Field>(holder)) {
    for (const auto child : field->children()) {
      auto* made = db.get<Field>(child);
      if (made && made->getFieldCode(AcDbField::kFieldCode | AcDbField::kAddMarkers) == core::trimmed(code)) {
        made->setEvaluationOption(evaluationOption);
        break;
      }
    }
  }
  return holder;
}

}  // namespace corvane::headless
