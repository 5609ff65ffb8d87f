#include "plugin/workflows/updatefieldsinexcel.h"

#include <memory>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include "core/filepath.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/acdbdatabase.h"
#include "host/acdbfield.h"
#include "host/acedprompts.h"
#include "host/errorstatus.h"
#include "host/excel.h"
#include "host/hostservices.h"
#include "host/hostui.h"
#include "plugin/fields/fieldreferences.h"
#include "plugin/linked/excelutils.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/fields/showmodal.h"
#include "plugin/workflows/exportfieldowners.h"

namespace corvane {

namespace {

constexpr wchar_t kFailedValue[] = L"####";

// The letters of an absolute address "$B$3".
std::wstring columnOf(std::wstring_view address) {
  const std::size_t start = address.starts_with(L'$') ? 1 : 0;
  std::size_t end = start;
  while (end < address.size() && address[end] != L'$' && !(address[end] >= L'0' && address[end] <= L'9')) ++end;
  return std::wstring(address.substr(start, end - start));
}

std::wstring joined(const std::vector<std::wstring>& cells) {
  std::wstring text;
  for (const std::wstring& cell : cells) text += (text.empty() ? L"" : L",") + cell;
  return text;
}

}  // namespace

bool SplitExcelFieldNote(std::wstring_view text, std::wstring& drawing, std::wstring& code) {
  const std::size_t bar = text.find(L'|');
  if (bar == std::wstring_view::npos) return false;
  const std::wstring_view left = core::trimmed(text.substr(0, bar));
  const std::wstring_view right = core::trimmed(text.substr(bar + 1));
  if (left.empty() || right.empty()) return false;
  drawing = left;
  code = right;
  return true;
}

// The fields of the notes grouped by drawing, each code once with all the cells it stands in.
struct UpdateFieldsInExcel::Work {
  struct Field {
    std::wstring code;
    std::vector<std::wstring> cells;
  };
  struct Drawing {
    std::wstring path;  // resolved
    bool current = false;
    std::vector<Field> fields;
    std::unordered_map<std::wstring, std::size_t> byCode;
  };
  std::vector<Drawing> drawings;
  std::unordered_map<std::wstring, std::size_t> byPath;  // lower-case resolved path
  int fieldCount = 0;

  void add(std::wstring path, bool current, const ExcelFieldNote& note) {
    const auto [at, added] = byPath.try_emplace(core::toLower(core::replaceAll(path, L"\\", L"/")), drawings.size());
    if (added) drawings.push_back({std::move(path), current, {}, {}});
    Drawing& drawing = drawings[at->second];
    const auto [field, fresh] = drawing.byCode.try_emplace(note.code, drawing.fields.size());
    if (fresh) {
      drawing.fields.push_back({note.code, {}});
      ++fieldCount;
    }
    drawing.fields[field->second].cells.push_back(note.cell);
  }
};

UpdateFieldsInExcel::UpdateFieldsInExcel(LinkedSources& sources, host::AcEdPrompts* prompts, host::HostUi* ui,
                                         Options options)
    : sources_(sources), prompts_(prompts), ui_(ui), options_(options) {}

void UpdateFieldsInExcel::message(std::wstring_view text) {
  if (ui_) {
    ui_->messageBox(text, kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
  } else {
    sources_.services().print(L"\n" + std::wstring(text));
  }
}

void UpdateFieldsInExcel::progress(std::wstring_view label, int maximum) {
  if (ui_) ui_->setStatusBarProgressMeter(label, 0, maximum);
}

void UpdateFieldsInExcel::progressAt(int position) {
  if (ui_) ui_->setStatusBarProgressMeterPos(position);
}

void UpdateFieldsInExcel::progressDone() {
  if (ui_) ui_->restoreStatusBar();
}

void UpdateFieldsInExcel::Run() {
  ExcelUtils excel(sources_.excel(), ui_, sources_.services());
  // Only cells are read and written: Excel stays as the user left it, in front or not, and
  // nothing is opened, so the link and read-only arguments are never used.
  const bool attached = excel.AttachRunningExcel(false, std::nullopt, 0, 0) && excel.application() &&
                        excel.application()->workbookCount() > 0 && excel.EnsureWorkbook() && excel.workbook() &&
                        excel.worksheet();
  if (!attached) {
    message(L"Please start Excel and open the workbook first.");
  } else {
    Update(*excel.workbook(), *excel.worksheet());
  }
  excel.ResetExcel();
}

bool UpdateFieldsInExcel::ReadCommentAndText(host::ExcelWorksheet& sheet, std::vector<ExcelFieldNote>& notes) {
  auto comments = sheet.comments();
  if (!comments) {
    if (ui_) {
      ui_->messageBox(L"Unknown error in ReadCommentAndText", L"Corvane", host::MB_OK | host::MB_ICONINFORMATION);
    } else {
      sources_.services().print(L"\nUnknown error in ReadCommentAndText");
    }
    return false;
  }
  progress(L"Reading the data from Excel...", static_cast<int>(comments->size()) + 1);
  int position = 0;
  for (const host::ExcelNote& comment : *comments) {
    ExcelFieldNote note{comment.address, {}, {}};
    if (SplitExcelFieldNote(comment.text, note.drawing, note.code)) {
      notes.push_back(std::move(note));
    } else {
      // Another note of the user's: it is neither read nor rewritten.
      summary_.brokenNotes.push_back(comment.address);
      sources_.services().print(
          core::format(L"\nThe note of %s:%s does not name a drawing and a field; the cell is left as it is.",
                       sheet.name(), comment.address));
    }
    progressAt(++position);
  }
  progressDone();
  summary_.notes = static_cast<int>(notes.size());
  return true;
}

bool UpdateFieldsInExcel::Update(host::ExcelWorkbook& book, host::ExcelWorksheet& sheet) {
  host::AcDbHostApplicationServices& services = sources_.services();
  summary_ = {};
  std::vector<ExcelFieldNote> notes;
  if (!ReadCommentAndText(sheet, notes)) return false;

  // A relative drawing path was written from the workbook's folder by the export, so it is
  // resolved from there, wherever the drawing or the workbook is opened from.
  const std::wstring folder = core::folderOf(book.fullName());
  host::AcDbDatabase* const working = services.workingDatabase();
  const std::wstring currentPath = working ? working->getFilename() : std::wstring();
  Work work;
  for (const ExcelFieldNote& note : notes) {
    std::wstring path = core::isRelativePath(note.drawing) && !folder.empty() ? core::absolutePath(folder, note.drawing)
                                                                              : core::absolutePath({}, note.drawing);
    const bool current = !currentPath.empty() && core::samePath(path, currentPath);
    work.add(std::move(path), current, note);
  }

  bool others = false;
  for (const Work::Drawing& drawing : work.drawings) others = others || !drawing.current;
  bool updateOthers = options_.otherDrawings == OtherDrawings::kAll;
  if (others && options_.otherDrawings == OtherDrawings::kAsk && prompts_) {
    std::wstring answer;
    prompts_->initGet(0, L"Yes No");
    const int asked = prompts_->getKword(
        L"\nYour workbook has the fields of other drawings. Do you want to update them? [Yes/No]<No>: ", answer);
    updateOthers = asked == host::RTNORM && core::equalsNoCase(answer, L"Yes");
  }

  // The value of every cell, in the order of the notes' drawings and fields.
  std::vector<std::pair<std::wstring, std::wstring>> values;
  values.reserve(notes.size());
  const auto put = [&values](const Work::Field& field, const std::wstring& value) {
    for (const std::wstring& cell : field.cells) values.emplace_back(cell, value);
  };
  progress(L"Evaluating the fields in the drawings ...", work.fieldCount);
  int position = 0;
  for (const Work::Drawing& drawing : work.drawings) {
    if (!drawing.current && !updateOthers) {
      ++summary_.drawingsLeftOut;
      position += static_cast<int>(drawing.fields.size());
      progressAt(position);
      continue;
    }
    host::AcDbDatabase* db = working;
    host::AcDbHostApplicationServices::DatabaseHolder side;
    if (!drawing.current) {
      std::wstring reason;
      const host::Acad::ErrorStatus es = services.readDrawingFile(drawing.path, side, reason);
      if (es != host::Acad::eOk || !side) {
        if (reason.empty()) reason = host::acadErrorStatusText(es);
        services.print(core::format(L"\nFailed to read %s: %s.", drawing.path, reason));
        summary_.unreadableDrawings.push_back(drawing.path + L": " + reason);
        if (options_.unreadable == UnreadableDrawing::kMarkCells) {
          for (const Work::Field& field : drawing.fields) put(field, kFailedValue);
        }
        position += static_cast<int>(drawing.fields.size());
        progressAt(position);
        continue;
      }
      db = side.get();
    }
    for (const Work::Field& field : drawing.fields) {
      progressAt(++position);
      // Each code gets a field of its own, evaluated against this drawing: a formula of a table
      // cell is owned by its table there, found again by the handle its code carries.
      std::wstring code = field.code;
      host::AcDbHostApplicationServices::FieldHolder temporary = NewFieldForExportedCode(services, *db, code);
      int status = host::AcDbField::kNotYetEvaluated;
      if (temporary && temporary->setFieldCode(ObjHandleToId(services, code, db)) == host::Acad::eOk) {
        temporary->evaluate(host::AcDbField::kPreview, db);
        status = temporary->evaluationStatus();
      }
      std::wstring value;
      if (status != host::AcDbField::kSuccess) {
        services.print(core::format(L"\nError: Cannot evaluate the field %s in %s. Code: %d. Cell(s) %s.", field.code,
                                    drawing.path, status, joined(field.cells)));
        value = kFailedValue;
      } else if (const host::Acad::ErrorStatus es = temporary->formatValue(value); es != host::Acad::eOk) {
        services.print(core::format(L"\nError: Cannot get the value of the field %s in %s. Code: %d. Cell(s) %s.",
                                    field.code, drawing.path, static_cast<int>(es), joined(field.cells)));
        value = kFailedValue;
      }
      if (value == kFailedValue) ++summary_.fieldsFailed;
      put(field, value);
    }
    // The side drawing goes with `side` here, before the next one is read.
  }
  progressDone();

  std::set<std::wstring> columns;
  for (const auto& [cell, value] : values) {
    auto range = sheet.range(cell);
    auto written = range ? (*range)->setValues({{host::ExcelValue(value)}}) : host::ExcelStatus(range.error());
    if (!written) {
      ExcelUtils(sources_.excel(), ui_, services).ReportOleException(written.error());
      return false;
    }
    ++summary_.cellsWritten;
    columns.insert(columnOf(cell));
  }
  for (const std::wstring& column : columns) {
    if (auto range = sheet.range(column + L":" + column)) (*range)->autoFitColumns();
  }
  services.print(core::format(L"\nSuccessfully update the value(s) in %s.", book.name()));
  return true;
}

}  // namespace corvane
