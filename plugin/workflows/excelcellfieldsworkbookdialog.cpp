#include "plugin/workflows/excelcellfieldsworkbookdialog.h"

#include <algorithm>
#include <climits>

#include "core/filepath.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/acdbdatabase.h"
#include "host/acdbdictionary.h"
#include "host/acdbfield.h"
#include "host/acfd.h"
#include "host/hostui.h"
#include "plugin/linked/excelcellcode.h"
#include "plugin/linked/linkedpath.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/linked/linkedtimestamp.h"
#include "plugin/fields/showmodal.h"
#include "plugin/support/corvanesettings.h"

namespace corvane {

using host::AcDbField;
using host::AcDbObjectId;
using host::AcDbObjectPointer;

namespace {

constexpr const wchar_t* kEvaluatorId = L"ExcelCell";
constexpr const wchar_t* kDataKey = L"ExcelCell Data";
constexpr const wchar_t* kFieldListEntry = L"ACAD_FIELDLIST";
constexpr const wchar_t* kInvalidTime = L"Invalid DateTime";
constexpr int kLastRow = 1048576;
constexpr int kLastColumn = 16384;

// The ids of the drawing's field list, read from its record: a "FIELDLIST" id set whose
// references follow the count.
std::vector<AcDbObjectId> fieldListIds(host::AcDbHostApplicationServices& services, host::AcDbDatabase& db) {
  std::vector<AcDbObjectId> ids;
  AcDbObjectPointer<host::AcDbDictionary> named(services, db.namedObjectsDictionaryId(), host::AcDb::kForRead);
  AcDbObjectId listId;
  if (!named || named->getAt(kFieldListEntry, listId) != host::Acad::eOk) return ids;
  named.close();
  host::ResBufList data;
  services.entGet(listId, data);
  const auto text = [](const host::ResBuf& item) {
    const auto* value = std::get_if<std::wstring>(&item.value);
    return value ? std::wstring_view(*value) : std::wstring_view();
  };
  const bool fieldList = std::any_of(data.begin(), data.end(),
                                     [&](const host::ResBuf& item) { return item.restype == 0 && text(item) == L"FIELDLIST"; });
  auto set = std::find_if(data.begin(), data.end(),
                          [&](const host::ResBuf& item) { return item.restype == 100 && text(item) == L"AcDbIdSet"; });
  if (!fieldList || set == data.end()) return ids;
  auto count = std::find_if(set, data.end(), [](const host::ResBuf& item) { return item.restype == 90; });
  for (auto it = count; it != data.end(); ++it) {
    if (it->restype != 330) continue;
    const auto handle = host::AcDbHandle::fromText(text(*it));
    AcDbObjectId id;
    if (handle && db.getAcDbObjectId(id, *handle) == host::Acad::eOk) ids.push_back(id);
  }
  return ids;
}

std::wstring valueText(const AcDbField& field) {
  host::AcValue value;
  std::wstring text;
  if (field.getValue(value) == host::Acad::eOk && value.get(text)) return text;
  return field.getDisplayText();
}

std::size_t occurrences(std::wstring_view text, std::wstring_view part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); !part.empty() && at != std::wstring_view::npos;
       at = text.find(part, at + part.size())) {
    ++count;
  }
  return count;
}

// A column's letters, "A" to "XFD".
std::wstring columnLetters(int column) {
  std::wstring letters;
  for (; column > 0; column = (column - 1) / 26) letters.insert(letters.begin(), static_cast<wchar_t>(L'A' + (column - 1) % 26));
  return letters;
}

// Writes the text as the field's time stamp, in place of the application's first text outside
// braces, as the time-stamp writer does with a date.
void writeStampText(host::AcDbObject& object, const std::wstring& text) {
  host::AcDbDatabase* db = object.database();
  if (!db || (!db->isRegApp(kTimeStampApp) && db->registerApp(kTimeStampApp) != host::Acad::eOk)) return;
  host::ResBufList data = object.xData(kTimeStampApp);
  if (data.empty()) data.push_back({1001, std::wstring(kTimeStampApp)});
  int depth = 0;
  for (std::size_t i = 1; i < data.size(); ++i) {
    const auto* item = std::get_if<std::wstring>(&data[i].value);
    if (data[i].restype == 1002 && item) depth += *item == L"{" ? 1 : (*item == L"}" && depth > 0 ? -1 : 0);
    if (data[i].restype == 1000 && item && depth == 0) {
      data[i].value = text;
      object.setXData(data);
      return;
    }
  }
  data.insert(data.begin() + 1, host::ResBuf{1000, text});
  object.setXData(data);
}

}  // namespace

std::vector<ExcelCellFieldRow> CollectExcelCellFields(host::AcDbHostApplicationServices& services,
                                                      host::AcDbDatabase& db) {
  std::vector<ExcelCellFieldRow> rows;
  for (const AcDbObjectId id : fieldListIds(services, db)) {
    AcDbObjectPointer<AcDbField> field(services, id, host::AcDb::kForRead);
    if (!field || !core::equalsNoCase(field->evaluatorId(), kEvaluatorId)) continue;
    host::AcValue data;
    std::wstring record;
    if (field->getData(kDataKey, data) != host::Acad::eOk || !data.get(record)) continue;
    const auto quoted = QuotedReference(field->getFieldCode(AcDbField::kFieldCode | AcDbField::kAddMarkers));
    if (!quoted) continue;
    ExcelCellReference reference = SplitExcelCellReference(*quoted);
    if (reference.workbook.empty() || reference.worksheet.empty() || reference.cell.empty()) continue;
    rows.push_back({id, std::move(reference.workbook), std::move(reference.worksheet), std::move(reference.cell),
                    valueText(*field.object())});
  }
  return rows;
}

std::optional<std::wstring> ShiftedCellAddress(std::wstring_view cell, int rows, int columns) {
  std::size_t at = 0;
  if (at < cell.size() && cell[at] == L'$') ++at;
  int column = 0;
  const std::size_t lettersFrom = at;
  for (; at < cell.size() && at - lettersFrom < 3 && core::toUpperChar(cell[at]) >= L'A' &&
         core::toUpperChar(cell[at]) <= L'Z';
       ++at) {
    column = column * 26 + (core::toUpperChar(cell[at]) - L'A' + 1);
  }
  if (at == lettersFrom) return std::nullopt;
  if (at < cell.size() && cell[at] == L'$') ++at;
  const std::size_t digitsFrom = at;
  long row = 0;
  for (; at < cell.size() && cell[at] >= L'0' && cell[at] <= L'9' && row <= kLastRow; ++at) row = row * 10 + (cell[at] - L'0');
  if (at == digitsFrom || at != cell.size() || row < 1 || row > kLastRow || column > kLastColumn) return std::nullopt;
  const long newRow = row + rows;
  const int newColumn = column + columns;
  // A cell on the sheet's edge has nowhere to go: it stays, rather than fold onto its
  // neighbour and leave two fields showing one cell without a word.
  if (newRow < 1 || newRow > kLastRow || newColumn < 1 || newColumn > kLastColumn) return std::nullopt;
  return L"$" + columnLetters(newColumn) + L"$" + std::to_wstring(newRow);
}

CExcelCellFieldsWorkbookDialog::CExcelCellFieldsWorkbookDialog(LinkedSources& sources, CRegistry& registry)
    : sources_(sources),
      registry_(registry),
      pathType_(std::clamp(registry.get(settings::kWorkbooksManagerPathType), 0, 1)) {}

void CExcelCellFieldsWorkbookDialog::Load() {
  selected.clear();
  rows_.clear();
  if (host::AcDbDatabase* db = sources_.services().workingDatabase()) rows_ = CollectExcelCellFields(sources_.services(), *db);
}

bool CExcelCellFieldsWorkbookDialog::OnPathTypeChanged(int type) {
  return ChoosePathType(sources_, registry_, settings::kWorkbooksManagerPathType, type, 1, pathType_);
}

bool CExcelCellFieldsWorkbookDialog::haveSelection() {
  selected.erase(std::remove_if(selected.begin(), selected.end(),
                                [this](int row) { return row < 0 || row >= static_cast<int>(rows_.size()); }),
                 selected.end());
  if (!selected.empty()) return true;
  LinkedMessage(sources_, L"Please select a field first.", kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
  return false;
}

bool CExcelCellFieldsWorkbookDialog::confirm(std::wstring_view question) {
  return LinkedMessage(sources_, question, kMessageCaption, host::MB_YESNO | host::MB_ICONQUESTION) == host::IDYES;
}

int CExcelCellFieldsWorkbookDialog::ReplaceWorkbook(std::wstring_view workbook, std::wstring_view worksheet) {
  if (!haveSelection()) return 0;
  const std::wstring_view extension = core::fileNameOf(workbook).substr(
      std::min(core::fileNameOf(workbook).size(), core::fileNameOf(workbook).rfind(L'.')));
  if (!core::equalsNoCase(extension, L".xls") && !core::equalsNoCase(extension, L".xlsx") &&
      !core::equalsNoCase(extension, L".xlsm")) {
    LinkedMessage(sources_, L"Invalid new workbook.", kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
    return 0;
  }
  const std::wstring question =
      worksheet.empty()
          ? core::format(L"Are you sure you want to replace the selected workbook(s) with %s.", workbook)
          : core::format(L"Are you sure you want to replace the selected workbook(s) with %s[%s].", workbook, worksheet);
  if (!confirm(question)) return 0;
  const std::wstring path = PathForCode(sources_, workbook, pathType_);
  registry_.write(settings::kWorkbooksManagerPathType, pathType_);
  std::vector<std::vector<Change>> changes;
  for (const int row : selected) {
    std::vector<Change> change{{rows_[row].workbook, path, true}};
    if (!worksheet.empty()) {
      change.push_back({L":" + rows_[row].worksheet + L":", L":" + std::wstring(worksheet) + L":"});
    }
    changes.push_back(std::move(change));
  }
  return apply(changes, path);
}

int CExcelCellFieldsWorkbookDialog::ReplaceWorksheet(std::wstring_view worksheet) {
  if (!haveSelection()) return 0;
  if (!confirm(core::format(L"Are you sure you want to replace the selected worksheet(s) with %s.", worksheet))) return 0;
  std::vector<std::vector<Change>> changes;
  for (const int row : selected) {
    changes.push_back({{L":" + rows_[row].worksheet + L":", L":" + std::wstring(worksheet) + L":"}});
  }
  return apply(changes, {});
}

int CExcelCellFieldsWorkbookDialog::ReplaceCell(std::wstring_view cell) {
  if (!haveSelection()) return 0;
  if (!confirm(core::format(L"Are you sure you want to replace the selected cell(s) with %s.", cell))) return 0;
  std::vector<std::vector<Change>> changes;
  for (const int row : selected) {
    changes.push_back({{L":" + rows_[row].cell + L"\"", L":" + std::wstring(cell) + L"\""}});
  }
  return apply(changes, {});
}

int CExcelCellFieldsWorkbookDialog::ShiftCells(Shift direction) {
  if (!haveSelection()) return 0;
  static constexpr struct {
    const wchar_t* question;
    int rows;
    int columns;
  } kMoves[] = {
      {L"Are you sure you want to shift all the cells down?", 1, 0},
      {L"Are you sure you want to shift all the cells left?", 0, -1},
      {L"Are you sure you want to shift all the cells up?", -1, 0},
      {L"Are you sure you want to shift all the cells right?", 0, 1},
  };
  const auto& move = kMoves[std::clamp(static_cast<int>(direction), 0, 3)];
  if (!confirm(move.question)) return 0;
  std::vector<std::vector<Change>> changes;
  for (const int row : selected) {
    const ExcelCellFieldRow& field = rows_[row];
    const auto moved = ShiftedCellAddress(field.cell, move.rows, move.columns);
    if (!moved) {
      sources_.services().print(
          core::format(L"\n%s of %s[%s] is not moved: it is no cell address, or it lies on the edge of the sheet.",
                       field.cell, field.workbook, field.worksheet));
      changes.emplace_back();
      continue;
    }
    changes.push_back({{L":" + field.cell + L"\"", L":" + *moved + L"\""}});
  }
  return apply(changes, {});
}

int CExcelCellFieldsWorkbookDialog::apply(const std::vector<std::vector<Change>>& changes,
                                          std::wstring_view newWorkbook) {
  int rewritten = 0;
  for (std::size_t i = 0; i < changes.size() && i < selected.size(); ++i) {
    if (changes[i].empty()) continue;
    const ExcelCellFieldRow& row = rows_[selected[i]];
    if (rewrite(row, changes[i], newWorkbook.empty() ? std::wstring_view(row.workbook) : newWorkbook)) ++rewritten;
  }
  if (rewritten > 0) finish();
  return rewritten;
}

bool CExcelCellFieldsWorkbookDialog::rewrite(const ExcelCellFieldRow& row, const std::vector<Change>& changes,
                                             std::wstring_view newWorkbook) {
  {
    AcDbObjectPointer<AcDbField> field(sources_.services(), row.field, host::AcDb::kForWrite);
    if (!field) return false;
    std::wstring code = field->getFieldCode(AcDbField::kFieldCode | AcDbField::kAddMarkers);
    for (const Change& change : changes) {
      const std::size_t found = occurrences(code, change.from);
      if (change.exactlyOnce ? found != 1 : found == 0) {
        LinkedMessage(sources_, core::format(L"Failed to find %s in the field code %s.", change.from, code),
                      kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
        return false;
      }
      code.replace(code.find(change.from), change.from.size(), change.to);
    }
    field->setData(kDataKey, host::AcValue(code));
    if (field->setFieldCode(code) != host::Acad::eOk) return false;
  }
  writeSourceTime(row.field, newWorkbook);
  return true;
}

void CExcelCellFieldsWorkbookDialog::writeSourceTime(AcDbObjectId fieldId, std::wstring_view workbook) {
  std::optional<double> modified;
  if (const auto path = sources_.resolveAgainstWorkingDrawing(workbook)) modified = sources_.fileStatus(*path).modified;
  AcDbObjectPointer<AcDbField> field(sources_.services(), fieldId, host::AcDb::kForWrite);
  if (!field) return;
  if (modified) {
    WriteTimeStamp(*field.object(), *modified);
  } else {
    writeStampText(*field.object(), kInvalidTime);
  }
}

void CExcelCellFieldsWorkbookDialog::finish() {
  host::AcDbHostApplicationServices& services = sources_.services();
  host::AcDbDatabase* db = services.workingDatabase();
  if (host::AcFdFieldEngine* engine = services.fieldEngine(); engine && db) {
    engine->evaluateFields(db, {}, AcDbField::kRegen);
  }
  Load();
}

}  // namespace corvane
